#include "traceview/TraceReport.h"

#include <cstdint>
#include <map>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "client/CommandInfo.h"
#include "traceview/ReportPage.h"
#include "traceview/ScriptJson.h"
#include "traceview/TraceRequests.h"

namespace traceview {
namespace {

std::string Utf8(const ReportInput& input, std::string_view bytes) {
  return input.toUtf8 == nullptr ? std::string(bytes) : input.toUtf8(bytes);
}

// Stands near the beginning of every page.
constexpr std::string_view kGenerator = "content=\"qorlixctl trace report\"";

// Gives every different text a number, in the order of first use.
class TextPool {
 public:
  std::int64_t Number(std::string_view text) {
    const auto [found, isNew] =
        numbers_.try_emplace(std::string(text), static_cast<std::int64_t>(texts_.size()));
    if (isNew) texts_.push_back(&found->first);
    return found->second;
  }

  /// Conversion comes last: once for each different text.
  void Write(ScriptJson& json, std::string_view name, const ReportInput& input) const {
    json.Name(name).Open('[');
    for (const std::string* text : texts_) json.Text(Utf8(input, *text));
    json.Close(']');
  }

 private:
  std::unordered_map<std::string, std::int64_t> numbers_;
  std::vector<const std::string*> texts_;  // the map's keys stay where they are
};

// In place of the time as written: it follows from the time on the axis.
constexpr std::int64_t kOnTheAxis = -1;

// All columns that a place in a program writes alike. There are few of them, whatever the length of
// the trace, so a line needs no more than the number of its place, its text and its time.
using Place =
    std::tuple<std::int64_t, std::uint32_t, std::uint32_t, std::int64_t, std::int64_t, std::int64_t,
               std::int64_t, std::int64_t, std::int64_t, std::uint32_t, std::int64_t, std::int64_t>;

class PlacePool {
 public:
  std::int64_t Number(const TraceLine& line, TextPool& texts) {
    const Place place{static_cast<std::int64_t>(line.layout),
                      line.process,
                      line.thread,
                      texts.Number(line.traceId),
                      texts.Number(line.level),
                      texts.Number(line.component),
                      texts.Number(line.code),
                      texts.Number(line.extra),
                      texts.Number(line.file),
                      line.line,
                      texts.Number(line.function),
                      line.microseconds < 0 ? texts.Number(line.time) : kOnTheAxis};
    const auto [found, isNew] =
        numbers_.try_emplace(place, static_cast<std::int64_t>(places_.size()));
    if (isNew) places_.push_back(&found->first);
    return found->second;
  }

  void Write(ScriptJson& json) const {
    json.Name("places").Open('[');
    for (const Place* place : places_) {
      json.Open('[');
      std::apply([&](auto... column) { (json.Number(column), ...); }, *place);
      json.Close(']');
    }
    json.Close(']');
  }

