#include "server/HangDetector.h"

#include <algorithm>

#include "trace/TraceOutputs.h"
#include "trace/TraceText.h"
#include "trace/Zqotrc.h"

namespace {

constexpr std::uint32_t kLooksPerLimit = 4;

// Often enough for every limit; more would only cost.
constexpr std::uint32_t kShortestPeriodMs = 25;

}  // namespace

std::uint32_t HangDetector::PeriodMs() const {
  return std::max(limitMs_ / kLooksPerLimit, kShortestPeriodMs);
}

bool HangDetector::Look(const request_log::Record* serving, std::uint64_t now) {
  // A machine that slept has let nobody run: of a long time between two looks no more counts than
  // two periods.
  const std::uint64_t sinceLast = std::min<std::uint64_t>(now - lastLook_, 2ull * PeriodMs());
  lastLook_ = now;
  if (serving == nullptr) {
    number_ = 0;
    return false;
  }
  if (serving->number != number_) {
    number_ = serving->number;
    seenForMs_ = 0;
    reported_ = false;
    return false;
  }
  seenForMs_ += sinceLast;
  if (reported_ || seenForMs_ < limitMs_) return false;
  reported_ = true;
  return true;
}

void ReportHang(const request_log::Record& request, std::uint32_t limitMs) {
  static constexpr char kFct[] = "WatchRequest: ";
  char text[160];
  (void)zqotrc::FormatCut(text, sizeof(text),
                          "opCode 0x%x from Connection(%d), client process %u, has been running "
                          "for more than %u ms",
                          static_cast<unsigned>(request.command),
                          static_cast<int>(request.connection),
                          static_cast<unsigned>(request.client), static_cast<unsigned>(limitMs));
  char line[192];
  (void)zqotrc::FormatCut(line, sizeof(line), "QorlixSRV: %s\n", text);
  zqotrc::SendToDebugger(line);
  ZQ_TRACE(TRC_ERROR, kFct, "%s", text);
}
