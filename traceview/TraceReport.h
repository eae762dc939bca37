#ifndef TRACEVIEW_TRACEREPORT_H_
#define TRACEVIEW_TRACEREPORT_H_

/// A trace as one HTML page that needs nothing but a browser: no network, no other file.

#include <span>
#include <string>
#include <string_view>

#include "traceview/TraceLine.h"

namespace traceview {

struct ReportInput {
  std::span<const TraceLine> lines;
  std::span<const std::string> files;  ///< names in UTF-8, to be shown
  std::string title;                   ///< UTF-8; empty: the page makes one of the first name
  /// Turns bytes of a trace into UTF-8. May be null when they are UTF-8 already.
  std::string (*toUtf8)(std::string_view bytes) = nullptr;
};

/// What the page shows in its summary, for whoever tells the user about it.
struct ReportFigures {
  std::size_t lines = 0;
  std::size_t requests = 0;
  std::size_t errors = 0;  ///< lines that are marked as an error
};

/// Builds the page. Whatever the lines hold stands in it as data, never as markup or script. The
/// same input gives the same bytes.
std::string BuildTraceReport(const ReportInput& input, ReportFigures* figures = nullptr);

/// How many bytes of a file IsTraceReport wants to see.
inline constexpr std::size_t kReportHeadSize = 512;

/// Whether a file that begins so is a page that BuildTraceReport made.
bool IsTraceReport(std::string_view head);

}  // namespace traceview

#endif  // TRACEVIEW_TRACEREPORT_H_
