#ifndef TRACEVIEW_REPORTPAGE_H_
#define TRACEVIEW_REPORTPAGE_H_

#include <string_view>

namespace traceview {

/// The page of report/, in front of its data and behind it. The build makes these texts from the
/// sources there.
extern const std::string_view kReportPageHead;
extern const std::string_view kReportPageTail;

}  // namespace traceview

#endif  // TRACEVIEW_REPORTPAGE_H_
