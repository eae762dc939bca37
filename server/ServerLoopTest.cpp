#include <algorithm>

#include "tests/fakes/trace/FakeTrace.h"
#include "tests/support/LoopFixture.h"
#include "trace/Zqotrc.h"

// The connection states over scripted completions.

namespace {

using fake_pipe_io::CompleteRead;
using fake_pipe_io::OnWait;
using fake_pipe_io::Op;
using fake_pipe_io::Script;
using fake_pipe_io::Written;

const Bytes kDone = Wire("0400 00000000");
constexpr pipe_io::Outcome kPending = {false, ERROR_IO_PENDING, 0};

class ServerLoopTest : public LoopFixture {};

TEST_F(ServerLoopTest, ARequestIsAnsweredAndTheNextIsRead) {
  ClientSends(5, "1000");
  OnWait([] { CompleteRead(5, Wire("1000")); });
  Run();
  EXPECT_EQ(Written(5), kDone + kDone);
  EXPECT_EQ(Count("read 5"), 3);
  EXPECT_EQ(Count("disconnect 5"), 0);
}

TEST_F(ServerLoopTest, AClientThatIsThereBeforeTheConnectIsServed) {
  Script(Op::Connect, 3, {false, ERROR_PIPE_CONNECTED, 0});
  OnWait([] { CompleteRead(3, Wire("1000")); });
  Run();
  EXPECT_EQ(Count("signal 3"), 1);
  EXPECT_EQ(Written(3), kDone);
}

TEST_F(ServerLoopTest, ARequestThatIsReadAtOnceIsServedWithoutAWait) {
  OnWait([] {
    fake_pipe_io::Complete(5);
    fake_pipe_io::ScriptRead(5, Wire("1000"));
  });
  Run();
  EXPECT_EQ(Written(5), kDone);
  EXPECT_EQ(fake_pipe_io::Waits(), 2);
}

TEST_F(ServerLoopTest, AFailedReadCostsThatClientOnly) {
  OnWait([] { fake_pipe_io::Complete(5); });
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/false, 0, ERROR_BROKEN_PIPE); });
  ClientSends(6, "1000");
  Run();
  EXPECT_EQ(Count("disconnect 5"), 1);
  EXPECT_EQ(Count("connect 5"), 2);
  EXPECT_EQ(Written(6), kDone);
}

TEST_F(ServerLoopTest, AnEmptyReadCostsThatClientOnly) {
  OnWait([] { fake_pipe_io::Complete(5); });
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/true, 0); });
  ClientSends(6, "1000");
  Run();
  EXPECT_EQ(Count("disconnect 5"), 1);
  EXPECT_EQ(Written(6), kDone);
}

TEST_F(ServerLoopTest, AReadThatFailsOutrightReconnects) {
  Script(Op::Read, 5, {false, ERROR_BROKEN_PIPE, 0});
  OnWait([] { fake_pipe_io::Complete(5); });
  Run();
  EXPECT_EQ(Count("disconnect 5"), 1);
  EXPECT_EQ(Count("connect 5"), 2);
}

TEST_F(ServerLoopTest, AReadOfNothingThatCompletesAtOnceReconnects) {
  Script(Op::Read, 5, {true, 0, 0});
  OnWait([] { fake_pipe_io::Complete(5); });
  Run();
  EXPECT_EQ(Count("disconnect 5"), 1);
}

TEST_F(ServerLoopTest, AWriteThatFailsOutrightReconnectsOnTheNextPass) {
  Script(Op::Write, 5, {false, ERROR_NO_DATA, 0});
  ClientSends(5, "1000");
  ClientSends(5, "1000");
  Run();
  EXPECT_EQ(Count("signal 5"), 1);
  EXPECT_EQ(Count("disconnect 5"), 1);
  EXPECT_EQ(Count("connect 5"), 2);
  EXPECT_EQ(Written(5), kDone);
}

