#include "tests/faults/ExpectationRules.h"

#include <algorithm>

namespace expectations {
namespace {

using fault_session::How;
using fault_session::Step;

constexpr std::uint32_t kRaised = 8604;
constexpr std::uint32_t kOverflow = 8602;
constexpr std::uint32_t kNoLibrary = 8603;
constexpr std::uint32_t kNoExport = 8601;
constexpr std::uint32_t kNoResult = 259;
constexpr std::uint32_t kDenied = 5;

constexpr char kPrimitive[] = "a primitive's code is the result";
constexpr char kException[] = "an exception is 8604";
constexpr char kVendor[] = "the library's code is the result";
constexpr char kClient[] = "costs the client and nobody else";
constexpr char kNoState[] =
    "by design: a device whose state cannot be found out has the state 0 and no problem";
constexpr char kKeptResult[] = "by design: the result kept so far is answered";
constexpr char kNoPool[] = "by design: without its pool a server does not start";
constexpr char kWorker[] = "the restart's result says so";
constexpr char kStateless[] = "0400 00000000 00000000 00000000";
constexpr char kDone[] = "0400 00000000";

// A function that one command stands for.
constexpr Rule Own(const char* function, std::uint32_t command, const char* why = kPrimitive) {
  return {.function = function,
          .command = command,
          .effect = Effect::Result,
          .result = kOwnCode,
          .why = why};
}
constexpr Rule Raises(const char* function, std::uint32_t command) {
  return {.function = function,
          .failure = "raises",
          .command = command,
          .effect = Effect::Result,
          .result = kRaised,
          .why = kException};
}
constexpr Rule Loads(const char* failure, const char* detail, std::uint32_t result,
                     const char* why) {
  return {.function = "platform::DynamicLibrary::Load",
          .failure = failure,
          .detail = detail,
          .effect = Effect::Result,
          .result = result,
          .why = why};
}
constexpr Rule Finds(const char* detail, std::uint32_t result, const char* why) {
  return {.function = "platform::DynamicLibrary::Find",
          .detail = detail,
          .effect = Effect::Result,
          .result = result,
          .why = why};
}
constexpr Rule Worker(const char* function, const char* failure, const char* detail,
                      std::uint32_t fetched) {
  return {.function = function,
          .failure = failure,
          .detail = detail,
          .command = 288,
          .fetched = fetched,
          .why = kWorker};
}

constexpr Rule kRules[] = {
    // --- The pipe ---
    {.function = "pipe_io::CreateInstanceEvent", .effect = Effect::Ends, .why = kNoPool},
    {.function = "pipe_io::CreateInstance", .effect = Effect::Ends, .why = kNoPool},
    {.function = "pipe_io::WaitAny",
     .detail = "wait",
     .effect = Effect::Ends,
     .why = "by design: a failed wait ends the loop"},
    {.function = "pipe_io::Completion",
     .failure = "broken",
     .detail = "connect",
     .effect = Effect::Ends,
     .why = "by design: a pending connect that fails ends the loop"},
    {.function = "pipe_io::Completion",
     .failure = "broken",
     .effect = Effect::MayLose,
     .why = kClient},
    {.function = "pipe_io::Read", .effect = Effect::MayLose, .why = kClient},
    {.function = "pipe_io::Write", .effect = Effect::MayLose, .why = kClient},

    // --- Registry ---
    Raises("RegDelKeyBL", 1),
    Own("RegDelKeyBL", 1),
    Raises("RegDelKeyBL", 30),
    Own("RegDelKeyBL", 30),
    Raises("RegCreateKeyBL", 2),
    Own("RegCreateKeyBL", 2),
    Raises("RegCreateKeyBL", 29),
    Own("RegCreateKeyBL", 29),
    Raises("RegSetValueBL", 3),
    Own("RegSetValueBL", 3),
    Raises("RegSetValueBL", 28),
    Own("RegSetValueBL", 28),
    Raises("RegDelValueBL", 18),
    Own("RegDelValueBL", 18),
    Raises("RegEnumKeyBL", 21),
    Own("RegEnumKeyBL", 21),
    Raises("RegGetValueBL", 22),
    Own("RegGetValueBL", 22),
    Raises("RegEnumValueBL", 23),
    Own("RegEnumValueBL", 23),
    Own("RegQueryValueLeavingKeyOpen", 5),
    Own("RegQueryValueLeavingKeyOpen", 6),
    {.function = "RegDeleteLiteralKey",
     .failure = "raises",
     .command = 292,
     .effect = Effect::Exactly,
     .bytes = kDone,
     .why = kKeptResult},
    // The check of logical names goes on without its answers.
    {.function = "CanonicalisePath", .command = 292},
    {.function = "CanonicalisePath", .command = 5},
    {.function = "CanonicalisePath",
     .failure = "raises",
     .effect = Effect::Result,
     .result = kRaised,
     .why = kException},
    {.function = "CanonicalisePath",
     .effect = Effect::Result,
     .result = kDenied,
     .why = "a path that cannot be made plain is refused"},

    // --- Board library ---
    {.function = "BRDX_ScanBL",
     .failure = "raises",
     .command = 292,
     .effect = Effect::Exactly,
     .bytes = kDone,
     .why = kKeptResult},
    {.function = "BRDX_RemoveAbandonLogDevices",
     .failure = "raises",
     .command = 292,
     .effect = Effect::Result,
     .result = 55,
     .why = kKeptResult},
    Own("BRDX_RemoveAbandonLogDevices", 292, kVendor),
    Raises("BRDX_ScanBL", 199),
    Own("BRDX_ScanBL", 199, kVendor),
    Raises("BRDX_CreateAllLogdevicesBL", 201),
    Own("BRDX_CreateAllLogdevicesBL", 201, kVendor),
    Raises("BRDX_HasUninitializedInstancesBL", 88),
    Own("BRDX_HasUninitializedInstancesBL", 88, kVendor),
    Raises("BRDX_UpdateLogdevicesForDeviceBL", 200),
    Own("BRDX_UpdateLogdevicesForDeviceBL", 200, kVendor),
    Raises("BRDX_EnumBoardExBL", 193),
    Own("BRDX_EnumBoardExBL", 193, kVendor),
    Raises("BRDX_EnumInstBoardBL", 192),
    Own("BRDX_EnumInstBoardBL", 192, kVendor),
    Raises("BRDX_EnumAvailableBoardsBL", 194),
    Own("BRDX_EnumAvailableBoardsBL", 194, kVendor),
    Raises("BRDX_EnumAdaptersBL", 197),
    Own("BRDX_EnumAdaptersBL", 197, kVendor),
    Raises("BRDX_EnumConfigurationBL", 196),
    Own("BRDX_EnumConfigurationBL", 196, kVendor),
    Raises("BRDX_BoardGetMapBL", 163),
    Own("BRDX_BoardGetMapBL", 163, kVendor),
    Raises("BRDX_GetBoardInfoBL", 195),
    Own("BRDX_GetBoardInfoBL", 195, kVendor),
    Raises("BRDX_GetBoardInfoExBL", 207),
    Own("BRDX_GetBoardInfoExBL", 207, kVendor),
    Raises("BRDX_RegisterForDeviceChangeNotifications", 256),
    Own("BRDX_RegisterForDeviceChangeNotifications", 256, kVendor),
    Raises("BRDX_UnregisterForDeviceChangeNotifications", 257),
    Own("BRDX_UnregisterForDeviceChangeNotifications", 257, kVendor),
    Raises("BRDX_GetDeviceChange", 258),
    Own("BRDX_GetDeviceChange", 258, kVendor),
    Raises("BRDX_GetBoardInformation", 191),
    Own("BRDX_GetBoardInformation", 191, kVendor),
    // What the look-up returns is not looked at; the state of whatever it found is asked for.
    Raises("BRDX_GetDeviceInstance", 290),
    Raises("BRDX_GetDeviceInstanceOpt", 290),
    {.function = "platform::FencedBuffer",
     .command = 207,
     .effect = Effect::Result,
     .result = kOverflow,
     .why = "memory that is not there is 8602"},

    // --- Exports of libraries that are loaded at run time ---
    Own("export Installer", 5, kVendor),
    Own("export Deinstaller", 6, kVendor),
    Raises("export EINST_InstallWdmDriver", 15),
    Own("export EINST_InstallWdmDriver", 15, kVendor),
    Raises("export RunEpromPanelAsAdmin", 17),
    {.function = "export RunEpromPanelAsAdmin",
     .why = "by design: the answer is what the look-up of the export left, 0"},
    Raises("export IE_AddIPAddressEx", 12),
    Own("export IE_AddIPAddressEx", 12, kVendor),
    Raises("export IE_DeleteIPAddressEx", 13),
    Own("export IE_DeleteIPAddressEx", 13, kVendor),
    Raises("export CM_Get_DevNode_Status", 290),
    {.function = "export CM_Get_DevNode_Status",
     .effect = Effect::Exactly,
     .bytes = kStateless,
     .why = kNoState},
    Worker("export DllEntryFktSilent", "raises", "", kRaised),
    Worker("export DllEntryFktSilent", "fails", "", kOwnCode),
    Worker("export EpIsCpInRing", "raises", "", kRaised),

    // --- Libraries ---
    Worker("platform::DynamicLibrary::Load", "raises", "rstagent9", kRaised),
    Worker("platform::DynamicLibrary::Load", "raises", "ringdiag", kRaised),
    Worker("platform::DynamicLibrary::Load", "not found", "rstagent9", kNoLibrary),
    {.function = "platform::DynamicLibrary::Load",
     .failure = "not found",
     .detail = "ringdiag",
     .why = "by design: without the check a restart is as good as with it"},
    Loads("raises", "", kRaised, kException),
    Loads("not found", "plug.dll", kOwnCode, "the error of the load is the result"),
    Loads("not found", "ipcfgx", kNoLibrary, "8603"),
    {.function = "platform::DynamicLibrary::Load",
     .detail = "drvinstx",
     .effect = Effect::Exactly,
     .bytes = kDone,
     .box = "Fatal Error: Can't load drvinstx.dll  ErrorCode: 126",
     .why = "by design: told in a message box and answered with 0, once"},
    {.function = "platform::DynamicLibrary::Load",
     .detail = "onlpanelx",
     .effect = Effect::Exactly,
     .bytes = kDone,
     .box = "Fatal Error: Can't load onlpanelx.cpl  ErrorCode: 126",
     .why = "by design: told in a message box and answered with 0, once"},
    {.function = "platform::DynamicLibrary::Load",
     .detail = "cfgmgr32",
     .effect = Effect::Exactly,
     .bytes = kStateless,
     .why = kNoState},
    Worker("platform::DynamicLibrary::Find", "", "DllEntryFktSilent", kNoExport),
    Finds("IE_", kNoExport, "8601"),
    Finds("RunEpromPanelAsAdmin", kOwnCode, "the error of the look-up is the result"),
    {.function = "platform::DynamicLibrary::Find",
     .detail = "EINST_InstallWdmDriver",
     .why = "by design: a library without the export is answered with 0"},
    {.function = "platform::DynamicLibrary::Find",
     .detail = "EpIsCpInRing",
     .why = "by design: without the check a restart is as good as with it"},
    {.function = "platform::DynamicLibrary::Find",
     .detail = "CM_Get_DevNode_Status",
     .effect = Effect::Exactly,
     .bytes = kStateless,
     .why = kNoState},
    Finds("Run", kOwnCode, "the error of the look-up is the result"),

    // --- Folders ---
    {.function = "platform::SystemDirectory",
     .command = 5,
     .effect = Effect::Result,
     .result = kOverflow,
     .why = "8602"},
    {.function = "platform::SystemDirectory",
     .command = 6,
     .effect = Effect::Result,
     .result = kOverflow,
     .why = "8602"},
    {.function = "platform::SystemDirectory",
     .command = 290,
     .effect = Effect::Exactly,
     .bytes = kStateless,
     .why = kNoState},
    {.function = "platform::SystemDirectory",
     .command = 288,
     .call = 1,
     .fetched = kNoLibrary,
     .why = kWorker},
    {.function = "platform::SpecialFolder",
     .effect = Effect::Result,
     .result = kNoLibrary,
     .why = "8603"},

    // --- Threads and named objects ---
    {.function = "platform::StartWorker",
     .effect = Effect::Result,
     .result = kOverflow,
     .fetched = kNoResult,
     .why = "a restart that cannot start is 8602"},
    Worker("platform::SignalEvent", "", "", kNoResult),
    {.function = "platform::CreateMarkerMutex",
     .command = kAtEnd,
     .effect = Effect::Text,
     .bytes = "timer -1, Stack\t",
     .why = "a timer that cannot start says so"},
    {.function = "ReadProductValues",
     .command = kAtEnd,
     .call = 2,
     .effect = Effect::Text,
     .bytes = "timer 0, ",
     .why = "a product without a key has no text"},
};

std::uint32_t CommandOf(const Step& step) {
  if (step.how == How::End) return kAtEnd;
  if (step.request.size() < 2) return 0xFFFF;
  return step.request[0] | std::uint32_t{step.request[1]} << 8;
}

bool Fits(const Rule& rule, const std::string& function, const std::string& failure,
          const std::string& detail, const Step& step, int call) {
  return function == rule.function && (*rule.failure == '\0' || failure == rule.failure) &&
         detail.find(rule.detail) != std::string::npos &&
         (rule.command == kAnyCommand || rule.command == CommandOf(step)) &&
         (rule.call == 0 || rule.call == call);
}

}  // namespace

const Rule& FindRule(const std::string& function, const std::string& failure,
                     const std::string& detail, const Step& step, int call) {
  static constexpr Rule kUnseen;
  // Rules about replies have nothing to say where there is no request; the server may still end.
  const bool noRequest = step.how == How::Start;
  const auto* const found =
      std::find_if(std::begin(kRules), std::end(kRules), [&](const Rule& rule) {
        return (!noRequest || rule.effect == Effect::Ends) &&
               Fits(rule, function, failure, detail, step, call);
      });
  return found != std::end(kRules) ? *found : kUnseen;
}

bool CostsConnections(const std::string& function) {
  static const std::string_view kThose[] = {"pipe_io::Connect", "pipe_io::Read", "pipe_io::Write",
                                            "pipe_io::Completion"};
  return std::find(std::begin(kThose), std::end(kThose), function) != std::end(kThose);
}

}  // namespace expectations
