#include "traceview/TraceRequests.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace traceview {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

constexpr std::int64_t kMilli = 1000;
constexpr std::int64_t kDay = 24LL * 60 * 60 * 1000000;

class TraceRequestsTest : public testing::Test {
 protected:
  TraceLine& Add(const std::string& function, const std::string& text) {
    TraceLine line;
    line.layout = Layout::kLong;
    line.level = "--";
    line.process = 1;
    line.thread = thread_;
    line.microseconds = now_;
    line.function = function;
    line.text = text;
    now_ += kMilli;
    lines_.push_back(line);
    return lines_.back();
  }
  void Loop(const std::string& text) { Add("RunSrvLoop", text); }
  void Wake(const std::string& connection) {
    Loop("while - WaitForMultipleObjects");
    Loop("WaitForMultipleObjects received Element on dwWait=0x" + connection);
  }
  // A whole request: eight lines, of which the last six are the request's.
  void Request(const std::string& connection, const std::string& code,
               const std::string& result = "0") {
    Wake(connection);
    Loop("No Pending Operation -> check Pipe-State");
    Loop("WRITING_STATE -> GetCommand for Pipe(" +
         std::to_string(std::stoi(connection, nullptr, 16)) + ")");
    Loop("opCode 0x" + code);
    Add("Send", ">> Begin CQorlixSRVPipe::Send(long)");
    Add("Send",
        "<< CQorlixSRVPipe::Send SendResult=0x" + result + " writeResult=0x0  DataLength=6");
  }
  TraceStory Story() const { return TellStory(lines_); }

  std::vector<TraceLine> lines_;
  std::int64_t now_ = 0;
  std::uint32_t thread_ = 2;
};

TEST_F(TraceRequestsTest, ARequestReachesFromTheStateToTheLastLineOfItsPass) {
  Request("1f", "3");
  Loop("while - WaitForMultipleObjects");
  const TraceStory story = Story();
  ASSERT_THAT(story.requests, SizeIs(1));
  const TraceRequest& request = story.requests[0];
  EXPECT_EQ(request.firstLine, 3u);
  EXPECT_EQ(request.lastLine, 6u);
  EXPECT_EQ(request.connection, 31);
  EXPECT_EQ(request.command, 3u);
  EXPECT_EQ(request.microseconds, 3 * kMilli);
  EXPECT_EQ(request.result, 0);
  EXPECT_EQ(request.mark, Mark::kNone);
}

TEST_F(TraceRequestsTest, LinesBelongToTheConnectionThatWokeTheLoopUntilItWaitsAgain) {
  Add("StartSRV", ">> StartSRV");
  Request("2", "10");
  Loop("while - WaitForMultipleObjects");
  EXPECT_THAT(Story().connections, ElementsAre(-1, -1, 2, 2, 2, 2, 2, 2, -1));
  EXPECT_THAT(Story().owners, ElementsAre(-1, -1, -1, -1, 0, 0, 0, 0, -1));
}

TEST_F(TraceRequestsTest, AnIndexOutsideThePoolIsNoConnection) {
  Wake("102");
  EXPECT_THAT(Story().connections, ElementsAre(-1, -1));
}

TEST_F(TraceRequestsTest, AConnectionThatIsOfferedAtTheStartIsNotInUseYet) {
  Add("StartSRV", "Call ConnectToNewClient for Connection(3) Pipe=0x1c4");
  EXPECT_THAT(Story().connections, ElementsAre(-1));
}

TEST_F(TraceRequestsTest, WithoutTheLinesOfTheWaitOthersNameConnectionAndEnd) {
  Loop("WRITING_STATE -> GetCommand for Pipe(7)");
  Loop("opCode 0x10");
  Loop("READING_STATE -> ReadFile: Pipe(9)=0x1c4");
  EXPECT_THAT(Story().connections, ElementsAre(7, 7, 9));
  EXPECT_THAT(Story().owners, ElementsAre(0, 0, -1));
}

TEST_F(TraceRequestsTest, ThreadsTellTheirStoriesApart) {
  Wake("1");
  Loop("opCode 0x3");
  thread_ = 99;
  Add("SilentRestart", "works on");
  thread_ = 2;
  Add("Send", "<< CQorlixSRVPipe::Send SendResult=0x5 writeResult=0x0  DataLength=6");
  EXPECT_THAT(Story().connections, ElementsAre(-1, 1, 1, -1, 1));
  EXPECT_THAT(Story().owners, ElementsAre(-1, -1, 0, -1, 0));
}

TEST_F(TraceRequestsTest, TheFirstReplyTellsTheResultAndTheWorstLineMarksTheRequest) {
  Wake("0");
  Loop("opCode 0x0");
  Add("Send", "<< CQorlixSRVPipe::Send SendResult=0x21ac writeResult=0x0  DataLength=6");
  Loop("Error occured : lResult=0x219a");
  Add("Send", "<< CQorlixSRVPipe::Send SendResult=0x219a writeResult=0x0  DataLength=12");
  const TraceStory story = Story();
  ASSERT_THAT(story.requests, SizeIs(1));
  EXPECT_EQ(story.requests[0].result, 8620);
  EXPECT_EQ(story.requests[0].mark, Mark::kError);
}

