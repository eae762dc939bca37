#include "traceview/TraceStats.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <tuple>

#include "traceview/LineVerdict.h"

namespace traceview {
namespace {

constexpr std::int64_t kDay = 24ll * 60 * 60 * 1000000;
constexpr std::int64_t kCounterRange = 100000ll * 1000000;

/// A call whose start was seen, and its end as far as it was.
struct OpenCall {
  bool open = false;
  bool ended = false;
  std::int64_t start = 0;
  std::int64_t end = 0;
  Layout layout = Layout::kUnknown;
};

struct Collected {
  FunctionStats stats;
  std::vector<std::int64_t> durations;
  std::map<std::tuple<std::uint32_t, std::uint32_t>, OpenCall> calls;  ///< by process and thread
};

void Close(OpenCall& call, std::vector<std::int64_t>& durations) {
  if (call.open && call.ended) {
    const std::int64_t range = call.layout == Layout::kTime ? kCounterRange : kDay;
    const std::int64_t duration = call.end - call.start;
    durations.push_back(duration < 0 ? duration + range : duration);
  }
  call = {};
}

void Count(Collected& function, const TraceLine& line) {
  ++function.stats.lines;
  const Mark mark = MarkOf(line);
  if (mark == Mark::kError) ++function.stats.errors;
  if (mark == Mark::kNotice) ++function.stats.notices;
  const bool starts = OpensCall(line);
  if (starts) ++function.stats.calls;
  if (line.microseconds < 0) return;
  OpenCall& call = function.calls[{line.process, line.thread}];
  if (starts) {
    Close(call, function.durations);
    call = {/*open=*/true, /*ended=*/false, line.microseconds, /*end=*/0, line.layout};
  } else if (call.open && MayCloseCall(line)) {
    call.ended = true;
    call.end = line.microseconds;
  }
}

FunctionStats Finish(Collected& function) {
  for (auto& [thread, call] : function.calls) Close(call, function.durations);
  FunctionStats stats = function.stats;
  std::vector<std::int64_t>& durations = function.durations;
  stats.timed = durations.size();
  if (durations.empty()) return stats;
  std::sort(durations.begin(), durations.end());
  stats.shortest = durations.front();
  stats.longest = durations.back();
  const auto count = static_cast<std::int64_t>(durations.size());
  stats.mean = std::accumulate(durations.begin(), durations.end(), std::int64_t{0}) / count;
  stats.p99 = durations[(durations.size() * 99 + 99) / 100 - 1];
  return stats;
}

}  // namespace

std::vector<FunctionStats> StatsOf(std::span<const TraceLine> lines) {
  std::map<std::string, Collected> functions;
  for (const TraceLine& line : lines) Count(functions[line.function], line);
  std::vector<FunctionStats> all;
  for (auto& [name, function] : functions) {
    all.push_back(Finish(function));
    all.back().name = name;
  }
  std::stable_sort(all.begin(), all.end(), [](const FunctionStats& a, const FunctionStats& b) {
    return a.lines > b.lines;
  });
  return all;
}

}  // namespace traceview
