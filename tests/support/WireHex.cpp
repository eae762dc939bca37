#include "tests/support/WireHex.h"

#include <stdexcept>

namespace {

int Digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  throw std::invalid_argument("not a hex digit");
}

}  // namespace

Bytes Wire(std::string_view hex) {
  Bytes bytes;
  for (std::size_t i = 0; i < hex.size(); ++i) {
    if (hex[i] == ' ') continue;
    if (i + 1 == hex.size()) throw std::invalid_argument("half a byte");
    bytes.push_back(static_cast<std::uint8_t>(Digit(hex[i]) * 16 + Digit(hex[i + 1])));
    ++i;
  }
  return bytes;
}

Bytes TextBytes(std::string_view text) { return Bytes(text.begin(), text.end()); }

Bytes TextField(std::string_view text) {
  const auto size = static_cast<std::uint32_t>(text.size());
  const Bytes length = {static_cast<std::uint8_t>(size), static_cast<std::uint8_t>(size >> 8),
                        static_cast<std::uint8_t>(size >> 16),
                        static_cast<std::uint8_t>(size >> 24)};
  return length + TextBytes(text);
}

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

std::string Hex(const Bytes& bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}
