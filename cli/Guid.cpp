#include "cli/Guid.h"

#include <vector>

#include "cli/Hex.h"

namespace cli {

bool ParseGuid(std::string_view text, client::Guid& guid) {
  constexpr std::size_t kLength = 36;
  if (text.starts_with('{') != text.ends_with('}')) return false;
  if (text.starts_with('{')) text = text.substr(1, text.size() - 2);
  if (text.size() != kLength) return false;

  std::string digits;
  for (std::size_t i = 0; i < kLength; ++i) {
    const bool parts = i == 8 || i == 13 || i == 18 || i == 23;
    if (parts != (text[i] == '-')) return false;
    if (!parts) digits += text[i];
  }
  // Blanks, which are let pass between bytes, would take the place of digits.
  std::vector<std::uint8_t> bytes;
  if (!AppendHex(digits, bytes).empty() || bytes.size() != 16) return false;

  // The three numbers are written highest digit first, the eight bytes in their order.
  guid.data1 =
      static_cast<std::uint32_t>(bytes[0] << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3]);
  guid.data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
  guid.data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
  for (std::size_t i = 0; i < guid.data4.size(); ++i) guid.data4[i] = bytes[8 + i];
  return true;
}

std::string GuidText(client::Bytes bytes) {
  // Data1 to Data3 are numbers, lowest byte first; Data4 is eight bytes in their order.
  static constexpr int kOrder[] = {3,  2, 1, 0,  -1, 5,  4,  -1, 7,  6,
                                   -1, 8, 9, -1, 10, 11, 12, 13, 14, 15};
  std::string text = "{";
  for (const int i : kOrder) {
    text += i < 0 ? "-" : HexDigits(bytes.subspan(static_cast<std::size_t>(i), 1));
  }
  return text + '}';
}

}  // namespace cli
