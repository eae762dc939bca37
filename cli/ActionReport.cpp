#include "cli/ActionReport.h"

#include "client/ResultCodes.h"

namespace cli {

bool IsShortEnough(const Invocation& invocation, Output& output, const char* what,
                   std::string_view ansi) {
  if (ansi.size() <= client::kActionTextLimit) return true;
  UsageError(output, invocation, std::string(what) + " has at most 259 bytes here");
  return false;
}

std::string NoReplyHint(const client::Result& result, const std::string& blockedBy) {
  if (result.origin() != client::Origin::Receive || result.code() != client::kTimedOut) return {};
  return "the server goes on with it, and answers nobody until " + blockedBy +
         "; --timeout gives it more time";
}

bool ShowSecondSend(Report& report, const client::Result& result,
                    const client::SecondSend& second) {
  const bool contradicts = second.Contradicts(result);
  if (report.IsJson() && result.fromServer()) {
    JsonWriter& json = report.Json();
    json.Name("second").Open('{').Name("came").Bool(second.came);
    if (second.came) json.Name("code").Number(second.result).Name("agrees").Bool(!contradicts);
    json.Close('}');
  }
  if (contradicts) {
    report.Line("the server answers this command twice, and the answers differ: " +
                CodeAndName(result.code(), result.name()) + ", then " +
                CodeAndName(second.result, client::ResultName(second.result)));
  }
  return contradicts;
}

}  // namespace cli
