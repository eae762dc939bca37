#include <string>
#include <vector>

#include "board/testing/PlausibilityFixture.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "trace/Zqotrc.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PlausibilityTest : public PlausibilityFixture {};

TEST_F(PlausibilityTest, TheOperationsAreCalledInOrder) {
  (void)Run();
  EXPECT_THAT(fake_board_library::Calls(),
              ElementsAre("BRDX_ScanBL", "BRDX_RemoveAbandonLogDevices", "BRDX_UpdateRoute",
                          "BRDX_CreateAllLogdevicesBL"));
}

TEST_F(PlausibilityTest, TheResultOfRemovingAbandonedDevicesIsAnswered) {
  results_ = {11, 22, 33, 44};
  EXPECT_EQ(Run(), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 16000000"));
}

TEST_F(PlausibilityTest, WithoutAConnectionTheResultIsReturnedAndNothingSent) {
  results_ = {11, 0x80000022, 33, 44};
  Receive("2401");
  EXPECT_EQ(srv_.BC_PlausibilitaetBL(-1), 0x80000022u);
  EXPECT_THAT(Reply(), IsEmpty());
  results_ = {11, 0, 33, 44};
  EXPECT_EQ(srv_.BC_PlausibilitaetBL(CQorlixSRVPipe::kNoConnection), 0u);
}

TEST_F(PlausibilityTest, TheLockIsHeldFromTheScanToTheEnd) {
  AddLogName("name", "gone");
  (void)Run();
  EXPECT_THAT(steps_, ElementsAre("registry", "registry",  // the two literal keys
                                  "locked scan", "locked remove", "locked registry",
                                  "locked registry", "locked registry", "locked registry",
                                  "locked registry", "locked route", "locked create"));
  EXPECT_THAT(fake_named_object::Calls(), ElementsAre("wait 30000", "release"));
}

TEST_F(PlausibilityTest, ItGoesAheadWhenTheLockWasNotGranted) {
  fake_named_object::AnswerWait(WAIT_TIMEOUT);
  (void)Run();
  EXPECT_EQ(fake_board_library::Calls().size(), 4u);
  EXPECT_THAT(fake_named_object::Calls(), ElementsAre("wait 30000", "release"));
}

TEST_F(PlausibilityTest, WithoutLogNamesRoutesAndDevicesAreStillRebuilt) {
  results_ = {0, 5, 0, 0};
  EXPECT_EQ(Run(), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 05000000"));
  EXPECT_EQ(fake_board_library::Calls().size(), 4u);
}

TEST_F(PlausibilityTest, FailuresOfTheLibraryStopNothing) {
  AddLogName("name", "gone");
  results_ = {1, 2, 3, 4};
  (void)Run();
  EXPECT_EQ(fake_board_library::Calls().size(), 4u);
  EXPECT_EQ(LogDeviceOf("name"), "");
}

TEST_F(PlausibilityTest, OnlyNamesWhoseDeviceIsGoneAreUnassigned) {
  AddLogDevice("here");
  AddLogName("a", "here");
  AddLogName("b", "gone");
  AddLogName("c", "HERE");
  AddLogName("d", "gone,here");
  (void)Run();
  EXPECT_EQ(LogDeviceOf("a"), "here");
  EXPECT_EQ(LogDeviceOf("b"), "");
  EXPECT_EQ(LogDeviceOf("c"), "HERE");
  EXPECT_EQ(LogDeviceOf("d"), "");  // no programmer, so one name
}

TEST_F(PlausibilityTest, AnUnassignedNameIsATextOfOneZeroByte) {
  AddLogName("name", "gone");
  (void)Run();
  EXPECT_EQ(registry_setup::Value(kLogNames + "name", "LogDevice"), Wire("01 00"));
}

TEST_F(PlausibilityTest, EmptyAndMissingValuesAreLeftAlone) {
  AddLogName("empty", "");
  registry_setup::SetValue(kLogNames + "nothing", "LogDevice", registry_setup::kBinary, {});
  registry_setup::SetValue(kLogNames + "zero", "LogDevice", registry_setup::kDword, Long(0));
  registry_setup::CreateKey(kLogNames + "none");
  (void)Run();
  EXPECT_EQ(LogDeviceOf("empty"), "");
  EXPECT_EQ(registry_setup::Value(kLogNames + "nothing", "LogDevice"), Wire("03"));
  EXPECT_EQ(registry_setup::Value(kLogNames + "zero", "LogDevice"), Wire("04 00000000"));
  EXPECT_FALSE(registry_setup::Value(kLogNames + "none", "LogDevice").has_value());
}

TEST_F(PlausibilityTest, ValuesOfOtherTypesCountByTheirBytes) {
  AddLogDevice("AB");
  registry_setup::SetValue(kLogNames + "bytes", "LogDevice", registry_setup::kBinary,
                           Wire("41 42"));
  registry_setup::SetValue(kLogNames + "number", "LogDevice", registry_setup::kDword,
                           Wire("41420000"));
  registry_setup::SetValue(kLogNames + "other", "LogDevice", registry_setup::kDword,
                           Wire("43440000"));
  (void)Run();
  EXPECT_EQ(registry_setup::Value(kLogNames + "bytes", "LogDevice"), Wire("03 4142"));
  EXPECT_EQ(registry_setup::Value(kLogNames + "number", "LogDevice"), Wire("04 41420000"));
  EXPECT_EQ(registry_setup::Value(kLogNames + "other", "LogDevice"), Wire("01 00"));
}

TEST_F(PlausibilityTest, ValuesUpTo8192BytesAreReadWholeAndLongerOnesLeftAlone) {
  const std::string device(5000, 'd');
  AddLogDevice(device);
  AddLogName("a", device);
  AddLogName("b", device + "e");
  registry_setup::SetValue(kLogNames + "c", "LogDevice", registry_setup::kBinary, Bytes(8192, 'x'));
  registry_setup::SetValue(kLogNames + "d", "LogDevice", registry_setup::kBinary, Bytes(8193, 'x'));
  (void)Run();
  EXPECT_EQ(LogDeviceOf("a"), device);
  EXPECT_EQ(LogDeviceOf("b"), "");
  EXPECT_EQ(LogDeviceOf("c"), "");
  EXPECT_EQ(registry_setup::Value(kLogNames + "d", "LogDevice"), Wire("03") + Bytes(8193, 'x'));
}

TEST_F(PlausibilityTest, AListOfProgrammersOf8192BytesIsTakenApart) {
  std::string list = "KWTUSB";
  while (list.size() < 8192) list += list.size() % 7 == 0 ? ',' : 'x';
  registry_setup::SetValue(kLogNames + "a", "LogDevice", registry_setup::kBinary, TextBytes(list));
  (void)Run();
  EXPECT_EQ(LogDeviceOf("a"), "");
}

TEST_F(PlausibilityTest, ANameOf259BytesAndMoreIsChecked) {
  // Longer than the registry allows, and still within what it is told.
  const std::string name(8000, 'n');
  AddLogName(name, "gone");
  (void)Run();
  // The path is too long for the policy, so the name stays assigned.
  EXPECT_EQ(LogDeviceOf(name), "gone");
  const std::string shorter(200, 'n');
  AddLogName(shorter, "gone");
  (void)Run();
  EXPECT_EQ(LogDeviceOf(shorter), "");
}

TEST_F(PlausibilityTest, ProgrammersAreSplitAndStayWhenAllAreThere) {
  AddLogDevice("KWTUSB1");
  AddLogDevice("two");
  AddLogName("a", "KWTUSB1,two");
  AddLogName("b", ",KWTUSB1,,two,");
  AddLogName("c", "two,KWTUSB1");
  (void)Run();
  EXPECT_EQ(LogDeviceOf("a"), "KWTUSB1,two");
  EXPECT_EQ(LogDeviceOf("b"), ",KWTUSB1,,two,");
  EXPECT_EQ(LogDeviceOf("c"), "two,KWTUSB1");
}

TEST_F(PlausibilityTest, OneMissingProgrammerUnassignsTheNameWhereverItStands) {
  AddLogDevice("KWTUSB1");
  AddLogName("a", "KWTUSB1,gone");
  AddLogName("b", "gone,KWTUSB1");
  AddLogName("c", "kwtusb1,KWTUSB1");  // names of keys know no case, the mark does
  (void)Run();
  EXPECT_EQ(LogDeviceOf("a"), "");
  EXPECT_EQ(LogDeviceOf("b"), "");
  EXPECT_EQ(LogDeviceOf("c"), "kwtusb1,KWTUSB1");
}

TEST_F(PlausibilityTest, TheTwoLiterallyNamedKeysAreDeleted) {
  registry_setup::CreateKey("EMULON(TCP/IP) -> EMULON V5.x");
  registry_setup::CreateKey("EMULON Q-2100/Q-2500(TCP/IP) -> EMULON Q-2100/Q-2500");
  registry_setup::CreateKey("EMULON(TCP/IP)");
  (void)Run();
  EXPECT_FALSE(registry_setup::KeyExists("EMULON(TCP/IP) -> EMULON V5.x"));
  EXPECT_FALSE(registry_setup::KeyExists("EMULON Q-2100/Q-2500(TCP/IP) -> EMULON Q-2100/Q-2500"));
  EXPECT_TRUE(registry_setup::KeyExists("EMULON(TCP/IP)"));
  registry_setup::DeleteTree("EMULON(TCP/IP)");
}

TEST_F(PlausibilityTest, TheTraceOfARunThatFindsEverything) {
  AddLogDevice("here");
  AddLogName("a", "here");
  AddLogName("b", "gone");
  results_ = {0x1F, 0x20, 0, 0};
  EXPECT_THAT(Trace(TRC_PROGRESS | TRC_RESULT | TRC_ERROR),
              ElementsAre("--> start", "BRDX_Scan result = 0x1f",
                          "BRDX_RemoveAbandonLogDevices result = 0x20", "Step 3: checke LogNames",
                          "checke LogName: a", "checke LogName: b",
                          "-> LogDevice gone nicht gefunden. Zuordnung aufheben", "<-- End"));
  EXPECT_THAT(Trace(TRC_RESULT),
              ElementsAre("BRDX_Scan result = 0x1f", "BRDX_RemoveAbandonLogDevices result = 0x20"));
  EXPECT_THAT(Trace(TRC_ERROR), IsEmpty());
}

TEST_F(PlausibilityTest, KeptAMissingProgrammerIsTracedUnderTheFirstOnesName) {
  AddLogDevice("KWTUSB1");
  AddLogName("a", "KWTUSB1,gone,alsogone");
  EXPECT_THAT(Trace(TRC_PROGRESS),
              ElementsAre("--> start", "Step 3: checke LogNames", "checke LogName: a",
                          "-> externer USB-Prommer gefunden, nehme Namen auseinander", "-> KWTUSB1",
                          "-> gone", "-> LogDevice KWTUSB1 nicht gefunden. Zuordnung aufheben",
                          "-> alsogone", "-> LogDevice KWTUSB1 nicht gefunden. Zuordnung aufheben",
                          "<-- End"));
}

TEST_F(PlausibilityTest, TheTraceOfAValueThatIsNotAnsweredToAConnectionEndsAlike) {
  FakeTrace::Collect(TRC_PROGRESS);
  (void)srv_.BC_PlausibilitaetBL(-1);
  EXPECT_THAT(FakeTrace::Texts(), ElementsAre("BC_PlausibilitaetBL: --> start",
                                              "BC_PlausibilitaetBL: Step 3: checke LogNames",
                                              "BC_PlausibilitaetBL: <-- End"));
}

}  // namespace
