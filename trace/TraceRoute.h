#ifndef TRACE_TRACEROUTE_H_
#define TRACE_TRACEROUTE_H_

/// The road from a finished line to the configured output.

#include <string_view>

#include "platform/WinTypes.h"
#include "trace/TraceConfig.h"

namespace zqotrc {

/// Opens, chooses, attaches or loads what the configured output needs.
/// \param security for the ring
void PrepareOutput(const TraceConfig& config, SECURITY_ATTRIBUTES* security);

/// Hands a line to the output. A line that the output does not take is dropped.
/// \param line is terminated, and shorter than kLineBufferSize
void Deliver(const TraceConfig& config, std::string_view line);

/// Tells the output, if it keeps settings of its own, that they may have changed.
void RefreshOutput(const TraceConfig& config);

/// Leaves the ring, closes the engine and the driver.
void ReleaseOutputs();

}  // namespace zqotrc

#endif  // TRACE_TRACEROUTE_H_
