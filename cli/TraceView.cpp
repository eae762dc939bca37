#include "cli/TraceView.h"

#include <algorithm>

#include "cli/TextEncoding.h"
#include "traceview/FileAccess.h"
#include "traceview/LineVerdict.h"
#include "traceview/RingView.h"
#include "traceview/TraceAccess.h"
#include "traceview/TraceFiles.h"
#include "traceview/TraceSettings.h"

namespace cli {
namespace {

using traceview::Layout;
using traceview::TraceLine;

constexpr std::uint32_t kNotFound = 2;
constexpr std::uint32_t kAccessDenied = 5;

constexpr char kRed[] = "\x1b[31m";
constexpr char kFaint[] = "\x1b[2m";
constexpr char kPlain[] = "\x1b[0m";

std::string Shown(std::string_view ansi) { return Printable(Utf8FromAnsi(ansi)); }

// Characters, not bytes: what is outside ASCII takes several.
std::string Padded(std::string text, std::size_t width) {
  std::size_t characters = 0;
  for (std::size_t at = 0; at < text.size(); ++characters) (void)NextCharacter(text, at);
  if (characters < width) text.append(width - characters, ' ');
  return text + ' ';
}

std::string LevelColumn(const TraceLine& line) {
  return Shown(line.level) + ' ' + Padded(Shown(traceview::LevelName(line.level)), 8);
}

std::string Columns(const TraceLine& line) {
  std::string text;
  if (!line.time.empty()) text += Padded(Shown(line.time), 12);
  if (line.layout == Layout::kLong) {
    text += Padded('P' + std::to_string(line.process), 6);
    text += Padded('T' + std::to_string(line.thread), 6);
  }
  text += LevelColumn(line) + Padded(Shown(line.component), 3);
  text += Padded(Shown(line.code + (line.extra.empty() ? "" : " " + line.extra)), 8);
  if (line.layout == Layout::kLong) {
    text += Padded(Shown(line.file) + ':' + std::to_string(line.line), 17);
  }
  return text;
}

std::string AnsiFiles(const Invocation& invocation, std::vector<std::string>& files) {
  for (const std::string& argument : invocation.arguments) {
    std::string ansi;
    if (argument.empty()) return "a FILE needs a name";
    if (!AnsiFromUtf8(argument, ansi)) {
      return "'" + argument + "' has a character that the system's ANSI code page lacks";
    }
    files.push_back(ansi);
  }
  return {};
}

std::string ReadPattern(const std::string& typed, std::string& pattern) {
  std::string ansi;
  if (!AnsiFromUtf8(typed, ansi)) {
    return "'" + typed + "' has a character that the system's ANSI code page lacks";
  }
  pattern = traceview::PatternOf(ansi);
  return {};
}

bool HaveAllLevels(const std::vector<TraceLine>& lines) {
  return !lines.empty() && std::all_of(lines.begin(), lines.end(),
                                       [](const TraceLine& line) { return line.level == "--"; });
}

// The place that the configuration names, for whoever names none.
std::string ReadPlace(TraceRequest& request) {
  const zqotrc::TraceConfig& config = traceview::ReadConfiguration().config;
  if (config.output == zqotrc::TraceOutput::kRing) {
    request.ring = true;
  } else if (config.output == zqotrc::TraceOutput::kFile) {
    request.files = {std::string(config.filePrefix) + "1.TRC"};
    request.withTwin = true;
  } else {
    return "the configuration sends lines " + traceview::WhereLinesGo(config) +
           ": there is nothing to read here; name a FILE, or --ring";
  }
  return {};
}

}  // namespace

LinePrinter::LinePrinter(const Invocation& invocation, const Output& output)
    : colors_(invocation.trace.color == "always" ||
              (invocation.trace.color != "never" && output.terminal)) {}

std::string LinePrinter::Text(const TraceLine& line) const {
  std::string text;
  if (line.layout != Layout::kText && !line.level.empty()) text = Columns(line);
  if (line.layout == Layout::kError) text = "E ";
  const bool named = line.layout != Layout::kUnknown && line.layout != Layout::kError;
  if (named) text += Padded(Shown(line.function), 24);
  text += Shown(line.text);
  while (text.ends_with(' ')) text.pop_back();
  if (line.torn) text += "  [torn]";
  const bool failure = traceview::MarkOf(line) == traceview::Mark::kError;
  if (colors_ && (failure || !named)) text = (failure ? kRed : kFaint) + text + kPlain;
  return text + '\n';
}

void AddTraceLine(JsonWriter& json, const TraceLine& line) {
  static constexpr const char* kLayouts[] = {"short", "long", "time", "text", "error", "unknown"};
  json.Open('{').Name("layout").Text(kLayouts[static_cast<std::size_t>(line.layout)]);
  const auto add = [&json](const char* name, const std::string& ansi) {
    if (!ansi.empty()) json.Name(name).Text(Utf8FromAnsi(ansi));
  };
  add("time", line.time);
  if (line.microseconds >= 0) {
    json.Name("microseconds").Number(static_cast<std::uint64_t>(line.microseconds));
  }
  add("traceId", line.traceId);
  if (line.layout == Layout::kLong) {
    json.Name("process").Number(line.process).Name("thread").Number(line.thread);
  }
  add("level", line.level);
  if (!line.level.empty()) json.Name("levelName").Text(traceview::LevelName(line.level));
  add("component", line.component);
  add("code", line.code);
  add("extra", line.extra);
  add("file", line.file);
  if (line.layout == Layout::kLong) json.Name("line").Number(line.line);
  json.Name("function").Text(Utf8FromAnsi(line.function));
  if (line.torn) json.Name("torn").Bool(true);
  json.Name("text").Text(Utf8FromAnsi(line.text)).Close('}');
}

std::string ReadTraceRequest(const Invocation& invocation, TraceRequest& request) {
  const TraceOptions& options = invocation.trace;
  if (!options.level.empty() && !traceview::ParseLevels(options.level, request.query.levels)) {
    return "--level takes entry, error, progress, result, all, codes such as FR, or bits such as "
           "0x50, not '" +
           options.level + "'";
  }
  request.filtersLevels = !options.level.empty();
  std::string error = ReadPattern(options.function, request.query.function);
  if (error.empty()) error = ReadPattern(options.text, request.query.text);
  if (!error.empty()) return error;
  if (!options.since.empty()) {
    if (!traceview::ParseSince(options.since, request.since.emplace())) {
      return "--since takes a time such as 14:05:09 or a span such as 10m, not '" + options.since +
             "'";
    }
  }
  if (options.ring && !invocation.arguments.empty()) return "--ring and a FILE exclude each other";
  request.ring = options.ring;
  error = AnsiFiles(invocation, request.files);
  if (!error.empty() || request.ring || !request.files.empty()) return error;
  return ReadPlace(request);
}

std::string DropOlder(const TraceRequest& request, std::vector<TraceLine>& lines) {
  if (!request.since.has_value() || lines.empty()) return {};
  const std::ptrdiff_t first =
      traceview::FirstSince(lines, *request.since, traceview::LocalTimeOfDay());
  if (first < 0) {
    return "these lines have no time of day, which --since needs: only Format LONG writes one";
  }
  lines.erase(lines.begin(), lines.begin() + first);
  return {};
}

std::string ReadTrace(const TraceRequest& request, TraceReading& reading) {
  std::vector<TraceLine>& lines = reading.lines;
  std::string error;
  if (request.ring) {
    traceview::SharedRing ring;
    traceview::RingContent content;
    const std::uint32_t code = ring.Attach();
    if (code != 0) return NoRing(code);
    if (!traceview::ReadRing(ring.mapped(), content, error)) return error;
    traceview::SplitLines(content.text, /*source=*/0, lines);
  } else {
    std::vector<std::string> notes;
    if (!traceview::ReadTraceFiles(request.files, request.withTwin, lines, error, &notes)) {
      return Utf8FromAnsi(error);
    }
    for (const std::string& note : notes) reading.notes.push_back(Utf8FromAnsi(note));
  }
  const std::size_t all = lines.size();
  if (request.filtersLevels && HaveAllLevels(lines)) {
    reading.notes.emplace_back(
        "every line is of all levels (--), as the server writes them, so --level leaves none out; "
        "zqserver_level says which are written");
  }
  error = DropOlder(request, lines);
  std::erase_if(lines, [&](const TraceLine& line) { return !Passes(request.query, line); });
  if (lines.empty()) {
    reading.notes.push_back(all == 0 ? "the trace has no lines"
                                     : "0 of " + std::to_string(all) + " lines pass");
  }
  return error;
}

void ShowNotes(Report& report, Output& output, const std::vector<std::string>& notes) {
  if (notes.empty()) return;
  if (report.IsJson()) report.Json().Name("notes").Open('[');
  for (const std::string& note : notes) {
    if (report.IsJson()) {
      report.Json().Text(note);
    } else {
      output.err += "note: " + Printable(note) + '\n';
    }
  }
  if (report.IsJson()) report.Json().Close(']');
}

int FinishNotThere(Report& report, const TraceRequest& request, const std::string& why) {
  const bool configured = request.withTwin || request.ring;
  return report.Finish(
      NotThere(Printable(why)),
      configured ? "'qorlixctl trace show' tells where lines go, and what is missing" : "");
}

std::string MissingFolder(const zqotrc::TraceConfig& config) {
  const std::string prefix = config.filePrefix;
  const std::size_t end = prefix.find_last_of("\\/");
  if (config.output != zqotrc::TraceOutput::kFile || end == std::string::npos) return {};
  const std::string folder = prefix.substr(0, end + 1);
  if (traceview::FolderExists(folder)) return {};
  return "the folder " + folder + " does not exist, so every line is dropped: create it";
}

std::string NoRing(std::uint32_t error) {
  if (error == kNotFound) {
    return "there is no ring: no process that runs traces to shared memory (Output SM)";
  }
  if (error == kAccessDenied) return "the ring does not admit this user: run it elevated";
  return "the ring cannot be read: error " + std::to_string(error);
}

Ending NotThere(const std::string& why) { return FailedHere(kNotFound, why, kExitUsage); }

}  // namespace cli
