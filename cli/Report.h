#ifndef CLI_REPORT_H_
#define CLI_REPORT_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "cli/Json.h"
#include "cli/Subcommands.h"
#include "client/Result.h"

namespace cli {

/// A text for the terminal: control characters, which could do anything to it, as \xNN.
std::string Printable(std::string_view utf8);

/// The same, of bytes in the ANSI code page and between quotation marks.
std::string Quoted(std::string_view ansi);

/// A result code as people read it: "0 (success)", "5 ERROR_ACCESS_DENIED", "0xC0000135".
std::string CodeAndName(std::uint32_t code, const char* name);

/// "1 byte", "2 bytes".
std::string ByteCount(std::uint64_t count);

/// How a command ended, wherever its code comes from.
struct Ending {
  bool ok = false;
  std::uint32_t code = 0;
  std::string name;
  std::string text;
  std::string origin;  ///< server, request, connect, send, receive, process or program
  ExitCode exitCode = kExitOk;
};
Ending EndingOf(const client::Result& result);

/// All went well, and no server had a part in it.
Ending DoneHere();

/// The program itself found out what is wrong. \param code one of client::ResultName
Ending FailedHere(std::uint32_t code, const std::string& text, ExitCode exitCode);

/// Adds the members of an ending to an open JSON object.
void AddEnding(JsonWriter& json, const Ending& ending);

/// Builds the output of one command, for people or as one JSON object.
///
/// With --json everything goes to the output as one object: command, what the command adds, ok,
/// result and, where there is one, hint. Otherwise lines go to the output, and a failure with its
/// hint to the error output.
class Report {
 public:
  Report(const Invocation& invocation, Output& output);
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;

  bool IsJson() const { return invocation_.json; }
  /// The object, to add members to. Only when IsJson().
  JsonWriter& Json() { return json_; }
  /// A line for people; not in JSON.
  void Line(const std::string& line);

  /// A line for people beside the output, of something that is missing from it; not in JSON.
  void Note(const std::string& line);

  /// Ends the report.
  ///
  /// \param hint what to do about it. When it is empty and the server was not reached, or did not
  ///   answer, there is one that says how to go on.
  /// \returns the exit code.
  int Finish(const Ending& ending, const std::string& hint = {});
  int Finish(const client::Result& result, const std::string& hint = {});

 private:
  const Invocation& invocation_;
  Output& output_;
  JsonWriter json_;
};

/// Ends a command whose arguments make no request. \returns the exit code.
int UsageError(Output& output, const Invocation& invocation, const std::string& error);

}  // namespace cli

#endif  // CLI_REPORT_H_
