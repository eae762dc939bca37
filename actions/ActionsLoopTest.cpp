#include <string>

#include "tests/fakes/FakeDynamicLibrary.h"
#include "tests/fakes/FakeMessageBox.h"
#include "tests/fakes/FakeSystemPath.h"
#include "tests/fakes/FakeWorkerThread.h"
#include "tests/support/LoopFixture.h"
#include "tests/support/RegistrySetup.h"

// What a client reads: who answers, how often, and what stands behind the first answer.

namespace {

using fake_dynamic_library::Export;
using fake_pipe_io::CompleteRead;
using fake_pipe_io::OnWait;
using fake_pipe_io::Op;
using fake_pipe_io::Written;

constexpr pipe_io::Outcome kPending = {false, ERROR_IO_PENDING, 0};
const std::string kDevice = "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID\\loop";

std::uint32_t g_result = 0;

std::uint32_t InstallDriver(char*, char*, char*, std::uint32_t) { return g_result; }
std::uint32_t RunPanel(std::uint32_t, std::uint32_t) { return 0; }
std::uint32_t Plugin(char*, const char*, char*, std::uint32_t) { return g_result; }
std::uint32_t AddAddress(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t* context,
                         std::uint32_t* instance) {
  *context = 0x11;
  *instance = 0x22;
  return g_result;
}

const Bytes kDriverRequest =
    Wire("0F00") + TextField("s") + TextField("i") + TextField("t") + Wire("00000000");
const Bytes kAddRequest = Wire("0C00 01000000 02000000 03000000");

class ActionsLoopTest : public LoopFixture {
 protected:
  ActionsLoopTest() {
    fake_worker_thread::Reset();
    fake_dynamic_library::Reset();
    fake_system_path::Reset();
    fake_system_path::SetSpecialFolder("C:\\sys");
    fake_message_box::Shown().clear();
    registry_setup::DeleteTree(kDevice);
    g_result = 0;
  }
  ~ActionsLoopTest() override {
    fake_worker_thread::Reset();
    fake_dynamic_library::Reset();
    fake_system_path::Reset();
    registry_setup::DeleteTree(kDevice);
  }

  // What a client of a fresh server reads after this one request.
  Bytes Answer(const Bytes& request) {
    ClientSends(0, request);
    Run();
    EXPECT_EQ(Count("disconnect 0"), 0);
    return Written(0);
  }

