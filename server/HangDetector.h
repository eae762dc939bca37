#ifndef SERVER_HANGDETECTOR_H_
#define SERVER_HANGDETECTOR_H_

#include <cstddef>
#include <cstdint>

#include "server/RequestLog.h"

/// Decides from looks at the request log, made now and then, which request hangs.
///
/// A request's time counts from the first look that sees it. So none is reported before the limit,
/// and with looks at a quarter of it a hanging one is reported by one and a half limits.
class HangDetector {
 public:
  /// \param limitMs more than 0
  explicit HangDetector(std::uint32_t limitMs) : limitMs_(limitMs) {}

  /// How long to wait between two looks.
  std::uint32_t PeriodMs() const;

  /// One look: the request being served, null when there is none, at a time in milliseconds of a
  /// clock that only runs forward. \returns whether it is to be reported, once for each request.
  bool Look(const request_log::Record* serving, std::uint64_t now);

 private:
  const std::uint32_t limitMs_;
  std::uint32_t number_ = 0;  // of the request seen last; 0 when there was none
  std::uint64_t lastLook_ = 0;
  std::uint64_t seenForMs_ = 0;
  bool reported_ = false;
};

/// Says that a request hangs: to the debugger first, which needs no lock of this process, then on
/// the trace, in whose lock the handler may be what hangs.
void ReportHang(const request_log::Record& request, std::uint32_t limitMs);

#endif  // SERVER_HANGDETECTOR_H_
