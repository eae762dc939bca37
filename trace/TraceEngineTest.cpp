#include "trace/TraceEngine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/fakes/trace/FakeTrace.h"
#include "trace/TraceOutputs.h"

namespace {

using FakeTrace::Event;
using FakeTrace::TheMachine;
using testing::ElementsAre;
using testing::IsEmpty;
using zqotrc::EngineExport;

constexpr char kLoad[] =
    "load C:\\Common\\Vesmark\\Automation\\TraceEngine\\bin\\ZqTraceEngineX.dll";
constexpr char kOpen[] =
    "open Zqsdd_TraceMetaInfo.xml Zqsdd_TraceSettings.xml "
    "C:\\Common\\mirel\\meta\\trace\\Settings\\ 1.0.0.0";

class TraceEngineTest : public testing::Test {
 protected:
  ~TraceEngineTest() override { TheMachine() = {}; }
  zqotrc::EngineRoute engine_;
};

TEST_F(TraceEngineTest, TheLibraryComesFromTheCommonProgramFiles) {
  engine_.Prepare();
  EXPECT_THAT(TheMachine().engineSteps, ElementsAre(kLoad));
  EXPECT_THAT(TheMachine().events, IsEmpty());
}

TEST_F(TraceEngineTest, ALibraryInUseIsNotLoadedAgain) {
  engine_.Prepare();
  engine_.Prepare();
  EXPECT_THAT(TheMachine().engineSteps, ElementsAre(kLoad));
}

TEST_F(TraceEngineTest, AMissingLibraryIsReportedAndTakesNoLines) {
  TheMachine().engineLoads = false;
  engine_.Prepare();
  engine_.Deliver("line");
  engine_.Refresh();
  EXPECT_THAT(TheMachine().events, ElementsAre(Event{0xC0001400, {kLoad + 5}}));
  EXPECT_THAT(TheMachine().engineSteps, ElementsAre(kLoad));
}

TEST_F(TraceEngineTest, WithoutTheCommonProgramFilesNothingIsLoaded) {
  TheMachine().commonProgramFiles.clear();
  engine_.Prepare();
  EXPECT_THAT(TheMachine().engineSteps, IsEmpty());
  ASSERT_EQ(TheMachine().events.size(), 1u);
  EXPECT_EQ(TheMachine().events[0].id, 0xC0001400);
}

TEST_F(TraceEngineTest, EveryMissingExportIsReportedAndTheRoadIsClosed) {
  TheMachine().missingExports = {EngineExport::kWrite, EngineExport::kClose};
  engine_.Prepare();
  engine_.Deliver("line");
  EXPECT_THAT(TheMachine().events,
              ElementsAre(Event{0xC0001401, {"TraceWrite"}}, Event{0xC0001401, {"TraceClose"}}));
  EXPECT_THAT(TheMachine().engineRecords, IsEmpty());
}

TEST_F(TraceEngineTest, TheExportsAreLookedUpInTheirOrder) {
  TheMachine().missingExports = {EngineExport::kOpen, EngineExport::kWrite, EngineExport::kCommand,
                                 EngineExport::kClose};
  engine_.Prepare();
  EXPECT_THAT(TheMachine().events,
              ElementsAre(Event{0xC0001401, {"TraceOpenA"}}, Event{0xC0001401, {"TraceWrite"}},
                          Event{0xC0001401, {"TraceCommand"}}, Event{0xC0001401, {"TraceClose"}}));
}

TEST_F(TraceEngineTest, TheRoadOpensAtALaterReadingWhenTheLibraryIsThereThen) {
  TheMachine().engineLoads = false;
  engine_.Prepare();
  TheMachine().engineLoads = true;
  engine_.Prepare();
  engine_.Deliver("line");
  EXPECT_EQ(TheMachine().engineRecords.size(), 1u);
}

TEST_F(TraceEngineTest, TheFirstLineOpensTheEngineAndTheNextOnesFindItOpen) {
  engine_.Prepare();
  engine_.Deliver("one");
  engine_.Deliver("two");
  EXPECT_THAT(TheMachine().engineSteps, ElementsAre(kLoad, kOpen, "write 77", "write 77"));
}

TEST_F(TraceEngineTest, ARecordIsTwoFixedBytesTheLengthAndTheLine) {
  engine_.Prepare();
  engine_.Deliver("abc");
  const std::string longest(418, 'x');
  engine_.Deliver(longest);
  EXPECT_THAT(TheMachine().engineRecords,
              ElementsAre(std::string("\x00\x47\x03\x00"
                                      "abc",
                                      7),
                          std::string("\x00\x47\xA2\x01", 4) + longest));
}

TEST_F(TraceEngineTest, AnEngineThatDoesNotOpenIsTriedAgainAtEveryLine) {
  engine_.Prepare();
  TheMachine().engineOpenResult = 5;
  engine_.Deliver("one");
  engine_.Deliver("two");
  EXPECT_THAT(TheMachine().engineSteps, ElementsAre(kLoad, kOpen, kOpen));
  TheMachine().engineOpenResult = 0;
  engine_.Deliver("three");
  EXPECT_EQ(TheMachine().engineRecords.size(), 1u);
}

TEST_F(TraceEngineTest, OnlyTheFirstFailureOfACallIsReported) {
  engine_.Prepare();
  TheMachine().engineOpenResult = 5;
  engine_.Deliver("one");
  TheMachine().engineOpenResult = 0;
  TheMachine().engineWriteResult = 6;
  engine_.Deliver("two");
  EXPECT_THAT(TheMachine().events, ElementsAre(Event{0x80001402, {"TraceOpenA", "one"}}));
}

TEST_F(TraceEngineTest, AFailedWriteIsReportedWithItsLineAndKeepsTheHandle) {
  engine_.Prepare();
  TheMachine().engineWriteResult = 6;
  const std::string line(418, 'x');
  engine_.Deliver(line);
  engine_.Deliver("two");
  EXPECT_THAT(TheMachine().events,
              ElementsAre(Event{0x80001402, {"TraceWrite", std::string(255, 'x')}}));
  EXPECT_THAT(TheMachine().engineSteps, ElementsAre(kLoad, kOpen, "write 77", "write 77"));
}

TEST_F(TraceEngineTest, ARefreshIsACommandWithAName) {
  engine_.Prepare();
  engine_.Refresh();
  EXPECT_THAT(TheMachine().engineSteps, ElementsAre(kLoad, "command 2 Zqsdd_TraceWriterFile"));
}

TEST_F(TraceEngineTest, ClosingClosesAnOpenHandleOnceAndTheNextLineOpensAgain) {
  engine_.Prepare();
  engine_.Close();
  engine_.Deliver("one");
  engine_.Close();
  engine_.Close();
  engine_.Deliver("two");
  EXPECT_THAT(TheMachine().engineSteps,
              ElementsAre(kLoad, kOpen, "write 77", "close 77", kOpen, "write 77"));
}

}  // namespace
