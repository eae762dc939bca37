#ifndef TRACE_TRACEWRITER_H_
#define TRACE_TRACEWRITER_H_

#include "trace/TraceRecord.h"

namespace zqotrc {

/// Writes a line, unless a filter stops it. A configuration that is out of date is read again
/// first, and then its level has a say as well. Call it with the facility's lock held.
void Write(const TraceCall& call);

/// The columns of the line that was laid out last.
const TraceRecord& LastRecord();

}  // namespace zqotrc

#endif  // TRACE_TRACEWRITER_H_
