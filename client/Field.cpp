#include "client/Field.h"

#include "codec/Wire.h"
#include "server/CommandCode.h"

namespace client {
namespace {

std::uint32_t SizeOf(Bytes message) { return static_cast<std::uint32_t>(message.size()); }

template <typename T>
FieldStatus TakeNumber(Bytes message, std::uint32_t& cursor, FieldValue& value) {
  T number = 0;
  if (!wire::Take(message.data(), SizeOf(message), cursor, number)) return FieldStatus::CutShort;
  value.number = number;
  return FieldStatus::Taken;
}

FieldStatus TakeRaw(Bytes message, std::uint32_t length, std::uint32_t& cursor, FieldValue& value) {
  if (length > wire::Left(SizeOf(message), cursor)) return FieldStatus::CutShort;
  value.bytes = message.subspan(cursor, length);
  cursor += length;
  return FieldStatus::Taken;
}

FieldStatus TakeCounted(Bytes message, std::uint32_t limit, bool mayBeAbsent, std::uint32_t& cursor,
                        FieldValue& value) {
  std::uint32_t behind = cursor;
  std::uint32_t length = 0;
  if (!wire::Take(message.data(), SizeOf(message), behind, length)) return FieldStatus::CutShort;
  if (mayBeAbsent && length == kAbsentLength) {
    value.absent = true;
    cursor = behind;
    return FieldStatus::Taken;
  }
  if (length > wire::Left(limit, behind)) {
    cursor = behind;
    return FieldStatus::TooLong;
  }
  const FieldStatus status = TakeRaw(message, length, behind, value);
  if (status == FieldStatus::Taken) cursor = behind;
  return status;
}

}  // namespace

FieldStatus TakeField(FieldKind kind, Bytes message, std::uint32_t limit, bool mayBeAbsent,
                      std::uint32_t& cursor, FieldValue& value) noexcept {
  constexpr std::uint32_t kGuidSize = 16;
  value = FieldValue{};
  switch (kind) {
    case FieldKind::Byte:
      return TakeNumber<std::uint8_t>(message, cursor, value);
    case FieldKind::Short:
      return TakeNumber<std::uint16_t>(message, cursor, value);
    case FieldKind::Long:
      return TakeNumber<std::uint32_t>(message, cursor, value);
    case FieldKind::Guid:
      return TakeRaw(message, kGuidSize, cursor, value);
    case FieldKind::Text:
    case FieldKind::Buffer:
      return TakeCounted(message, limit, mayBeAbsent, cursor, value);
  }
  return FieldStatus::CutShort;
}

}  // namespace client
