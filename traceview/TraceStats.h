#ifndef TRACEVIEW_TRACESTATS_H_
#define TRACEVIEW_TRACESTATS_H_

/// What a trace says about each function: how often it ran, failed, and how long it took.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "traceview/TraceLine.h"

namespace traceview {

struct FunctionStats {
  std::string name;
  std::uint64_t lines = 0;
  std::uint64_t calls = 0;    ///< lines that open a call
  std::uint64_t errors = 0;   ///< lines that tell of a failure
  std::uint64_t notices = 0;  ///< lines with a result other than 0 that are no error
  std::uint64_t timed = 0;    ///< calls whose end is known as well as their start
  /// Of these, in microseconds, from the first to the last line of the call.
  std::int64_t shortest = 0;
  std::int64_t mean = 0;
  std::int64_t longest = 0;
  std::int64_t p99 = 0;  ///< 99 of 100 calls took no longer
};

/// The functions of the lines, those with most lines first. A call goes from the line that opens it
/// to the last line of the same function, process and thread that may close it, in front of the
/// next call. LineVerdict.h says what errors, notices and these lines are.
std::vector<FunctionStats> StatsOf(std::span<const TraceLine> lines);

}  // namespace traceview

#endif  // TRACEVIEW_TRACESTATS_H_
