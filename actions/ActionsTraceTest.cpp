#include "actions/SilentRestartFixture.h"
#include "tests/support/RegistrySetup.h"
#include "trace/Zqotrc.h"

// What the actions trace, word for word, and at which bit.

namespace {

using fake_dynamic_library::Export;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kDevice = "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID\\d";

std::uint32_t Plugin(char*, const char*, char*, std::uint32_t) { return 5; }
std::uint32_t Deplugin(char*, const char*, char*, std::uint32_t, char*) { return 5; }
std::uint32_t Driver(char*, char*, char*, std::uint32_t) { return 5; }
std::uint32_t DriverThrows(char*, char*, char*, std::uint32_t) { throw 7; }
std::uint32_t Panel(std::uint32_t, std::uint32_t) { return 1; }
std::uint32_t PanelThrows(std::uint32_t, std::uint32_t) { throw 7; }
std::uint32_t DeleteAddress(std::uint32_t) { return 5; }
std::uint32_t DeleteThrows(std::uint32_t) { throw 7; }

class ActionsTraceTest : public SilentRestartFixture {
 protected:
  ActionsTraceTest() {
    registry_setup::DeleteTree(kDevice);
    fake_system_path::SetSpecialFolder("C:\\sys");
  }
  ~ActionsTraceTest() override { registry_setup::DeleteTree(kDevice); }

  // The lines at these bits as "component|function|text", reader, writer and check left out.
  std::vector<std::string> Trace(Handler handler, const Bytes& fields, std::uint32_t mask) {
    FakeTrace::Collect(mask);
    (void)Do(handler, fields);
    fake_worker_thread::JoinAll();
    std::vector<std::string> lines;
    for (const FakeTrace::Line& line : FakeTrace::Lines()) {
      bool own = false;
      for (const char* name :
           {"Install", "Deinstall", "get_reg_device_value: ", "InstallWdmDriver_32: ",
            "RunOnlinePanel_32: ", "SilentRestart: ", "RunSilentRestart: ",
            "GetSilentRestartResult: ", "AddIpAddress: ", "DelIpAddress: ", "TestFunction: "}) {
        own = own || line.function == name;
      }
      if (!own) continue;
      lines.push_back(line.component + "|" + line.function + "|" + line.text);
    }
    return lines;
  }

