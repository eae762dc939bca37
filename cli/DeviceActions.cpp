#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "cli/Actions.h"
#include "cli/AnsiArguments.h"
#include "cli/Arguments.h"
#include "cli/Connection.h"
#include "cli/DevNodeNames.h"
#include "cli/Guid.h"
#include "cli/Hex.h"
#include "cli/LibraryHint.h"
#include "cli/Report.h"
#include "cli/TextEncoding.h"
#include "client/BoardCalls.h"
#include "client/Deadline.h"
#include "client/Enumeration.h"

namespace cli {
namespace {

using client::BoardCalls;
using client::Result;

constexpr std::uint32_t kPollMs = 250;
constexpr std::size_t kDeviceIdLimit = 259;

// A library that never says that there is no more would be asked forever.
constexpr std::uint32_t kChangeLimit = 10000;

std::string Hex32(std::uint32_t number) {
  char text[16];
  (void)std::snprintf(text, sizeof(text), "0x%08x", number);
  return text;
}

// The device id in the ANSI code page; the server reads no longer one.
bool TakeDeviceId(const Invocation& invocation, Output& output, std::string& deviceId) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return false;
  deviceId = ansi[0];
  if (deviceId.size() <= kDeviceIdLimit) return true;
  UsageError(output, invocation, "a DEVICEID has at most 259 bytes here");
  return false;
}

int RegisterAction(const Invocation& invocation, Output& output, bool watch) {
  std::string deviceId;
  if (!TakeDeviceId(invocation, output, deviceId)) return kExitUsage;
  client::Guid guid;
  if (!ParseGuid(invocation.arguments[1], guid)) {
    return UsageError(output, invocation,
                      "GUID is written {8-4-4-4-12} hex digits, such as "
                      "{4D36E972-E325-11CE-BFC1-08002BE10318}, not '" +
                          invocation.arguments[1] + "'");
  }
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  BoardCalls calls(*client);
  const Result result = watch
                            ? calls.RegisterForDeviceChangeNotifications(deviceId.c_str(), guid)
                            : calls.UnregisterForDeviceChangeNotifications(deviceId.c_str(), guid);
  if (result.ok()) {
    report.Line(std::string("the server answered 0 (success): changes of ") + Quoted(deviceId) +
                (watch ? " are noted from now on" : " are no longer noted"));
  }
  return report.Finish(
      result, BoardLibraryHint(result, watch ? "it knows no such device id"
                                             : "nothing is watched under this device id and GUID; "
                                               "both have to be those of 'device watch'"));
}

// A change holds one text, or several with a zero behind each.
std::string ChangeTexts(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\0'), text.size());
    shown += ' ' + Quoted(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return shown.empty() ? " \"\"" : shown;
}

void ShowChange(Report& report, const client::DeviceChange& change) {
  report.Line("kind " + std::to_string(change.kind) + ' ' + GuidText(change.interfaceClass) +
              ChangeTexts(change.text));
  if (!report.IsJson()) return;
  JsonWriter& json = report.Json();
  json.Open('{').Name("kind").Number(change.kind).Name("text").Text(Utf8FromAnsi(change.text));
  json.Name("hex").Text(
      HexDigits({reinterpret_cast<const std::uint8_t*>(change.text.data()), change.text.size()}));
  json.Name("length").Number(change.length);
  json.Name("interfaceClass").Text(GuidText(change.interfaceClass)).Close('}');
}

// Fetches changes and shows them until there is none. \returns what ended it: 259 is the usual end.
Result Drain(Report& report, BoardCalls& calls, const std::string& deviceId, std::uint32_t& count,
             client::DeviceChange& change) {
  for (;;) {
    const Result result = calls.GetDeviceChange(deviceId.c_str(), change);
    if (!result.ok()) return result;
    ShowChange(report, change);
    if (++count == kChangeLimit) return result;
  }
}

void ShowState(Report& report, const client::DeviceState& state) {
  const std::vector<const char*> bits = StatusBitNames(state.status);
  std::string names;
  for (const char* const bit : bits) names += std::string(" ") + bit;
  const std::string problem = ProblemName(state.problem);
  report.Line("status:  " + Hex32(state.status) + names);
  report.Line("problem: " + std::to_string(state.problem) +
              (problem.empty() ? state.problem == 0 ? " (none)" : " (no name)" : ' ' + problem));
  if (!report.IsJson()) return;
  report.Json().Name("status").Number(state.status).Name("statusBits").Open('[');
  for (const char* const bit : bits) report.Json().Text(bit);
  report.Json().Close(']').Name("problem").Number(state.problem);
  report.Json().Name("problemName").Text(problem);
}

// The eight arguments of `device info`, or what is wrong with them.
struct InformationArguments {
  std::vector<std::uint8_t> data1, data2;
  client::InformationRequest ask;

  std::string Take(const std::vector<std::string>& words) {
    std::string error = TakeData("DATA1", words[0], data1);
    if (error.empty()) error = TakeData("DATA2", words[4], data2);
    std::uint32_t* const numbers[] = {nullptr, &ask.values[0], &ask.values[1], &ask.values[2],
                                      nullptr, &ask.area1Size, &ask.area2Size, &ask.last};
    static constexpr const char* kNames[] = {"", "V1", "V2", "V3", "", "SIZE1", "SIZE2", "LAST"};
    for (std::size_t i = 0; i < words.size(); ++i) {
      if (!error.empty()) return error;
      if (numbers[i] != nullptr && !ParseNumber(words[i], *numbers[i])) {
        error = NumberError(kNames[i], words[i]);
      }
    }
    ask.data1 = data1;
    ask.data2 = data2;
    const std::uint64_t areas = std::uint64_t{ask.area1Size} + ask.area2Size;
    if (error.empty() && areas > client::kAreasLimit) {
      return "a reply takes areas of " + std::to_string(client::kAreasLimit) +
             " bytes together, not " + std::to_string(areas);
    }
    return error;
  }

 private:
  static std::string TakeData(const char* name, const std::string& word,
                              std::vector<std::uint8_t>& data) {
    const std::string error = AppendHex(word, data);
    if (!error.empty()) return std::string(name) + ": " + error;
    if (data.size() <= client::kBlockLimit) return {};
    return std::string(name) + " has at most " + std::to_string(client::kBlockLimit) + " bytes";
  }
};

void ShowArea(Report& report, const char* name, client::Bytes bytes) {
  if (report.IsJson()) report.Json().Name(name).Text(HexDigits(bytes));
  report.Line(std::string(name) + ", " + ByteCount(bytes.size()) + (bytes.empty() ? "" : ":"));
  std::string dump = HexDump(bytes, 0);
  if (dump.empty()) return;
  dump.pop_back();
  report.Line(dump);
}

void ShowNumber(Report& report, const char* name, std::uint32_t number) {
  if (report.IsJson()) report.Json().Name(name).Number(number);
  report.Line(std::string(name) + ": " + std::to_string(number) + " (" + Hex32(number) + ")");
}

}  // namespace

int DeviceStateAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return kExitUsage;
  std::uint32_t option = client::kNoOption;
  if (invocation.arguments.size() > 1 && !ParseNumber(invocation.arguments[1], option)) {
    return UsageError(output, invocation, NumberError("OPTION", invocation.arguments[1]));
  }
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  client::DeviceState state;
  const Result result = BoardCalls(*client).GetDeviceStateEx(ansi[0].c_str(), option, state);
  if (!result.ok()) return report.Finish(result);
  ShowState(report, state);
  if (state.status != 0 || state.problem != 0) return report.Finish(result);
  return report.Finish(result, "both are 0 also for a device that nobody knows");
}

