#include <iterator>

#include "cli/ActionReport.h"
#include "cli/Actions.h"
#include "cli/AnsiArguments.h"
#include "cli/Connection.h"
#include "cli/LibraryHint.h"

namespace cli {
namespace {

using client::ActionCalls;
using client::Result;
using client::SecondSend;

constexpr char kDeviceKey[] = "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID\\";

// What stands behind the codes by which the server says that a plug-in was not run. Plug-ins may
// use the same ones.
std::string PlugInHint(const Result& result, const std::string& deviceId, const char* value) {
  std::string no = NoReplyHint(result, "the plug-in returns");
  if (!no.empty() || result.ok() || !result.fromServer()) return no;
  const std::string key = kDeviceKey + Printable(deviceId);
  const std::string named = std::string("that the value ") + value + " of " + key + " names";
  switch (result.code()) {
    case 2:
      return "if this is not the plug-in's own code: the key " + key +
             " or one of its values HardwareID and " + value + " is missing";
    case 34:
      return "the device id, or the library's name, is too long for its path";
    case 126:
      return "if this is not the plug-in's own code: the library " + named +
             ", or one that it needs, is not in the server's system directory";
    case 127:
      return "if this is not the plug-in's own code: the library lacks the function " + named;
    case 193:
      return "if this is not the plug-in's own code: the library " + named +
             " is not one for 32 bits";
    case SRV_ERR_UNKNOWN_COMMAND:
    case SRV_ERR_NO_KEY_HANDLE:
    case BUFFER_OVERFLOW:
      return {};
    default:
      return "as a rule this is the plug-in's own code; its documents say what it means";
  }
}

struct PlugInTexts {
  std::string deviceId;
  std::string language;
  std::string board;
};

bool TakePlugInTexts(const Invocation& invocation, Output& output, PlugInTexts& texts) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return false;
  texts.deviceId = ansi[0];
  return AnsiText(invocation, output, invocation.action.language, texts.language) &&
         AnsiText(invocation, output, invocation.action.board, texts.board) &&
         IsShortEnough(invocation, output, "DEVICEID", texts.deviceId) &&
         IsShortEnough(invocation, output, "a language extension", texts.language) &&
         IsShortEnough(invocation, output, "a board", texts.board);
}

// What a command says that the server answers once without its library, and twice with it.
struct LibraryTexts {
  std::string library;
  std::string notDone;
  std::string done;
  std::string code;  // whose code a failure has
};

int FinishWithLibrary(Report& report, const Result& result, const SecondSend& second,
                      const LibraryTexts& texts) {
  Ending ending = EndingOf(result);
  if (ShowSecondSend(report, result, second)) {
    ending.ok = false;
    ending.exitCode = kExitServer;
    ending.text += ", and then something else";
  } else if (result.ok() && !second.came) {
    ending.ok = false;
    ending.exitCode = kExitServer;
    ending.text = "but once only, which says that " + texts.library + " could not be loaded; " +
                  texts.notDone;
  } else if (result.ok()) {
    report.Line("the server answered 0 (success), twice: " + texts.done);
  }
  std::string hint = NoReplyHint(result, "what it shows on its desktop is closed");
  if (result.is(SRV_ERR_EXCEPTION_OCCURED)) {
    hint = "it was " + texts.library + " that raised it";
  } else if (!result.ok() && result.fromServer() && !IsServersOwn(result)) {
    hint = texts.code;
  }
  return report.Finish(ending, hint);
}

std::string DriverHint(const Result& result) {
  const std::string whose = "the code is drvinstx.dll's; ";
  switch (result.code()) {
    case 2:
    case 3:
      return whose + "as a rule the INF file, or a file that it names, is not there";
    case 87:
      return whose + "as a rule SERVICE, INF or --mode is not one that it takes";
    default:
      return whose + "it may be one of the set-up functions of Windows";
  }
}

// The code is no library's: of a panel that failed the server tells the last error of before.
std::string PanelHint(const Result& result) {
  if (result.is(127)) return "onlpanelx.cpl lacks RunEpromPanelAsAdmin";
  return "onlpanelx.cpl says that it failed, but not why: the code is what Windows had noted last, "
         "and need not be the reason";
}

}  // namespace

int InstallAction(const Invocation& invocation, Output& output) {
  PlugInTexts texts;
  if (!TakePlugInTexts(invocation, output, texts)) return kExitUsage;
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  const Result result =
      ActionCalls(*client).Install(texts.deviceId.c_str(), texts.language.c_str());
  if (result.ok()) {
    report.Line("the server answered 0 (success): the installer of " + Quoted(texts.deviceId) +
                " has run, and the plausibility check after it");
  }
  return report.Finish(result, PlugInHint(result, invocation.arguments[0], "Installer"));
}

int DeinstallAction(const Invocation& invocation, Output& output) {
  PlugInTexts texts;
  if (!TakePlugInTexts(invocation, output, texts)) return kExitUsage;
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  const Result result = ActionCalls(*client).Deinstall(texts.deviceId.c_str(),
                                                       texts.language.c_str(), texts.board.c_str());
  if (result.ok()) {
    report.Line("the server answered 0 (success): the deinstaller of " + Quoted(texts.deviceId) +
                " has run; no plausibility check follows");
  }
  return report.Finish(result, PlugInHint(result, invocation.arguments[0], "Deinstaller"));
}

int DriverInstallAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return kExitUsage;
  static constexpr const char* kNames[] = {"SERVICE", "INF", "THIRD"};
  for (std::size_t i = 0; i < std::size(kNames); ++i) {
    if (!IsShortEnough(invocation, output, kNames[i], ansi[i])) return kExitUsage;
  }
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  SecondSend second;
  const Result result = ActionCalls(*client).InstallWdmDriver_32(
      ansi[0].c_str(), ansi[1].c_str(), ansi[2].c_str(), invocation.action.mode, second);
  return FinishWithLibrary(
      report, result, second,
      {"drvinstx.dll", "nothing was installed",
       "drvinstx.dll was loaded, and returned 0 or lacks its function", DriverHint(result)});
}

int PanelAction(const Invocation& invocation, Output& output) {
  Report report(invocation, output);
  const auto client = MakeClient(invocation);
  SecondSend second;
  const Result result = ActionCalls(*client).RunOnlinePanel_32(second);
  return FinishWithLibrary(
      report, result, second,
      {"onlpanelx.cpl", "no panel was shown",
       "onlpanelx.cpl was loaded, and its panel has returned", PanelHint(result)});
}

}  // namespace cli
