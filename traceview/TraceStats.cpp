#include "traceview/TraceStats.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <numeric>
#include <tuple>

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

/// The text from its first character on: two commands open with a blank in front of their `>>`.
std::string_view WithoutLeadingBlanks(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

void Count(Collected& function, const TraceLine& line) {
  ++function.stats.lines;
  if (TellsFailure(line)) ++function.stats.errors;
  const std::string_view text = WithoutLeadingBlanks(line.text);
  const bool starts = text.starts_with(">>");
  if (starts) ++function.stats.calls;
  if (line.microseconds < 0) return;
  OpenCall& call = function.calls[{line.process, line.thread}];
  if (starts) {
    Close(call, function.durations);
    call = {/*open=*/true, /*ended=*/false, line.microseconds, /*end=*/0, line.layout};
  } else if (call.open && text.starts_with("<<")) {
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

/// "result = 0x5", but not "result = 0x0".
bool HasBadResult(std::string_view text) {
  constexpr std::string_view kResult = "result = 0x";
  const std::size_t at = text.find(kResult);
  if (at == std::string_view::npos) return false;
  const std::string_view digits = text.substr(at + kResult.size());
  const std::size_t end =
      std::min(digits.find_first_not_of("0123456789abcdefABCDEF"), digits.size());
  return digits.substr(0, end).find_first_not_of('0') != std::string_view::npos;
}

}  // namespace

bool TellsFailure(const TraceLine& line) {
  if (line.layout == Layout::kError) return true;
  static constexpr std::string_view kWords[] = {"failed", "Couldn't", "ERROR",   "Error",
                                                "Fehler", "OVERFLOW", "is wrong"};
  const std::string_view text = line.text;
  return text.starts_with("Exception") || HasBadResult(text) ||
         std::any_of(std::begin(kWords), std::end(kWords), [text](std::string_view word) {
           return text.find(word) != std::string_view::npos;
         });
}

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
