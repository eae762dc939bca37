#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/ActionsTest.h"

// The driver installation and the online panel, with their libraries in place. What they do without
// them shows a message box; MessageBoxTest has it.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The handler's reply, then that reply again with the loop's behind it.
Bytes Doubled(const Bytes& result) {
  const Bytes reply = Wire("0400") + result;
  return reply + reply + reply;
}

const Bytes kDone = Wire("00000000");
const Bytes kRaised = Wire("9C210000");  // 8604

class DriverTest : public OwnServerActionsTest, public testing::WithParamInterface<const char*> {
 protected:
  void StartWithLibrary() {
    libraries_.Place("drvinstx.dll");
    Start();
  }

  const Bytes kRequest =
      Wire("0F00 06000000 'SVC_4A' 0C000000 'C:\\inf\\a.inf' 03000000 'abc' 07000000");
};

TEST_F(DriverTest, TheResultIsAnsweredTwice) {
  StartWithLibrary();
  EXPECT_TRUE(client_.Answers(kRequest, Wire("0400 00000000"
                                             "0400 00000000 0400 00000000")));
  EXPECT_THAT(
      libraries_.Calls(),
      ElementsAre("EINST_InstallWdmDriver service=\"SVC_4A\" infFile=\"C:\\\\inf\\\\a.inf\" "
                  "third=\"abc\" mode=7 -> 0"));
  libraries_.Answer("EINST_InstallWdmDriver", "result = 0xE000020B");
  EXPECT_TRUE(client_.Answers(kRequest, Wire("0400 0B0200E0"
                                             "0400 0B0200E0 0400 0B0200E0")));
}

// Kept: the driver's library is never unloaded.
TEST_F(DriverTest, TheLibraryStays) {
  StartWithLibrary();
  EXPECT_FALSE(server_.HasModule("drvinstx.dll"));
  EXPECT_TRUE(client_.Answers(kRequest, Doubled(kDone)));
  EXPECT_TRUE(server_.HasModule("drvinstx.dll"));
}

// Kept: an installation that nobody made is a success.
TEST_F(DriverTest, AMissingExportIsAnsweredWithSuccessTwice) {
  libraries_.PlaceTwin("drvinstx.dll");
  Start();
  EXPECT_TRUE(client_.Answers(kRequest, Doubled(kDone)));
  EXPECT_TRUE(server_.HasModule("drvinstx.dll"));
}

TEST_F(DriverTest, EmptyAndAbsentTextsReachTheLibrary) {
  StartWithLibrary();
  libraries_.Answer("EINST_InstallWdmDriver", "result = 3");
  const Bytes three = Wire("03000000");
  EXPECT_TRUE(client_.Answers(Wire("0F00 00000000 00000000 00000000 FFFFFFFF"), Doubled(three)));
  EXPECT_TRUE(client_.Answers(Wire("0F00 FFFF0000 FFFF0000 FFFF0000 00000000"), Doubled(three)));
  EXPECT_THAT(libraries_.Calls(),
              ElementsAre("EINST_InstallWdmDriver service=\"\" infFile=\"\" third=\"\" "
                          "mode=4294967295 -> 3",
                          "EINST_InstallWdmDriver service=(null) infFile=(null) third=(null) "
                          "mode=0 -> 3"));
}

TEST_F(DriverTest, TextsOf259BytesArriveWholeAndLongerOnesAreRefusedOnce) {
  StartWithLibrary();
  const std::string longest(259, 't');
  EXPECT_TRUE(client_.Answers(
      Wire("0F00") + Text(longest) + Text(longest) + Text(longest) + Long(1), Doubled(kDone)));
  EXPECT_THAT(libraries_.Calls(),
              ElementsAre("EINST_InstallWdmDriver service=\"" + longest + "\" infFile=\"" +
                          longest + "\" third=\"" + longest + "\" mode=1 -> 0"));
  libraries_.ForgetCalls();
  for (int field = 0; field < 3; ++field) {
    Bytes request = Wire("0F00");
    for (int i = 0; i < 3; ++i) request += Text(i == field ? longest + 't' : "x");
    EXPECT_TRUE(client_.Answers(request + Long(1), Wire("0400 9A210000"))) << field;
  }
  EXPECT_THAT(libraries_.Calls(), IsEmpty());
}

TEST_P(DriverTest, AnExceptionIsAnsweredTwiceAndTheServerServes) {
  StartWithLibrary();
  libraries_.Answer("EINST_InstallWdmDriver", std::string("raise = ") + GetParam());
  EXPECT_TRUE(client_.Answers(kRequest, Doubled(kRaised)));
  libraries_.Script("");
  EXPECT_TRUE(client_.Answers(kRequest, Doubled(kDone)));
  EXPECT_TRUE(server_.HasModule("drvinstx.dll"));
}

