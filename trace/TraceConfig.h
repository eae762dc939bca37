#ifndef TRACE_TRACECONFIG_H_
#define TRACE_TRACECONFIG_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "trace/TraceFilter.h"
#include "trace/TraceHost.h"
#include "trace/TraceRecord.h"

namespace zqotrc {

/// Where lines go, by the number that the configuration uses.
enum class TraceOutput {
  kDriver = 0,  ///< "VXD", a kernel driver
  kCom1 = 1,    ///< accepted, writes nothing
  kCom2 = 2,    ///< accepted, writes nothing
  kPipe = 3,    ///< accepted, writes nothing
  kFile = 4,    ///< two alternating files
  kRing = 5,    ///< "SM", the ring in shared memory
  kDebugger = 6,
  kEngine = 7,  ///< the trace engine's library
};

/// Capacity for the texts that lead to a file: 260 characters and a terminator.
inline constexpr std::size_t kPrefixSize = kParameterCapacity + 1;

/// The configuration in force.
struct TraceConfig {
  std::uint32_t level = 0;
  std::uint32_t programMask = 0;
  std::int32_t consult = 0;  ///< seconds until it is read again; none if not above 0
  TraceFormat format = TraceFormat::kLong;
  TraceOutput output = TraceOutput::kFile;
  PatternList function;
  PatternList module;
  PatternList text;
  PatternList traceId;
  std::uint32_t fileLimit = 2097152;  ///< bytes
  std::uint32_t ringSize = 2000000;   ///< bytes
  char filePrefix[kPrefixSize] = "C:\\TMP\\ZqFILE";
};

/// strtoul with base 0: decimal, 0x for hexadecimal, 0 for octal; too large a number is all bits.
std::uint32_t ParseMask(const char* text);

/// atol: decimal; a number out of range is the nearest that is in it.
std::int32_t ParseNumber(const char* text);

/// "SHORT", "TIME" or "TEXT" in any case; anything else is kLong.
TraceFormat ParseFormat(std::string_view text);

/// The name of an output in any case; anything else is kFile.
TraceOutput ParseOutput(std::string_view text);

/// Puts a file prefix together from the values "Path" and "FileName", one of which is not empty.
void BuildFilePrefix(char (&prefix)[kPrefixSize], std::string_view path, std::string_view fileName);

/// Takes every value that is present; what has a default that holds for each reading gets it back
/// first. The program mask, the file prefix and the two sizes stay as they are when absent.
/// \param programMaskName may be null
void ReadTraceConfig(TraceConfig& config, const char* programMaskName);

/// \returns the mask in the parameter `name`, 0 when there is none.
std::uint32_t ReadMaskParameter(const char* name);

}  // namespace zqotrc

#endif  // TRACE_TRACECONFIG_H_