TEST_F(ServerLoopTest, AShortWriteReconnectsOnTheNextPass) {
  Script(Op::Write, 5, {true, 0, 3});
  ClientSends(5, "1000");
  Run();
  EXPECT_EQ(Count("disconnect 5"), 1);
}

TEST_F(ServerLoopTest, ASecondReplyThatCannotBeWrittenReconnectsOnTheNextPass) {
  Script(Op::Write, 5, {true, 0, 6});
  Script(Op::Write, 5, {false, ERROR_NO_DATA, 0});
  ClientSends(5, "10");  // half a code is answered twice
  ClientSends(5, "1000");
  Run();
  EXPECT_EQ(Count("disconnect 5"), 1);
  EXPECT_EQ(Written(5), Wire("0400 AC210000") + kDone);
}

TEST_F(ServerLoopTest, APendingWriteThatCompletesInFullGoesOnReading) {
  Script(Op::Write, 5, kPending);
  ClientSends(5, "1000");
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/true, 6); });
  OnWait([] { CompleteRead(5, Wire("FFFF")); });
  Run();
  EXPECT_EQ(Written(5), kDone + Wire("0400 AC210000"));
  EXPECT_EQ(Count("disconnect 5"), 0);
}

TEST_F(ServerLoopTest, APendingWriteThatIsShortOrFailsReconnects) {
  Script(Op::Write, 5, kPending);
  Script(Op::Write, 6, kPending);
  ClientSends(5, "1000");
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/true, 5); });
  ClientSends(6, "1000");
  OnWait([] { fake_pipe_io::Complete(6, /*success=*/false, 0, ERROR_BROKEN_PIPE); });
  Run();
  EXPECT_EQ(Count("disconnect 5"), 1);
  EXPECT_EQ(Count("disconnect 6"), 1);
}

// The block of an outstanding write is free before the connect gets it.
TEST_F(ServerLoopTest, AClientThatIsDroppedTakesItsOutstandingWriteAlong) {
  Script(Op::Write, 5, kPending);
  ClientSends(5, "1000");
  OnWait([this] {
    srv_.DisconnectAndReconnect(5);
    fake_pipe_io::Complete(5);
  });
  OnWait([] { CompleteRead(5, Wire("1000")); });
  Run();
  const std::vector<std::string>& calls = fake_pipe_io::Calls();
  const auto at = std::find(calls.begin(), calls.end(), "abandon 5");
  ASSERT_GE(calls.end() - at, 3);
  EXPECT_THAT(std::vector<std::string>(at, at + 3),
              testing::ElementsAre("abandon 5", "disconnect 5", "connect 5"));
  EXPECT_EQ(Written(5), kDone) << "of the second client";
}

TEST_F(ServerLoopTest, AFailedPendingConnectEndsTheLoop) {
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/false, 0, 64); });
  ClientSends(6, "1000");
  Run();
  EXPECT_TRUE(Written(6).empty());
}

TEST_F(ServerLoopTest, AWakeForNothingCostsNobody) {
  OnWait([] { pipe_io::Signal(Pipe[5].overlapped.hEvent); });  // its connect is still out
  ClientSends(5, "1000");
  OnWait([] { pipe_io::Signal(Pipe[5].overlapped.hEvent); });  // its read is still out
  OnWait([] { CompleteRead(5, Wire("1000")); });
  Run();
  EXPECT_EQ(Written(5), kDone + kDone);
  EXPECT_EQ(Count("disconnect 5"), 0);
}

TEST_F(ServerLoopTest, ACompletionBetweenAWakeForNothingAndTheResetOfItsEventIsNotLost) {
  OnWait([] { fake_pipe_io::Complete(5); });
  OnWait([] {
    fake_pipe_io::BeforeUnsignal([] { CompleteRead(5, Wire("1000")); });
    pipe_io::Signal(Pipe[5].overlapped.hEvent);  // its read is still out
  });
  OnWait([] {});  // nothing else happens
  Run();
  EXPECT_EQ(Written(5), kDone);
}