  static void SetDevice(const char* valueName, const std::string& plugin) {
    registry_setup::SetValue(kDevice, "HardwareID", registry_setup::kSz, TextBytes("HW"));
    registry_setup::SetValue(kDevice, valueName, registry_setup::kSz, TextBytes(plugin));
  }
};

// --- Install and Deinstall ---

const Bytes kInstall = TextField("d") + TextField("007");
const Bytes kDeinstall = kInstall + TextField("B");

TEST_F(ActionsTraceTest, AnInstallation) {
  constexpr auto kHandler = &CQorlixSRVPipe::Install;
  SetDevice("Installer", "p.dll,Run");
  fake_dynamic_library::Add("C:\\windows\\system32\\p.dll", {{"Run", Export(Plugin)}});
  EXPECT_THAT(Trace(kHandler, kInstall, TRC_PROGRESS),
              ElementsAre("SRV|Install|>> Install start",
                          "SRV|Install| Read Param SUCCESS: lpszDeviceID=d lpszLanguageExt=007",
                          "SRV|get_reg_device_value: |>> deviceID=d valueName=HardwareID ",
                          "SRV|get_reg_device_value: |>> deviceID=d valueName=Installer ",
                          "SRV|Install| Read Param SUCCESS: pDllName=p.dll pFuncName=Run"));
  EXPECT_THAT(Trace(kHandler, kInstall, TRC_RESULT),
              ElementsAre("SRV|Install|<< Invoke pFunc result 0x5, lpszHardwareID=HW "
                          "lpszDeviceID=d lpszLanguageExt=007"));
  EXPECT_THAT(Trace(kHandler, kInstall, TRC_ERROR | TRC_ENTER), IsEmpty());
  EXPECT_THAT(Trace(kHandler, TextField("d") + Absent(), TRC_RESULT),
              ElementsAre("SRV|Install|<< Invoke pFunc result 0x5, lpszHardwareID=HW "
                          "lpszDeviceID=d lpszLanguageExt=(null)"));
}

TEST_F(ActionsTraceTest, ADeinstallationStartsAtABitOfItsOwn) {
  constexpr auto kHandler = &CQorlixSRVPipe::Deinstall;
  SetDevice("Deinstaller", "p.dll,Run");
  fake_dynamic_library::Add("C:\\windows\\system32\\p.dll", {{"Run", Export(Deplugin)}});
  EXPECT_THAT(Trace(kHandler, kDeinstall, TRC_ENTER),
              ElementsAre("SRV|Deinstall|>> Deinstall start"));
  EXPECT_THAT(Trace(kHandler, kDeinstall, TRC_PROGRESS),
              ElementsAre("SRV|Deinstall|>> lpszDeviceID=d lpszLanguageExt=007 lpszBoard=B",
                          "SRV|get_reg_device_value: |>> deviceID=d valueName=HardwareID ",
                          "SRV|get_reg_device_value: |>> deviceID=d valueName=Deinstaller ",
                          "SRV|Deinstall| Read Param SUCCESS: pDllName=p.dll pFuncName=Run",
                          "SRV|Deinstall|result = 0x13 GetSystemDirectoryA "
                          "Dir=C:\\windows\\system32"));
  EXPECT_THAT(Trace(kHandler, kDeinstall, TRC_RESULT),
              ElementsAre("SRV|Deinstall|<< Invoke pFunc result 0x5, pHardwareID=HW pDeviceID=d "
                          "pLanguageExt=007 pBoard=B"));
  EXPECT_THAT(Trace(kHandler, Absent() + Absent() + Absent(), TRC_PROGRESS),
              ElementsAre("SRV|Deinstall|>> lpszDeviceID=(null) lpszLanguageExt=(null) "
                          "lpszBoard=(null)"));
}

TEST_F(ActionsTraceTest, WhatKeepsAPluginFromRunning) {
  constexpr auto kHandler = &CQorlixSRVPipe::Install;
  const auto errors = [&](const Bytes& fields) { return Trace(kHandler, fields, TRC_ERROR); };
  EXPECT_THAT(errors({}), ElementsAre("SRV|Install|<< result = 0x219a DeviceID"));
  EXPECT_THAT(errors(TextField("d")), ElementsAre("SRV|Install|<< result = 0x219a LanguageExt"));
  EXPECT_THAT(errors(kInstall), ElementsAre("SRV|Install|<< result = 0x2 Read HardwareID"));
  registry_setup::SetValue(kDevice, "HardwareID", registry_setup::kSz, TextBytes("HW"));
  EXPECT_THAT(errors(kInstall), ElementsAre("SRV|Install|<< result = 0x2 Read Installer Info"));
  SetDevice("Installer", "p.dll,Run");
  EXPECT_THAT(errors(kInstall), ElementsAre("SRV|Install|<< result = 0x7e LoadLibrary"));
  fake_dynamic_library::Add("C:\\windows\\system32\\p.dll", {});
  EXPECT_THAT(errors(kInstall), ElementsAre("SRV|Install|<< result = 0x7f GetProcAddress"));
  fake_system_path::SetSystemDirectory(std::string(259, 's'));
  EXPECT_THAT(errors(kInstall), ElementsAre("SRV|Install|<< result = 0x22 "));
  fake_system_path::SetSystemDirectory("");
  EXPECT_THAT(errors(kInstall), ElementsAre("SRV|Install|<< result = 0x219a GetSystemDirectory"));
}

TEST_F(ActionsTraceTest, WhatKeepsADeinstallerFromRunning) {
  constexpr auto kHandler = &CQorlixSRVPipe::Deinstall;
  const auto errors = [&](const Bytes& fields) { return Trace(kHandler, fields, TRC_ERROR); };
  EXPECT_THAT(errors({}), ElementsAre("SRV|Deinstall|<< pDeviceID result = 0x219a "));
  EXPECT_THAT(errors(TextField("d")),
              ElementsAre("SRV|Deinstall|<< pLanguageExt result = 0x219a "));
  EXPECT_THAT(errors(kInstall), ElementsAre("SRV|Deinstall|<< pBoard result = 0x219a "));
  registry_setup::SetValue(kDevice, "HardwareID", registry_setup::kSz, TextBytes("HW"));
  EXPECT_THAT(errors(kDeinstall),
              ElementsAre("SRV|Deinstall|<< result = 0x2 Read Deinstaller Info"));
}

TEST_F(ActionsTraceTest, KeptABackslashInALibrarysNameIsSaidAndASlashIsNot) {
  const std::string said = "Filename for Installer ..\\x.dll is invalid. No load possible";
  SetDevice("Installer", "..\\x.dll,Run");
  EXPECT_THAT(Trace(&CQorlixSRVPipe::Install, kInstall, TRC_ERROR),
              ElementsAre("SRV|Install|" + said, "SRV|Install|<< result = 0x7e LoadLibrary"));
  SetDevice("Deinstaller", "..\\x.dll,Run");
  EXPECT_THAT(Trace(&CQorlixSRVPipe::Deinstall, kDeinstall, TRC_ERROR),
              ElementsAre("SRV|Deinstall|" + said, "SRV|Deinstall|<< result = 0x7e LoadLibrary"));
  SetDevice("Installer", "../x.dll,Run");
  EXPECT_THAT(Trace(&CQorlixSRVPipe::Install, kInstall, TRC_ERROR),
              ElementsAre("SRV|Install|<< result = 0x7e LoadLibrary"));
}

// --- Driver and panel ---

const Bytes kDriver = TextField("s") + TextField("i") + TextField("t") + Wire("01000000");

// The handle's number differs from run to run.
void CutHandle(std::vector<std::string>& lines, const char* mark) {
  for (std::string& line : lines) {
    const std::size_t at = line.find(mark);
    if (at != std::string::npos) line.resize(at + std::string(mark).size());
  }
}

TEST_F(ActionsTraceTest, ADriverInstallation) {
  constexpr auto kHandler = &CQorlixSRVPipe::InstallWdmDriver_32;
  fake_dynamic_library::Add("drvinstx.dll", {{"EINST_InstallWdmDriver", Export(Driver)}});
  std::vector<std::string> lines = Trace(kHandler, kDriver, TRC_PROGRESS);
  CutHandle(lines, "hiDll=0x");
  EXPECT_THAT(lines, ElementsAre("SRV|InstallWdmDriver_32: |>> Start",
                                 "SRV|InstallWdmDriver_32: |sDll=drvinstx.dll hiDll=0x",
                                 "SRV|InstallWdmDriver_32: |<< result = 0x5"));
  EXPECT_THAT(Trace(kHandler, kDriver, TRC_RESULT),
              ElementsAre("SRV|InstallWdmDriver_32: |<< EINST_InstallWdmDriver result = 0x5"));
  EXPECT_THAT(Trace(kHandler, kDriver, TRC_ERROR), IsEmpty());
}

TEST_F(ActionsTraceTest, ADriverThatIsNotInstalled) {
  constexpr auto kHandler = &CQorlixSRVPipe::InstallWdmDriver_32;
  const auto errors = [&](const Bytes& fields) { return Trace(kHandler, fields, TRC_ERROR); };
  const Bytes text = TextField("x");
  EXPECT_THAT(errors({}), ElementsAre("SRV|InstallWdmDriver_32: |<< result = 0x219a Service"));
  EXPECT_THAT(errors(text), ElementsAre("SRV|InstallWdmDriver_32: |<< result = 0x219a Inf-File"));
  EXPECT_THAT(errors(text + text),
              ElementsAre("SRV|InstallWdmDriver_32: |<< result = 0x219a Inf-File"));
  EXPECT_THAT(errors(text + text + text),
              ElementsAre("SRV|InstallWdmDriver_32: |<< result = 0x219a mode"));
  EXPECT_THAT(errors(kDriver),
              ElementsAre("SRV|InstallWdmDriver_32: |<< return FALSE - Can't load drvinstx.dll "
                          "dwErr=126"));
  EXPECT_THAT(Trace(kHandler, kDriver, TRC_PROGRESS),
              ElementsAre("SRV|InstallWdmDriver_32: |>> Start",
                          "SRV|InstallWdmDriver_32: |sDll=drvinstx.dll hiDll=0x0"));
  fake_dynamic_library::Add("drvinstx.dll", {{"EINST_InstallWdmDriver", Export(DriverThrows)}});
  EXPECT_THAT(errors(kDriver), ElementsAre("SRV|InstallWdmDriver_32: |Exception in LoadLibrary"));
}

TEST_F(ActionsTraceTest, AnOnlinePanel) {
  constexpr auto kHandler = &CQorlixSRVPipe::RunOnlinePanel_32;
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR),
              ElementsAre("SRV|RunOnlinePanel_32: |<< return FALSE - Can't load onlpanelx.cpl "
                          "dwErr=126"));
  fake_dynamic_library::Add("onlpanelx.cpl", {{"RunEpromPanelAsAdmin", Export(Panel)}});
  std::vector<std::string> lines = Trace(kHandler, {}, TRC_PROGRESS);
  CutHandle(lines, "hiDll=0x");
  CutHandle(lines, "lpStartBRDXFkt=0x");
  EXPECT_THAT(lines,
              ElementsAre("SRV|RunOnlinePanel_32: |>> Start",
                          "SRV|RunOnlinePanel_32: |sDll=onlpanelx.cpl hiDll=0x",
                          "SRV|RunOnlinePanel_32: |sFkt=RunEpromPanelAsAdmin lpStartBRDXFkt=0x",
                          "SRV|RunOnlinePanel_32: |Vor Aufruf des Panels",
                          "SRV|RunOnlinePanel_32: |<< RunOnlinePanel() result = 0x0"));
  fake_dynamic_library::Add("onlpanelx.cpl", {});
  lines = Trace(kHandler, {}, TRC_PROGRESS);
  CutHandle(lines, "hiDll=0x");
  EXPECT_THAT(lines,
              ElementsAre("SRV|RunOnlinePanel_32: |>> Start",
                          "SRV|RunOnlinePanel_32: |sDll=onlpanelx.cpl hiDll=0x",
                          "SRV|RunOnlinePanel_32: |sFkt=RunEpromPanelAsAdmin lpStartBRDXFkt=0x0",
                          "SRV|RunOnlinePanel_32: |<< RunOnlinePanel() result = 0x7f"));
  fake_dynamic_library::Add("onlpanelx.cpl", {{"RunEpromPanelAsAdmin", Export(PanelThrows)}});
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR), ElementsAre("SRV|RunOnlinePanel_32: |Exception"));
}

