#ifndef TRACEVIEW_LINEVERDICT_H_
#define TRACEVIEW_LINEVERDICT_H_

/// What one line of a trace says on its own. All that show or count lines judge them by this, so
/// that a report and the figures beside it never differ.

#include <cstdint>

#include "traceview/TraceLine.h"

namespace traceview {

/// How bad a line is.
enum class Mark : std::uint8_t {
  kNone,
  kNotice,  ///< a result other than 0: a request that was refused, a value that is not there
  kError,   ///< something that the server itself counts as a failure
};

/// An error is an exception, a text in which the server tells of a failure, a result of the
/// server's own range (8601 to 8620), the level code FR, or a complaint of the trace facility. The
/// end of an enumeration (259) and a client that goes away are neither an error nor a notice.
Mark MarkOf(const TraceLine& line);

/// Where a result that a line tells comes from.
enum class ResultKind : std::uint8_t {
  kNone,     ///< the line tells none
  kReply,    ///< the reply that was sent: the result of the request
  kLibrary,  ///< a primitive or library; the reply carries it on as a rule
  kSending,  ///< how the sending went, which says nothing about the request
};

struct LineResult {
  ResultKind kind = ResultKind::kNone;
  std::uint32_t value = 0;
};

/// The result that a line tells. Numbers that are none, such as a length or "writeResult" (1 when
/// the write ended at once, else 0), do not count.
LineResult ResultOf(const TraceLine& line);

/// Whether a line is the first one of a call of its function. Some functions write more lines that
/// open with ">>": these are steps.
bool OpensCall(const TraceLine& line);

/// Whether a line may be the last one of a call: it opens with "<<", or is the end of the few
/// functions that draw their arrows otherwise.
bool MayCloseCall(const TraceLine& line);

}  // namespace traceview

#endif  // TRACEVIEW_LINEVERDICT_H_
