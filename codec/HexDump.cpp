#include "codec/HexDump.h"

#include <algorithm>
#include <cstddef>

#include "trace/Zqotrc.h"

namespace {

constexpr std::size_t kBytesPerLine = 16;

void PutHex(char* out, std::uint8_t byte) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  out[0] = kDigits[byte >> 4];
  out[1] = kDigits[byte & 0xF];
}

}  // namespace

void TraceHexDump(const char* function, const std::uint8_t* data, std::uint32_t size) {
  if (!zqotrc::Wanted(TRC_PROGRESS)) return;

  for (std::size_t start = 0; start < size; start += kBytesPerLine) {
    char line[kBytesPerLine * 3] = "";
    const std::size_t count = std::min(kBytesPerLine, size - start);
    for (std::size_t i = 0; i < count; ++i) {
      PutHex(line + i * 3, data[start + i]);
      line[i * 3 + 2] = i + 1 < count ? ' ' : '\0';
    }
    ZQ_TRACE(TRC_PROGRESS, function, "%s", line);
  }
}
