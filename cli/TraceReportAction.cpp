#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

#include "cli/Actions.h"
#include "cli/Report.h"
#include "cli/TextEncoding.h"
#include "cli/TraceView.h"
#include "traceview/FileAccess.h"
#include "traceview/TraceFiles.h"
#include "traceview/TraceReport.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

fs::path PathOf(const std::string& utf8) {
  return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string NameOf(const std::string& utf8) {
  const std::u8string name = PathOf(utf8).filename().u8string();
  return std::string(name.begin(), name.end());
}

Ending NotWritten(const std::string& text) {
  Ending ending = FailedHere(29, text, kExitTransport);
  ending.name = "ERROR_WRITE_FAULT";  // no code of the server's
  return ending;
}

bool IsReport(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string head(traceview::kReportHeadSize, '\0');
  file.read(head.data(), static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<std::size_t>(file.gcount()));
  return traceview::IsTraceReport(head);
}

bool IsOneOf(const fs::path& path, const std::vector<std::string>& others) {
  for (const std::string& other : others) {
    std::error_code ignored;
    if (fs::equivalent(path, PathOf(other), ignored)) return true;
  }
  return false;
}

// Why the report may not be written there; an empty text if it may. An earlier report is replaced,
// and anything else only when that is asked for: a slip of the keyboard must not cost a trace.
std::string Objection(const Invocation& invocation, const fs::path& path,
                      const std::vector<std::string>& traces) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) return {};
  const std::string& shown = invocation.output;
  if (!fs::is_regular_file(status)) return shown + " is not a file";
  if (IsOneOf(path, traces)) return shown + " is one of the traces itself";
  if (invocation.force || IsReport(path)) return {};
  return shown + " exists and is not a report; --force replaces it";
}

// Goes to a file beside the target first, so that an earlier report stays whole if it fails.
std::string WritePage(const Invocation& invocation, const fs::path& path, const std::string& page) {
  const fs::path folder = path.parent_path();
  std::error_code unknown;
  if (!folder.empty() && !fs::is_directory(folder, unknown)) {
    return "the folder of " + Printable(invocation.output) + " does not exist";
  }
  fs::path beside = path;
  beside += ".part";
  std::ofstream file(beside, std::ios::binary | std::ios::trunc);
  file.write(page.data(), static_cast<std::streamsize>(page.size()));
  file.close();
  std::error_code error;
  const bool written = !file.fail();
  if (written) fs::rename(beside, path, error);
  if (written && !error) return {};
  std::error_code ignored;
  fs::remove(beside, ignored);
  return Printable(invocation.output) + " cannot be written";
}

// The files that are read, in UTF-8.
std::vector<std::string> FilesOf(const TraceRequest& request) {
  std::vector<std::string> files;
  for (const std::string& file : request.files) {
    for (const std::string& one :
         request.withTwin ? traceview::PairOf(file) : std::vector<std::string>{file}) {
      if (traceview::StateOf(one).exists) files.push_back(Utf8FromAnsi(one));
    }
  }
  return files;
}

std::string Count(std::size_t count, const char* what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string Size(std::size_t bytes) {
  char text[40];
  (void)std::snprintf(text, sizeof(text), "%.1f MB", static_cast<double>(bytes) / 1e6);
  return bytes < 100000 ? ByteCount(bytes) : text;
}

}  // namespace

int TraceReportAction(const Invocation& invocation, Output& output) {
  if (invocation.output.empty()) {
    return UsageError(output, invocation, "trace report needs -o and the file to write");
  }
  TraceRequest request;
  const std::string wrong = ReadTraceRequest(invocation, request);
  if (!wrong.empty()) return UsageError(output, invocation, wrong);
  const fs::path path = PathOf(invocation.output);
  const std::vector<std::string> files = FilesOf(request);
  const std::string objection = Objection(invocation, path, files);
  if (!objection.empty()) return UsageError(output, invocation, objection);

  Report report(invocation, output);
  TraceReading reading;
  std::string error = ReadTrace(request, reading);
  if (!error.empty()) return FinishNotThere(report, request, error);
  ShowNotes(report, output, reading.notes);

  std::vector<std::string> names;
  names.reserve(files.size() + 1);
  for (const std::string& file : files) names.push_back(NameOf(file));
  if (request.ring) names.emplace_back("the ring in shared memory");
  traceview::ReportFigures figures;
  const std::string page =
      traceview::BuildTraceReport({reading.lines, names, invocation.title, Utf8FromAnsi}, &figures);
  error = WritePage(invocation, path, page);
  if (!error.empty()) return report.Finish(NotWritten(error));

  if (report.IsJson()) {
    report.Json().Name("output").Text(invocation.output).Name("bytes").Number(page.size());
    report.Json().Name("lines").Number(figures.lines);
    report.Json().Name("requests").Number(figures.requests);
    report.Json().Name("errors").Number(figures.errors);
  }
  report.Line(Printable(invocation.output) + ": " + Size(page.size()) + ", " +
              Count(figures.lines, "line") + ", " + Count(figures.requests, "request") + ", " +
              Count(figures.errors, "error"));
  return report.Finish(DoneHere());
}

}  // namespace cli