// --- Silent restart ---

TEST_F(ActionsTraceTest, ASilentRestart) {
  fake_named_object::OfferEvent("e");
  const std::vector<std::string> lines = Trace(kRestart, Request("e"), TRC_PROGRESS | TRC_ERROR);
  std::vector<std::string> request;
  std::vector<std::string> worker;
  for (const std::string& line : lines) {
    (line.find("RunSilentRestart: ") != std::string::npos ? worker : request).push_back(line);
  }
  EXPECT_THAT(request, ElementsAre("SRV|SilentRestart: |>> Start",
                                   "SRV|SilentRestart: |Start RunSilentRestart!",
                                   "SRV|SilentRestart: |<< SilentRestart result = 0x0"));
  EXPECT_THAT(
      worker,
      ElementsAre("SRV|RunSilentRestart: |LoadLibrary(C:\\windows\\system32\\rstagent9.dll)",
                  "SRV|RunSilentRestart: |GetProcAddress(DllEntryFktSilent)",
                  "SRV|RunSilentRestart: |--> DllEntryFktSilent(CP1)",
                  "SRV|RunSilentRestart: |LoadLibrary(C:\\windows\\system32\\ringdiag.dll)",
                  "SRV|RunSilentRestart: |GetProcAddress(EpIsCpInRing)",
                  "SRV|RunSilentRestart: |--> DllEntryFktSilent(CP1)",
                  "SRV|RunSilentRestart: |successfully SetEvent: e "));
  EXPECT_THAT(Trace(kRestart, Request("e"), TRC_ERROR),
              ElementsAre("SRV|RunSilentRestart: |successfully SetEvent: e "));
}

