#ifndef TRACEVIEW_TRACEQUERY_H_
#define TRACEVIEW_TRACEQUERY_H_

/// Which lines of a trace are asked for.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "traceview/TraceLine.h"

namespace traceview {

struct TraceQuery {
  std::uint32_t levels = 0xFFFFFFFF;
  std::string function;  ///< upper case; empty: any
  std::string text;      ///< upper case; empty: any
};

/// Levels by name, code or bits, with commas between them: "error,progress", "FR", "0x50".
bool ParseLevels(std::string_view words, std::uint32_t& levels);

/// A pattern in the form that the matcher takes.
std::string PatternOf(std::string_view words);

/// Whether a line is asked for. The function has to match as a whole, without the colon at its end,
/// the text with a leading part; both match as the facility's own filters do. A line without a
/// level, and one whose code stands for several, passes every choice of levels.
bool Passes(const TraceQuery& query, const TraceLine& line);

/// A moment in the past, on the local clock.
struct Since {
  bool isTimeOfDay = false;       ///< else a span that ends now
  std::int64_t microseconds = 0;  ///< since midnight, or of the span
};

/// "14:05", "14:05:09" or "14:05:09,123"; or "90s", "10m", "2h", "1d".
bool ParseSince(std::string_view words, Since& since);

/// The first line that was written at the moment or later; a line without a time belongs to the one
/// in front of it. The lines hold no dates: the last one counts as written within the last 24
/// hours, and a time of day as the last one that was.
/// \param now microseconds since midnight, local
/// \returns the number of lines when none is; -1 when no line has a time of day.
std::ptrdiff_t FirstSince(std::span<const TraceLine> lines, const Since& since, std::int64_t now);

}  // namespace traceview

#endif  // TRACEVIEW_TRACEQUERY_H_
