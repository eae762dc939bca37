#include <algorithm>
#include <cstring>

#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeDynamicLibrary.h"
#include "tests/fakes/FakeMessageBox.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/FakePipeIo.h"
#include "tests/fakes/FakeRegistry.h"
#include "tests/fakes/FakeSystemPath.h"
#include "tests/fakes/FakeWallClock.h"
#include "tests/fakes/FakeWorkerThread.h"
#include "tests/fakes/ScriptedBoardLibrary.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "tests/faults/Session.h"
#include "tests/support/RegistrySetup.h"
#include "trace/Zqotrc.h"

// The machine that the server runs on: configuration, libraries, and what they answer.

namespace fault_session {
namespace {

using fake_dynamic_library::Export;
using fault_plan::CodeFor;

const std::string kNorva = "SOFTWARE\\Vesmark\\NORVA";

void SetText(const std::string& key, const char* name, const std::string& text) {
  registry_setup::SetValue(key, name, registry_setup::kSz, TextBytes(text) + Bytes{0});
}

void ArrangeRegistry() {
  fake_registry::Root() = {};
  SetText("SOFTWARE\\Vesmark\\Shared Tools\\MIREL", "SetupSucceeded", "1");
  SetText("SOFTWARE\\Vesmark\\Shared Tools\\MIREL", "DisplayName", "Stack");
  registry_setup::CreateKey("EMULON(TCP/IP) -> EMULON V5.x");

  // Identifiers that want repair, one in each area.
  const std::string devices = kNorva + "\\DefDevices";
  SetText(devices + "\\DeviceId\\HWX7101", "HardwareId", "PCI\\VEN_1F3C&DEV_5101");
  SetText(devices + "\\DefaultLogDevices\\NB510", "HardwareId", "PCI\\VEN_1F3C&DEV_5202");
  SetText(kNorva + "\\LogDevices\\NB410A", "HardwareId", "PCI\\VEN_1F3C&DEV_5101");
  // Logical names: one of a list with a device that is gone, one in order, one of nobody.
  SetText(kNorva + "\\LogNames\\a", "LogDevice", "KWTUSB1,gone");
  SetText(kNorva + "\\LogNames\\b", "LogDevice", "NB410A");
  SetText(kNorva + "\\LogNames\\c", "LogDevice", "");

  SetText(devices + "\\DeviceID\\d", "HardwareID", "HW");
  SetText(devices + "\\DeviceID\\d", "Installer", "plug.dll,Run");
  SetText(devices + "\\DeviceID\\d", "Deinstaller", "unplug.dll,Run");

  SetText(kNorva + "\\F", "v", "value");
  SetText(kNorva + "\\W", "old", "x");
  registry_setup::CreateKey(kNorva + "\\F\\sub");
  // Of these two, what lies at their own path below themselves is deleted.
  registry_setup::CreateKey(kNorva + "\\G\\" + kNorva + "\\G\\nested");
  registry_setup::CreateKey(kNorva + "\\H\\" + kNorva + "\\H\\nested");
}

std::uint32_t Installer(char*, const char*, char*, std::uint32_t) {
  return CodeFor("export Installer");
}
std::uint32_t Deinstaller(char*, const char*, char*, std::uint32_t, char*) {
  return CodeFor("export Deinstaller");
}
std::uint32_t InstallDriver(char*, char*, char*, std::uint32_t) {
  return CodeFor("export EINST_InstallWdmDriver");
}
std::uint32_t RunPanel(std::uint32_t, std::uint32_t) {
  return fault_plan::Fails("export RunEpromPanelAsAdmin") ? 0 : 1;
}
std::uint32_t AddAddress(std::uint32_t address, std::uint32_t, std::uint32_t,
                         std::uint32_t* context, std::uint32_t* instance) {
  if (const std::uint32_t code = CodeFor("export IE_AddIPAddressEx")) return code;
  *context = address + 1;
  *instance = 7;
  return address == 0 ? 5010 : 0;  // an address that exists already
}
std::uint32_t DeleteAddress(std::uint32_t) { return CodeFor("export IE_DeleteIPAddressEx"); }
std::uint32_t DevNodeStatus(std::uint32_t* status, std::uint32_t* problem, std::uint32_t,
                            std::uint32_t) {
  if (const std::uint32_t code = CodeFor("export CM_Get_DevNode_Status")) return code;
  *status = 0x180200A;
  *problem = 22;
  return 0;
}
std::uint32_t Restart(char*) {
  const std::uint32_t code = CodeFor("export DllEntryFktSilent");
  return code != 0 ? code : 4242;
}
std::uint32_t IsCpInRing(char*, std::uint32_t, std::uint32_t*) {
  return CodeFor("export EpIsCpInRing");
}

void ArrangeLibraries() {
  fake_dynamic_library::Reset();
  fake_system_path::Reset();
  const std::string system = "C:\\windows\\system32\\";
  fake_system_path::SetSpecialFolder("C:\\windows\\system32");
  fake_dynamic_library::Add(system + "plug.dll", {{"Run", Export(Installer)}});
  fake_dynamic_library::Add(system + "unplug.dll", {{"Run", Export(Deinstaller)}});
  fake_dynamic_library::Add("drvinstx.dll", {{"EINST_InstallWdmDriver", Export(InstallDriver)}});
  fake_dynamic_library::Add("onlpanelx.cpl", {{"RunEpromPanelAsAdmin", Export(RunPanel)}});
  fake_dynamic_library::Add(
      system + "ipcfgx.dll",
      {{"IE_AddIPAddressEx", Export(AddAddress)}, {"IE_DeleteIPAddressEx", Export(DeleteAddress)}});
  fake_dynamic_library::Add(system + "cfgmgr32.dll",
                            {{"CM_Get_DevNode_Status", Export(DevNodeStatus)}});
  fake_dynamic_library::Add(system + "rstagent9.dll", {{"DllEntryFktSilent", Export(Restart)}});
  fake_dynamic_library::Add(system + "ringdiag.dll", {{"EpIsCpInRing", Export(IsCpInRing)}});
}

// Two letters for every buffer that is lent, and numbers that can be told from zeros.
std::uint32_t AnswerCommand(const scripted_board_library::Call& call) {
  char letter = 'a';
  for (const scripted_board_library::Out& out : call.outs) {
    if (*out.length >= 2) std::fill(out.bytes, out.bytes + 2, static_cast<std::uint8_t>(letter++));
    *out.length = std::min<std::uint32_t>(*out.length, 2);
  }
  if (call.value != nullptr) *call.value = 0x11223344;
  if (call.byte != nullptr) *call.byte = 0x55;
  return 0;
}

void ArrangeBoards() {
  fake_board_library::Reset();
  scripted_board_library::Install(AnswerCommand);
  fake_board_library::Library& library = fake_board_library::Lib();
  // What the plausibility check keeps of these two can be told apart, and from nothing.
  library.scan = [] { return 55u; };
  library.removeAbandonLogDevices = [] { return 77u; };
  library.getDeviceChange = [](char*, std::uint8_t* kind, BRDX_GUID* guid, char* text,
                               std::uint32_t* length) {
    *kind = 2;
    *guid = {0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};
    std::memcpy(text, "dev\0ice", 8);
    *length = 8;
    return 0u;
  };
  library.getBoardInformation = [](std::uint8_t*, BRDX_INFO_INPUT* input, BRDX_INFO_OUTPUT* output,
                                   std::uint32_t) {
    std::memset(input->area1, 'I', input->cbArea1);
    std::memset(output->area2, 'O', output->cbArea2);
    *input->value = 3;
    output->result1 = 4;
    output->result2 = 5;
    return 0u;
  };
  library.getDeviceInstance = [](char*, std::uint32_t* instance) {
    *instance = 12;
    return 0u;
  };
  library.getDeviceInstanceOpt = [](char*, std::uint32_t, std::uint32_t* instance) {
    *instance = 13;
    return 0u;
  };
}

}  // namespace

void ArrangeWorld() {
  FakeTrace::Reset();
  fake_pipe_io::Reset();
  fake_worker_thread::Reset();
  fake_worker_thread::Hold();
  fake_named_object::Reset();
  fake_named_object::OfferEvent("_QorlixSRVStartSRVEvent");
  fake_named_object::OfferEvent("done");
  fake_message_box::Shown().clear();
  (void)fake_event_log::Take();
  fake_wall_clock::Reset();
  fake_wall_clock::EndAllSleeps();
  ArrangeRegistry();
  ArrangeLibraries();
  ArrangeBoards();
}

void TraceTo(const char* output) {
  const bool on = *output != '\0';
  FakeTrace::SetText("Level", on ? "0xFFFFFFFF" : "0");
  FakeTrace::SetText("zqserver_level", "0xFFFFFFFF");
  FakeTrace::SetText("Output", output);
  FakeTrace::SetText("Path", "C:\\T");
  FakeTrace::SetText("FileName", "srv");
  FakeTrace::SetText("Byte/File", "3000");
  FakeTrace::SetText("sm_size", "5000");
  FakeTrace::SetText("Consult", "30");
  ++FakeTrace::Generation();
}

}  // namespace fault_session
