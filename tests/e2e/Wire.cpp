#include "tests/e2e/Wire.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace e2e {
namespace {

constexpr std::size_t kShownBytes = 48;
constexpr char kHexDigits[] = "0123456789ABCDEF";

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

std::string Hex(std::string_view bytes) {
  std::string hex;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    hex += kHexDigits[byte >> 4];
    hex += kHexDigits[byte & 15];
    hex += ' ';
  }
  return hex;
}

}  // namespace

Bytes Wire(std::string_view text) {
  Bytes bytes;
  int high = -1;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const int value = HexValue(c);
    if (value >= 0 && high >= 0) {
      bytes += static_cast<char>(high * 16 + value);
      high = -1;
    } else if (value >= 0) {
      high = value;
    } else if (c == '\'' && high < 0) {
      const std::size_t end = text.find('\'', i + 1);
      if (end == std::string_view::npos) ADD_FAILURE() << "open quote in " << text;
      bytes += text.substr(i + 1, end - i - 1);
      i = std::min(end, text.size() - 1);
    } else if (c != ' ' || high >= 0) {
      ADD_FAILURE() << "not bytes: " << text;
    }
  }
  if (high >= 0) ADD_FAILURE() << "half a byte at the end of " << text;
  return bytes;
}

Bytes Long(std::uint32_t value) {
  Bytes bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>((value >> shift) & 0xFF);
  return bytes;
}

Bytes Text(std::string_view text) {
  return Long(static_cast<std::uint32_t>(text.size())) + Bytes(text);
}

Bytes Padded(const Bytes& request) {
  Bytes padded = request;
  padded.resize(kLongestRequest, '\0');
  return padded;
}

std::string Describe(const Bytes& bytes) {
  return std::to_string(bytes.size()) +
         " bytes: " + Hex(std::string_view(bytes).substr(0, kShownBytes)) +
         (bytes.size() > kShownBytes ? "..." : "");
}

std::string DescribeDifference(const Bytes& expected, const Bytes& received) {
  const auto [at, unused] =
      std::mismatch(expected.begin(), expected.end(), received.begin(), received.end());
  const auto offset = static_cast<std::size_t>(at - expected.begin());
  const std::size_t from = offset < kShownBytes / 2 ? 0 : offset - kShownBytes / 2;
  const auto near = [&](const Bytes& bytes) {
    return from < bytes.size() ? Hex(std::string_view(bytes).substr(from, kShownBytes))
                               : std::string();
  };
  return "differ at byte " + std::to_string(offset) + "; from byte " + std::to_string(from) +
         "\n  expected " + near(expected) + "(" + std::to_string(expected.size()) +
         " bytes in all)\n  received " + near(received) + "(" + std::to_string(received.size()) +
         " bytes in all)";
}

}  // namespace e2e
