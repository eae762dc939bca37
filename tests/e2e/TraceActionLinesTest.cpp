#include <windows.h>

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/ActionTraceTest.h"
#include "tests/e2e/PluginTest.h"

// What plug-ins, driver, panel and IP addresses trace: every line in order, with bit and component.

namespace e2e {
namespace {

const Of kInst("Install");
const Of kDeinst("Deinstall");
const Of kValue("get_reg_device_value: ");
const Bytes kCut = Wire("0100");
const Bytes kTooLong = Wire("05000000 'abcd'");

class TracePluginTest : public ActionTraceTest {
 protected:
  void Device(const std::string& plugin) { devices_.Add("DEV1", plugin); }

  // Up to the names of library and function.
  static BitLines InstallUpTo(const std::string& library, const std::string& function) {
    return kInstallReads + BitLines{kInst(kStep, " Read Param SUCCESS: pDllName=" + library +
                                                     " pFuncName=" + function)};
  }
  static BitLines DeinstallUpTo(const std::string& library, const std::string& function) {
    const std::string system = StandIns::InSystemDirectory("");
    const std::size_t length = system.size() - 1;
    char hex[16];
    (void)std::snprintf(hex, sizeof(hex), "0x%zx", length);
    return kDeinstallReads +
           BitLines{kDeinst(kStep,
                            " Read Param SUCCESS: pDllName=" + library + " pFuncName=" + function),
                    kDeinst(kStep, std::string("result = ") + hex +
                                       " GetSystemDirectoryA Dir=" + system.substr(0, length))};
  }

