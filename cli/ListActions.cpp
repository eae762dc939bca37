#include <cstdio>

#include "cli/Actions.h"
#include "cli/Help.h"
#include "cli/Report.h"
#include "client/CommandInfo.h"
#include "client/ResultCodes.h"

namespace cli {
namespace {

const char* DoublingText(client::Doubling doubling) {
  switch (doubling) {
    case client::Doubling::Never:
      return "never";
    case client::Doubling::OnFailure:
      return "on failure";
    case client::Doubling::OnUnreadable:
      return "when the request cannot be read";
    case client::Doubling::OnceItsLibraryIsLoaded:
      return "when its library could be loaded";
  }
  return "";
}

std::string CodeColumn(std::uint32_t code) {
  char text[32];
  (void)std::snprintf(text, sizeof(text), "%5u  0x%04x", code, code);
  return text;
}

// One line of a command's shape: what stands first, and the fields behind it.
std::string Shape(const char* what, std::string first, const std::string& fields) {
  if (!fields.empty()) first += "; " + fields;
  return std::string(15, ' ') + what + ' ' + first;
}

void ShowShapes(Report& report, const client::CommandInfo& command) {
  static constexpr char kHead[] = "mark, result";
  const std::string failure = command.fixedShape ? command.success : command.failure;
  const std::string tooLong = command.fixedShape ? command.success : command.tooLong;
  report.Line(Shape("request", "code", command.request));
  report.Line(Shape("reply  ", kHead, command.success));
  if (failure != command.success) report.Line(Shape("failure", kHead, failure));
  if (tooLong != failure) report.Line(Shape("8602   ", kHead, tooLong));
  if (command.done != SRV_OK) {
    report.Line(Shape("done   ", "with the result " + std::to_string(command.done), ""));
  }
  if (*command.note != '\0') report.Line(Shape("note   ", command.note, ""));
  if (command.doubling != client::Doubling::Never) {
    report.Line(Shape("doubled", DoublingText(command.doubling), ""));
  }
}

void AddCommand(JsonWriter& json, const client::CommandInfo& command) {
  json.Open('{').Name("code").Number(static_cast<std::uint64_t>(command.code));
  json.Name("name").Text(command.name);
  json.Name("request").Text(command.request).Name("reply").Text(command.success);
  json.Name("failure").Text(command.fixedShape ? command.success : command.failure);
  json.Name("tooLong").Text(command.fixedShape ? command.success : command.tooLong);
  json.Name("successResult").Number(command.done);
  json.Name("note").Text(command.note);
  json.Name("doubledReply").Text(DoublingText(command.doubling)).Close('}');
}

}  // namespace

int CodesAction(const Invocation& invocation, Output& output) {
  Report report(invocation, output);
  report.Json().Name("codes").Open('[');
  for (const client::ResultCode& entry : client::KnownResultCodes()) {
    report.Json().Open('{').Name("code").Number(entry.code).Name("name").Text(entry.name);
    report.Json().Name("text").Text(entry.text).Close('}');
    char name[40];
    (void)std::snprintf(name, sizeof(name), "%-28s",
                        *entry.name != '\0' ? entry.name : "(no name)");
    report.Line(CodeColumn(entry.code) + "  " + name + "  " + entry.text);
  }
  report.Json().Close(']');
  return report.Finish(DoneHere());
}

int CommandsAction(const Invocation& invocation, Output& output) {
  Report report(invocation, output);
  report.Json().Name("commands").Open('[');
  for (const client::CommandInfo& command : client::Commands()) {
    AddCommand(report.Json(), command);
    report.Line(CodeColumn(static_cast<std::uint32_t>(command.code)) + "  " + command.name);
    ShowShapes(report, command);
  }
  report.Json().Close(']');
  return report.Finish(DoneHere());
}

int HelpAction(const Invocation& invocation, Output& output) {
  if (invocation.arguments.empty()) {
    output.out += OverallHelp();
    return kExitOk;
  }
  std::size_t words = 0;
  const Subcommand* const subcommand = FindSubcommand(invocation.arguments, words);
  if (subcommand != nullptr && words == invocation.arguments.size()) {
    output.out += SubcommandHelp(*subcommand);
    return kExitOk;
  }
  if (invocation.arguments.size() == 1 && IsGroup(invocation.arguments[0])) {
    output.out += GroupHelp(invocation.arguments[0]);
    return kExitOk;
  }
  std::string name = invocation.arguments[0];
  if (IsGroup(name)) name += ' ' + invocation.arguments[1];
  return UsageError(output, Invocation(), "there is no command '" + name + "'");
}

}  // namespace cli
