#include <windows.h>

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/PluginTest.h"
#include "tests/support/RegistryKeyScratch.h"

// In what Install and Deinstall differ: what follows the plug-in, and what becomes of its library.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

constexpr char kId[] = "DEV1";
constexpr DWORD kExitMs = 10000;

// One plausibility check, as the board library sees it.
const auto kOneCheck =
    ElementsAre("BRDX_ScanBL -> 0 lock=held", "BRDX_RemoveAbandonLogDevices -> 0 lock=held",
                "BRDX_UpdateRoute -> 0 lock=held", "BRDX_CreateAllLogdevicesBL -> 0 lock=held");

class InstallTest : public ActionsTest {
 protected:
  testing::AssertionResult Answers(const PluginCommand& command, std::uint32_t result) {
    return client_.Answers(command.Request(kId), Answer(result));
  }

  Devices devices_;
};

TEST_F(InstallTest, ThePlausibilityCheckFollowsAnInstallationWithoutAReplyOfItsOwn) {
  devices_.Add(kId, "sampledev.dll,SampleInstall");
  devices_.AddDanglingName();
  EXPECT_TRUE(Answers(kInstall, 0));
  EXPECT_THAT(Libraries().BoardCalls(), kOneCheck);
  EXPECT_TRUE(devices_.DanglingNameIsUnassigned());
}

TEST_F(InstallTest, ThePlausibilityCheckFollowsAnInstallationThatFailed) {
  devices_.Add(kId, "sampledev.dll,SampleRefuse");
  devices_.AddDanglingName();
  EXPECT_TRUE(Answers(kInstall, 1603));
  EXPECT_THAT(Libraries().BoardCalls(), kOneCheck);
  EXPECT_TRUE(devices_.DanglingNameIsUnassigned());
}

TEST_F(InstallTest, NoPlausibilityCheckFollowsADeinstallation) {
  devices_.Add(kId, "sampledev.dll,SampleRefuse");
  devices_.AddDanglingName();
  EXPECT_TRUE(Answers(kDeinstall, 1603));
  Libraries().Answer("SampleRefuse", "result = 0");
  EXPECT_TRUE(Answers(kDeinstall, 0));
  EXPECT_THAT(Libraries().BoardCalls(), IsEmpty());
  EXPECT_FALSE(devices_.DanglingNameIsUnassigned());
}

TEST_F(InstallTest, TheLibraryIsFreedBehindAnInstallationAndStaysBehindADeinstallation) {
  Libraries().Place("sampledev.dll", "freed.dll");
  Libraries().Place("sampledev.dll", "stays.dll");
  devices_.AddBare(kId);
  devices_.Set(kId, "HardwareID", "HW1");
  devices_.Set(kId, "Installer", "freed.dll,SampleRefuse");
  devices_.Set(kId, "Deinstaller", "stays.dll,SampleRefuse");

  EXPECT_TRUE(Answers(kInstall, 1603));
  EXPECT_FALSE(Server().HasModule("freed.dll"));
  EXPECT_NE(DeleteFileA(StandIns::InSystemDirectory("freed.dll").c_str()), FALSE);

  EXPECT_TRUE(Answers(kDeinstall, 1603));
  EXPECT_TRUE(Server().HasModule("stays.dll"));
  EXPECT_TRUE(Answers(kDeinstall, 1603)) << "and is called again";
}

TEST_F(InstallTest, AnInstallationAfterADeinstallationLeavesTheLibraryWhereItIs) {
  Libraries().Place("sampledev.dll", "both.dll");
  devices_.Add(kId, "both.dll,SampleRefuse");
  EXPECT_TRUE(Answers(kDeinstall, 1603));
  EXPECT_TRUE(Answers(kInstall, 1603));
  EXPECT_TRUE(Server().HasModule("both.dll"));
}

