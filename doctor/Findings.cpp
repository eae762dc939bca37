#include "doctor/Findings.h"

namespace doctor {
namespace {

constexpr char kShow[] = "'qorlixctl trace show' tells more";

// The kinds of lines of the server that are written, "error, result".
std::string WrittenLines(const zqotrc::TraceConfig& config) {
  static constexpr struct {
    std::uint32_t bit;
    const char* name;
  } kBits[] = {{8, "entry"}, {16, "error"}, {64, "progress"}, {128, "result"}};
  std::string names;
  for (const auto& bit : kBits) {
    if (!traceview::LinesAt(config, bit.bit).passes) continue;
    if (!names.empty()) names += ", ";
    names += bit.name;
  }
  return names;
}

}  // namespace

const char* SeverityName(Severity severity) {
  switch (severity) {
    case Severity::Ok:
      return "ok";
    case Severity::Note:
      return "note";
    case Severity::Warning:
      return "warning";
    case Severity::Error:
      return "error";
  }
  return "";
}

void ExamineTrace(const TraceFacts& trace, Findings& findings) {
  const zqotrc::TraceConfig& config = trace.configuration.config;
  const std::string lines = WrittenLines(config);
  if (lines.empty()) {
    findings.push_back({Severity::Ok, "trace", "no line of the server is written", ""});
  } else {
    findings.push_back({Severity::Ok, "trace",
                        "lines are written (" + lines + "), " + traceview::WhereLinesGo(config),
                        ""});
  }
  // What is wrong with a trace that is off keeps nobody from anything.
  const Severity severity = lines.empty() ? Severity::Note : Severity::Warning;
  for (const std::string& pitfall : traceview::Pitfalls(trace.configuration)) {
    findings.push_back({severity, "trace", pitfall, kShow});
  }
  if (trace.folderIsMissing && !lines.empty()) {
    findings.push_back({Severity::Warning, "trace",
                        "the folder of the trace files does not exist, so every line is dropped",
                        std::string("create it; ") + kShow});
  }
}

void ExamineSources(const Facts& facts, Findings& findings) {
  static constexpr char kKey[] =
      "HKLM\\SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\";
  for (const EventSourceFacts& source : facts.sources) {
    const std::string name = '"' + source.name + '"';
    if (source.isRegistered && source.hasMessageFile) {
      findings.push_back({Severity::Ok, "event log", "the source " + name + " is registered", ""});
      continue;
    }
    const std::string what = !source.isRegistered ? " is not registered"
                             : source.messageFile.empty()
                                 ? " is registered without a message file"
                                 : " has a message file that is missing, " + source.messageFile;
    std::string text = "the source ";
    text += name + what;
    text += ": its events are there, but the viewer adds that it cannot explain them";
    std::string remedy = "reg add \"";
    remedy += kKey + source.name;
    // The server carries the texts of both.
    remedy += "\" /v EventMessageFile /t REG_EXPAND_SZ /d \"" + facts.server.path + '"';
    findings.push_back({Severity::Note, "event log", text, remedy});
  }
}

Findings Examine(const Facts& facts) {
  Findings findings;
  ExaminePipe(facts.pipe, findings);
  ExamineServer(facts, findings);
  ExamineFolders(facts, findings);
  ExamineLibraries(facts, findings);
  ExamineEngine(facts, findings);
  ExamineRegistry(facts, findings);
  ExamineDevices(facts, findings);
  ExamineTrace(facts.trace, findings);
  ExamineSources(facts, findings);
  return findings;
}

}  // namespace doctor
