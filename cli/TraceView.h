#ifndef CLI_TRACEVIEW_H_
#define CLI_TRACEVIEW_H_

#include <optional>
#include <string>
#include <vector>

#include "cli/Json.h"
#include "cli/Report.h"
#include "cli/Subcommands.h"
#include "trace/TraceConfig.h"
#include "traceview/TraceLine.h"
#include "traceview/TraceQuery.h"

/// What the commands that read a trace have in common.
namespace cli {

/// Shows lines in columns, the same for every layout as far as it has them.
class LinePrinter {
 public:
  LinePrinter(const Invocation& invocation, const Output& output);

  /// One line, with its line end. Control characters are made visible.
  std::string Text(const traceview::TraceLine& line) const;

 private:
  bool colors_;
};

/// Adds a line as an object to an open list.
void AddTraceLine(JsonWriter& json, const traceview::TraceLine& line);

/// What is asked for, and where it stands.
struct TraceRequest {
  traceview::TraceQuery query;
  std::optional<traceview::Since> since;
  bool ring = false;
  std::vector<std::string> files;  ///< in the ANSI code page
  bool withTwin = false;           ///< the files come from the configuration
  bool filtersLevels = false;      ///< --level was given
};

/// Takes the options and arguments of a command that reads a trace.
/// \returns an empty text, or what is wrong with them.
std::string ReadTraceRequest(const Invocation& invocation, TraceRequest& request);

/// Drops the lines that are older than asked for. \returns an empty text, or why that cannot be
/// found out.
std::string DropOlder(const TraceRequest& request, std::vector<traceview::TraceLine>& lines);

/// What was read.
struct TraceReading {
  std::vector<traceview::TraceLine> lines;  ///< those asked for
  std::vector<std::string> notes;           ///< sentences about what is odd, in UTF-8
};

/// Reads all lines that are asked for. \returns an empty text, or why not.
std::string ReadTrace(const TraceRequest& request, TraceReading& reading);

/// Tells the notes: to the error output, or as a list of the object.
void ShowNotes(Report& report, Output& output, const std::vector<std::string>& notes);

/// Ends a command whose trace is not there. Where the place came from the configuration, it hints
/// at the command that explains it.
int FinishNotThere(Report& report, const TraceRequest& request, const std::string& why);

/// Nobody makes the folder of the files. \returns what to tell when it is missing, else an empty
/// text; in the ANSI code page.
std::string MissingFolder(const zqotrc::TraceConfig& config);

/// Why there is no ring to read.
std::string NoRing(std::uint32_t error);

/// How a command ends that asked for something that is not there.
Ending NotThere(const std::string& why);

}  // namespace cli

#endif  // CLI_TRACEVIEW_H_