TEST_F(ServerLoopTest, AnUnknownStateWithoutPendingOperationEndsTheLoop) {
  FakeTrace::Collect(TRC_ERROR);
  OnWait([] {
    Pipe[6].fPendingIO = 0;
    Pipe[6].dwState = 3;
    pipe_io::Signal(Pipe[6].overlapped.hEvent);
  });
  Run();
  std::vector<std::string> texts;
  for (const FakeTrace::Line& line : FakeTrace::Lines()) texts.push_back(line.text);
  FakeTrace::Reset();
  EXPECT_THAT(texts, testing::Contains("<< RunSrvLoop End Invalid pipe state"));
}

TEST_F(ServerLoopTest, AnUnknownPipeStateEndsTheLoop) {
  FakeTrace::Collect(TRC_ERROR);
  OnWait([] {
    fake_pipe_io::Complete(5);
    Pipe[5].dwState = 3;
  });
  ClientSends(6, "1000");
  Run();
  std::vector<std::string> texts;
  for (const FakeTrace::Line& line : FakeTrace::Lines()) texts.push_back(line.text);
  FakeTrace::Reset();
  EXPECT_THAT(texts, testing::Contains("<< Error Invalid PipeState"));
  EXPECT_TRUE(Written(6).empty());
}

TEST_F(ServerLoopTest, AConnectThatReports232IsRepeatedBehindADisconnect) {
  Script(Op::Connect, 5, {false, ERROR_NO_DATA, 0});
  ClientSends(5, "1000");
  Run();
  EXPECT_EQ(Count("connect 5"), 2);
  EXPECT_EQ(Count("disconnect 5"), 1);
  EXPECT_EQ(Written(5), kDone);
}

TEST_F(ServerLoopTest, AClientThatComesAndGoesForEverIsGivenUpForAWhile) {
  for (int i = 0; i < 8; ++i) Script(Op::Connect, 5, {false, ERROR_NO_DATA, 0});
  OnWait([] {});  // nothing happens for the retry time
  ClientSends(5, "1000");
  Run();
  EXPECT_EQ(Count("connect 5"), 9);
  EXPECT_EQ(Written(5), kDone);
}

TEST_F(ServerLoopTest, AConnectThatFailsOutrightIsTriedAgainLater) {
  Script(Op::Connect, 5, {false, 1450, 0});
  OnWait([] {});
  ClientSends(5, "1000");
  Run();
  EXPECT_EQ(Count("connect 5"), 2);
  EXPECT_EQ(Count("read 5"), 2);
  EXPECT_EQ(Written(5), kDone);
}

// Such a connect leaves the event as it was, and at the start that is signalled.
TEST_F(ServerLoopTest, AConnectThatNeverReachesThePipeWakesNobodyUntilItIsTriedAgain) {
  Script(Op::Connect, 5, {false, ERROR_INVALID_HANDLE, 0});
  OnWait([] {});
  ClientSends(5, "1000");
  Run();
  EXPECT_EQ(Count("connect 5"), 2);
  EXPECT_EQ(Count("disconnect 5"), 1);
  EXPECT_EQ(Count("read 5"), 2);
  EXPECT_EQ(Written(5), kDone);
}

TEST_F(ServerLoopTest, AConnectThatSucceedsAtOnceIsReadFrom) {
  Script(Op::Connect, 5, {true, 0, 0});
  OnWait([] { CompleteRead(5, Wire("1000")); });
  Run();
  EXPECT_EQ(Written(5), kDone);
}

TEST_F(ServerLoopTest, FailedConnectsAreTriedAgainWhileOthersKeepTheLoopBusy) {
  Script(Op::Connect, 5, {false, 1450, 0});
  OnWait([] {
    fake_pipe_io::Complete(6);
    for (int i = 0; i < 10; ++i) fake_pipe_io::ScriptRead(6, Wire("1000"));
    fake_pipe_io::AdvanceClock(1000);
  });
  Run();
  EXPECT_EQ(Count("connect 5"), 2);
}