 private:
  std::map<Place, std::int64_t> numbers_;
  std::vector<const Place*> places_;
};

// A column whose neighbours are mostly alike: value and count in turn.
template <typename Value>
void WriteRuns(ScriptJson& json, std::string_view name, const std::vector<Value>& values) {
  json.Name(name).Open('[');
  for (std::size_t at = 0; at < values.size();) {
    std::size_t end = at + 1;
    while (end < values.size() && values[end] == values[at]) ++end;
    json.Number(static_cast<std::int64_t>(values[at])).Number(static_cast<std::int64_t>(end - at));
    at = end;
  }
  json.Close(']');
}

void WriteDifferences(ScriptJson& json, std::string_view name,
                      const std::vector<std::int64_t>& values) {
  json.Name(name).Open('[');
  std::int64_t before = 0;
  for (const std::int64_t value : values) {
    json.Number(value - before);
    before = value;
  }
  json.Close(']');
}

void WriteNumbers(ScriptJson& json, std::string_view name,
                  const std::vector<std::int64_t>& values) {
  json.Name(name).Open('[');
  for (const std::int64_t value : values) json.Number(value);
  json.Close(']');
}

void WriteRequests(ScriptJson& json, const TraceStory& story) {
  json.Name("requests").Open('[');
  for (const TraceRequest& request : story.requests) {
    json.Open('[').Number(request.firstLine).Number(request.lastLine);
    json.Number(request.connection).Number(request.command).Number(request.microseconds);
    json.Number(request.result).Number(static_cast<std::int64_t>(request.mark)).Close(']');
  }
  json.Close(']');
}

// Code and name, in turn, of the commands that occur.
void WriteCommands(ScriptJson& json, const TraceStory& story) {
  std::map<std::uint32_t, const client::CommandInfo*> commands;
  for (const TraceRequest& request : story.requests) {
    commands.try_emplace(request.command, client::FindCommand(request.command));
  }
  json.Name("commands").Open('[');
  for (const auto& [code, command] : commands) {
    if (command != nullptr) json.Number(code).Text(command->name);
  }
  json.Close(']');
}

// Pairs of code and meaning of the levels that occur.
void WriteLevels(ScriptJson& json, const ReportInput& input) {
  std::map<std::string_view, std::string_view> levels;
  for (const TraceLine& line : input.lines) levels.try_emplace(line.level, LevelName(line.level));
  json.Name("levels").Open('[');
  for (const auto& [code, name] : levels) {
    json.Open('[').Text(Utf8(input, code)).Text(Utf8(input, name)).Close(']');
  }
  json.Close(']');
}

void WriteSegments(ScriptJson& json, const TraceStory& story) {
  json.Name("segments").Open('[');
  for (const TimeSegment& segment : story.segments) {
    json.Open('[').Number(segment.line).Number(static_cast<std::int64_t>(segment.clock));
    json.Number(segment.offset).Close(']');
  }
  json.Close(']');
}

void WriteLines(ScriptJson& json, const ReportInput& input) {
  TextPool columns;
  TextPool texts;
  PlacePool places;
  std::vector<std::int64_t> placeOf;
  std::vector<std::int64_t> textOf;
  placeOf.reserve(input.lines.size());
  textOf.reserve(input.lines.size());
  for (const TraceLine& line : input.lines) {
    placeOf.push_back(places.Number(line, columns));
    textOf.push_back(texts.Number(line.text));
  }
  columns.Write(json, "columns", input);
  places.Write(json);
  texts.Write(json, "texts", input);
  WriteNumbers(json, "place", placeOf);
  WriteNumbers(json, "text", textOf);
}

ReportFigures FiguresOf(const TraceStory& story) {
  ReportFigures figures{story.marks.size(), story.requests.size()};
  for (const Mark mark : story.marks) figures.errors += mark == Mark::kError ? 1 : 0;
  return figures;
}

}  // namespace

std::string BuildTraceReport(const ReportInput& input, ReportFigures* figures) {
  const TraceStory story = TellStory(input.lines);
  if (figures != nullptr) *figures = FiguresOf(story);

  ScriptJson json;
  json.Open('{').Name("title").Text(input.title);
  json.Name("files").Open('[');
  for (const std::string& file : input.files) json.Text(file);
  json.Close(']');
  WriteLines(json, input);
  WriteDifferences(json, "time", story.times);
  WriteRuns(json, "connection", story.connections);
  WriteRuns(json, "owner", story.owners);
  WriteRuns(json, "mark", story.marks);
  WriteSegments(json, story);
  WriteRequests(json, story);
  WriteCommands(json, story);
  WriteLevels(json, input);
  json.Close('}');

  const std::string& data = json.Written();
  std::string page;
  page.reserve(kReportPageHead.size() + data.size() + kReportPageTail.size());
  return page.append(kReportPageHead).append(data).append(kReportPageTail);
}

bool IsTraceReport(std::string_view head) {
  return head.starts_with("<!DOCTYPE html>") && head.find(kGenerator) < kReportHeadSize;
}

}  // namespace traceview
