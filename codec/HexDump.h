#ifndef CODEC_HEXDUMP_H_
#define CODEC_HEXDUMP_H_

#include <cstdint>

/// Traces `size` bytes in hex, 16 a line, as progress lines of `function`.
void TraceHexDump(const char* function, const std::uint8_t* data, std::uint32_t size);

#endif  // CODEC_HEXDUMP_H_
