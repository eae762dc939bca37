#include <gmock/gmock.h>

#include <stdexcept>

#include "server/HangDetector.h"
#include "server/RequestLog.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "tests/support/LoopFixture.h"
#include "trace/Zqotrc.h"

// What the loop leaves in the request log, and how a hang is told.

namespace {

using fake_pipe_io::Complete;
using fake_pipe_io::CompleteRead;
using fake_pipe_io::OnWait;
using fake_pipe_io::Op;
using request_log::Record;
using testing::ElementsAre;
using testing::IsEmpty;

class RequestLogLoopTest : public LoopFixture {
 protected:
  ~RequestLogLoopTest() override {
    FakeTrace::Reset();
    fake_board_library::Reset();
  }

  // Command, connection, client and result of all requests so far.
  static std::vector<std::string> Log() {
    Record records[request_log::kRecords];
    const std::uint32_t count = request_log::Latest(records);
    std::vector<std::string> lines;
    for (std::uint32_t i = 0; i < count; ++i) {
      const Record& r = records[i];
      std::ostringstream line;
      line << std::hex << r.command << ' ' << std::dec << r.connection << ' ' << r.client << ' '
           << std::hex << r.result << (r.beingServed ? " !" : "");
      lines.push_back(line.str());
    }
    return lines;
  }

  std::vector<std::string> LogOf(std::string_view request) {
    ClientSends(5, request);
    Run();
    return Log();
  }
};

TEST_F(RequestLogLoopTest, TheStartIsNoRequest) {
  Run();
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(RequestLogLoopTest, ASuccessIsLoggedWithItsClient) {
  EXPECT_THAT(LogOf("1000"), ElementsAre("10 5 4005 0"));
}

TEST_F(RequestLogLoopTest, ARefusalHasTheCodeThatTheClientGot) {
  ClientSends(5, Wire("0200") + TextField("SOFTWARE\\Elsewhere"));
  Run();
  EXPECT_THAT(Log(), ElementsAre("2 5 4005 5"));
}

TEST_F(RequestLogLoopTest, AFieldThatCannotBeReadHasTheReadersResult) {
  EXPECT_THAT(LogOf("0200 FFFFFFFF"), ElementsAre("2 5 4005 219a"));
}

TEST_F(RequestLogLoopTest, AnUnknownCodeIsLoggedAsItCame) {
  EXPECT_THAT(LogOf("EFBE"), ElementsAre("beef 5 4005 21ac"));
}

TEST_F(RequestLogLoopTest, ARequestOfOneByteHasCodeZeroAndItsFirstAnswer) {
  EXPECT_THAT(LogOf("10"), ElementsAre("0 5 4005 21ac"));
}

TEST_F(RequestLogLoopTest, OfTwoAnswersTheFirstCounts) {
  EXPECT_THAT(LogOf("FD00"), ElementsAre("fd 5 4005 5"));
}

TEST_F(RequestLogLoopTest, AStopIsLoggedAsWell) {
  EXPECT_THAT(LogOf("FD00 FD000000"), ElementsAre("fd 5 4005 4e7"));
}

TEST_F(RequestLogLoopTest, AReplyThatCannotBeWrittenIsLoggedAsBuilt) {
  fake_pipe_io::Script(Op::Write, 5, {false, ERROR_NO_DATA, 0});
  EXPECT_THAT(LogOf("1000"), ElementsAre("10 5 4005 0"));
}

TEST_F(RequestLogLoopTest, RequestsOfSeveralClientsStandInTheirOrder) {
  ClientSends(7, "1000");
  ClientSends(3, "EFBE");
  OnWait([] { CompleteRead(7, Wire("FD00 00000000")); });
  Run();
  EXPECT_THAT(Log(), ElementsAre("10 7 4007 0", "beef 3 4003 21ac", "fd 7 4007 4e7"));
}

TEST_F(RequestLogLoopTest, AConnectionIsAskedForItsClientOnce) {
  ClientSends(5, "1000");
  for (int i = 0; i < 10; ++i) OnWait([] { CompleteRead(5, Wire("1000")); });
  Run();
  EXPECT_EQ(Log().size(), 11u);
  EXPECT_EQ(fake_pipe_io::ClientQuestions(5), 1);
  EXPECT_EQ(fake_pipe_io::ClientQuestions(4), 0);
}

TEST_F(RequestLogLoopTest, AClientThatSendsNothingIsNotAskedFor) {
  OnWait([] { Complete(4); });
  OnWait([] { Complete(5); });
  OnWait([] {
    CompleteRead(4, Wire("1000"));
    Complete(5, /*success=*/false, 0, ERROR_BROKEN_PIPE);
  });
  Run();
  EXPECT_EQ(fake_pipe_io::ClientQuestions(4), 1);
  EXPECT_EQ(fake_pipe_io::ClientQuestions(5), 0);
}

TEST_F(RequestLogLoopTest, ClientsThatAskAtTheSameTimeAreAskedForOnceEach) {
  OnWait([] { Complete(5); });
  OnWait([] { Complete(6); });
  OnWait([] { Complete(7); });
  OnWait([] {
    for (const int i : {5, 6, 7}) CompleteRead(i, Wire("1000"));
  });
  Run();
  for (const int i : {5, 6, 7}) EXPECT_EQ(fake_pipe_io::ClientQuestions(i), 1) << i;
  EXPECT_THAT(Log(), ElementsAre("10 5 4005 0", "10 6 4006 0", "10 7 4007 0"));
}

TEST_F(RequestLogLoopTest, TheNextClientOfAnInstanceIsAskedForAnew) {
  ClientSends(5, "1000");
  OnWait([] { Complete(5, /*success=*/false, 0, ERROR_BROKEN_PIPE); });
  OnWait([] {
    fake_pipe_io::SetClientProcess(5, 4712);
    Complete(5);
  });
  OnWait([] { CompleteRead(5, Wire("1000")); });
  Run();
  EXPECT_THAT(Log(), ElementsAre("10 5 4005 0", "10 5 4712 0"));
}

TEST_F(RequestLogLoopTest, AnUnknownClientIsZeroAndNotAskedForAgain) {
  fake_pipe_io::SetClientProcess(5, 0);
  ClientSends(5, "1000");
  OnWait([] { CompleteRead(5, Wire("1000")); });
  Run();
  EXPECT_THAT(Log(), ElementsAre("10 5 0 0", "10 5 0 0"));
  EXPECT_EQ(fake_pipe_io::ClientQuestions(5), 1);
}

TEST_F(RequestLogLoopTest, WhileAHandlerRunsItsRequestIsTheOneBeingServed) {
  std::vector<std::string> during;
  fake_board_library::Reset();
  fake_board_library::Lib().scan = [&] {
    during = Log();
    return 7u;
  };
  EXPECT_THAT(LogOf("C700"), ElementsAre("c7 5 4005 7"));
  EXPECT_THAT(during, ElementsAre("c7 5 4005 0 !"));
}

TEST_F(RequestLogLoopTest, AHangIsToldToTheDebuggerAndTraced) {
  FakeTrace::Collect(TRC_ERROR);
  ReportHang({.number = 9, .command = 0xF0, .connection = 63, .client = 0xFFFFFFFC}, 45000);
  const std::string text =
      "opCode 0xf0 from Connection(63), client process 4294967292, has been running for more than "
      "45000 ms";
  EXPECT_THAT(FakeTrace::Texts(), ElementsAre("WatchRequest: " + text));
  EXPECT_THAT(FakeTrace::TheMachine().debugger, ElementsAre("QorlixSRV: " + text + "\n"));
}

}  // namespace