INSTANTIATE_TEST_SUITE_P(EveryException, DriverTest,
                         testing::Values("access-violation", "cxx", "divide-by-zero",
                                         "int-overflow"));

class PanelTest : public ActionsTest, public testing::WithParamInterface<const char*> {
 protected:
  const Bytes kRequest = Wire("1100");
};

TEST_F(PanelTest, APanelThatWasShownIsASuccessTwiceAndItsLibraryIsFreed) {
  EXPECT_TRUE(client_.Answers(kRequest, Wire("0400 00000000"
                                             "0400 00000000 0400 00000000")));
  EXPECT_THAT(Libraries().Calls(), ElementsAre("RunEpromPanelAsAdmin first=0 second=0 -> 1"));
  EXPECT_FALSE(Server().HasModule("onlpanelx.cpl"));
}

TEST_F(PanelTest, AnyResultButZeroIsASuccess) {
  for (const char* const result : {"2", "8604", "0xFFFFFFFF"}) {
    Libraries().Answer("RunEpromPanelAsAdmin", std::string("result = ") + result);
    EXPECT_TRUE(client_.Answers(kRequest, Doubled(kDone))) << result;
  }
}

// Kept: what the look-up left is answered, and that found the export; what the panel itself leaves
// is not looked at.
TEST_F(PanelTest, APanelThatFailsIsAnsweredWithTheLookUpsCodeWhichIsZero) {
  Libraries().Answer("RunEpromPanelAsAdmin", "result = 0\nlast-error = 5");
  EXPECT_TRUE(client_.Answers(kRequest, Doubled(kDone)));
  EXPECT_EQ(Libraries().Calls().size(), 1u);
}

TEST_F(PanelTest, AMissingExportIsTheLookUpsCodeTwiceAndTheLibraryIsFreed) {
  Libraries().PlaceTwin("onlpanelx.cpl");
  EXPECT_TRUE(client_.Answers(kRequest, Wire("0400 7F000000"
                                             "0400 7F000000 0400 7F000000")));
  EXPECT_FALSE(Server().HasModule("onlpanelx.cpl"));
  Libraries().Place("onlpanelx.cpl");
}

TEST_F(PanelTest, BytesBehindTheCodeAreIgnored) {
  EXPECT_TRUE(client_.Answers(Wire("1100 'anything'"), Doubled(kDone)));
}

TEST_P(PanelTest, AnExceptionIsAnsweredTwiceAndTheLibraryIsFreed) {
  Libraries().Answer("RunEpromPanelAsAdmin", std::string("raise = ") + GetParam());
  EXPECT_TRUE(client_.Answers(kRequest, Doubled(kRaised)));
  EXPECT_FALSE(Server().HasModule("onlpanelx.cpl"));
  Libraries().Script("");
  EXPECT_TRUE(client_.Answers(kRequest, Doubled(kDone)));
}

INSTANTIATE_TEST_SUITE_P(EveryException, PanelTest,
                         testing::Values("access-violation", "cxx", "divide-by-zero",
                                         "int-overflow"));

TEST_F(PanelTest, AllOthersWaitWhileThePanelIsOpenAndAreServedAfterwards) {
  Libraries().Answer("RunEpromPanelAsAdmin", "delay = 400\nresult = 1");
  WireClient other;
  ASSERT_TRUE(other.Connect());
  ASSERT_TRUE(other.IsServed());
  ASSERT_TRUE(client_.Send(kRequest));
  ASSERT_TRUE(other.Send(Wire("1000")));
  EXPECT_TRUE(other.IsQuiet(150));
  EXPECT_TRUE(client_.Yields(Doubled(kDone)));
  EXPECT_TRUE(other.YieldsNext(Wire("0400 00000000")));
}

// The folder of the program comes before the system directory.
TEST_F(OwnServerActionsTest, ALibraryBesideTheServerIsTaken) {
  libraries_.PlaceTwin("onlpanelx.cpl");
  libraries_.PlaceBesideServer("onlpanelx.cpl");
  Start();
  EXPECT_TRUE(client_.Answers(Wire("1100"), Doubled(kDone)));
  EXPECT_THAT(libraries_.Calls(), ElementsAre("RunEpromPanelAsAdmin first=0 second=0 -> 1"));
}

}  // namespace
}  // namespace e2e