TEST_F(InstallTest, ADevicesKeysAreThereAfterTheInstallationAndGoneAfterTheDeinstallation) {
  devices_.AddBare(kId);
  devices_.Set(kId, "HardwareID", "PCI\\VEN_1F3C");
  devices_.Set(kId, "Installer", "sampledev.dll,SampleInstall");
  devices_.Set(kId, "Deinstaller", "sampledev.dll,SampleDeinstall");
  const RegistryScratch& registry = devices_.Registry();
  const std::string device = std::string(kNorva) + "LogDevices\\" + kId;
  const std::string name = std::string(kNorva) + "LogNames\\" + kId;

  EXPECT_TRUE(Answers(kInstall, 0));
  EXPECT_EQ(registry.Value(device, "HardwareId"), (StoredValue{kText, Wire("'PCI\\VEN_1F3C' 00")}));
  EXPECT_EQ(registry.Value(device, "Language"), (StoredValue{kText, Wire("'de' 00")}));
  // The device's key exists, so the check has left the assignment alone.
  EXPECT_EQ(registry.Value(name, "LogDevice"), (StoredValue{kText, Wire("'DEV1' 00")}));

  EXPECT_TRUE(Answers(kDeinstall, 0));
  EXPECT_FALSE(registry.HasKey(device));
  EXPECT_FALSE(registry.HasKey(name));
  EXPECT_TRUE(Answers(kDeinstall, 2)) << "there was nothing left";
}

// Kept: every key that could be read stays open, two for each request.
TEST_F(InstallTest, TheDevicesKeyStaysOpen) {
  devices_.Add(kId, "nolibrary.dll,SampleRefuse");
  EXPECT_TRUE(Answers(kInstall, ERROR_MOD_NOT_FOUND));
  const std::uint32_t before = Server().HandleCount();
  if (before == 0) GTEST_SKIP() << "handles are not counted here";
  for (int i = 0; i < 50; ++i) EXPECT_TRUE(Answers(kInstall, ERROR_MOD_NOT_FOUND));
  // The first count may have one in it that the system held for a moment.
  EXPECT_GE(Server().HandleCount() + 1, before + 100);
  EXPECT_TRUE(Server().ComesBackToHandleCount(before + 100));
}

class PluginFaultTest : public OwnServerActionsTest,
                        public testing::WithParamInterface<PluginCommand> {
 protected:
  // A server that faults ends at once: nobody is asked, and no debugger is called.
  PluginFaultTest() : debugger_("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\AeDebug") {
    debugger_.SetText("Auto", "1");
    debugger_.SetText("Debugger", "none");
    errorMode_ = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  }
  ~PluginFaultTest() override { (void)SetErrorMode(errorMode_); }

  void ExpectEnd(const std::string& function, std::uint32_t exitCode) {
    libraries_.Place("sampledev.dll");
    devices_.Add(kId, "sampledev.dll," + function);
    Start();
    WireClient other;
    ASSERT_TRUE(other.Connect());
    ASSERT_TRUE(client_.Send(GetParam().Request(kId)));
    EXPECT_TRUE(client_.IsBroken());
    EXPECT_TRUE(other.IsBroken());
    EXPECT_THAT(server_.ExitCode(kExitMs), Optional(exitCode));
    server_.Kill();

    ASSERT_TRUE(server_.Start());
    WireClient next;
    ASSERT_TRUE(next.Connect());
    EXPECT_TRUE(next.IsServed());
  }

  Devices devices_;

 private:
  RegistryKeyScratch debugger_;
  UINT errorMode_ = 0;
};

// Kept: nothing guards a plug-in's call.
TEST_P(PluginFaultTest, AnAccessViolationEndsTheServerAndTheNextOneServes) {
  ExpectEnd("SampleFault", STATUS_ACCESS_VIOLATION);
}

TEST_P(PluginFaultTest, AForeignExceptionEndsTheServerAndTheNextOneServes) {
  libraries_.Answer("SampleRefuse", "raise = cxx");
  ExpectEnd("SampleRefuse", 0xE06D7363);
}

INSTANTIATE_TEST_SUITE_P(Both, PluginFaultTest, testing::Values(kInstall, kDeinstall),
                         [](const auto& command) { return std::string(command.param.name); });

}  // namespace
}  // namespace e2e
