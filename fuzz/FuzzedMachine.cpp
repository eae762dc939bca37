#include "fuzz/FuzzedMachine.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>

#include "fuzz/PolicyModel.h"
#include "platform/WinTypes.h"
#include "server/CommandCode.h"
#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeDynamicLibrary.h"
#include "tests/fakes/FakeEventLog.h"
#include "tests/fakes/FakeMessageBox.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/FakeRegistry.h"
#include "tests/fakes/FakeSystemPath.h"
#include "tests/fakes/FakeWorkerThread.h"
#include "tests/fakes/ScriptedBoardLibrary.h"
#include "tests/fakes/trace/FakeTrace.h"

namespace {

constexpr std::size_t kFenced = 65536;  // of the buffer that is lent for lengths above 8192
constexpr std::size_t kLent = 8193;     // of every other one

struct State {
  std::unique_ptr<FuzzedDataProvider> script;
  CommandCode command = CommandCode::Install;  // at the start nothing is guarded either
  int registryCalls = 0;
  int raiseAt = 0;
  bool registryLies = false;
  bool traces = false;
  bool usedResult = false;
} g;

void Require(bool holds) {
  if (!holds) std::abort();
}

FuzzedDataProvider& Script() { return *g.script; }
bool Chance(int of) { return Script().ConsumeIntegralInRange(0, of - 1) == of - 1; }

std::uint32_t TakeNumber() {
  static constexpr std::uint32_t kEdges[] = {
      0,    1,    2,    259,  260, 4000,  8000,  8150,       8159,       8160,
      8161, 8191, 8192, 8193, 999, 65535, 65536, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  if (Script().ConsumeBool()) return Script().PickValueInArray(kEdges);
  return Script().ConsumeIntegral<std::uint32_t>();
}

std::uint32_t TakeResult() {
  if (!Chance(4)) return 0;
  const std::uint32_t result = TakeNumber();
  // What the server itself says: done, too long, raised, unknown.
  static constexpr std::uint32_t kOurs[] = {999, 8602, 8604, 8620};
  if (std::find(std::begin(kOurs), std::end(kOurs), result) != std::end(kOurs)) g.usedResult = true;
  return result;
}

// Bytes that are mostly one letter, so that long ones cost the fuzzer little.
std::string TakeBytes(std::size_t limit) {
  std::string bytes = Script().ConsumeRandomLengthString(24);
  // Sizes that just fit a reply, alone or several together, and any others.
  static constexpr std::size_t kSizes[] = {1358, 1360, 2030, 2040, 4070, 4080, 8142, 8146,
                                           8150, 8154, 8159, 8160, 8161, 8191, 8192};
  switch (Script().ConsumeIntegralInRange(0, 4)) {
    case 3:
      bytes.resize(std::min(limit, Script().PickValueInArray(kSizes)), 'x');
      break;
    case 4:
      bytes.resize(Script().ConsumeIntegralInRange<std::size_t>(0, limit), 'x');
      break;
    default:
      break;
  }
  return bytes;
}

std::uint32_t Finish() {
  if (Chance(12)) throw std::runtime_error("fault");
  return TakeResult();
}

// --- The board library ---

// Writes as much as was announced, with or without a zero behind it, and says what it likes.
void Fill(std::uint8_t* to, std::uint32_t& length) {
  const std::size_t room = length > 8192 ? kFenced : kLent - 1;
  const std::string bytes = TakeBytes(std::min<std::size_t>(length, room));
  const std::size_t size = std::min<std::size_t>({bytes.size(), length, room});
  if (size != 0) std::memcpy(to, bytes.data(), size);
  switch (Script().ConsumeIntegralInRange(0, 3)) {
    case 0:
    case 1:
      length = static_cast<std::uint32_t>(size);
      break;
    case 2:
      length = TakeNumber();
      break;
    default:
      break;
  }
}

// A library reads its texts to their ends; the sanitizer says whether they have one.
void Look(const char* text, std::size_t most) {
  if (text != nullptr) Require(std::strlen(text) <= most);
}

std::uint32_t OnCall(const scripted_board_library::Call& call) {
  for (const char* const text : call.texts) Look(text, 8191);
  for (const scripted_board_library::Out& out : call.outs) Fill(out.bytes, *out.length);
  if (call.value != nullptr) *call.value = TakeNumber();
  if (call.byte != nullptr) *call.byte = Script().ConsumeIntegral<std::uint8_t>();
  return Finish();
}

std::uint32_t OnRegistration(BRDX_GUID, char* deviceId) {
  Look(deviceId, 259);
  return Finish();
}

std::uint32_t OnChange(char* deviceId, std::uint8_t* kind, BRDX_GUID* guid, char* text,
                       std::uint32_t* length) {
  Look(deviceId, 259);
  *kind = Script().ConsumeIntegral<std::uint8_t>();
  std::memset(guid, *kind, sizeof(*guid));
  Fill(reinterpret_cast<std::uint8_t*>(text), *length);
  return Finish();
}

std::uint32_t OnInformation(std::uint8_t*, BRDX_INFO_INPUT* input, BRDX_INFO_OUTPUT* output,
                            std::uint32_t) {
  Fill(input->area1, input->cbArea1);
  Fill(output->area2, output->cbArea2);
  *input->value = TakeNumber();
  output->result1 = TakeNumber();
  output->result2 = TakeNumber();
  if (Chance(2)) input->area1 = output->area2 = nullptr;
  return Finish();
}

void ArrangeBoardLibrary() {
  fake_board_library::Reset();
  scripted_board_library::Install(OnCall);
  fake_board_library::Library& lib = fake_board_library::Lib();
  lib.startHardwareDetection = lib.removeAbandonLogDevices =
      lib.updateRoute = [] { return Finish(); };
  lib.registerForChanges = lib.unregisterForChanges = OnRegistration;
  lib.getDeviceChange = OnChange;
  lib.getBoardInformation = OnInformation;
  lib.getDeviceInstance = [](char* hardwareId, std::uint32_t* instance) {
    Look(hardwareId, 8191);
    *instance = TakeNumber();
    return Finish();
  };
  lib.getDeviceInstanceOpt = [](char* hardwareId, std::uint32_t, std::uint32_t* instance) {
    Look(hardwareId, 8191);
    *instance = TakeNumber();
    return Finish();
  };
}

// --- The vendor's other libraries ---

std::uint32_t ENTRY_STDCALL DeviceStatus(std::uint32_t* status, std::uint32_t* problem,
                                         std::uint32_t, std::uint32_t) {
  *status = TakeNumber();
  *problem = TakeNumber();
  return Finish();
}

// Plug-ins are called without a guard, so these do not raise.
std::uint32_t ENTRY_CDECL RunInstaller(char* hardwareId, const char* deviceId, char* languageExt,
                                       std::uint32_t) {
  Look(hardwareId, 260);
  Look(deviceId, 259);
  Look(languageExt, 259);
  return TakeResult();
}
std::uint32_t ENTRY_CDECL RunDeinstaller(char* hardwareId, const char* deviceId, char* languageExt,
                                         std::uint32_t zero, char* board) {
  Look(board, 259);
  return RunInstaller(hardwareId, deviceId, languageExt, zero);
}

std::uint32_t ENTRY_STDCALL InstallDriver(char* service, char* infFile, char* third,
                                          std::uint32_t) {
  for (const char* const text : {service, infFile, third}) Look(text, 259);
  return Finish();
}
std::uint32_t ENTRY_STDCALL RunPanel(std::uint32_t, std::uint32_t) { return Finish(); }
std::uint32_t ENTRY_CDECL AddAddress(std::uint32_t, std::uint32_t, std::uint32_t,
                                     std::uint32_t* context, std::uint32_t* instance) {
  *context = TakeNumber();
  *instance = TakeNumber();
  return Finish();
}
std::uint32_t ENTRY_CDECL DeleteAddress(std::uint32_t) { return Finish(); }
// May write over the name that it was lent.
std::uint32_t ENTRY_STDCALL Restart(char* name) {
  Look(name, 259);
  std::memset(name, 'x', 260);
  return Finish();
}
std::uint32_t ENTRY_STDCALL IsInRing(char* name, std::uint32_t, std::uint32_t* out) {
  *out = TakeNumber();
  return Restart(name);
}

void OnLoad(const std::string& name) {
  Require(name.size() < 260);
  static constexpr CommandCode kGuarded[] = {
      CommandCode::AddIpAddress, CommandCode::DelIpAddress, CommandCode::InstallWdmDriver_32,
      CommandCode::RunOnlinePanel_32, CommandCode::SilentRestart};
  const bool isGuarded =
      std::find(std::begin(kGuarded), std::end(kGuarded), g.command) != std::end(kGuarded);
  if (isGuarded && Chance(12)) throw std::runtime_error("fault");
}

void AddLibrary(const std::string& name, fake_dynamic_library::Exports exports) {
  if (Chance(8)) {
    fake_dynamic_library::RefuseLoad(name, TakeNumber());
    return;
  }
  if (Chance(8)) exports.clear();
  fake_dynamic_library::Add(name, std::move(exports));
}

void ArrangeLibraries() {
  using fake_dynamic_library::Export;
  const std::string system = "C:\\windows\\system32";
  fake_dynamic_library::Reset();
  fake_system_path::Reset();
  fake_system_path::SetSpecialFolder(system);
  AddLibrary(system + "\\cfgmgr32.dll", {{"CM_Get_DevNode_Status", Export(DeviceStatus)}});
  AddLibrary(system + "\\p.dll", {{"In", Export(RunInstaller)}, {"De", Export(RunDeinstaller)}});
  AddLibrary("drvinstx.dll", {{"EINST_InstallWdmDriver", Export(InstallDriver)}});
  AddLibrary("onlpanelx.cpl", {{"RunEpromPanelAsAdmin", Export(RunPanel)}});
  AddLibrary(system + "\\ipcfgx.dll", {{"IE_AddIPAddressEx", Export(AddAddress)},
                                       {"IE_DeleteIPAddressEx", Export(DeleteAddress)}});
  AddLibrary(system + "\\rstagent9.dll", {{"DllEntryFktSilent", Export(Restart)}});
  AddLibrary(system + "\\ringdiag.dll", {{"EpIsCpInRing", Export(IsInRing)}});
  fake_dynamic_library::OnLoad(OnLoad);
  if (Chance(4)) fake_dynamic_library::LastErrorAfterFind(TakeNumber());
  if (Chance(8)) {
    fake_system_path::SetSystemDirectory(
        std::string(Script().ConsumeIntegralInRange<std::size_t>(0, 300), 's'));
    fake_system_path::SetSpecialFolder(
        std::string(Script().ConsumeIntegralInRange<std::size_t>(0, 259), 's'));
  }
}

// --- The registry ---

void AddValue(const std::string& key, const std::string& name, const std::string& usual) {
  const std::string data = Chance(3) ? TakeBytes(9000) : usual;
  const auto type = Chance(3) ? Script().ConsumeIntegralInRange<std::uint32_t>(0, 11) : 1u;
  fake_registry::Create(key).values[fake_registry::Fold(name)] = {name, type, TextBytes(data)};
}

std::string TakeKeyName() {
  std::string name = TakeBytes(255);
  std::erase_if(name, [](char c) { return c == '\0' || c == '\\'; });
  return name.empty() || name == "." || name == ".." ? "k" : name;
}

void OnRegistryCall() {
  static constexpr CommandCode kUnguarded[] = {CommandCode::Install, CommandCode::Deinstall};
  const bool isGuarded =
      std::find(std::begin(kUnguarded), std::end(kUnguarded), g.command) == std::end(kUnguarded);
  if (++g.registryCalls == g.raiseAt && isGuarded) throw std::runtime_error("fault");
}

// The plausibility check alone goes past the policy, with two names of its own.
void OnRegistryChange(const std::string& key) {
  const bool isLeftover = key == "EMULON(TCP/IP) -> EMULON V5.x" ||
                          key == "EMULON Q-2100/Q-2500(TCP/IP) -> EMULON Q-2100/Q-2500";
  Require(policy_model::IsInside(key) || isLeftover);
}

void OnRegistryRead(std::uint32_t& result, std::uint32_t& length) {
  if (!g.registryLies || !Chance(3)) return;
  length = TakeNumber();
  if (Chance(3)) result = TakeResult();
}

void ArrangeRegistry() {
  const std::string tree = "SOFTWARE\\Vesmark\\NORVA";
  fake_registry::OnCall({});
  fake_registry::Root() = {};
  const std::string device = tree + "\\DefDevices\\DeviceID\\dev";
  AddValue(device, "HardwareID", "PCI");
  AddValue(device, "Installer", "p.dll,In");
  AddValue(device, "Deinstaller", "p.dll,De");
  AddValue(tree + "\\LogNames\\n", "LogDevice", "KWTUSB1,gone");
  AddValue(tree + "\\LogDevices\\d", "v", "there");
  AddValue(tree + "\\" + TakeKeyName(), "v", "text");
  AddValue("SOFTWARE\\Vesmark\\Shared Tools\\MIREL", "SetupSucceeded", "0");
  (void)fake_registry::Create(tree + "\\K\\" + tree + "\\K");
  g.raiseAt = Chance(4) ? Script().ConsumeIntegralInRange(1, 20) : 0;
  g.registryLies = Chance(4);
  fake_registry::OnCall(OnRegistryCall);
  fake_registry::OnChange(OnRegistryChange);
  fake_registry::OnRead(OnRegistryRead);
}

}  // namespace

void fuzzed_machine::Arrange(std::span<const std::uint8_t> script) {
  g = {};
  g.script = std::make_unique<FuzzedDataProvider>(script.data(), script.size());
  fake_named_object::Reset();
  fake_worker_thread::Reset();
  fake_worker_thread::RunAtOnce();
  ArrangeBoardLibrary();
  ArrangeLibraries();
  ArrangeRegistry();
  if (Chance(8)) fake_worker_thread::Refuse();
  if (Chance(8)) fake_named_object::AnswerWait(TakeNumber());
  if (Chance(8)) fake_named_object::RefuseMutexes();
  if (Chance(2)) fake_named_object::OfferEvent("event");
  g.traces = Chance(8);
  if (g.traces) FakeTrace::Collect(0xFFFFFFFF);
}

void fuzzed_machine::Clear() {
  if (g.traces) FakeTrace::Collect(0);
  fake_worker_thread::Reset();
  fake_named_object::Reset();
  fake_board_library::Reset();
  fake_dynamic_library::Reset();
  fake_system_path::Reset();
  fake_registry::OnCall({});
  fake_registry::OnChange({});
  fake_registry::OnRead({});
  fake_registry::Root() = {};
  fake_message_box::Shown() = {};
  (void)fake_event_log::Take();
  g = {};
}

void fuzzed_machine::Serving(std::uint16_t command) {
  g.command = static_cast<CommandCode>(command);
  g.registryCalls = 0;
  g.usedResult = false;
}

bool fuzzed_machine::UsedAResultOfTheServer() { return g.usedResult; }
