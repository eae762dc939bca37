#include "cli/Report.h"

#include <cstdio>

#include "cli/TextEncoding.h"
#include "client/PipeTransport.h"
#include "client/ResultCodes.h"

namespace cli {
namespace {

const char* OriginName(client::Origin origin) {
  switch (origin) {
    case client::Origin::Server:
      return "server";
    case client::Origin::Request:
      return "request";
    case client::Origin::Connect:
      return "connect";
    case client::Origin::Verify:
      return "verify";
    case client::Origin::Send:
      return "send";
    case client::Origin::Receive:
      return "receive";
  }
  return "";
}

// What to do about a server that was not reached or did not answer; empty for every other ending.
std::string TransportHint(const Invocation& invocation, const Ending& ending) {
  if (ending.origin == "connect" && ending.code == client::kPipeNotFound) {
    return invocation.pipe.empty()
               ? "'qorlixctl start', in an elevated prompt, starts it"
               : "'qorlixctl start' starts a server, whose pipe is asked without --pipe";
  }
  if (ending.origin != "send" && ending.origin != "receive") return {};
  const std::string command = invocation.subcommand->name;
  if (client::IsPipeBroken(ending.code)) {
    return std::string("the server may have ended; ") +
           (command == "ping" ? "" : "'qorlixctl ping' tells; ") + "'qorlixctl start' starts it";
  }
  if (ending.origin != "receive" || ending.code != client::kTimedOut) return {};
  return "the server may be busy with another request; it carries " +
         std::string(command == "stop" ? "the stop" : "this one") +
         " out when its turn comes, and --timeout waits longer for that";
}

bool IsControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

}  // namespace

std::string Printable(std::string_view utf8) {
  std::string text;
  for (std::size_t at = 0; at < utf8.size();) {
    const std::size_t begin = at;
    const char32_t c = NextCharacter(utf8, at);
    if (IsControl(c)) {
      char escape[8];
      (void)std::snprintf(escape, sizeof(escape), "\\x%02x", static_cast<unsigned>(c));
      text += escape;
    } else {
      text += utf8.substr(begin, at - begin);
    }
  }
  return text;
}

std::string Quoted(std::string_view ansi) { return '"' + Printable(Utf8FromAnsi(ansi)) + '"'; }

std::string CodeAndName(std::uint32_t code, const char* name) {
  if (code == SRV_OK) return "0 (success)";
  // A status of the platform is known by its hex form only.
  constexpr std::uint32_t kLargestPlainCode = 0xFFFF;
  char text[32];
  (void)std::snprintf(text, sizeof(text), code > kLargestPlainCode ? "0x%08X" : "%u", code);
  return *name != '\0' ? std::string(text) + ' ' + name : text;
}

std::string ByteCount(std::uint64_t count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

Ending EndingOf(const client::Result& result) {
  Ending ending;
  ending.ok = result.ok();
  ending.code = result.code();
  ending.name = result.name();
  ending.text = result.text();
  ending.origin = OriginName(result.origin());
  if (!ending.ok) ending.exitCode = result.fromServer() ? kExitServer : kExitTransport;
  if (result.origin() == client::Origin::Request) ending.exitCode = kExitUsage;
  return ending;
}

Ending DoneHere() {
  Ending ending = EndingOf(client::Result());
  ending.origin = "program";
  return ending;
}

Ending FailedHere(std::uint32_t code, const std::string& text, ExitCode exitCode) {
  return {/*ok=*/false, code, client::ResultName(code), text, "program", exitCode};
}

void AddEnding(JsonWriter& json, const Ending& ending) {
  json.Name("code").Number(ending.code).Name("name").Text(ending.name);
  json.Name("text").Text(ending.text).Name("origin").Text(ending.origin);
}

Report::Report(const Invocation& invocation, Output& output)
    : invocation_(invocation), output_(output) {
  json_.Open('{').Name("command").Text(invocation.subcommand->name);
}

void Report::Line(const std::string& line) {
  if (!IsJson()) output_.out += line + '\n';
}

void Report::Note(const std::string& line) {
  if (!IsJson()) output_.err += line + '\n';
}

int Report::Finish(const Ending& ending, const std::string& ownHint) {
  const std::string hint = ownHint.empty() ? TransportHint(invocation_, ending) : ownHint;
  if (IsJson()) {
    json_.Name("ok").Bool(ending.ok).Name("result").Open('{');
    AddEnding(json_, ending);
    json_.Close('}');
    if (!hint.empty()) json_.Name("hint").Text(hint);
    json_.Close('}');
    output_.out += json_.Written() + '\n';
    return ending.exitCode;
  }
  if (!ending.ok) {
    // A failure with 0 is a process that did not tell its end.
    const std::string code = ending.origin == "process" && ending.code == SRV_OK
                                 ? "exit code 0"
                                 : CodeAndName(ending.code, ending.name.c_str());
    output_.err += std::string("qorlixctl: ") + invocation_.subcommand->name + ": ";
    output_.err += ending.origin == "server" ? "the server answered " + code + ": " + ending.text
                                             : ending.text + " (" + code + ")";
    output_.err += '\n';
  }
  if (!hint.empty()) (ending.ok ? output_.out : output_.err) += "hint: " + hint + '\n';
  return ending.exitCode;
}

int Report::Finish(const client::Result& result, const std::string& hint) {
  return Finish(EndingOf(result), hint);
}

int UsageError(Output& output, const Invocation& invocation, const std::string& error) {
  output.err += "qorlixctl: " + Printable(error) + '\n';
  if (invocation.subcommand != nullptr) {
    output.err += std::string("'qorlixctl ") + invocation.subcommand->name +
                  " --help' explains the command.\n";
  } else if (!invocation.group.empty()) {
    output.err += "'qorlixctl help " + invocation.group + "' lists its commands.\n";
  } else {
    output.err += "'qorlixctl --help' lists the commands.\n";
  }
  return kExitUsage;
}

}  // namespace cli