TEST_F(ActionsTraceTest, ARestartThatFails) {
  const auto errors = [&](const Bytes& fields) { return Trace(kRestart, fields, TRC_ERROR); };
  fake_named_object::OfferEvent("e");
  const std::string set = "SRV|RunSilentRestart: |successfully SetEvent: e ";
  EXPECT_THAT(errors({}),
              ElementsAre("SRV|SilentRestart: |<< ReadString(LogDevName) result = 0x219a "));
  EXPECT_THAT(errors(TextField("x")),
              ElementsAre("SRV|SilentRestart: |<< ReadString(EventName) result = 0x219a "));
  Checked() = [](char*, std::uint32_t, std::uint32_t*) -> std::uint32_t { throw 7; };
  EXPECT_THAT(errors(Request("e")), ElementsAre("SRV|RunSilentRestart: |Loading ringdiag.dll threw "
                                                "SRV_ERR_EXCEPTION_OCCURED!",
                                                set));
  Restarted() = [](char*) -> std::uint32_t { throw 7; };
  EXPECT_THAT(errors(Request("e")),
              ElementsAre("SRV|RunSilentRestart: |Loading rstagent9.dll threw "
                          "SRV_ERR_EXCEPTION_OCCURED!",
                          set));
  fake_dynamic_library::Add(kAgent, {});
  EXPECT_THAT(
      errors(Request("e")),
      ElementsAre("SRV|RunSilentRestart: |Couldn't get PorcAddress of SilentRestart!", set));
  fake_dynamic_library::RefuseLoad(kAgent, 126);
  EXPECT_THAT(
      errors(Request("e")),
      ElementsAre("SRV|RunSilentRestart: |LoadLibrary failed -> SRV_ERR_DLL_NOT_FOUND!", set));
}

