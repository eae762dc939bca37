#ifndef DOCTOR_FINDINGS_H_
#define DOCTOR_FINDINGS_H_

#include <string>
#include <vector>

#include "doctor/Facts.h"

/// What the facts of a computer mean. Nothing here looks at the computer.
namespace doctor {

/// One thing that was looked at. Texts are in the ANSI code page, as the facts are.
struct Finding {
  Severity severity = Severity::Ok;
  const char* check = "";  ///< which group it belongs to: pipe, server, folder, library, ...
  std::string text;
  std::string remedy;  ///< empty where there is nothing to do
};
using Findings = std::vector<Finding>;

/// "ok", "note", "warning" or "error".
const char* SeverityName(Severity severity);

/// All findings, in the order in which the facts depend on each other.
Findings Examine(const Facts& facts);

// Its parts, each of which adds at least one finding.
void ExaminePipe(const PipeFacts& pipe, Findings& findings);
void ExamineServer(const Facts& facts, Findings& findings);
void ExamineFolders(const Facts& facts, Findings& findings);
void ExamineLibraries(const Facts& facts, Findings& findings);
void ExamineEngine(const Facts& facts, Findings& findings);
void ExamineRegistry(const Facts& facts, Findings& findings);
void ExamineDevices(const Facts& facts, Findings& findings);
void ExamineTrace(const TraceFacts& trace, Findings& findings);
void ExamineSources(const Facts& facts, Findings& findings);

}  // namespace doctor

#endif  // DOCTOR_FINDINGS_H_
