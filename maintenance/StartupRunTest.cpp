#include "maintenance/StartupRun.h"

#include <stdexcept>
#include <string>
#include <vector>

#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/FakeRegistry.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "tests/support/PoolFixture.h"
#include "tests/support/RegistrySetup.h"
#include "trace/Zqotrc.h"

namespace {

using registry_setup::kBinary;
using registry_setup::kDword;
using registry_setup::kSz;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kGate = "SOFTWARE\\Vesmark\\Shared Tools\\MIREL";
const std::string kStack = "Software\\Vesmark\\Norva";
const std::string kBoard = kStack + "\\DefDevices\\DeviceId\\HWX7101";

const Bytes kIncomplete = TextBytes("PCI\\VEN_1F3C&DEV_5101") + Bytes{0};
const Bytes kComplete = TextBytes("PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C") + Bytes{0};

class StartupRunTest : public PoolFixture {
 protected:
  StartupRunTest() {
    Forget();
    fake_board_library::Reset();
    fake_named_object::Reset();
    registry_setup::SetValue(kBoard, "HardwareId", kSz, kIncomplete);
  }
  ~StartupRunTest() override {
    Forget();
    fake_board_library::Reset();
    FakeTrace::Reset();
  }

  static void Forget() {
    fake_registry::OnCall({});
    registry_setup::DeleteTree(kGate);
    registry_setup::DeleteTree(kStack);
  }

  static void SetGate(std::uint32_t type, const Bytes& data) {
    registry_setup::SetValue(kGate, "SetupSucceeded", type, data);
  }

  // The run's own lines.
  std::vector<std::string> Run(std::uint32_t mask = TRC_PROGRESS | TRC_RESULT | TRC_ERROR) {
    FakeTrace::Collect(mask);
    RunStartupMaintenance(srv_);
    std::vector<std::string> lines;
    for (const FakeTrace::Line& line : FakeTrace::Lines()) {
      if (line.function == "BRDX_RunPlausibilitaet: ") lines.push_back(line.text);
    }
    return lines;
  }

  static bool IsRepaired() {
    return registry_setup::Value(kBoard, "HardwareId") == Bytes{kSz} + kComplete;
  }

  void ExpectOpen(const char* what) {
    registry_setup::SetValue(kBoard, "HardwareId", kSz, kIncomplete);
    fake_board_library::Calls().clear();
    EXPECT_THAT(Run(), ElementsAre(">> Start", "<< End")) << what;
    EXPECT_TRUE(IsRepaired()) << what;
    EXPECT_EQ(fake_board_library::Calls().size(), 4u) << what;
  }

  void ExpectUntouched(const char* what) {
    EXPECT_FALSE(IsRepaired()) << what;
    EXPECT_THAT(fake_board_library::Calls(), IsEmpty()) << what;
    EXPECT_THAT(fake_named_object::Calls(), IsEmpty()) << what;
  }

  void ExpectClosed(const char* what) {
    EXPECT_THAT(Run(), ElementsAre(">> Start",
                                   "Warning: Setup l\xE4"
                                   "uft, keine BRDX_Plausibilitaet m\xF6"
                                   "glich",
                                   "<< End"))
        << what;
    ExpectUntouched(what);
  }

