#include <map>

#include "cli/Actions.h"
#include "cli/AnsiArguments.h"
#include "cli/Arguments.h"
#include "cli/Connection.h"
#include "cli/Hex.h"
#include "cli/LibraryHint.h"
#include "cli/Report.h"
#include "cli/TextEncoding.h"
#include "client/BoardCalls.h"
#include "client/Enumeration.h"
#include "client/ResultCodes.h"

namespace cli {
namespace {

using client::BoardCalls;
using client::Result;

constexpr SrvResult kNotFound = 2;

client::Bytes BytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

constexpr char kNoSuchInfo[] = "it has nothing of this TYPE on such a board";

// Shows the one text or data block that a command answers with.
int FinishValue(Report& report, const Result& result, const client::BoardValue& answer,
                const char* name, bool isText, const char* notFound) {
  const client::BoardText& content = answer.content;
  if (report.IsJson() && answer.told) {
    JsonWriter& json = report.Json();
    if (isText) json.Name(name).Text(Utf8FromAnsi(content.text));
    json.Name("hex").Text(HexDigits(BytesOf(content.text))).Name("length").Number(content.length);
    json.Name("askedAgain").Bool(answer.askedAgain);
  }
  if (result.is(BUFFER_OVERFLOW) || result.is(client::kMoreData)) {
    if (content.length == 0) return report.Finish(result);
    return report.Finish(
        result, "the answer has " + ByteCount(content.length) + ", and a reply takes 8160 at most");
  }
  if (!result.ok()) return report.Finish(result, BoardLibraryHint(result, notFound));

  if (isText) {
    report.Line(std::string(name) + ": " + Quoted(content.text));
  } else {
    report.Line(std::string(name) + ", " + ByteCount(content.text.size()) + ":");
    std::string dump = HexDump(BytesOf(content.text), 0);
    if (!dump.empty()) dump.pop_back();
    if (!dump.empty()) report.Line(dump);
  }
  if (!answer.askedAgain) return report.Finish(result);
  return report.Finish(result,
                       "the answer did not fit a reply; it came when less room was asked for, and "
                       "may be cut");
}

// The information type that stands first, as it was given and as a number.
bool TakeType(const Invocation& invocation, Output& output, std::uint32_t& type) {
  if (ParseNumber(invocation.arguments[0], type)) return true;
  UsageError(output, invocation, NumberError("TYPE", invocation.arguments[0]));
  return false;
}

// A reply that does not come in time says nothing of the work, which goes on.
std::string SlowHint(const Result& result) {
  if (result.origin() != client::Origin::Receive || result.code() != client::kTimedOut) return {};
  return "the server goes on with it; the hardware may take its time, and --timeout gives it more";
}

// Runs a command that answers with its result alone, the board library's.
template <typename Call>
int Run(const Invocation& invocation, Output& output, const std::string& done, Call call,
        const char* notFound = "") {
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  BoardCalls calls(*client);
  const Result result = call(calls);
  if (result.ok()) report.Line("the server answered 0 (success): " + done);
  return report.Finish(result,
                       result.fromServer() ? BoardLibraryHint(result, notFound) : SlowHint(result));
}

using Assignments = std::map<std::string, std::string>;

// Which logical device each logical name has, by what the registry says. Names without one are left
// out.
Result ReadAssignments(client::QorlixClient& client, Assignments& assignments) {
  static constexpr char kLogNames[] = "Software\\Vesmark\\NORVA\\LogNames";
  std::vector<std::string> names;
  const Result listed = client::ForEachKey(
      client, kLogNames, [&](std::uint32_t, const Result& one, const client::RegistryEntry& entry) {
        if (one.ok()) names.emplace_back(entry.name);
        return true;
      });
  if (!listed.ok() && !listed.is(kNotFound)) return listed;
  for (const std::string& name : names) {
    client::RegistryData data;
    const std::string key = std::string(kLogNames) + '\\' + name;
    const Result read = client.Reg_GetValue(key.c_str(), "LogDevice", data);
    if (!read.fromServer()) return read;
    if (read.ok() && !data.text.empty()) assignments[name] = data.text;
  }
  return {};
}

void ShowUnassigned(Report& report, const Assignments& before, const Assignments& after) {
  report.Json().Name("unassigned").Open('[');
  std::size_t count = 0;
  for (const auto& [name, device] : before) {
    if (after.count(name) != 0) continue;
    ++count;
    report.Line("unassigned: " + Quoted(name) + ", which had " + Quoted(device));
    report.Json().Open('{').Name("logName").Text(Utf8FromAnsi(name));
    report.Json().Name("logDevice").Text(Utf8FromAnsi(device)).Close('}');
  }
  report.Json().Close(']');
  if (count == 0) report.Line("no logical name had to be unassigned");
}

}  // namespace

int BoardMapAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return kExitUsage;
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  client::BoardValue map;
  const Result result =
      BoardCalls(*client).BC_BoardGetMap(ansi[0].c_str(), ansi[1].c_str(), ansi[2].c_str(), map);
  return FinishValue(report, result, map, "boardMap", /*isText=*/true,
                     "no board that is there fits these texts");
}

int BoardInfoAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  std::uint32_t type = 0;
  if (ansi.empty() || !TakeType(invocation, output, type)) return kExitUsage;
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  const client::BoardSelection of = {ansi[1].c_str(), ansi[2].c_str(), ansi[3].c_str(),
                                     ansi[4].c_str()};
  client::BoardValue value;
  const Result result = BoardCalls(*client).BC_GetBoardInfo(type, of, value);
  return FinishValue(report, result, value, "value", /*isText=*/true, kNoSuchInfo);
}

int BoardInfoExAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  std::uint32_t type = 0;
  if (ansi.empty() || !TakeType(invocation, output, type)) return kExitUsage;
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  client::BoardSelection of;
  of.board = ansi[1].c_str();
  of.boardMap = ansi[2].c_str();
  of.hardwareInstanceId = ansi[3].c_str();
  client::BoardValue data;
  const Result result = BoardCalls(*client).BC_GetBoardInfoEx(type, of, data);
  return FinishValue(report, result, data, "data", /*isText=*/false, kNoSuchInfo);
}

int BoardScanAction(const Invocation& invocation, Output& output) {
  return Run(invocation, output, "the hardware was scanned",
             [](BoardCalls& calls) { return calls.BC_Scan(); });
}

int BoardCreateLogdevicesAction(const Invocation& invocation, Output& output) {
  return Run(invocation, output, "the logical devices of all boards are there",
             [](BoardCalls& calls) { return calls.BC_CreateAllLogdevices(); });
}

int BoardUpdateLogdevicesAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return kExitUsage;
  return Run(
      invocation, output, "the logical devices of " + Quoted(ansi[0]) + " are up to date",
      [&](BoardCalls& calls) {
        return calls.BC_UpdateLogDevicesForDevice(ansi[0].c_str(), ansi[1].c_str());
      },
      "no board that is there has this device id and hardware id");
}

int BoardUninitializedAction(const Invocation& invocation, Output& output) {
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  const Result result = BoardCalls(*client).BC_HasUninitializedInstances();
  if (result.ok()) report.Line("the server answered 0: no board waits to be initialised");
  if (report.IsJson() && result.fromServer() && !IsServersOwn(result)) {
    report.Json().Name("number").Number(result.code());
  }
  if (result.ok() || !result.fromServer()) return report.Finish(result);
  if (IsServersOwn(result)) return report.Finish(result, BoardLibraryHint(result));
  // A count that happens to be a code of Windows must not be told by that code's name.
  Ending ending = EndingOf(result);
  ending.name.clear();
  ending.text =
      "a number of the board library, how many boards wait to be initialised or an error of its "
      "own";
  return report.Finish(ending);
}

int CheckAction(const Invocation& invocation, Output& output) {
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  Assignments before;
  const Result listed = ReadAssignments(*client, before);
  if (!listed.fromServer()) return report.Finish(listed);

  const Result result = BoardCalls(*client).BC_PlausibilitaetBL();
  if (result.ok()) report.Line("the server answered 0 (success): the check has run");
  if (!result.fromServer()) return report.Finish(result, SlowHint(result));
  // The check goes through the logical names whatever its result, which is the library's.
  Assignments after;
  const Result listedAgain = listed.ok() ? ReadAssignments(*client, after) : listed;
  if (listedAgain.ok()) {
    ShowUnassigned(report, before, after);
  } else {
    report.Line("what was unassigned is not known: the logical names cannot be listed (" +
                CodeAndName(listedAgain.code(), listedAgain.name()) + ")");
  }
  return report.Finish(result);
}

}  // namespace cli