  static const BitLines kInstallStarts, kInstallReads, kDeinstallStarts, kDeinstallReads, kCheck;
  const Bytes kInstallRequest = kInstall.Request("DEV1");
  const Bytes kDeinstallRequest = kDeinstall.Request("DEV1");
  Devices devices_;
};

const BitLines TracePluginTest::kInstallStarts = {
    kInst(kStep, ">> Install start"),
    kInst(kStep, " Read Param SUCCESS: lpszDeviceID=DEV1 lpszLanguageExt=de")};
const BitLines TracePluginTest::kInstallReads =
    kInstallStarts + BitLines{kValue(kStep, ">> deviceID=DEV1 valueName=HardwareID "),
                              kValue(kStep, ">> deviceID=DEV1 valueName=Installer ")};
const BitLines TracePluginTest::kDeinstallStarts = {
    kDeinst(kEnter, ">> Deinstall start"),
    kDeinst(kStep, ">> lpszDeviceID=DEV1 lpszLanguageExt=de lpszBoard=BOARD")};
const BitLines TracePluginTest::kDeinstallReads =
    kDeinstallStarts + BitLines{kValue(kStep, ">> deviceID=DEV1 valueName=HardwareID "),
                                kValue(kStep, ">> deviceID=DEV1 valueName=Deinstaller ")};
const BitLines TracePluginTest::kCheck = {
    Of("BC_PlausibilitaetBL: ")(kStep, "--> start"),
    Of("BC_PlausibilitaetBL: ")(kAnswered, "BRDX_Scan result = 0x0"),
    Of("BC_PlausibilitaetBL: ")(kAnswered, "BRDX_RemoveAbandonLogDevices result = 0x0"),
    Of("BC_PlausibilitaetBL: ")(kStep, "Step 3: checke LogNames"),
    Of("BC_PlausibilitaetBL: ")(kStep, "<-- End")};

TEST_F(TracePluginTest, AnInstallationIsTracedUpToTheCheckBehindIt) {
  Device("sampledev.dll,SampleRefuse");
  ExpectLines(kInstallRequest, 6,
              InstallUpTo("sampledev.dll", "SampleRefuse") +
                  BitLines{kInst(kAnswered,
                                 "<< Invoke pFunc result 0x643, lpszHardwareID=HW1 "
                                 "lpszDeviceID=DEV1 lpszLanguageExt=de")} +
                  kCheck + SendsLong("0x643"));
}

TEST_F(TracePluginTest, ADeinstallationIsTracedWithTheSystemDirectory) {
  Device("sampledev.dll,SampleRefuse");
  ExpectLines(kDeinstallRequest, 6,
              DeinstallUpTo("sampledev.dll", "SampleRefuse") +
                  BitLines{kDeinst(kAnswered,
                                   "<< Invoke pFunc result 0x643, pHardwareID=HW1 pDeviceID=DEV1 "
                                   "pLanguageExt=de pBoard=BOARD")} +
                  SendsLong("0x643"));
}

TEST_F(TracePluginTest, AbsentTextsAreTracedAsNull) {
  Device("sampledev.dll,SampleRefuse");
  const Bytes absent = Wire("FFFF0000");
  ExpectLines(
      Wire("0500") + absent + absent, 6,
      BitLines{kInst(kStep, ">> Install start"), kInst(kStep,
                                                       " Read Param SUCCESS: lpszDeviceID=(null) "
                                                       "lpszLanguageExt=(null)")} +
          SendsLong("0x57"));
  ExpectLines(Wire("0600") + absent + absent + absent, 6,
              BitLines{kDeinst(kEnter, ">> Deinstall start"),
                       kDeinst(kStep,
                               ">> lpszDeviceID=(null) lpszLanguageExt=(null) "
                               "lpszBoard=(null)")} +
                  SendsLong("0x57"));
}

TEST_F(TracePluginTest, FieldsThatCannotBeReadAreTraced) {
  const Bytes id = Text("DEV1");
  const Bytes language = Text("de");
  const auto install = [&](const Bytes& fields, const BitLine& reader, const std::string& field) {
    ExpectLines(Wire("0500") + fields, 6,
                BitLines{kInst(kStep, ">> Install start"), reader,
                         kInst(kError, "<< result = 0x219a " + field)} +
                    SendsLong("0x219a"));
  };
  install(kCut, CutLength(), "DeviceID");
  install(kTooLong, CutText(), "DeviceID");
  install(id + kCut, CutLength(), "LanguageExt");
  install(id + kTooLong, CutText(), "LanguageExt");

  const auto deinstall = [&](const Bytes& fields, const BitLine& reader, const std::string& field) {
    ExpectLines(Wire("0600") + fields, 6,
                BitLines{kDeinst(kEnter, ">> Deinstall start"), reader,
                         kDeinst(kError, "<< " + field + " result = 0x219a ")} +
                    SendsLong("0x219a"));
  };
  deinstall(kTooLong, CutText(), "pDeviceID");
  deinstall(id + kCut, CutLength(), "pLanguageExt");
  deinstall(id + language + kTooLong, CutText(), "pBoard");
}

TEST_F(TracePluginTest, ValuesThatCannotBeReadAreTraced) {
  const BitLines hardwareId = {kValue(kStep, ">> deviceID=DEV1 valueName=HardwareID ")};
  ExpectLines(kInstallRequest, 6,
              kInstallStarts + hardwareId +
                  BitLines{kInst(kError, "<< result = 0x2 Read HardwareID")} + SendsLong("0x2"));
  ExpectLines(kDeinstallRequest, 6,
              kDeinstallStarts + hardwareId +
                  BitLines{kDeinst(kError, "<< result = 0x2 Read HardwareID")} + SendsLong("0x2"));
  devices_.AddBare("DEV1");
  devices_.Set("DEV1", "HardwareID", "HW1");
  ExpectLines(kInstallRequest, 6,
              kInstallReads + BitLines{kInst(kError, "<< result = 0x2 Read Installer Info")} +
                  SendsLong("0x2"));
  ExpectLines(kDeinstallRequest, 6,
              kDeinstallReads + BitLines{kDeinst(kError, "<< result = 0x2 Read Deinstaller Info")} +
                  SendsLong("0x2"));
}

// Kept: a name with a backslash is called invalid and loaded all the same; one with slashes is not
// even called so.
TEST_F(TracePluginTest, ANameThatLeadsElsewhereIsCalledInvalidAndLoaded) {
  Libraries().Place("sampledev.dll", "..\\traced.dll");
  const std::string invalid = "Filename for Installer ..\\traced.dll is invalid. No load possible";
  Device("..\\traced.dll,None");
  ExpectLines(
      kInstallRequest, 6,
      InstallUpTo("..\\traced.dll", "None") +
          BitLines{kInst(kError, invalid), kInst(kError, "<< result = 0x7f GetProcAddress")} +
          SendsLong("0x7f"));
  BitLines deinstall = DeinstallUpTo("..\\traced.dll", "None");
  deinstall.insert(deinstall.end() - 1, kDeinst(kError, invalid));
  ExpectLines(
      kDeinstallRequest, 6,
      deinstall + BitLines{kDeinst(kError, "<< result = 0x7f GetProcAddress")} + SendsLong("0x7f"));
  Device("../traced.dll,None");
  ExpectLines(kInstallRequest, 6,
              InstallUpTo("../traced.dll", "None") +
                  BitLines{kInst(kError, "<< result = 0x7f GetProcAddress")} + SendsLong("0x7f"));
}

TEST_F(TracePluginTest, ALibraryThatCannotBeLoadedIsTracedWithItsStep) {
  Device("nolibrary.dll");
  ExpectLines(kInstallRequest, 6,
              InstallUpTo("nolibrary.dll", "") +
                  BitLines{kInst(kError, "<< result = 0x7e LoadLibrary")} + SendsLong("0x7e"));
  ExpectLines(kDeinstallRequest, 6,
              DeinstallUpTo("nolibrary.dll", "") +
                  BitLines{kDeinst(kError, "<< result = 0x7e LoadLibrary")} + SendsLong("0x7e"));
  // The name is shorter than a line, the path is longer than the room for it.
  const std::string name = std::string(240, 'x');
  devices_.SetRaw("DEV1", "Installer", kText, name + '\0');
  const BitLines longName = InstallUpTo(name, "");
  const std::size_t shown = 256 - std::string(" Read Param SUCCESS: pDllName=").size();
  ExpectLines(kInstallRequest, 6,
              kInstallReads +
                  BitLines{kInst(kStep, " Read Param SUCCESS: pDllName=" + name.substr(0, shown)),
                           kInst(kError, "<< result = 0x22 ")} +
                  SendsLong("0x22"));
}

class TraceDriverAndPanelTest : public ActionTraceTest {
 protected:
  const Of kDriver{"InstallWdmDriver_32: "};
  const Of kPanel{"RunOnlinePanel_32: "};
  const Bytes kDriverRequest = Wire("0F00 01000000 's' 01000000 'i' 01000000 't' 07000000");
};

TEST_F(TraceDriverAndPanelTest, ADriversInstallationIsTracedWithBothReplies) {
  const auto lines = [&](const BitLine& call, const std::string& result) {
    return BitLines{kDriver(kStep, ">> Start"),
                    kDriver(kStep, "sDll=drvinstx.dll hiDll=0x{library:x}"), call} +
           SendsLong(result) + BitLines{kDriver(kStep, "<< result = " + result)} +
           SendsLong(result, 12);
  };
  Libraries().Answer("EINST_InstallWdmDriver", "result = 5");
  ExpectLines(kDriverRequest, 18,
              lines(kDriver(kAnswered, "<< EINST_InstallWdmDriver result = 0x5"), "0x5"));
  Libraries().Answer("EINST_InstallWdmDriver", "raise = cxx");
  ExpectLines(kDriverRequest, 18, lines(kDriver(kError, "Exception in LoadLibrary"), "0x219c"));
}

// Kept: the third text goes by the name of the second.
TEST_F(TraceDriverAndPanelTest, ADriversFieldsThatCannotBeReadAreTraced) {
  const Bytes text = Text("x");
  const auto refused = [&](const Bytes& fields, const BitLine& reader, const std::string& field) {
    ExpectLines(Wire("0F00") + fields, 6,
                BitLines{kDriver(kStep, ">> Start"), reader,
                         kDriver(kError, "<< result = 0x219a " + field)} +
                    SendsLong("0x219a"));
  };
  refused(kCut, CutLength(), "Service");
  refused(text + kTooLong, CutText(), "Inf-File");
  refused(text + text + kTooLong, CutText(), "Inf-File");
  refused(text + text + text + kCut, CutLength(), "mode");
}

TEST_F(TraceDriverAndPanelTest, ThePanelIsTracedWithItsExportAndBothReplies) {
  const BitLines found = {kPanel(kStep, ">> Start"),
                          kPanel(kStep, "sDll=onlpanelx.cpl hiDll=0x{library:x}"),
                          kPanel(kStep, "sFkt=RunEpromPanelAsAdmin lpStartBRDXFkt=0x{export:x}"),
                          kPanel(kStep, "Vor Aufruf des Panels")};
  const auto ends = [&](const std::string& result) {
    return SendsLong(result) + BitLines{kPanel(kStep, "<< RunOnlinePanel() result = " + result)} +
           SendsLong(result, 12);
  };
  ExpectLines(Wire("1100"), 18, found + ends("0x0"));
  Libraries().Answer("RunEpromPanelAsAdmin", "raise = cxx");
  ExpectLines(Wire("1100"), 18, found + BitLines{kPanel(kError, "Exception")} + ends("0x219c"));
  Libraries().PlaceTwin("onlpanelx.cpl");
  ExpectLines(
      Wire("1100"), 18,
      BitLines{kPanel(kStep, ">> Start"), kPanel(kStep, "sDll=onlpanelx.cpl hiDll=0x{library:x}"),
               kPanel(kStep, "sFkt=RunEpromPanelAsAdmin lpStartBRDXFkt=0x0")} +
          ends("0x7f"));
  Libraries().Place("onlpanelx.cpl");
}

class TraceIpAddressTest : public ActionTraceTest {
 protected:
  // What comes of the load and the call, and how it is answered.
  void ExpectAdd(const BitLines& lines, const std::string& result) {
    const bool fails = result != "0x0";
    const Of send("Send: ");
    BitLines answer = {send(kStep, ">> Begin CQorlixSRVPipe::Send(long, long, long)"),
                       send(kStep, "<< CQorlixSRVPipe::Send DataLength=14 writeResult=0x1")};
    if (fails) answer = answer + SendsLong(result, 20);
    ExpectLines(kAddRequest, fails ? 34 : 14, BitLines{kAdd(kStep, ">> Start")} + lines + answer);
  }
  void ExpectDelete(const BitLines& lines, const std::string& result) {
    ExpectLines(Wire("0D00 01000000"), 6,
                BitLines{kDelete(kStep, ">> Start")} + lines + SendsLong(result));
  }