TEST_F(ServerLoopTest, ARequestOfOneByteIsAnsweredTwice) {
  ClientSends(5, "10");
  Run();
  const Bytes unknown = Wire("0400 AC210000");
  EXPECT_EQ(Written(5), unknown + unknown + Wire("0400 9A210000"));
}

TEST_F(ServerLoopTest, ASecondReplyWaitsUntilThePendingFirstIsThrough) {
  Script(Op::Write, 5, kPending);
  ClientSends(5, "10");
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/true, 6); });
  OnWait([] { CompleteRead(5, Wire("1000")); });
  Run();
  const Bytes unknown = Wire("0400 AC210000");
  EXPECT_EQ(Written(5), unknown + unknown + Wire("0400 9A210000") + kDone);
  EXPECT_EQ(Count("disconnect 5"), 0);
}

TEST_F(ServerLoopTest, ASecondReplyThatIsPendingIsAWriteNotARead) {
  Script(Op::Write, 5, {true, 0, 6});
  Script(Op::Write, 5, kPending);
  ClientSends(5, "10");
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/true, 12); });
  OnWait([] { CompleteRead(5, Wire("1000")); });
  Run();
  const Bytes unknown = Wire("0400 AC210000");
  EXPECT_EQ(Written(5), unknown + unknown + Wire("0400 9A210000") + kDone);
}

TEST_F(ServerLoopTest, BothRepliesMayBePending) {
  Script(Op::Write, 5, kPending);
  Script(Op::Write, 5, kPending);
  ClientSends(5, "10");
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/true, 6); });
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/true, 12); });
  Run();
  const Bytes unknown = Wire("0400 AC210000");
  EXPECT_EQ(Written(5), unknown + unknown + Wire("0400 9A210000"));
}

TEST_F(ServerLoopTest, ASecondReplyThatFailsBehindAPendingFirstReconnectsOnTheNextPass) {
  Script(Op::Write, 5, kPending);
  Script(Op::Write, 5, {false, ERROR_NO_DATA, 0});
  ClientSends(5, "10");
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/true, 6); });
  ClientSends(5, "1000");
  Run();
  EXPECT_EQ(Count("disconnect 5"), 1);
  EXPECT_EQ(Written(5), Wire("0400 AC210000") + kDone);
}

TEST_F(ServerLoopTest, AClientLostWithASecondReplyWaitingLeavesNothingToTheNext) {
  Script(Op::Write, 5, kPending);
  ClientSends(5, "10");
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/false, 0, ERROR_BROKEN_PIPE); });
  ClientSends(5, "1000");
  Run();
  EXPECT_EQ(Written(5), kDone);
}

TEST_F(ServerLoopTest, ARequestOf8192BytesIsServed) {
  ClientSends(5, Wire("1000") + Bytes(8190, 0xAA));
  Run();
  EXPECT_EQ(Written(5), kDone);
}

TEST_F(ServerLoopTest, TheLoopsErrorGoesBehindWhatAHandlerHadBuilt) {
  // A handler that fails with a reply begun: the bytes it built, and then the loop's own reply.
  OnWait([] { fake_pipe_io::Complete(5); });
  OnWait([] {
    Pipe[5].cbToWrite = 3;
    Pipe[5].ReplyBuffer[0] = 0xA1;
    Pipe[5].ReplyBuffer[1] = 0xA2;
    Pipe[5].ReplyBuffer[2] = 0xA3;
    CompleteRead(5, Wire("0100"));
  });
  Run();
  EXPECT_EQ(Written(5), Wire("A1A2A3 0400 9A210000"));
}

TEST_F(ServerLoopTest, AReplyThatDoesNotFitDisconnectsTheClient) {
  // The reply counter is not touched between request and dispatch, so a full buffer stands for a
  // handler that has built too much.
  ClientSends(5, "1000");
  Pipe[5].cbToWrite = kPipeBufferSize - 5;
  Run();
  EXPECT_TRUE(Written(5).empty());
  EXPECT_EQ(Count("disconnect 5"), 1);
}

}  // namespace
