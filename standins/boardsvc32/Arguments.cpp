#include "standins/boardsvc32/Arguments.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "standins/boardsvc32/ResultCode.h"

namespace boardsim {

namespace {

constexpr char kFillLetter = 'x';

std::string FormatText(const char* text) {
  return text == nullptr ? "(null)" : Quote({text, strnlen(text, kMostBytes)});
}

std::string FormatBytes(const void* raw, std::uint32_t length) {
  if (raw == nullptr) return "(null)";
  const auto* const bytes = static_cast<const std::uint8_t*>(raw);
  std::string text;
  for (std::uint32_t at = 0; at < std::min(length, kMostBytes); ++at) {
    char pair[3];
    (void)std::snprintf(pair, sizeof(pair), "%02x", bytes[at]);
    text += pair;
  }
  return text;
}

std::string FormatGuid(const BRDX_GUID& guid) {
  char text[64];
  const auto& tail = guid.Data4;
  (void)std::snprintf(text, sizeof(text), "{%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}",
                      static_cast<unsigned>(guid.Data1), guid.Data2, guid.Data3, tail[0], tail[1],
                      tail[2], tail[3], tail[4], tail[5], tail[6], tail[7]);
  return text;
}

// The text of the n-th room; one that the answer does not speak of is empty.
std::string_view TextAt(const Answer& answer, std::size_t index) {
  return index < answer.texts.size() ? std::string_view(answer.texts[index]) : std::string_view();
}

// Puts a text at the beginning of a buffer, and a terminator if there is room for it.
void WriteText(void* buffer, std::uint32_t capacity, std::string_view text) {
  if (buffer == nullptr) return;
  const std::size_t most = std::min(capacity, kMostBytes);
  const std::size_t length = std::min(text.size(), most);
  std::copy_n(text.begin(), length, static_cast<char*>(buffer));
  if (length < most) static_cast<char*>(buffer)[length] = 0;
}

}  // namespace

Arguments& Arguments::Add(const Argument& argument) {
  if (count_ < kMost) list_[count_++] = argument;
  return *this;
}

Arguments& Arguments::Text(const char* name, const char* text) {
  return Add({Kind::kText, name, text, nullptr, 0, nullptr, {}});
}

Arguments& Arguments::Number(const char* name, std::uint32_t number) {
  return Add({Kind::kNumber, name, nullptr, nullptr, number, nullptr, {}});
}

Arguments& Arguments::Guid(const char* name, const BRDX_GUID& guid) {
  return Add({Kind::kGuid, name, nullptr, nullptr, 0, nullptr, guid});
}

Arguments& Arguments::Bytes(const char* name, const std::uint8_t* bytes, std::uint32_t length) {
  return Add({Kind::kBytes, name, bytes, nullptr, length, nullptr, {}});
}

Arguments& Arguments::Room(const char* name, void* buffer, std::uint32_t* length) {
  const std::uint32_t capacity = buffer != nullptr && length != nullptr ? *length : 0;
  return Add({Kind::kRoom, name, nullptr, buffer, capacity, length, {}});
}

Arguments& Arguments::NumberOut(const char* name, std::uint32_t* number) {
  return Add({Kind::kNumberOut, name, nullptr, number, 0, nullptr, {}});
}

Arguments& Arguments::ByteOut(const char* name, std::uint8_t* number) {
  return Add({Kind::kByteOut, name, nullptr, number, 0, nullptr, {}});
}

Arguments& Arguments::GuidOut(const char* name, BRDX_GUID* guid) {
  return Add({Kind::kGuidOut, name, nullptr, guid, 0, nullptr, {}});
}

bool Arguments::Fits(const Answer& answer) const {
  std::size_t room = 0;
  for (std::size_t index = 0; index < count_; ++index) {
    const Argument& argument = list_[index];
    if (argument.kind != Kind::kRoom) continue;
    if (TextAt(answer, room).size() > std::min(argument.number, kMostBytes)) return false;
    ++room;
  }
  return true;
}

void Arguments::Write(const Answer& answer, std::uint32_t result) const {
  std::size_t room = 0;
  std::size_t numbers = 0;
  const auto nextNumber = [&] {
    const std::size_t at = numbers++;
    return result == 0 && at < answer.numbers.size() ? answer.numbers[at] : 0;
  };
  for (std::size_t index = 0; index < count_; ++index) {
    const Argument& argument = list_[index];
    if (argument.kind == Kind::kRoom) {
      const std::string_view text = TextAt(answer, room++);
      if (argument.length != nullptr) *argument.length = static_cast<std::uint32_t>(text.size());
      if (result == 0) WriteText(argument.out, argument.number, text);
    } else if (argument.kind == Kind::kNumberOut && argument.out != nullptr) {
      *static_cast<std::uint32_t*>(argument.out) = nextNumber();
    } else if (argument.kind == Kind::kByteOut && argument.out != nullptr) {
      *static_cast<std::uint8_t*>(argument.out) = static_cast<std::uint8_t>(nextNumber());
    } else if (argument.kind == Kind::kGuidOut && argument.out != nullptr) {
      *static_cast<BRDX_GUID*>(argument.out) = result == 0 ? answer.guid : BRDX_GUID{};
    }
  }
}

void Arguments::WriteFault(const Answer& answer, const Fault& fault) const {
  std::size_t room = 0;
  for (std::size_t index = 0; index < count_; ++index) {
    const Argument& argument = list_[index];
    if (argument.kind != Kind::kRoom) continue;
    const std::uint32_t most = std::min(argument.number, kMostBytes);
    const std::size_t kept = fault.fill == Fill::kUnterminated
                                 ? std::min<std::size_t>(TextAt(answer, room).size(), most)
                                 : 0;
    if (fault.fill != Fill::kNothing && argument.out != nullptr) {
      std::fill(static_cast<char*>(argument.out) + kept, static_cast<char*>(argument.out) + most,
                kFillLetter);
    }
    if (argument.length != nullptr) {
      if (fault.fill == Fill::kCapacity) *argument.length = argument.number;
      if (room < fault.lengths.size() && fault.lengths[room]) {
        *argument.length = *fault.lengths[room];
      }
    }
    ++room;
  }
}

std::uint32_t Arguments::Deliver(const Answer& answer, const Fault* fault) const {
  static const Answer kNothing;
  std::uint32_t result = answer.result;
  if (result == 0 && !Fits(answer)) result = kMoreData;
  const bool speaks = result == 0 || result == kMoreData;
  Write(speaks ? answer : kNothing, result);
  if (fault != nullptr) WriteFault(result == 0 ? answer : kNothing, *fault);
  return result;
}

std::string Arguments::In() const {
  std::string line;
  for (std::size_t index = 0; index < count_; ++index) {
    const Argument& argument = list_[index];
    if (argument.kind > Kind::kRoom) continue;
    if (!line.empty()) line += ' ';
    line += argument.name;
    switch (argument.kind) {
      case Kind::kText:
        line += '=' + FormatText(static_cast<const char*>(argument.in));
        break;
      case Kind::kGuid:
        line += '=' + FormatGuid(argument.guid);
        break;
      case Kind::kBytes:
        line += '=' + FormatBytes(argument.in, argument.number);
        break;
      case Kind::kRoom:
        line += '[' + (argument.out != nullptr ? std::to_string(argument.number) : "(null)") + ']';
        break;
      default:
        line += '=' + std::to_string(argument.number);
    }
  }
  return line;
}

std::string Arguments::Out() const {
  std::string line;
  for (std::size_t index = 0; index < count_; ++index) {
    const Argument& argument = list_[index];
    std::string value;
    if (argument.kind == Kind::kRoom && argument.length != nullptr) {
      value = std::to_string(*argument.length);
    } else if (argument.kind == Kind::kNumberOut && argument.out != nullptr) {
      value = std::to_string(*static_cast<const std::uint32_t*>(argument.out));
    } else if (argument.kind == Kind::kByteOut && argument.out != nullptr) {
      value = std::to_string(*static_cast<const std::uint8_t*>(argument.out));
    } else if (argument.kind == Kind::kGuidOut && argument.out != nullptr) {
      value = FormatGuid(*static_cast<const BRDX_GUID*>(argument.out));
    } else {
      continue;
    }
    line += (line.empty() ? "" : " ") + (argument.name + ('=' + value));
  }
  return line;
}

}  // namespace boardsim
