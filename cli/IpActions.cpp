#include <cstdio>
#include <string_view>

#include "cli/ActionReport.h"
#include "cli/Actions.h"
#include "cli/AnsiArguments.h"
#include "cli/Arguments.h"
#include "cli/Connection.h"
#include "cli/TextEncoding.h"

namespace cli {
namespace {

using client::ActionCalls;
using client::Result;

// Four decimal numbers with dots. No leading zeros: some take them for octal.
bool ParseAddress(std::string_view text, std::uint32_t& address) {
  std::uint8_t parts[4] = {};
  for (int i = 0; i < 4; ++i) {
    const std::size_t end = text.find('.');
    const std::string_view part = text.substr(0, end);
    std::uint32_t number = 0;
    const bool isPlain = part.find_first_not_of("0123456789") == std::string_view::npos &&
                         part.size() <= 3 && !(part.size() > 1 && part[0] == '0');
    if (!isPlain || !ParseNumber(std::string(part), number) || number > 255) return false;
    if ((end == std::string_view::npos) != (i == 3)) return false;
    parts[i] = static_cast<std::uint8_t>(number);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  address = client::IpAddress(parts[0], parts[1], parts[2], parts[3]);
  return true;
}

std::string DecimalAndHex(std::uint32_t number) {
  char text[40];
  (void)std::snprintf(text, sizeof(text), "%u (0x%08x)", number, number);
  return text;
}

// What the codes of the two commands say of the library behind them.
std::string IpHint(const Result& result, const char* function) {
  std::string no = NoReplyHint(result, "ipcfgx.dll returns");
  if (!no.empty() || result.ok() || !result.fromServer()) return no;
  switch (result.code()) {
    case SRV_ERR_DLL_NOT_FOUND:
      return "it is ipcfgx.dll, which has to be in the server's system directory";
    case SRV_ERR_ENTRY_POINT_MISSING:
      return std::string("it is ") + function + " of ipcfgx.dll";
    case SRV_ERR_EXCEPTION_OCCURED:
      return "it was ipcfgx.dll that raised it";
    case SRV_ERR_UNKNOWN_COMMAND:
    case BUFFER_OVERFLOW:
      return {};
    default:
      return "the code is that of ipcfgx.dll";
  }
}

bool TakeNumber(const Invocation& invocation, Output& output, const char* what,
                const std::string& word, std::uint32_t& number) {
  if (ParseNumber(word, number)) return true;
  UsageError(output, invocation, NumberError(what, word));
  return false;
}

bool TakeAddress(const Invocation& invocation, Output& output, const char* what,
                 const std::string& word, std::uint32_t& address) {
  if (ParseAddress(word, address)) return true;
  UsageError(output, invocation,
             std::string(what) +
                 " is four numbers from 0 to 255 with dots, such as 192.168.0.10, not '" + word +
                 "'");
  return false;
}

}  // namespace

int IpAddAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string>& words = invocation.arguments;
  std::uint32_t address = 0;
  std::uint32_t mask = 0;
  std::uint32_t interfaceIndex = 0;
  if (!TakeAddress(invocation, output, "ADDRESS", words[0], address) ||
      !TakeAddress(invocation, output, "MASK", words[1], mask) ||
      !TakeNumber(invocation, output, "IFINDEX", words[2], interfaceIndex)) {
    return kExitUsage;
  }
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  client::AddedAddress added;
  const Result result = ActionCalls(*client).AddIpAddress(address, mask, interfaceIndex, added);
  const bool told = result.fromServer() && !result.is(SRV_ERR_UNKNOWN_COMMAND);
  if (report.IsJson() && told) {
    report.Json().Name("nteContext").Number(added.nteContext);
    report.Json().Name("nteInstance").Number(added.nteInstance);
  }
  Ending ending = EndingOf(result);
  if (ShowSecondSend(report, result, added.second)) ending.text += ", and then something else";
  // After a failure they are the library's, if they are not 0.
  if (result.ok() || added.nteContext != 0 || added.nteInstance != 0) {
    report.Line("nteContext:  " + DecimalAndHex(added.nteContext));
    report.Line("nteInstance: " + DecimalAndHex(added.nteInstance));
  }
  if (!result.ok()) return report.Finish(ending, IpHint(result, "IE_AddIPAddressEx"));
  return report.Finish(ending, "'qorlixctl ip delete " + std::to_string(added.nteContext) +
                                   "' deletes the address again");
}

int IpDeleteAction(const Invocation& invocation, Output& output) {
  std::uint32_t context = 0;
  if (!TakeNumber(invocation, output, "CONTEXT", invocation.arguments[0], context)) {
    return kExitUsage;
  }
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  const Result result = ActionCalls(*client).DelIpAddress(context);
  if (result.ok()) report.Line("the server answered 0 (success): the address is deleted");
  return report.Finish(result, IpHint(result, "IE_DeleteIPAddressEx"));
}

int TestAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty() || !IsShortEnough(invocation, output, "TEXT", ansi[0])) return kExitUsage;
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  std::string_view shown;
  const Result result = ActionCalls(*client).TestFunction(ansi[0].c_str(), shown);
  Ending ending = EndingOf(result);
  if (result.is(client::kTextShown)) {
    const bool same = shown == ansi[0];
    ending.ok = same;
    ending.exitCode = same ? kExitOk : kExitServer;
    ending.text = same ? "the text was shown, and the box is closed" : "another text was shown";
    if (report.IsJson()) report.Json().Name("shown").Text(Utf8FromAnsi(shown));
    report.Line("the server answered 999, which is success here; it has shown " + Quoted(shown));
  } else if (result.ok()) {
    ending.ok = false;
    ending.exitCode = kExitServer;
    ending.text = "but the success of this command is 999";
  }
  return report.Finish(ending, NoReplyHint(result, "the box on its desktop is closed"));
}

}  // namespace cli
