#ifndef CLI_HEX_H_
#define CLI_HEX_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

/// The bytes that `raw` sends at most.
inline constexpr std::size_t kRawLimit = 65536;

/// Appends the bytes of one argument: groups of hex digits, two to a byte, with blanks between
/// them. \returns an empty text, or what is wrong with the argument.
std::string AppendHex(std::string_view argument, std::vector<std::uint8_t>& bytes);

/// The bytes as hex digits without blanks.
std::string HexDigits(std::span<const std::uint8_t> bytes);

/// The bytes as lines of up to 16, each indented and led by the offset of its first byte.
/// \param first the offset of the first byte
std::string HexDump(std::span<const std::uint8_t> bytes, std::size_t first);

}  // namespace cli

#endif  // CLI_HEX_H_