  static void AddDriver() {
    fake_dynamic_library::Add("drvinstx.dll", {{"EINST_InstallWdmDriver", Export(InstallDriver)}});
  }
  static void AddIpLibrary() {
    fake_dynamic_library::Add("C:\\sys\\ipcfgx.dll", {{"IE_AddIPAddressEx", Export(AddAddress)}});
  }
};

TEST_F(ActionsLoopTest, InstallIsAnsweredOnce) {
  registry_setup::SetValue(kDevice, "HardwareID", registry_setup::kSz, TextBytes("HW"));
  registry_setup::SetValue(kDevice, "Installer", registry_setup::kSz, TextBytes("p.dll,Run"));
  fake_dynamic_library::Add("C:\\windows\\system32\\p.dll", {{"Run", Export(Plugin)}});
  g_result = 31;
  EXPECT_EQ(Answer(Wire("0500") + TextField("loop") + TextField("")), Wire("0400 1F000000"));
}

TEST_F(ActionsLoopTest, AnInstallThatFailsIsAnsweredOnce) {
  EXPECT_EQ(Answer(Wire("0500") + TextField("none") + TextField("")), Wire("0400 02000000"));
}

TEST_F(ActionsLoopTest, DeinstallIsAnsweredOnce) {
  EXPECT_EQ(Answer(Wire("0600") + TextField("none") + TextField("") + TextField("")),
            Wire("0400 02000000"));
}

TEST_F(ActionsLoopTest, InstallWithoutReadableFieldsIsAnsweredOnce) {
  EXPECT_EQ(Answer(Wire("0500")), Wire("0400 9A210000"));
}

TEST_F(ActionsLoopTest, KeptADriverInstallationIsAnsweredAndThenTwiceInOneWrite) {
  AddDriver();
  g_result = 5;
  const Bytes reply = Wire("0400 05000000");
  EXPECT_EQ(Answer(kDriverRequest), reply + reply + reply);
  EXPECT_EQ(Count("write 0 " + Hex(reply)), 1);
  EXPECT_EQ(Count("write 0 " + Hex(reply + reply)), 1);
}

TEST_F(ActionsLoopTest, KeptADriverLibraryThatIsMissingIsAnsweredOnceWithSuccess) {
  EXPECT_EQ(Answer(kDriverRequest), Wire("0400 00000000"));
  EXPECT_EQ(fake_message_box::Shown().size(), 1u);
}

TEST_F(ActionsLoopTest, ADriverRequestThatCannotBeReadIsAnsweredOnce) {
  AddDriver();
  EXPECT_EQ(Answer(Wire("0F00 01000000 73")), Wire("0400 9A210000"));
}

TEST_F(ActionsLoopTest, KeptAPanelIsAnsweredAndThenTwiceInOneWrite) {
  fake_dynamic_library::Add("onlpanelx.cpl", {{"RunEpromPanelAsAdmin", Export(RunPanel)}});
  fake_dynamic_library::LastErrorAfterFind(1400);
  const Bytes reply = Wire("0400 78050000");
  EXPECT_EQ(Answer(Wire("1100")), reply + reply + reply);
}

TEST_F(ActionsLoopTest, APanelsSecondReplyWaitsForAPendingFirst) {
  fake_dynamic_library::Add("onlpanelx.cpl", {});
  const Bytes reply = Wire("0400 7F000000");
  fake_pipe_io::Script(Op::Write, 0, kPending);
  ClientSends(0, "1100");
  OnWait([&] {
    EXPECT_EQ(Written(0), Bytes{});
    EXPECT_EQ(Count("write 0 " + Hex(reply + reply)), 0);
    fake_pipe_io::Complete(0, /*success=*/true, 6);
  });
  OnWait([] { CompleteRead(0, Wire("1000")); });
  Run();
  EXPECT_EQ(Written(0), reply + reply + reply + Wire("0400 00000000"));
  EXPECT_EQ(Count("disconnect 0"), 0);
}

TEST_F(ActionsLoopTest, AMissingPanelIsAnsweredOnceWithSuccess) {
  EXPECT_EQ(Answer(Wire("1100")), Wire("0400 00000000"));
}

TEST_F(ActionsLoopTest, AnAddedAddressIsAnsweredOnceWithContextAndInstance) {
  AddIpLibrary();
  EXPECT_EQ(Answer(kAddRequest), Wire("0400 00000000 11000000 22000000"));
}

TEST_F(ActionsLoopTest, KeptAFailedAddIsAnsweredAndThenOnceMoreWithTheFailureBehindIt) {
  AddIpLibrary();
  g_result = 5010;
  const Bytes reply = Wire("0400 92130000 11000000 22000000");
  EXPECT_EQ(Answer(kAddRequest), reply + reply + Wire("0400 92130000"));
}

TEST_F(ActionsLoopTest, WithoutTheLibraryTheOutputsAreZeroWhateverTheLastOnesWere) {
  AddIpLibrary();
  ClientSends(0, kAddRequest);
  OnWait([] {
    fake_dynamic_library::Reset();
    CompleteRead(0, kAddRequest);
  });
  Run();
  const Bytes failed = Wire("0400 9B210000 00000000 00000000");
  EXPECT_EQ(Written(0),
            Wire("0400 00000000 11000000 22000000") + failed + failed + Wire("0400 9B210000"));
}

TEST_F(ActionsLoopTest, AnAddThatCannotBeReadIsAnsweredInItsShapeAndOnceMore) {
  const Bytes failed = Wire("0400 9A210000 00000000 00000000");
  EXPECT_EQ(Answer(Wire("0C00 01000000")), failed + failed + Wire("0400 9A210000"));
}

TEST_F(ActionsLoopTest, AFailedDeleteIsAnsweredOnce) {
  EXPECT_EQ(Answer(Wire("0D00 11000000")), Wire("0400 9B210000"));
}

TEST_F(ActionsLoopTest, ARestartIsAnsweredOnceAndSoIsOneThatCannotStart) {
  const Bytes request = Wire("2001") + TextField("CP1") + TextField("e");
  ClientSends(0, request);
  OnWait([=] {
    fake_worker_thread::JoinAll();
    fake_worker_thread::Refuse();
    CompleteRead(0, request);
  });
  OnWait([] { CompleteRead(0, Wire("2001 FFFF0000 FFFF0000")); });
  OnWait([] { CompleteRead(0, Wire("2101 01000000 65")); });
  Run();
  EXPECT_EQ(Written(0), Wire("0400 00000000  0400 9A210000  0400 57000000  0400 03010000"));
}

TEST_F(ActionsLoopTest, TestFunctionIsAnsweredOnce) {
  EXPECT_EQ(Answer(Wire("F000 01000000 41")), Wire("0400 E7030000 01000000 41"));
}

}  // namespace
