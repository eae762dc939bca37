#include "client/testing/Script.h"

#include <stdexcept>

#include "client/testing/ScriptedServer.h"

namespace client {

ScriptStep MakeStep(std::initializer_list<std::string> parts, bool closes) {
  ScriptStep step;
  for (const std::string& part : parts) step.parts.push_back(FromHex(part));
  step.closes = closes;
  return step;
}

std::vector<std::uint8_t> FromHex(const std::string& hex) {
  std::string digits;
  for (const char c : hex) {
    if (c != ' ') digits += c;
  }
  if (digits.size() % 2 != 0) throw std::invalid_argument("odd number of hex digits: " + hex);
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(
        static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, /*base=*/16)));
  }
  return bytes;
}

std::string ToHex(const void* data, std::size_t size) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  const auto* const bytes = static_cast<const std::uint8_t*>(data);
  std::string hex;
  for (std::size_t i = 0; i < size; ++i) {
    hex += kDigits[bytes[i] >> 4];
    hex += kDigits[bytes[i] & 0xF];
  }
  return hex;
}

}  // namespace client
