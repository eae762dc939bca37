#include "cli/Actions.h"
#include "cli/Arguments.h"
#include "cli/Hex.h"
#include "cli/MessageReport.h"
#include "client/ResultCodes.h"

namespace cli {
namespace {

using client::Bytes;
using client::CommandInfo;
using client::ReplyLayout;
using client::ReplyState;

// What an unknown command answers is the result alone, so this request stands for no command at
// all.
constexpr std::uint8_t kNoCommand[] = {0, 0};

std::string FindTheCommand(const std::string& word, const CommandInfo*& command) {
  if (word.empty()) return {};
  std::uint32_t code = 0;
  command = ParseNumber(word, code) ? client::FindCommand(code) : client::FindCommandByName(word);
  if (command != nullptr) return {};
  return "there is no command '" + word + "'; 'qorlixctl commands' lists them";
}

// Fitting means: a whole reply, and nothing behind it.
bool Fits(const ReplyLayout& layout, Bytes reply) {
  const bool whole = layout.state == ReplyState::Complete || layout.state == ReplyState::MayGrow;
  return whole && layout.size == reply.size();
}

// The request is not there, so what it was is found out by what fits its reply: one that could be
// read, or one that could not.
ReplyLayout Examine(const CommandInfo* command, Bytes reply) {
  if (command == nullptr) {
    const ReplyLayout doubled = client::ExamineReply({}, reply);
    return Fits(doubled, reply) ? doubled : client::ExamineReply(kNoCommand, reply);
  }
  const std::vector<std::uint8_t> request = client::SmallestRequest(*command);
  const ReplyLayout readable = client::ExamineReply(request, reply);
  if (Fits(readable, reply)) return readable;
  const Bytes codeAlone = Bytes(request).first(sizeof(std::uint16_t));
  const ReplyLayout unreadable = client::ExamineReply(codeAlone, reply);
  return Fits(unreadable, reply) ? unreadable : readable;
}

Ending Whole(bool whole, const std::string& otherwise) {
  if (!whole) return FailedHere(client::kInvalidReply, otherwise, kExitServer);
  Ending ending;
  ending.ok = true;
  ending.origin = "program";
  return ending;
}

int DecodeRequest(Report& report, Bytes request) {
  const CommandInfo* const command = client::CommandOf(request);
  const std::uint32_t end = ShowRequest(report, request, 0);
  ShowNote(report, command);
  if (command == nullptr) {
    return report.Finish(Whole(false, request.size() < sizeof(std::uint16_t)
                                          ? "the server would answer 8620, then 8620 and 8602"
                                          : "the server would answer 8620: there is no such "
                                            "command"));
  }
  if (!client::IsReadable(*command, request)) {
    return report.Finish(Whole(
        false,
        "the server would answer " +
            std::string(command->doubling == client::Doubling::OnUnreadable ? "5, then 5 and 8602"
                                                                            : "8602") +
            ": it cannot read every field"));
  }
  const std::size_t behind = request.size() - end;
  return report.Finish(Whole(true, ""), behind == 0 ? std::string()
                                                    : ByteCount(behind) +
                                                          " behind the last field; the server "
                                                          "does not look there");
}

// What is there of a reply that is not whole.
void ShowFragment(Report& report, Bytes reply, const ReplyLayout& layout) {
  JsonWriter& json = report.Json();
  report.Line("no whole reply, " + ByteCount(reply.size()) + ":");
  ShowDump(report, reply, 0);
  if (reply.size() < client::kReplyHead || layout.state == ReplyState::Malformed) return;
  json.Open('{').Name("what").Text("fragment").Name("code").Number(layout.result);
  report.Line("    result: " + CodeAndName(layout.result, client::ResultName(layout.result)));
  (void)ShowFields(report, layout.fields, reply, client::kReplyHead, /*isRequest=*/false);
  json.Close('}');
}

std::string WhyNot(const ReplyLayout& layout, bool whole) {
  if (whole) return "there are more bytes than one reply has";
  return layout.state == ReplyState::Incomplete ? "the reply ends too early"
                                                : "this is no reply to that command";
}

int DecodeReply(Report& report, const CommandInfo* command, Bytes bytes) {
  const client::Reply reply = {bytes, Examine(command, bytes)};
  const ReplyLayout& layout = reply.layout;
  const bool whole = layout.state == ReplyState::Complete || layout.state == ReplyState::MayGrow;
  JsonWriter& json = report.Json();
  json.Name("reply").Open('{').Name("hex").Text(HexDigits(bytes)).Name("whole").Bool(whole);
  json.Name("parts").Open('[');
  if (whole) {
    for (std::uint32_t i = 0; i < layout.parts; ++i) ShowPart(report, reply, i);
  } else {
    ShowFragment(report, bytes, layout);
  }
  json.Close(']').Close('}');
  ShowNote(report, command);
  if (whole && layout.size < bytes.size()) {
    report.Line("behind it, " + ByteCount(bytes.size() - layout.size) + ":");
    ShowDump(report, bytes.subspan(layout.size), layout.size);
  }
  return report.Finish(Whole(Fits(layout, bytes), WhyNot(layout, whole)),
                       command == nullptr && bytes.size() > client::kReplyHead
                           ? "which fields a reply has is known with --command only"
                           : "");
}

}  // namespace

int DecodeAction(const Invocation& invocation, Output& output) {
  std::vector<std::uint8_t> bytes;
  for (const std::string& argument : invocation.arguments) {
    const std::string error = AppendHex(argument, bytes);
    if (!error.empty()) return UsageError(output, invocation, error);
  }
  if (bytes.empty()) return UsageError(output, invocation, "a message has at least one byte");
  const CommandInfo* command = nullptr;
  const std::string error = FindTheCommand(invocation.decode.command, command);
  if (!error.empty()) return UsageError(output, invocation, error);
  if (!invocation.decode.reply) {
    if (bytes.size() > client::kMessageLimit) {
      return UsageError(output, invocation, "a request has at most 8192 bytes");
    }
    if (command != nullptr && client::CommandOf(bytes) != command) {
      return UsageError(
          output, invocation,
          std::string("the request is not one of ") + command->name + " (a reply needs --reply)");
    }
  }
  Report report(invocation, output);
  return invocation.decode.reply ? DecodeReply(report, command, bytes)
                                 : DecodeRequest(report, bytes);
}

}  // namespace cli
