#ifndef TRACE_TRACERECORD_H_
#define TRACE_TRACERECORD_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zqotrc {

/// The layout of a line, by the number that the configuration uses.
enum class TraceFormat {
  kShort = 1,
  kLong = 2,
  kTime = 3,
  kText = 4,
};

/// What a call site hands over. No text may be null.
struct TraceCall {
  const char* function;
  std::uint32_t level;
  const char* component;
  std::uint32_t code;   ///< error value of the line
  std::uint16_t extra;  ///< shown in hexadecimal beside the code
  const char* file;     ///< a path; what is behind its last `\` counts
  std::uint32_t line;
  const char* text;
};

/// When and where a line came about.
struct TraceMoment {
  bool hasLocalTime;  ///< false: the local time could not be formed
  std::int32_t hour, minute, second, millisecond;
  std::int64_t counter, frequency;  ///< performance counter, and its ticks in a second
  std::int32_t processId, threadId;
};

/// A line taken apart: fixed columns, each a terminated text that is cut to its width.
struct TraceRecord {
  struct Source {
    char time[13];
    char file[13];
    char line[6];
  };

  char letter[2];
  char traceId[30];  ///< 8 characters, right-aligned
  char component[4];
  char level[3];
  char code[13];
  char extra[13];
  union {
    Source source;     ///< of kLong
    char seconds[28];  ///< of kTime
  };
  char function[65];
  char text[257];
};
static_assert(offsetof(TraceRecord, traceId) == 2 && offsetof(TraceRecord, component) == 32 &&
              offsetof(TraceRecord, level) == 36 && offsetof(TraceRecord, code) == 39 &&
              offsetof(TraceRecord, extra) == 52 && offsetof(TraceRecord, source) == 65 &&
              offsetof(TraceRecord, function) == 97 && offsetof(TraceRecord, text) == 162);

/// Enough for the longest line of every layout, terminator included.
inline constexpr std::size_t kLineBufferSize = 419;

/// Two characters for a level that is exactly one of the known values, "??" for any other.
std::string_view LevelCode(std::uint32_t level);

/// Fills in the columns that the layout uses.
void BuildRecord(TraceRecord& record, TraceFormat format, std::string_view traceId,
                 const TraceCall& call, const TraceMoment& moment);

/// Lays the columns out as one line, without a line end. \returns the line, which is terminated.
std::string_view FormatLine(char (&line)[kLineBufferSize], TraceFormat format,
                            const TraceRecord& record, const TraceMoment& moment);

}  // namespace zqotrc

#endif  // TRACE_TRACERECORD_H_