  void ExpectUnreadable(const char* what) {
    EXPECT_THAT(Run(),
                ElementsAre(">> Start", "Error in RegGetValueBL --> Can't run Plausibilitaet!"))
        << what;
    ExpectUntouched(what);
  }
};

TEST_F(StartupRunTest, WithoutTheValueNothingRunsAndTheEndIsNotTraced) {
  ExpectUnreadable("no key");
  registry_setup::CreateKey(kGate);
  ExpectUnreadable("no value");
}

TEST_F(StartupRunTest, AClosedGateIsWarnedOf) {
  SetGate(kSz, TextBytes("0") + Bytes{0});
  ExpectClosed("0");
  SetGate(kSz, Bytes{0});
  ExpectClosed("empty");
  SetGate(kSz, {});
  ExpectClosed("no terminator");
  SetGate(kBinary, {});
  ExpectClosed("no bytes");
  SetGate(kDword, Wire("00000000"));
  ExpectClosed("number 0");
  SetGate(kDword, Wire("00010000"));
  ExpectClosed("number 256");
  SetGate(kDword, Wire("30000000"));
  ExpectClosed("the number that reads as \"0\"");
  SetGate(kBinary, Wire("30 00 31"));
  ExpectClosed("bytes behind the terminator");
}

TEST_F(StartupRunTest, AnOpenGateLetsRepairAndCheckRun) {
  SetGate(kSz, TextBytes("1") + Bytes{0});
  ExpectOpen("1");
  SetGate(kSz, TextBytes("00") + Bytes{0});
  ExpectOpen("00");
  SetGate(kSz, TextBytes(" 0") + Bytes{0});
  ExpectOpen("blank and 0");
  SetGate(kSz, TextBytes("no") + Bytes{0});
  ExpectOpen("no");
  SetGate(kDword, Wire("01000000"));
  ExpectOpen("number 1");
  SetGate(kDword, Wire("01010000"));
  ExpectOpen("number 257");
  SetGate(kBinary, Wire("30 31"));
  ExpectOpen("bytes without terminator");
}

TEST_F(StartupRunTest, AValueOf8160BytesIsReadAndALongerOneIsNot) {
  SetGate(kBinary, Bytes(8160, 'x'));
  ExpectOpen("8160");
  registry_setup::SetValue(kBoard, "HardwareId", kSz, kIncomplete);
  fake_board_library::Calls().clear();
  fake_named_object::Reset();
  SetGate(kBinary, Bytes(8161, 'x'));
  ExpectUnreadable("8161");
}

TEST_F(StartupRunTest, TheRepairRunsBeforeTheCheck) {
  SetGate(kSz, TextBytes("1") + Bytes{0});
  bool wasRepaired = false;
  fake_board_library::Lib().scan = [&] {
    wasRepaired = IsRepaired();
    return 0u;
  };
  (void)Run();
  EXPECT_TRUE(wasRepaired);
  EXPECT_THAT(fake_board_library::Calls(),
              ElementsAre("BRDX_ScanBL", "BRDX_RemoveAbandonLogDevices", "BRDX_UpdateRoute",
                          "BRDX_CreateAllLogdevicesBL"));
}

TEST_F(StartupRunTest, NothingIsSentAndAFailedCheckStopsNothing) {
  SetGate(kSz, TextBytes("1") + Bytes{0});
  fake_board_library::Lib().removeAbandonLogDevices = [] { return 5u; };
  EXPECT_THAT(Run(), ElementsAre(">> Start", "<< End"));
  EXPECT_THAT(Reply(), IsEmpty());
}

TEST_F(StartupRunTest, AnExceptionInTheRepairLeavesTheCheckToRun) {
  SetGate(kSz, TextBytes("1") + Bytes{0});
  int calls = 0;
  fake_registry::OnCall([&] {
    if (++calls == 2) throw std::runtime_error("fault");  // the first after the gate
  });
  EXPECT_THAT(Run(), ElementsAre(">> Start", "<< End"));
  EXPECT_FALSE(IsRepaired());
  EXPECT_EQ(fake_board_library::Calls().size(), 4u);
}

TEST_F(StartupRunTest, AnExceptionInTheCheckLeavesTheServerToStart) {
  SetGate(kSz, TextBytes("1") + Bytes{0});
  fake_board_library::Lib().scan = []() -> std::uint32_t { throw std::runtime_error("fault"); };
  EXPECT_THAT(Run(), ElementsAre(">> Start", "<< End"));
  EXPECT_TRUE(IsRepaired());
  EXPECT_THAT(fake_named_object::Calls(), ElementsAre("wait 30000", "release"));
}

TEST_F(StartupRunTest, OnlyAValueThatCannotBeReadIsAnError) {
  EXPECT_THAT(Run(TRC_ERROR), ElementsAre("Error in RegGetValueBL --> Can't run Plausibilitaet!"));
  SetGate(kSz, TextBytes("0") + Bytes{0});
  EXPECT_THAT(Run(TRC_ERROR), IsEmpty());
}

}  // namespace
