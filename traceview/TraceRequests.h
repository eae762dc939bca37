#ifndef TRACEVIEW_TRACEREQUESTS_H_
#define TRACEVIEW_TRACEREQUESTS_H_

/// What the lines of a trace say about each other: which connection and which request a line
/// belongs to, how long a request took, and where on a common time axis each line stands.
///
/// Everything is read off the texts of the server's loop; a trace whose filters left these out has
/// fewer connections and requests, never wrong ones.

#include <cstdint>
#include <span>
#include <vector>

#include "traceview/LineVerdict.h"
#include "traceview/TraceLine.h"

namespace traceview {

inline constexpr std::int32_t kNobody = -1;

/// One request: from the line that takes up the connection's request to the last line of the same
/// pass of the loop.
struct TraceRequest {
  std::uint32_t firstLine = 0;  ///< index of the line
  std::uint32_t lastLine = 0;
  std::int32_t connection = kNobody;
  std::uint32_t command = 0;       ///< the code of "opCode 0x%x"
  std::int64_t microseconds = -1;  ///< between the two lines; -1 when they have no time
  /// Of the first reply that tells one; else what a library answered last in front of the reply,
  /// which carries that on. -1 when no line tells it.
  std::int64_t result = -1;
  /// An error if one of its lines is one; else what its result is, or, if that is not told, the
  /// worst of its lines.
  Mark mark = Mark::kNone;
};

/// The two kinds of time that lines carry.
enum class Clock : std::uint8_t { kNone, kTimeOfDay, kCounter };

/// From this line on, the time as written is the time on the axis less `offset`.
struct TimeSegment {
  std::uint32_t line = 0;
  Clock clock = Clock::kNone;
  std::int64_t offset = 0;  ///< microseconds
};

struct TraceStory {
  std::vector<TraceRequest> requests;  ///< in the order in which they began
  /// One for each line: 0 to 63, or kNobody. That all 64 are offered at the start counts for none.
  std::vector<std::int32_t> connections;
  std::vector<std::int32_t> owners;  ///< one for each line: index of its request, or kNobody
  std::vector<Mark> marks;           ///< one for each line
  /// One for each line: microseconds since the first line with a time. Never falls: behind
  /// midnight it goes on, and where a clock was set back or another run begins it stands still.
  std::vector<std::int64_t> times;
  std::vector<TimeSegment> segments;  ///< empty when no line has a time
};

TraceStory TellStory(std::span<const TraceLine> lines);

}  // namespace traceview

#endif  // TRACEVIEW_TRACEREQUESTS_H_
