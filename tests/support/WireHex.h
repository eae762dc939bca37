#ifndef TESTS_SUPPORT_WIREHEX_H_
#define TESTS_SUPPORT_WIREHEX_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// Bytes written out as on the wire: hex digits in pairs, blanks anywhere between pairs.
Bytes Wire(std::string_view hex);

/// The bytes of a text, without a terminator.
Bytes TextBytes(std::string_view text);

/// A length-prefixed text field as a client sends it.
Bytes TextField(std::string_view text);

Bytes operator+(Bytes left, const Bytes& right);

/// Hex of the bytes, for messages and for comparing what is seen at a glance.
std::string Hex(const Bytes& bytes);

#endif  // TESTS_SUPPORT_WIREHEX_H_
