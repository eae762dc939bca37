#include <algorithm>
#include <cstdio>

#include "cli/Actions.h"
#include "cli/Report.h"
#include "cli/TextEncoding.h"
#include "cli/TraceView.h"
#include "traceview/TraceStats.h"

namespace cli {
namespace {

/// What is collected before it is written, so that a large trace is not held as text, too.
constexpr std::size_t kPiece = 1 << 20;

std::string Milliseconds(std::int64_t microseconds) {
  char text[32];
  (void)std::snprintf(text, sizeof(text), "%.3f", static_cast<double>(microseconds) / 1000);
  return text;
}

std::string StatsLine(const std::string& name, const std::vector<std::string>& columns) {
  std::string line = name;
  line.append(name.size() < 24 ? 24 - name.size() : 0, ' ');
  for (const std::string& column : columns) {
    line.append(column.size() < 10 ? 10 - column.size() : 1, ' ');
    line += column;
  }
  return line;
}

std::string NameOf(const traceview::FunctionStats& stats) {
  if (stats.name.empty()) return "(no function)";
  // What is no trace may have any length of name.
  constexpr std::size_t kLongest = 64;
  const std::string name = Printable(Utf8FromAnsi(stats.name));
  std::size_t end = 0;
  for (std::size_t i = 0; i < kLongest && end < name.size(); ++i) (void)NextCharacter(name, end);
  return end < name.size() ? name.substr(0, end) + "..." : name;
}

void ShowStats(Report& report, const traceview::FunctionStats& stats) {
  std::vector<std::string> columns = {std::to_string(stats.lines), std::to_string(stats.calls),
                                      std::to_string(stats.errors), std::to_string(stats.notices)};
  for (const std::int64_t time : {stats.shortest, stats.mean, stats.longest, stats.p99}) {
    columns.push_back(stats.timed != 0 ? Milliseconds(time) : "-");
  }
  report.Line(StatsLine(NameOf(stats), columns));
}

void AddStats(JsonWriter& json, const traceview::FunctionStats& stats) {
  json.Open('{').Name("function").Text(Utf8FromAnsi(stats.name));
  json.Name("lines").Number(stats.lines).Name("calls").Number(stats.calls);
  json.Name("errors").Number(stats.errors).Name("results").Number(stats.notices);
  json.Name("timed").Number(stats.timed);
  if (stats.timed != 0) {
    const auto add = [&json](const char* name, std::int64_t microseconds) {
      json.Name(name).Thousandths(static_cast<std::uint64_t>(microseconds));
    };
    add("minMs", stats.shortest);
    add("meanMs", stats.mean);
    add("maxMs", stats.longest);
    add("p99Ms", stats.p99);
  }
  json.Close('}');
}

// Reads the trace that is asked for; `show` adds its lines to the report.
template <typename Show>
int ReportOnTrace(const Invocation& invocation, Output& output, Show show) {
  TraceRequest request;
  const std::string wrong = ReadTraceRequest(invocation, request);
  if (!wrong.empty()) return UsageError(output, invocation, wrong);
  Report report(invocation, output);
  TraceReading reading;
  const std::string why = ReadTrace(request, reading);
  if (!why.empty()) return FinishNotThere(report, request, why);
  ShowNotes(report, output, reading.notes);
  show(report, reading.lines);
  return report.Finish(DoneHere());
}

void ShowStatsOf(Report& report, const std::vector<traceview::TraceLine>& lines) {
  report.Line(StatsLine("function", {"lines", "calls", "errors", "results", "min ms", "mean ms",
                                     "max ms", "p99 ms"}));
  if (report.IsJson()) report.Json().Name("functions").Open('[');
  for (const traceview::FunctionStats& stats : traceview::StatsOf(lines)) {
    ShowStats(report, stats);
    if (report.IsJson()) AddStats(report.Json(), stats);
  }
  if (report.IsJson()) report.Json().Close(']').Name("lines").Number(lines.size());
  report.Line(std::to_string(lines.size()) + (lines.size() == 1 ? " line" : " lines"));
}

}  // namespace

int TraceDumpAction(const Invocation& invocation, Output& output) {
  return ReportOnTrace(invocation, output,
                       [&](Report& report, const std::vector<traceview::TraceLine>& lines) {
                         const LinePrinter printer(invocation, output);
                         if (report.IsJson()) report.Json().Name("lines").Open('[');
                         for (const traceview::TraceLine& line : lines) {
                           if (report.IsJson()) {
                             AddTraceLine(report.Json(), line);
                             continue;
                           }
                           output.out += printer.Text(line);
                           if (output.out.size() > kPiece) output.Write();
                         }
                         if (report.IsJson()) report.Json().Close(']');
                       });
}

int TraceStatsAction(const Invocation& invocation, Output& output) {
  return ReportOnTrace(invocation, output, ShowStatsOf);
}

}  // namespace cli