TEST_F(ActionsTraceTest, AnEventThatNobodyCreatedIsRemovedWithALinePerResult) {
  fake_named_object::OfferEvent("e");
  RestartAndWait("e");
  RestartAndWait("e");
  fake_named_object::Reset();
  EXPECT_THAT(Trace(kRestart, Request("e"), TRC_ERROR),
              ElementsAre("SRV|RunSilentRestart: |Could not set event! ErrorCode: 2",
                          "SRV|RunSilentRestart: |Removed Event: e",
                          "SRV|RunSilentRestart: |Removed Event: e",
                          "SRV|RunSilentRestart: |Removed Event: e"));
}

TEST_F(ActionsTraceTest, TheFetchingOfAResult) {
  fake_named_object::OfferEvent("e");
  AnswerRestart(0xFFFFFFFF);
  RestartAndWait("e");
  RestartAndWait("e");
  EXPECT_THAT(Trace(kGetResult, TextField("e"), TRC_ERROR),
              ElementsAre("SRV|GetSilentRestartResult: |Event found : e "));
  EXPECT_THAT(Trace(kGetResult, TextField("e"), TRC_RESULT),
              ElementsAre("SRV|GetSilentRestartResult: |<< GetSilentRestartResult returning with "
                          "result: -1 "));
  EXPECT_THAT(Trace(kGetResult, TextField("e"), TRC_ERROR | TRC_RESULT),
              ElementsAre("SRV|GetSilentRestartResult: |Couldn't find Event : e ",
                          "SRV|GetSilentRestartResult: |<< GetSilentRestartResult returning with "
                          "result: 259 "));
  EXPECT_THAT(Trace(kGetResult, Absent(), TRC_ERROR),
              ElementsAre("SRV|GetSilentRestartResult: |Couldn't find Event : (null) "));
  EXPECT_THAT(
      Trace(kGetResult, {}, TRC_ERROR),
      ElementsAre("SRV|GetSilentRestartResult: |<< ReadString(pEventName) result = 0x219a "));
}

