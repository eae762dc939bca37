#include "cli/Actions.h"
#include "cli/Report.h"
#include "cli/TextEncoding.h"
#include "client/QorlixClient.h"
#include "doctor/Findings.h"

namespace cli {
namespace {

using doctor::Finding;
using doctor::Severity;

constexpr Severity kSeverities[] = {Severity::Ok, Severity::Note, Severity::Warning,
                                    Severity::Error};

std::string Column(const std::string& text, std::size_t width) {
  return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

void ShowFinding(Report& report, const Finding& finding) {
  constexpr std::size_t kSeverityWidth = 9;
  constexpr std::size_t kCheckWidth = 11;
  const std::string text = Utf8FromAnsi(finding.text);
  const std::string remedy = Utf8FromAnsi(finding.remedy);
  report.Line(Column(doctor::SeverityName(finding.severity), kSeverityWidth) +
              Column(finding.check, kCheckWidth) + Printable(text));
  if (!remedy.empty()) {
    report.Line(std::string(kSeverityWidth + kCheckWidth, ' ') + "-> " + Printable(remedy));
  }
  JsonWriter& json = report.Json();
  json.Open('{').Name("severity").Text(doctor::SeverityName(finding.severity));
  json.Name("check").Text(finding.check).Name("text").Text(text).Name("remedy").Text(remedy);
  json.Close('}');
}

std::size_t Count(const doctor::Findings& findings, Severity severity) {
  std::size_t count = 0;
  for (const Finding& finding : findings) count += finding.severity == severity ? 1 : 0;
  return count;
}

// "21 ok, 1 note, 0 warnings, 2 errors"
std::string Summary(const doctor::Findings& findings) {
  std::string summary;
  for (const Severity severity : kSeverities) {
    const std::size_t count = Count(findings, severity);
    if (!summary.empty()) summary += ", ";
    summary += std::to_string(count) + ' ' + doctor::SeverityName(severity);
    if (severity != Severity::Ok && count != 1) summary += 's';
  }
  return summary;
}

}  // namespace

int DoctorAction(const Invocation& invocation, Output& output) {
  const char* const pipe =
      invocation.pipe.empty() ? client::kServerPipeName : invocation.pipe.c_str();
  const doctor::Findings findings =
      doctor::Examine(doctor::GatherFacts(pipe, invocation.timeoutMs));
  Report report(invocation, output);
  report.Json().Name("findings").Open('[');
  for (const Finding& finding : findings) ShowFinding(report, finding);
  report.Json().Close(']').Name("counts").Open('{');
  for (const Severity severity : kSeverities) {
    report.Json().Name(doctor::SeverityName(severity)).Number(Count(findings, severity));
  }
  report.Json().Close('}');
  report.Line(Summary(findings));

  Ending ending;
  ending.code = static_cast<std::uint32_t>(Count(findings, Severity::Error));
  ending.ok = ending.code == 0;
  ending.text = Summary(findings);
  ending.origin = "program";
  ending.exitCode = ending.ok ? kExitOk : kExitServer;
  // For people the findings say it all.
  return report.IsJson() ? report.Finish(ending) : ending.exitCode;
}

}  // namespace cli
