#include <chrono>
#include <cstdio>

#include "cli/Actions.h"
#include "cli/Connection.h"
#include "cli/Report.h"
#include "client/ResultCodes.h"
#include "client/ServerProcess.h"

namespace cli {
namespace {

constexpr std::uint32_t kExitOfStoppedServer = 1;
constexpr std::uint32_t kPathRoom = 32768 * 3;  // the longest path of the platform, in UTF-8

std::uint64_t MicrosecondsSince(std::chrono::steady_clock::time_point start) {
  const auto passed = std::chrono::steady_clock::now() - start;
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::microseconds>(passed).count());
}

std::string Milliseconds(std::uint64_t microseconds) {
  char text[40];
  (void)std::snprintf(text, sizeof(text), "%llu.%03u ms",
                      static_cast<unsigned long long>(microseconds / 1000),
                      static_cast<unsigned>(microseconds % 1000));
  return text;
}

std::string ServerProgram(const Invocation& invocation) {
  if (!invocation.server.empty()) return invocation.server;
  std::string path(kPathRoom, '\0');
  if (!client::ServerProgramBesideThis(path.data(), kPathRoom)) return "QorlixSRV.exe";
  path.resize(path.find('\0'));
  return path;
}

Ending EndingOf(const client::StartReport& started) {
  Ending ending;
  ending.code = started.code;
  ending.name = client::ResultName(started.code);
  ending.origin = "process";
  switch (started.outcome) {
    case client::StartOutcome::Ready:
      ending.ok = true;
      ending.text = "ready";
      break;
    case client::StartOutcome::EndedFirst:
      ending.text = "the server ended before it was ready, with an exit code that says: " +
                    std::string(client::ServerExitText(started.code));
      ending.exitCode = kExitServer;
      break;
    case client::StartOutcome::TimedOut:
      ending.text = "the server, process " + std::to_string(started.processId) +
                    ", was not ready in time and was left running";
      ending.exitCode = kExitTransport;
      break;
    case client::StartOutcome::NotStarted:
      ending.text =
          std::string("the server cannot be started: ") + client::ResultText(started.code);
      ending.exitCode = kExitTransport;
      break;
  }
  return ending;
}

std::string StartHint(const Invocation& invocation, const client::StartReport& started) {
  if (started.outcome == client::StartOutcome::EndedFirst && started.code == 183) {
    return "'qorlixctl ping' asks whether it answers, 'qorlixctl stop' ends it";
  }
  if (started.outcome == client::StartOutcome::NotStarted && started.code == 2) {
    return invocation.server.empty()
               ? "the server is looked for beside qorlixctl; --server PATH names another place"
               : "a relative path begins at the current directory";
  }
  return {};
}

// Waits for the end of a server that is ready, and tells it. \returns the exit code of this
// program.
int StayUntilItEnds(const Invocation& invocation, Output& output, client::ServerProcess& server) {
  output.Write();
  Ending ending;
  ending.code = server.WaitForEnd();
  ending.ok = ending.code == kExitOfStoppedServer;
  ending.text = ending.ok ? "it was stopped" : client::ServerExitText(ending.code);
  ending.origin = "process";
  ending.exitCode = ending.ok ? kExitOk : kExitServer;
  Report report(invocation, output);
  // Of a server, 0 is no success.
  const std::string code = ending.code == 0 ? "0" : CodeAndName(ending.code, "");
  report.Line("the server ended with exit code " + code + ": " + ending.text);
  return report.Finish(ending);
}

}  // namespace

int StartAction(const Invocation& invocation, Output& output) {
  Report report(invocation, output);
  const std::string program = ServerProgram(invocation);
  client::ServerProcess server;
  const client::StartReport started = server.Start(program.c_str(), invocation.timeoutMs);
  if (report.IsJson()) {
    report.Json().Name("server").Text(program).Name("processId").Number(started.processId);
  }
  const Ending ending = EndingOf(started);
  if (ending.ok) {
    report.Line("the server is ready: process " + std::to_string(started.processId) + ", " +
                Printable(program));
  } else {
    report.Line("program: " + Printable(program));
  }
  const int exitCode = report.Finish(ending, StartHint(invocation, started));
  return ending.ok && invocation.stay ? StayUntilItEnds(invocation, output, server) : exitCode;
}

int PingAction(const Invocation& invocation, Output& output) {
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  // Connecting is not part of the answer's time.
  client::Result result = client->Connect();
  const auto start = std::chrono::steady_clock::now();
  if (result.ok()) result = client->NoOperation();
  const std::uint64_t microseconds = MicrosecondsSince(start);
  if (result.fromServer()) {
    if (report.IsJson()) report.Json().Name("milliseconds").Thousandths(microseconds);
    report.Line("the server answered " + CodeAndName(result.code(), result.name()) + " within " +
                Milliseconds(microseconds));
  }
  return report.Finish(result);
}

int StopAction(const Invocation& invocation, Output& output) {
  Report report(invocation, output);
  const client::Result result = MakeClient(invocation)->StopServer();
  if (!result.ok()) return report.Finish(result);

  // Only then can another one be started. A server behind another pipe is not known that well.
  const bool ended = !invocation.pipe.empty() || client::WaitUntilNoServer(invocation.timeoutMs);
  if (report.IsJson()) report.Json().Name("ended").Bool(ended);
  if (ended) {
    report.Line("the server has stopped");
    return report.Finish(result);
  }
  Ending ending = FailedHere(
      client::kTimedOut,
      "the server took the stop request, but had not ended when the time ran out", kExitTransport);
  ending.origin = "process";
  return report.Finish(ending);
}

}  // namespace cli
