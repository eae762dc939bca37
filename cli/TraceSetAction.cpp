#include "cli/Actions.h"
#include "cli/Connection.h"
#include "cli/Report.h"
#include "cli/TextEncoding.h"
#include "cli/TraceView.h"
#include "traceview/FileAccess.h"
#include "traceview/TraceAccess.h"
#include "traceview/TraceSettings.h"

namespace cli {
namespace {

using traceview::Setting;

constexpr std::uint32_t kNotFound = 2;

std::string AllNames() {
  std::string names;
  for (const Setting& setting : traceview::Settings()) {
    if (!names.empty()) names += ", ";
    names += setting.name;
  }
  return names;
}

bool IsSet(const traceview::Configuration& configuration, const char* name) {
  const auto settings = traceview::Settings();
  const auto index = traceview::FindSetting(name) - settings.data();
  return configuration.stored[static_cast<std::size_t>(index)].counts;
}

// What a value cannot do alone.
std::string WhatIsMissing(const Setting& setting) {
  const traceview::Configuration configuration = traceview::ReadConfiguration();
  const zqotrc::TraceOutput output = configuration.config.output;
  const std::string name(setting.name);
  if (name == "Level" && !IsSet(configuration, traceview::kServerMask)) {
    return "Level alone writes nothing: set zqserver_level as well";
  }
  if (name == traceview::kServerMask && !IsSet(configuration, "Level")) {
    return "zqserver_level counts only beside a Level: set that as well";
  }
  if (name == "sm_size" && output != zqotrc::TraceOutput::kRing) {
    return "sm_size counts only with Output SM, and for a ring that does not exist yet";
  }
  const bool ofFiles = name == "Path" || name == "FileName" || name == "Byte/File";
  if (ofFiles && output != zqotrc::TraceOutput::kFile)
    return name + " counts only with Output FILE";
  return {};
}

// What a folder that nobody creates costs; for the values that lead to it.
std::string FolderWarning(const Setting& setting, const std::string& text) {
  const std::string name(setting.name);
  if (name == "Path") {
    if (traceview::FolderExists(text)) return {};
    return "the folder " + text +
           " does not exist, and nobody creates it: lines for it are dropped";
  }
  if (name != "FileName" && name != "Output" && name != "Level") return {};
  const zqotrc::TraceConfig config = traceview::ReadConfiguration().config;
  return config.level != 0 ? MissingFolder(config) : std::string();
}

client::Result Write(client::QorlixClient& client, const std::string& name,
                     const std::string& text) {
  const client::Result created = client.Reg_CreateKey(traceview::kTraceKey);
  if (!created.ok()) return created;
  return client.Reg_SetValue(traceview::kTraceKey, name.c_str(), text.c_str());
}

}  // namespace

int TraceSetAction(const Invocation& invocation, Output& output) {
  const Setting* const setting = traceview::FindSetting(invocation.arguments[0]);
  if (setting == nullptr) {
    return UsageError(output, invocation,
                      "there is no value '" + invocation.arguments[0] +
                          "' in the trace "
                          "configuration; there are " +
                          AllNames());
  }
  std::string ansi;
  if (!AnsiFromUtf8(invocation.arguments[1], ansi)) {
    return UsageError(
        output, invocation,
        "'" + invocation.arguments[1] + "' has a character that the system's ANSI code page lacks");
  }
  traceview::CheckedValue checked = traceview::CheckValue(*setting, ansi);
  if (!checked.error.empty()) return UsageError(output, invocation, checked.error);

  const std::string name(setting->name);
  Report report(invocation, output);
  const client::Result result = Write(*MakeClient(invocation), name, checked.text);
  if (report.IsJson()) {
    report.Json().Name("name").Text(name).Name("value").Text(Utf8FromAnsi(checked.text));
  }
  if (!result.ok()) return report.Finish(result);
  report.Line("set " + name + " to " + Quoted(checked.text));

  const std::string missing = WhatIsMissing(*setting);
  if (!missing.empty()) checked.warnings.push_back(missing);
  const std::string folder = FolderWarning(*setting, checked.text);
  if (!folder.empty()) checked.warnings.push_back(folder);
  if (report.IsJson()) report.Json().Name("warnings").Open('[');
  for (const std::string& warning : checked.warnings) {
    if (report.IsJson()) report.Json().Text(Utf8FromAnsi(warning));
    report.Line("note: " + Printable(Utf8FromAnsi(warning)));
  }
  if (report.IsJson()) report.Json().Close(']');
  return report.Finish(result, "it takes effect by 'qorlixctl trace refresh'");
}

int TraceRefreshAction(const Invocation& invocation, Output& output) {
  Report report(invocation, output);
  std::uint32_t generation = 0;
  Ending ending;
  ending.code = traceview::RefreshAllTracers(generation);
  ending.ok = ending.code == 0;
  ending.origin = "program";
  if (ending.ok) {
    if (report.IsJson()) report.Json().Name("generation").Number(generation);
    report.Line("every process that traces reads its configuration at its next line (generation " +
                std::to_string(generation) + ")");
    return report.Finish(ending);
  }
  ending.exitCode = kExitTransport;
  if (ending.code == kNotFound) {
    ending.name = "ERROR_FILE_NOT_FOUND";
    ending.text = "no process that traces is running, so there is none to tell";
    return report.Finish(ending, "a process reads the configuration when it starts");
  }
  ending.text = "the shared counter cannot be changed";
  return report.Finish(ending, ending.code == 5 ? "run it elevated" : "");
}

}  // namespace cli
