#ifndef TESTS_E2E_WIRE_H_
#define TESTS_E2E_WIRE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace e2e {

/// Bytes as they travel; they may hold zero bytes.
using Bytes = std::string;

/// Bytes written out: hex digits in any grouping, and text in single quotes as it stands.
///
/// Wire("0200 03000000 'A\\B'") is a code, a length and three bytes of text. Anything else fails
/// the running test.
Bytes Wire(std::string_view text);

/// A 32-bit number as it travels, for the numbers that a test has to compute.
Bytes Long(std::uint32_t value);

/// A text field: its length, then its bytes, for the texts that are too long to write out.
Bytes Text(std::string_view text);

/// The most that the server takes as one request.
inline constexpr std::size_t kLongestRequest = 8192;

/// The request, filled up to the longest one, so that it is one request whatever is sent behind it.
Bytes Padded(const Bytes& request);

/// The bytes for a failure message: how many, and the first of them in hex.
std::string Describe(const Bytes& bytes);

/// Both for a failure message, with the offset of the first difference.
std::string DescribeDifference(const Bytes& expected, const Bytes& received);

}  // namespace e2e

#endif  // TESTS_E2E_WIRE_H_