TEST_F(TraceRequestsTest, AReplyThatWasWrittenAtOnceMarksNothing) {
  Wake("0");
  Loop("opCode 0x3");
  Add("Reg_SetValue", "<< RegSetValueBL result = 0x0");
  Add("Send", "<< CQorlixSRVPipe::Send SendResult=0x0 writeResult=0x1  DataLength=6");
  EXPECT_EQ(Story().requests.at(0).mark, Mark::kNone);
}

TEST_F(TraceRequestsTest, WhereTheReplyTellsNoResultTheLibraryDoes) {
  Wake("0");
  Loop("opCode 0xc1");
  Add("BC_EnumBoard", ">> Start");
  Add("BC_EnumBoard", "<< BRDX_EnumBoardExBL result = 0x2");
  Add("Send", ">> Begin CQorlixSRVPipe::Send(long, long, long, long)");
  Add("Send", "<< CQorlixSRVPipe::Send DataLength=18 writeResult=0x1");
  Add("Reg_SetValue", "<< RegSetValueBL result = 0x5");
  const TraceStory story = Story();
  EXPECT_EQ(story.requests.at(0).result, 2);
  EXPECT_EQ(story.requests.at(0).mark, Mark::kNotice);
}

TEST_F(TraceRequestsTest, HowTheSendingWentIsNotTheResult) {
  Wake("0");
  Loop("opCode 0x3");
  Add("Reg_SetValue", "<< RegSetValueBL result = 0x5");
  Add("Reg_SetValue", "<< Reg_SetValue result = 0x0");
  EXPECT_EQ(Story().requests.at(0).result, 5);
  EXPECT_EQ(Story().requests.at(0).mark, Mark::kNotice);
}

TEST_F(TraceRequestsTest, AStepThatAnsweredAnotherValueDoesNotMarkARequestThatWentWell) {
  Wake("0");
  Loop("opCode 0x68");
  Add("BC_Plausibilitaet", "BRDX_Scan result = 0x2");
  Add("Send", "<< CQorlixSRVPipe::Send SendResult=0x0 writeResult=0x1  DataLength=6");
  EXPECT_EQ(Story().requests.at(0).mark, Mark::kNone);
}

TEST_F(TraceRequestsTest, TheEndOfAListIsAResultWithoutAMark) {
  Wake("0");
  Loop("opCode 0x1a");
  Add("Reg_EnumKey", "<< RegEnumKeyBL result = 0x103");
  Add("Send", "<< CQorlixSRVPipe::Send DataLength=10 writeResult=0x0");
  EXPECT_EQ(Story().requests.at(0).result, 259);
  EXPECT_EQ(Story().requests.at(0).mark, Mark::kNone);
}

TEST_F(TraceRequestsTest, TwoRequestsOfOneConnectionAreTwo) {
  Request("0", "3");
  Request("0", "3", "5");
  const TraceStory story = Story();
  ASSERT_THAT(story.requests, SizeIs(2));
  EXPECT_EQ(story.requests[1].result, 5);
  EXPECT_EQ(story.requests[1].mark, Mark::kNotice);
}

TEST_F(TraceRequestsTest, WithoutTimesARequestHasNoDuration) {
  Request("0", "3");
  for (TraceLine& line : lines_) line.microseconds = -1;
  const TraceStory story = Story();
  EXPECT_EQ(story.requests.at(0).microseconds, -1);
  EXPECT_TRUE(story.segments.empty());
}

TEST_F(TraceRequestsTest, TheAxisGoesOnAfterMidnight) {
  now_ = kDay - kMilli;
  Add("A", "");
  now_ = 2 * kMilli;
  Add("A", "");
  const TraceStory story = Story();
  EXPECT_THAT(story.times, ElementsAre(0, 3 * kMilli));
  ASSERT_THAT(story.segments, SizeIs(2));
  EXPECT_EQ(story.times[1] - story.segments[1].offset, 2 * kMilli);
}

TEST_F(TraceRequestsTest, TheAxisGoesOnWhereTheCounterRunsOutOfDigits) {
  now_ = 100000LL * 1000000 - kMilli;
  Add("A", "").layout = Layout::kTime;
  now_ = 2 * kMilli;
  Add("A", "").layout = Layout::kTime;
  EXPECT_THAT(Story().times, ElementsAre(0, 3 * kMilli));
}

TEST_F(TraceRequestsTest, TheAxisStandsStillWhereTheClockGoesBack) {
  now_ = 5000 * kMilli;
  Add("A", "");
  now_ = 9000 * kMilli;
  Add("A", "");
  now_ = 1000 * kMilli;
  Add("A", "");
  Add("A", "");
  EXPECT_THAT(Story().times, ElementsAre(0, 4000 * kMilli, 4000 * kMilli, 4001 * kMilli));
}

TEST_F(TraceRequestsTest, TheAxisGoesOnWhereTheLayoutAndItsClockChange) {
  Add("A", "");
  Add("A", "").microseconds = 77000 * kMilli;
  Add("A", "").layout = Layout::kTime;
  Add("A", "").layout = Layout::kTime;
  EXPECT_THAT(Story().times, ElementsAre(0, 77000 * kMilli, 77000 * kMilli, 77001 * kMilli));
  EXPECT_EQ(Story().segments.at(1).clock, Clock::kCounter);
}

TEST_F(TraceRequestsTest, ALineWithoutTimeStandsWhereTheOneBeforeItDoes) {
  Add("A", "");
  Add("A", "");
  Add("A", "").microseconds = -1;
  EXPECT_THAT(Story().times, ElementsAre(0, kMilli, kMilli));
}

}  // namespace
}  // namespace traceview
