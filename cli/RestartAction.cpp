#include <chrono>

#include "cli/ActionReport.h"
#include "cli/Actions.h"
#include "cli/AnsiArguments.h"
#include "cli/Connection.h"
#include "cli/TextEncoding.h"
#include "client/RestartEvent.h"
#include "client/ResultCodes.h"

namespace cli {
namespace {

using client::ActionCalls;
using client::Result;

constexpr std::uint32_t kNoRingCheck = 10006;
constexpr std::uint32_t kEventNameRoom = 64;

// What a result that was fetched says of the restart.
std::string RestartHint(const Result& result) {
  if (result.ok() || !result.fromServer()) return NoReplyHint(result, "another request is done");
  switch (result.code()) {
    case client::kNoRestartResult:
      return "no result under this name: the restart is not finished, or the name is unknown, or "
             "its result was fetched already, or dropped because no program had the event";
    case kNoRingCheck:
      return "the restart library returned it; the ring was not checked after it";
    case SRV_ERR_ENTRY_POINT_MISSING:
      return "rstagent9.dll in the server's system directory lacks DllEntryFktSilent";
    case SRV_ERR_DLL_NOT_FOUND:
      return "it is rstagent9.dll, which has to be in the server's system directory";
    case SRV_ERR_EXCEPTION_OCCURED:
      return "it was rstagent9.dll, or ringdiag.dll in the ring check after it, that raised it";
    case SRV_ERR_UNKNOWN_COMMAND:
    case BUFFER_OVERFLOW:
      return {};
    default:
      return "the code is the restart library's; its documents say what it means";
  }
}

std::string FetchCommand(const std::string& event) {
  const std::string shown = Printable(Utf8FromAnsi(event));
  const bool quoted = shown.find(' ') != std::string::npos;
  return "'qorlixctl restart --fetch " + (quoted ? '"' + shown + '"' : shown) + "'";
}

int FinishFetched(Report& report, const Result& result) {
  if (result.ok()) report.Line("the restart has ended: 0 (success)");
  return report.Finish(result, RestartHint(result));
}

int Fetch(const Invocation& invocation, Output& output) {
  std::string event;
  if (!AnsiText(invocation, output, invocation.action.fetch, event)) return kExitUsage;
  Report report(invocation, output);
  if (report.IsJson()) report.Json().Name("event").Text(Utf8FromAnsi(event));
  const auto client = MakeClient(invocation);
  return FinishFetched(report, ActionCalls(*client).GetSilentRestartResult(event.c_str()));
}

std::string UsageOfOptions(const Invocation& invocation) {
  const ActionOptions& given = invocation.action;
  if (given.fetch.empty()) {
    return invocation.arguments.empty() ? "restart needs NAME, or --fetch EVENT" : "";
  }
  if (invocation.arguments.empty() && given.event.empty() && given.waitMs == 0) return {};
  return "--fetch EVENT stands alone: it restarts nothing";
}

// A restart that nobody here waits for.
int StartOnly(Report& report, ActionCalls& calls, const std::string& device,
              const std::string& event, bool named) {
  const Result result = calls.SilentRestart(device.c_str(), event.c_str());
  if (!result.ok()) return report.Finish(result, NoReplyHint(result, "another request is done"));
  const bool exists = client::RestartEvent::Exists(event.c_str());
  if (report.IsJson()) report.Json().Name("eventExists").Bool(exists);
  report.Line("the server answered 0 (success): the restart of " + Quoted(device) +
              " has been started; its result is not known yet");
  if (!named) {
    return report.Finish(result,
                         "its result will be dropped, because nobody waits for it; --wait does");
  }
  if (exists) {
    return report.Finish(result, FetchCommand(event) + " tells its result once the event is set");
  }
  return report.Finish(result,
                       "no program here has an event of this name, and unless one has it "
                       "when the restart ends, the result will be dropped; " +
                           FetchCommand(event) + " would tell it");
}

Ending NoEvent(std::uint32_t code) {
  return FailedHere(code, std::string("the event cannot be created: ") + client::ResultText(code),
                    kExitUsage);
}

Ending NotInTime() {
  return FailedHere(client::kTimedOut,
                    "the restart was started, but had not ended when the time ran out",
                    kExitTransport);
}

int StartAndWait(Report& report, Output& output, ActionCalls& calls, const std::string& device,
                 const std::string& event, std::uint32_t waitMs) {
  client::RestartEvent ended;
  bool existed = false;
  const std::uint32_t error = ended.Create(event.c_str(), existed);
  if (error != 0) return report.Finish(NoEvent(error));
  if (report.IsJson()) report.Json().Name("eventExists").Bool(existed);

  const Result started = calls.SilentRestart(device.c_str(), event.c_str());
  if (!started.ok()) return report.Finish(started, NoReplyHint(started, "another request is done"));
  report.Line("the restart of " + Quoted(device) + " has been started");
  output.Write();

  const auto start = std::chrono::steady_clock::now();
  const bool inTime = ended.Wait(waitMs);
  const auto waited = std::chrono::steady_clock::now() - start;
  if (report.IsJson()) {
    report.Json()
        .Name("waitedMs")
        .Thousandths(static_cast<std::uint64_t>(
            std::chrono::duration_cast<std::chrono::microseconds>(waited).count()));
  }
  if (inTime) return FinishFetched(report, calls.GetSilentRestartResult(event.c_str()));
  return report.Finish(
      NotInTime(), existed ? "another program has the event, so the result will be kept; " +
                                 FetchCommand(event) + " tells it then"
                           : "the restart goes on; its result will be dropped, because no "
                             "program has the event any more; a longer --wait, next time, gets it");
}

}  // namespace

int RestartAction(const Invocation& invocation, Output& output) {
  const std::string misuse = UsageOfOptions(invocation);
  if (!misuse.empty()) return UsageError(output, invocation, misuse);
  const ActionOptions& given = invocation.action;
  if (!given.fetch.empty()) return Fetch(invocation, output);

  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  std::string event;
  if (ansi.empty() || !AnsiText(invocation, output, given.event, event) ||
      !IsShortEnough(invocation, output, "NAME", ansi[0]) ||
      !IsShortEnough(invocation, output, "an event's name", event)) {
    return kExitUsage;
  }
  if (event.empty()) {
    char unused[kEventNameRoom];
    client::UnusedEventName(unused, sizeof(unused));
    event = unused;
  }
  Report report(invocation, output);
  if (report.IsJson()) report.Json().Name("event").Text(Utf8FromAnsi(event));
  const auto client = MakeClient(invocation);
  ActionCalls calls(*client);
  if (given.waitMs != 0) return StartAndWait(report, output, calls, ansi[0], event, given.waitMs);
  return StartOnly(report, calls, ansi[0], event, /*named=*/!given.event.empty());
}

}  // namespace cli