int DeviceWatchAction(const Invocation& invocation, Output& output) {
  return RegisterAction(invocation, output, /*watch=*/true);
}

int DeviceUnwatchAction(const Invocation& invocation, Output& output) {
  return RegisterAction(invocation, output, /*watch=*/false);
}

int DeviceChangesAction(const Invocation& invocation, Output& output) {
  std::string deviceId;
  if (!TakeDeviceId(invocation, output, deviceId)) return kExitUsage;
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  BoardCalls calls(*client);
  const client::Deadline deadline(invocation.trace.forMs);
  report.Json().Name("changes").Open('[');
  std::uint32_t count = 0;
  client::DeviceChange change;
  Result result;
  for (;;) {
    const std::uint32_t left = invocation.trace.forMs == 0 ? 0 : deadline.LeftMs();
    result = Drain(report, calls, deviceId, count, change);
    // The last look is after the time is up, so that nothing of it is missed.
    if (!result.is(client::kNoMoreItems) || left == 0) break;
    if (!report.IsJson()) output.Write();
    std::this_thread::sleep_for(std::chrono::milliseconds(std::min(kPollMs, left)));
  }
  report.Json().Close(']');
  if (result.ok()) {
    return report.Finish(result,
                         "stopped after " + std::to_string(count) + " changes; there may be more");
  }
  if (result.is(client::kNoMoreItems)) {
    if (count != 0) return report.Finish(Result());
    report.Line("(no changes)");
    return report.Finish(Result(),
                         "changes are noted only while they are watched: 'qorlixctl device watch' "
                         "comes first");
  }
  if (result.is(BUFFER_OVERFLOW)) {
    return report.Finish(result, "the next change has " + ByteCount(change.length) +
                                     ", and a reply takes 8160 at most; whether the library keeps "
                                     "it is the library's affair");
  }
  if (!result.fromServer()) {
    if (count != 0) report.Note("the list ends after " + std::to_string(count) + " changes");
    return report.Finish(result);
  }
  return report.Finish(result, "this ended the list after " + std::to_string(count) +
                                   " changes; 259 would have said that there are no more");
}

int DeviceInfoAction(const Invocation& invocation, Output& output) {
  InformationArguments arguments;
  const std::string error = arguments.Take(invocation.arguments);
  if (!error.empty()) return UsageError(output, invocation, error);
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  client::Information told;
  const Result result = BoardCalls(*client).GetBoardInformation(arguments.ask, told);
  if (!result.ok()) {
    return report.Finish(result, BoardLibraryHint(result, "it has nothing for these values"));
  }
  ShowArea(report, "area1", told.area1);
  ShowNumber(report, "value", told.value);
  ShowArea(report, "area2", told.area2);
  ShowNumber(report, "result1", told.result1);
  ShowNumber(report, "result2", told.result2);
  return report.Finish(result);
}

}  // namespace cli