// --- IP addresses, test function ---

TEST_F(ActionsTraceTest, KeptTheLibraryLinesOfTheIpCommandsHaveAnotherComponent) {
  constexpr auto kAdd = &CQorlixSRVPipe::AddIpAddress;
  constexpr auto kDel = &CQorlixSRVPipe::DelIpAddress;
  const Bytes fields = Wire("010000000200000003000000");
  EXPECT_THAT(
      Trace(kAdd, fields, TRC_PROGRESS),
      ElementsAre("SRV|AddIpAddress: |>> Start", "PST|AddIpAddress: |LoadLibrary ipcfgx.dll"));
  EXPECT_THAT(Trace(kAdd, fields, TRC_ERROR),
              ElementsAre("PST|AddIpAddress: |LoadLibrary ipcfgx.dll failed: 7e"));
  EXPECT_THAT(Trace(kDel, fields, TRC_ERROR),
              ElementsAre("PST|DelIpAddress: |LoadLibrary ipcfgx.dll failed: 7e"));
  fake_dynamic_library::Add("C:\\sys\\ipcfgx.dll", {});
  EXPECT_THAT(Trace(kAdd, fields, TRC_ERROR),
              ElementsAre("PST|AddIpAddress: |GetProcAddress IE_AddIPAddressEx failed: 0x7f"));
  EXPECT_THAT(Trace(kDel, fields, TRC_ERROR),
              ElementsAre("PST|DelIpAddress: |GetProcAddress IE_DeleteIPAddressEx failed: 0x7f"));
  EXPECT_THAT(
      Trace(kDel, fields, TRC_PROGRESS),
      ElementsAre("SRV|DelIpAddress: |>> Start", "PST|DelIpAddress: |LoadLibrary ipcfgx.dll"));
}

TEST_F(ActionsTraceTest, TheOtherLinesOfTheIpCommands) {
  constexpr auto kAdd = &CQorlixSRVPipe::AddIpAddress;
  constexpr auto kDel = &CQorlixSRVPipe::DelIpAddress;
  const Bytes value = Wire("01000000");
  EXPECT_THAT(Trace(kAdd, {}, TRC_ERROR),
              ElementsAre("SRV|AddIpAddress: |<< ReadLong(Address) result = 0x219a "));
  EXPECT_THAT(Trace(kAdd, value, TRC_ERROR),
              ElementsAre("SRV|AddIpAddress: |<< ReadLong(IpMask) result = 0x219a "));
  EXPECT_THAT(Trace(kAdd, value + value, TRC_ERROR),
              ElementsAre("SRV|AddIpAddress: |<< ReadLong(IfIndex) result = 0x219a "));
  EXPECT_THAT(Trace(kDel, {}, TRC_ERROR),
              ElementsAre("SRV|DelIpAddress: |<< ReadLong(NTEContext) result = 0x219a "));
  fake_dynamic_library::Add("C:\\sys\\ipcfgx.dll",
                            {{"IE_DeleteIPAddressEx", Export(DeleteAddress)}});
  EXPECT_THAT(Trace(kDel, value, TRC_RESULT),
              ElementsAre("SRV|DelIpAddress: |<< IE_DeleteIPAddressEx result = 0x5"));
  fake_dynamic_library::Add("C:\\sys\\ipcfgx.dll",
                            {{"IE_DeleteIPAddressEx", Export(DeleteThrows)}});
  EXPECT_THAT(Trace(kDel, value, TRC_ERROR),
              ElementsAre("SRV|DelIpAddress: |Exception: IE_DeleteIPAddressEx"));
}

TEST_F(ActionsTraceTest, TheTestFunction) {
  constexpr auto kHandler = &CQorlixSRVPipe::TestFunction;
  EXPECT_THAT(Trace(kHandler, TextField("x"), TRC_PROGRESS | TRC_ERROR | TRC_RESULT),
              ElementsAre("SRV|TestFunction: |>> Start"));
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR),
              ElementsAre("SRV|TestFunction: |<< ReadString(String) result = 0x219a "));
}

}  // namespace
