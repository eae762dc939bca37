#include <string>
#include <vector>

#include "board/testing/PlausibilityFixture.h"
#include "trace/Zqotrc.h"

// The plausibility check when something raises, at every step that it makes.

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class PlausibilityFaultsTest : public PlausibilityFixture {
 protected:
  PlausibilityFaultsTest() {
    AddLogDevice("KWTUSB1");
    AddLogName("a", "gone");
    AddLogName("b", "KWTUSB1,gone");
    results_ = {0x11, 0x22, 0x33, 0x44};
  }

  // Puts back what a run unassigns.
  void Assign() {
    AddLogName("a", "gone");
    AddLogName("b", "KWTUSB1,gone");
  }
};

TEST_F(PlausibilityFaultsTest, AnExceptionAtAnyStepEndsTheCheckAndLeavesTheLockFree) {
  (void)Run();
  const std::vector<std::string> whole = steps_;
  ASSERT_GT(whole.size(), 10u);
  for (raiseAt_ = 1; raiseAt_ <= whole.size(); ++raiseAt_) {
    Assign();
    const std::size_t lines = Trace(TRC_ERROR).size();
    EXPECT_EQ(lines, 1u) << raiseAt_;
    EXPECT_EQ(steps_, std::vector<std::string>(
                          whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(raiseAt_)));
    EXPECT_FALSE(IsLocked()) << raiseAt_;
    if (raiseAt_ < whole.size() - 1) {
      EXPECT_THAT(fake_board_library::Calls(), Not(Contains("BRDX_UpdateRoute")));
    }
    if (raiseAt_ < whole.size()) {
      EXPECT_THAT(fake_board_library::Calls(), Not(Contains("BRDX_CreateAllLogdevicesBL")));
    }
  }
}

TEST_F(PlausibilityFaultsTest, TheResultKeptSoFarIsAnswered) {
  const struct {
    std::size_t step;
    const char* reply;
  } rows[] = {
      {1, "0400 00000000"},                        // a literal key
      {2, "0400 00000000"}, {3, "0400 00000000"},  // the scan
      {4, "0400 11000000"},                        // the removal
      {5, "0400 22000000"},                        // the walk
      {9, "0400 22000000"},
  };
  for (const auto& row : rows) {
    Assign();
    raiseAt_ = row.step;
    EXPECT_EQ(Run(), SRV_OK);
    EXPECT_EQ(Reply(), Wire(row.reply)) << row.step;
  }
}

TEST_F(PlausibilityFaultsTest, WithoutAConnectionTheResultKeptSoFarIsReturned) {
  raiseAt_ = 4;
  EXPECT_EQ(srv_.BC_PlausibilitaetBL(-1), 0x11u);
}

TEST_F(PlausibilityFaultsTest, AnExceptionIsTracedUnderTheCommandsName) {
  raiseAt_ = 3;
  EXPECT_THAT(Trace(TRC_PROGRESS | TRC_RESULT | TRC_ERROR),
              ElementsAre("--> start", "Exception: BC_PlausibilitaetBL", "<-- End"));
  EXPECT_THAT(Trace(TRC_ERROR), ElementsAre("Exception: BC_PlausibilitaetBL"));
}

TEST_F(PlausibilityFaultsTest, AnExceptionBeforeTheLockNeverTakesIt) {
  raiseAt_ = 2;
  (void)Run();
  EXPECT_THAT(fake_named_object::Calls(), ElementsAre());
}

TEST_F(PlausibilityFaultsTest, AWriteThatIsRefusedIsNotReportedAndTheWalkGoesOn) {
  // A path that the policy does not take: too long for it.
  const std::string longName(250, 'a');
  AddLogName(longName, "gone");
  (void)Run();
  EXPECT_EQ(LogDeviceOf(longName), "gone");
  EXPECT_EQ(LogDeviceOf("b"), "");
  EXPECT_EQ(Reply(), Wire("0400 22000000"));
}

}  // namespace
