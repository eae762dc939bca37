#include "cli/Hex.h"

#include <algorithm>
#include <cstdio>

namespace cli {
namespace {

constexpr std::size_t kBytesPerLine = 16;

int DigitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string AppendGroup(std::string_view group, std::vector<std::uint8_t>& bytes) {
  for (const char c : group) {
    if (DigitOf(c) < 0) return "'" + std::string(1, c) + "' is not a hex digit";
  }
  if (group.size() % 2 != 0) {
    return "'" + std::string(group) + "' has an odd number of digits; a byte is two";
  }
  if (bytes.size() + group.size() / 2 > kRawLimit) {
    return "more than " + std::to_string(kRawLimit) + " bytes";
  }
  for (std::size_t i = 0; i < group.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(DigitOf(group[i]) * 16 + DigitOf(group[i + 1])));
  }
  return {};
}

}  // namespace

std::string AppendHex(std::string_view argument, std::vector<std::uint8_t>& bytes) {
  constexpr std::string_view kBlanks = " \t\r\n";
  for (;;) {
    const std::size_t begin = argument.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) return {};
    argument.remove_prefix(begin);
    const std::string_view group = argument.substr(0, argument.find_first_of(kBlanks));
    std::string error = AppendGroup(group, bytes);
    if (!error.empty()) return error;
    argument.remove_prefix(group.size());
  }
}

std::string HexDigits(std::span<const std::uint8_t> bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string digits;
  digits.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) {
    digits += kDigits[byte >> 4];
    digits += kDigits[byte & 0xF];
  }
  return digits;
}

std::string HexDump(std::span<const std::uint8_t> bytes, std::size_t first) {
  std::string dump;
  for (std::size_t at = 0; at < bytes.size(); at += kBytesPerLine) {
    char offset[24];
    (void)std::snprintf(offset, sizeof(offset), "  %04zx ", first + at);
    dump += offset;
    for (const std::uint8_t byte : bytes.subspan(at, std::min(kBytesPerLine, bytes.size() - at))) {
      char text[8];
      (void)std::snprintf(text, sizeof(text), " %02x", byte);
      dump += text;
    }
    dump += '\n';
  }
  return dump;
}

}  // namespace cli
