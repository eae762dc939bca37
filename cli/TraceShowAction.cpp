#include "cli/Actions.h"
#include "cli/Report.h"
#include "cli/TextEncoding.h"
#include "cli/TraceView.h"
#include "traceview/FileAccess.h"
#include "traceview/RingView.h"
#include "traceview/TraceAccess.h"
#include "traceview/TraceSettings.h"

namespace cli {
namespace {

using traceview::Configuration;
using traceview::Setting;
using traceview::StoredSetting;

std::string Padded(std::string text, std::size_t width) {
  if (text.size() < width) text.append(width - text.size(), ' ');
  return text;
}

std::string StateOf(const StoredSetting& stored, const Configuration& configuration,
                    const Setting& setting) {
  if (!stored.isThere) return "default";
  if (!stored.counts) return "there, but ignored";
  std::string text = "set to " + Quoted(stored.text);
  if (traceview::IsRead(configuration.config, setting)) return text;
  if (setting.name == traceview::kServerMask) return text;
  return text + ", but not read with Output " +
         std::string(traceview::OutputName(configuration.config.output));
}

void ShowSettings(Report& report, const Configuration& configuration) {
  if (report.IsJson()) report.Json().Name("settings").Open('[');
  for (std::size_t i = 0; i < configuration.stored.size(); ++i) {
    const Setting& setting = traceview::Settings()[i];
    const StoredSetting& stored = configuration.stored[i];
    const std::string inForce = traceview::ValueInForce(configuration.config, setting);
    if (report.IsJson()) {
      JsonWriter& json = report.Json();
      json.Open('{').Name("name").Text(setting.name).Name("inForce").Text(Utf8FromAnsi(inForce));
      json.Name("isDefault").Bool(!stored.counts).Name("isIgnored");
      json.Bool(stored.isThere && !stored.counts);
      if (stored.counts) json.Name("stored").Text(Utf8FromAnsi(stored.text));
      json.Name("meaning").Text(setting.meaning).Name("whenUnset").Text(setting.whenUnset);
      json.Close('}');
      continue;
    }
    report.Line("  " + Padded(std::string(setting.name), 15) +
                Padded(Printable(Utf8FromAnsi(inForce)), 12) + "  " +
                StateOf(stored, configuration, setting) + "; " + std::string(setting.meaning));
  }
  if (report.IsJson()) report.Json().Close(']');
}

void ShowPassing(Report& report, const Configuration& configuration) {
  static constexpr struct {
    std::uint32_t bit;
    const char* name;
    const char* what;
  } kBits[] = {{8, "entry", "the start of a deinstallation"},
               {16, "error", "failures and exceptions"},
               {64, "progress", "starts and steps"},
               {128, "result", "what libraries answered"}};
  report.Line("lines of the server that are written:");
  if (report.IsJson()) report.Json().Name("lines").Open('[');
  for (const auto& bit : kBits) {
    const traceview::Passing passing = traceview::LinesAt(configuration.config, bit.bit);
    if (report.IsJson()) {
      report.Json().Open('{').Name("bit").Number(bit.bit).Name("name").Text(bit.name);
      report.Json().Name("written").Bool(passing.passes).Name("why").Text(passing.why).Close('}');
    }
    report.Line("  " + Padded(std::to_string(bit.bit), 4) + Padded(bit.name, 9) +
                Padded(bit.what, 30) + (passing.passes ? "  yes: " : "  no:  ") + passing.why);
  }
  if (report.IsJson()) report.Json().Close(']');
}

void ShowFiles(Report& report, const std::string& prefix) {
  const std::string names[] = {prefix + "1.TRC", prefix + "2.TRC"};
  const traceview::FileState states[] = {traceview::StateOf(names[0]),
                                         traceview::StateOf(names[1])};
  const bool second =
      states[1].exists && (!states[0].exists || states[1].written > states[0].written);
  if (report.IsJson()) report.Json().Name("files").Open('[');
  for (int i = 0; i < 2; ++i) {
    const traceview::FileState& state = states[i];
    const bool current = second == (i == 1);
    if (report.IsJson()) {
      report.Json().Open('{').Name("path").Text(Utf8FromAnsi(names[i]));
      report.Json().Name("exists").Bool(state.exists).Name("bytes").Number(state.size);
      report.Json().Name("isNext").Bool(current).Close('}');
    }
    report.Line("  " + Printable(Utf8FromAnsi(names[i])) + "  " +
                (state.exists ? ByteCount(state.size) + ", " + traceview::LocalTime(state.written)
                              : std::string("not there")) +
                (current ? "  <- a process that starts goes on here" : ""));
  }
  if (report.IsJson()) report.Json().Close(']');
}

void ShowRing(Report& report, const zqotrc::TraceConfig& config) {
  traceview::SharedRing ring;
  traceview::RingContent content;
  std::string problem;
  const std::uint32_t code = ring.Attach();
  const bool there = code == 0 && traceview::ReadRing(ring.mapped(), content, problem);
  if (report.IsJson()) {
    report.Json().Name("ring").Open('{').Name("exists").Bool(code == 0);
    if (there) report.Json().Name("bytes").Number(content.state.size);
    report.Json().Close('}');
  }
  if (!there) {
    report.Line("  " + (code != 0 ? NoRing(code) : problem));
    return;
  }
  report.Line("  the ring exists and has " + ByteCount(content.state.size));
  if (content.state.size != config.ringSize) {
    report.Line("note: sm_size is " + std::to_string(config.ringSize) +
                ", but takes effect only when no process has the ring any more");
  }
}

// Every program that traces has a mask of its own, whose name only the program knows.
bool IsOtherMask(std::string_view name) { return name.ends_with("_level"); }

void ShowPitfalls(Report& report, const Configuration& configuration) {
  std::vector<std::string> pitfalls = traceview::Pitfalls(configuration);
  const std::string folder = MissingFolder(configuration.config);
  if (!folder.empty()) pitfalls.push_back(folder);
  for (const std::string& name : traceview::TraceValueNames()) {
    if (traceview::FindSetting(name) != nullptr || IsOtherMask(name)) continue;
    pitfalls.push_back("there is a value \"" + name + "\", which nobody reads: is it misspelt?");
  }
  if (report.IsJson()) report.Json().Name("pitfalls").Open('[');
  for (const std::string& pitfall : pitfalls) {
    if (report.IsJson()) report.Json().Text(Utf8FromAnsi(pitfall));
    report.Line("note: " + Printable(Utf8FromAnsi(pitfall)));
  }
  if (report.IsJson()) report.Json().Close(']');
}

}  // namespace

int TraceShowAction(const Invocation& invocation, Output& output) {
  Report report(invocation, output);
  const Configuration configuration = traceview::ReadConfiguration();
  const std::string key = "HKEY_LOCAL_MACHINE\\" + std::string(traceview::kTraceKey);
  if (report.IsJson()) {
    report.Json().Name("key").Text(key).Name("hasKey").Bool(configuration.hasKey);
  }
  report.Line(key + (configuration.hasKey ? "" : "  (there is no such key: tracing is off)"));
  ShowSettings(report, configuration);
  ShowPassing(report, configuration);
  const std::string where = traceview::WhereLinesGo(configuration.config);
  if (report.IsJson()) report.Json().Name("where").Text(where);
  report.Line("they go " + where);
  if (configuration.config.output == zqotrc::TraceOutput::kFile) {
    ShowFiles(report, configuration.config.filePrefix);
  }
  if (configuration.config.output == zqotrc::TraceOutput::kRing) {
    ShowRing(report, configuration.config);
  }
  ShowPitfalls(report, configuration);
  report.Line(
      "note: a process that runs holds what it read last; 'qorlixctl trace refresh' makes "
      "it read again");
  return report.Finish(DoneHere());
}

}  // namespace cli