  const Of kAdd{"AddIpAddress: "}, kAddLibrary{"AddIpAddress: ", "PST"};
  const Of kDelete{"DelIpAddress: "}, kDeleteLibrary{"DelIpAddress: ", "PST"};
  const BitLine kAddLoads = kAddLibrary(kStep, "LoadLibrary ipcfgx.dll");
  const BitLine kDeleteLoads = kDeleteLibrary(kStep, "LoadLibrary ipcfgx.dll");
  const Bytes kAddRequest = Wire("0C00 C0A80705 FFFFFF00 09000000");
};

TEST_F(TraceIpAddressTest, TheLinesOfTheLibraryHaveAComponentOfTheirOwn) {
  Libraries().Answer("IE_AddIPAddressEx", "result = 0");
  ExpectAdd({kAddLoads, kAdd(kAnswered, "<< IE_AddIPAddressEx result = 0x0")}, "0x0");
  Libraries().Answer("IE_DeleteIPAddressEx", "result = 32");
  ExpectDelete({kDeleteLoads, kDelete(kAnswered, "<< IE_DeleteIPAddressEx result = 0x20")}, "0x20");
}

TEST_F(TraceIpAddressTest, AFailureIsTracedWithItsSecondReply) {
  Libraries().Answer("IE_AddIPAddressEx", "result = 5");
  ExpectAdd({kAddLoads, kAdd(kAnswered, "<< IE_AddIPAddressEx result = 0x5")}, "0x5");
}

TEST_F(TraceIpAddressTest, AMissingLibraryOrExportIsTracedWithTheSystemsCode) {
  Libraries().Remove("ipcfgx.dll");
  ExpectAdd({kAddLoads, kAddLibrary(kError, "LoadLibrary ipcfgx.dll failed: 7e")}, "0x219b");
  ExpectDelete({kDeleteLoads, kDeleteLibrary(kError, "LoadLibrary ipcfgx.dll failed: 7e")},
               "0x219b");
  Libraries().PlaceTwin("ipcfgx.dll");
  ExpectAdd({kAddLoads, kAddLibrary(kError, "GetProcAddress IE_AddIPAddressEx failed: 0x7f")},
            "0x2199");
  ExpectDelete(
      {kDeleteLoads, kDeleteLibrary(kError, "GetProcAddress IE_DeleteIPAddressEx failed: 0x7f")},
      "0x2199");
  Libraries().Place("ipcfgx.dll");
}

TEST_F(TraceIpAddressTest, AnExceptionIsTraced) {
  Libraries().Answer("IE_AddIPAddressEx", "raise = cxx");
  ExpectAdd({kAddLoads, kAdd(kError, "Exception: IE_AddIPAddressEx")}, "0x219c");
  Libraries().Answer("IE_DeleteIPAddressEx", "raise = cxx");
  ExpectDelete({kDeleteLoads, kDelete(kError, "Exception: IE_DeleteIPAddressEx")}, "0x219c");
}

TEST_F(TraceIpAddressTest, FieldsThatCannotBeReadAreTraced) {
  const Of send("Send: ");
  Bytes request = Wire("0C00");
  for (const std::string field : {"Address", "IpMask", "IfIndex"}) {
    ExpectLines(request + kCut, 34,
                BitLines{kAdd(kStep, ">> Start"), CutLength(),
                         kAdd(kError, "<< ReadLong(" + field + ") result = 0x219a "),
                         send(kStep, ">> Begin CQorlixSRVPipe::Send(long, long, long)"),
                         send(kStep, "<< CQorlixSRVPipe::Send DataLength=14 writeResult=0x1")} +
                    SendsLong("0x219a", 20));
    request += Long(1);
  }
  ExpectLines(Wire("0D00") + kCut, 6,
              BitLines{kDelete(kStep, ">> Start"), CutLength(),
                       kDelete(kError, "<< ReadLong(NTEContext) result = 0x219a ")} +
                  SendsLong("0x219a"));
}

}  // namespace
}  // namespace e2e
