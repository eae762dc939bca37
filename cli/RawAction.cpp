#include <algorithm>

#include "cli/Actions.h"
#include "cli/Connection.h"
#include "cli/Hex.h"
#include "cli/MessageReport.h"

namespace cli {
namespace {

using client::Bytes;

void ShowReply(Report& report, const client::Result& result, const client::Reply& reply) {
  JsonWriter& json = report.Json();
  json.Name("reply").Open('{').Name("hex").Text(HexDigits(reply.bytes));
  json.Name("whole").Bool(result.fromServer());
  json.Name("parts").Open('[');
  if (result.fromServer()) {
    for (std::uint32_t i = 0; i < reply.layout.parts; ++i) ShowPart(report, reply, i);
    if (reply.bytes.empty()) report.Line("the connection was closed, as a confirmed stop does");
  } else if (!reply.bytes.empty()) {
    report.Line("no whole reply; what came, " + ByteCount(reply.bytes.size()) + ":");
    ShowDump(report, reply.bytes, 0);
  }
  json.Close(']');
  json.Close('}');
}

// Sends all bytes, then shows a request and its reply for each 8192 of them. \returns the first
// result that is not ok.
client::Result Exchange(Report& report, client::QorlixClient& client, Bytes bytes) {
  client::Result outcome = client.Send(bytes);
  const bool sent = outcome.ok();
  report.Json().Name("exchanges").Open('[');
  for (std::size_t at = 0; at < bytes.size(); at += client::kMessageLimit) {
    const std::size_t size = std::min<std::size_t>(bytes.size() - at, client::kMessageLimit);
    const Bytes request = bytes.subspan(at, size);
    report.Json().Open('{');
    (void)ShowRequest(report, request, at);
    client::Result result = outcome;
    if (sent) {
      client::Reply reply;
      result = client.Receive(request, reply);
      ShowReply(report, result, reply);
      ShowNote(report, client::CommandOf(request));
    }
    report.Json().Close('}');
    if (outcome.ok()) outcome = result;
    if (!result.fromServer()) break;
  }
  report.Json().Close(']');
  return outcome;
}

}  // namespace

int RawAction(const Invocation& invocation, Output& output) {
  std::vector<std::uint8_t> bytes;
  for (const std::string& argument : invocation.arguments) {
    const std::string error = AppendHex(argument, bytes);
    if (!error.empty()) return UsageError(output, invocation, error);
  }
  if (bytes.empty()) return UsageError(output, invocation, "a request has at least one byte");
  Report report(invocation, output);
  const client::Result result = Exchange(report, *MakeClient(invocation), bytes);
  return report.Finish(result);
}

}  // namespace cli
