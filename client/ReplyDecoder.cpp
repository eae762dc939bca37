#include "client/ReplyDecoder.h"

#include <algorithm>
#include <cstring>

#include "codec/Wire.h"

namespace client {
namespace {

// What a request leads to, as far as the request alone tells.
struct Expectation {
  explicit Expectation(Bytes request)
      : command(CommandOf(request)),
        readable(command != nullptr && IsReadable(*command, request)),
        hasCode(request.size() >= sizeof(std::uint16_t)) {}

  const CommandInfo* command;
  bool readable;
  bool hasCode;
};

const char* FieldsOf(const Expectation& expected, SrvResult result) {
  if (expected.command == nullptr || result == SRV_ERR_UNKNOWN_COMMAND) return "";
  const CommandInfo& command = *expected.command;
  if (command.fixedShape) return command.success;
  // What the loop says for a handler stands alone; so does the end of an exception.
  if (result == BUFFER_OVERFLOW && !expected.readable) return "";
  if (result == SRV_ERR_EXCEPTION_OCCURED) return "";
  if (result == command.done) return command.success;
  return result == BUFFER_OVERFLOW ? command.tooLong : command.failure;
}

enum class Copies : std::uint8_t { One, OneOrTwo, Two };

Copies CopiesOf(const Expectation& expected, SrvResult result) {
  // A request too short for a command code is unknown, and cannot be read either.
  if (!expected.hasCode) return Copies::Two;
  if (expected.command == nullptr || result == SRV_ERR_UNKNOWN_COMMAND) return Copies::One;
  switch (expected.command->doubling) {
    case Doubling::OnFailure:
      return result != SRV_OK ? Copies::Two : Copies::One;
    case Doubling::OnUnreadable:
      return expected.readable ? Copies::One : Copies::Two;
    case Doubling::OnceItsLibraryIsLoaded:
      if (!expected.readable) return Copies::One;
      return result != SRV_OK ? Copies::Two : Copies::OneOrTwo;
    case Doubling::Never:
      break;
  }
  return Copies::One;
}

std::uint32_t SizeOf(Bytes bytes) { return static_cast<std::uint32_t>(bytes.size()); }

// Takes mark and result at the cursor.
ReplyState TakeHead(Bytes bytes, std::uint32_t& cursor, SrvResult& result) {
  std::uint16_t mark = 0;
  std::uint32_t behind = cursor;
  if (!wire::Take(bytes.data(), SizeOf(bytes), behind, mark)) {
    // One byte of the mark is enough to tell that it is none.
    const bool wrong = behind < bytes.size() && bytes[behind] != (REPLY_MARK & 0xFF);
    return wrong ? ReplyState::Malformed : ReplyState::Incomplete;
  }
  if (mark != REPLY_MARK) return ReplyState::Malformed;
  if (!wire::Take(bytes.data(), SizeOf(bytes), behind, result)) return ReplyState::Incomplete;
  cursor = behind;
  return ReplyState::Complete;
}

void AddPart(ReplyLayout& layout, std::uint32_t offset, std::uint32_t end, SrvResult result) {
  layout.part[layout.parts++] = {offset, end - offset, result};
  layout.size = end;
}

// Takes a reply without fields, the last part of a doubled or broken-off one.
ReplyState TakeLastPart(Bytes received, std::uint32_t offset, ReplyLayout& layout) {
  std::uint32_t cursor = offset;
  SrvResult result = SRV_OK;
  const ReplyState state = TakeHead(received, cursor, result);
  if (state == ReplyState::Complete) AddPart(layout, offset, cursor, result);
  return state;
}

// Takes the fields of the first part.
ReplyState TakeFields(Bytes received, std::uint32_t& cursor, ReplyLayout& layout) {
  // One reply never grows beyond the limit, so a length that would is the sign of a broken-off one.
  const Bytes reply = received.first(std::min<std::size_t>(received.size(), kMessageLimit));
  FieldList fields(layout.fields);
  Field field;
  while (fields.Next(field)) {
    FieldValue value;
    switch (TakeField(field.kind, reply, kMessageLimit, /*mayBeAbsent=*/false, cursor, value)) {
      case FieldStatus::Taken:
        break;
      case FieldStatus::CutShort:
        return reply.size() < kMessageLimit ? ReplyState::Incomplete : ReplyState::Malformed;
      case FieldStatus::TooLong:
        layout.brokenOff = true;
        return ReplyState::Complete;
    }
  }
  return ReplyState::Complete;
}

// Takes what follows the first part of a doubled reply.
ReplyState TakeSecondSend(Bytes received, ReplyLayout& layout) {
  const std::uint32_t size = layout.size;
  const std::uint32_t there = std::min(wire::Left(SizeOf(received), size), size);
  if (there != 0 && std::memcmp(received.data(), received.data() + size, there) != 0) {
    return ReplyState::Malformed;
  }
  if (there < size) return ReplyState::Incomplete;
  AddPart(layout, size, 2 * size, layout.result);
  return TakeLastPart(received, 2 * size, layout);
}

ReplyState Examine(const Expectation& expected, Bytes received, ReplyLayout& layout) {
  std::uint32_t cursor = 0;
  ReplyState state = TakeHead(received, cursor, layout.result);
  if (state != ReplyState::Complete) return state;

  layout.fields = FieldsOf(expected, layout.result);
  state = TakeFields(received, cursor, layout);
  if (state != ReplyState::Complete) return state;
  AddPart(layout, 0, cursor, layout.result);
  if (layout.brokenOff) {
    state = TakeLastPart(received, cursor, layout);
    if (state != ReplyState::Complete) return state;
    layout.result = layout.part[1].result;
    return layout.result == BUFFER_OVERFLOW ? ReplyState::Complete : ReplyState::Malformed;
  }

  switch (CopiesOf(expected, layout.result)) {
    case Copies::One:
      return ReplyState::Complete;
    case Copies::OneOrTwo:
      if (layout.size == received.size()) return ReplyState::MayGrow;
      return TakeSecondSend(received, layout);
    case Copies::Two:
      return TakeSecondSend(received, layout);
  }
  return ReplyState::Malformed;
}

}  // namespace

ReplyLayout ExamineReply(Bytes request, Bytes received) noexcept {
  ReplyLayout layout;
  layout.state = Examine(Expectation(request), received, layout);
  return layout;
}

FieldValue ReplyReader::Take(FieldKind kind) noexcept {
  FieldValue value;
  if (failed_) return value;
  failed_ = TakeField(kind, reply_, SizeOf(reply_), /*mayBeAbsent=*/false, cursor_, value) !=
            FieldStatus::Taken;
  return value;
}

std::uint8_t ReplyReader::Byte() noexcept {
  return static_cast<std::uint8_t>(Take(FieldKind::Byte).number);
}

std::uint32_t ReplyReader::Long() noexcept { return Take(FieldKind::Long).number; }

std::string_view ReplyReader::Text() noexcept {
  const Bytes bytes = Take(FieldKind::Text).bytes;
  if (bytes.empty()) return {};
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Bytes ReplyReader::Buffer() noexcept { return Take(FieldKind::Buffer).bytes; }

Bytes ReplyReader::Guid() noexcept { return Take(FieldKind::Guid).bytes; }

}  // namespace client
