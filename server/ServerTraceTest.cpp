#include "tests/fakes/trace/FakeTrace.h"
#include "tests/support/LoopFixture.h"
#include "trace/Zqotrc.h"

// What start-up, loop and dispatch trace, word for word and in order.

namespace {

using fake_pipe_io::OnWait;
using fake_pipe_io::Op;
using fake_pipe_io::Script;
using testing::Contains;
using testing::ElementsAre;

constexpr std::uint32_t kAll = TRC_ERROR | TRC_PROGRESS;

// The consistency pass before the loop traces under a name of its own, and has tests of its own.
constexpr char kStartUpRun[] = "BRDX_RunPlausibilitaet: ";

class ServerTraceTest : public LoopFixture {
 protected:
  ~ServerTraceTest() override { FakeTrace::Reset(); }

  // All lines but those of the consistency pass before the loop.
  std::vector<std::string> Lines(std::uint32_t mask = kAll) {
    FakeTrace::Collect(mask);
    Run();
    std::vector<std::string> texts;
    for (const FakeTrace::Line& line : FakeTrace::Lines()) {
      if (line.function != kStartUpRun) texts.push_back(line.text);
    }
    return texts;
  }

  // Of all lines, those from the first that equals `from` to the last before the closing pass.
  static std::vector<std::string> From(const std::vector<std::string>& lines,
                                       const std::string& from) {
    const auto begin = std::find(lines.begin(), lines.end(), from);
    const auto end = std::find(lines.rbegin(), lines.rend(), "while - WaitForMultipleObjects");
    if (begin == lines.end()) return {};
    return {begin, end.base() - 1};
  }
};

TEST_F(ServerTraceTest, StartUpTracesEachInstanceThenTheEventThenTheLoop) {
  fake_named_object::OfferEvent("_QorlixSRVStartSRVEvent");
  const std::vector<std::string> lines = Lines();
  ASSERT_GT(lines.size(), 131u);
  EXPECT_EQ(lines[1], "CreateEvent hEvent=0x3e9");
  EXPECT_EQ(lines[2], "Call ConnectToNewClient for Connection(0) Pipe=0x7d1");
  EXPECT_EQ(lines[127], "CreateEvent hEvent=0x428");
  EXPECT_EQ(lines[128], "Call ConnectToNewClient for Connection(63) Pipe=0x810");
  EXPECT_EQ(lines[129], "_QorlixSRVStartSRVEvent has been set!");
  EXPECT_EQ(lines[130], ">> Start receiving loop ");
  EXPECT_EQ(lines[131], "while - WaitForMultipleObjects");
}

TEST_F(ServerTraceTest, AMissingStartEventIsNotTraced) {
  EXPECT_THAT(Lines(), testing::Not(Contains("_QorlixSRVStartSRVEvent has been set!")));
}

TEST_F(ServerTraceTest, FailuresOfTheStartAreTracedAsErrors) {
  Script(Op::CreatePipe, 3, {false, 231, 0});
  EXPECT_THAT(Lines(TRC_ERROR), ElementsAre("<< Error CreateNamedPipe index=3 ret=231"));
}

TEST_F(ServerTraceTest, AnEventThatCannotBeCreatedIsTracedAsAnError) {
  Script(Op::CreateEvent, 3, {false, 8, 0});
  EXPECT_THAT(Lines(TRC_ERROR), ElementsAre("<< Error CreateEvent"));
}

TEST_F(ServerTraceTest, OneRequestFromConnectToTheNextRead) {
  ClientSends(5, "1000");
  EXPECT_THAT(
      From(Lines(), "while - WaitForMultipleObjects"),
      ElementsAre(
          "while - WaitForMultipleObjects", "WaitForMultipleObjects received Element on dwWait=0x5",
          "Pending: CONNECTING_STATE", "READING_STATE -> ReadFile: Pipe(5)=0x7d6",
          "ReadFile: ReceivePointer=0 Byte", "while - WaitForMultipleObjects",
          "WaitForMultipleObjects received Element on dwWait=0x5", "Pending: READING_STATE",
          "WRITING_STATE -> GetCommand for Pipe(5)", "opCode 0x10",
          ">> Begin CQorlixSRVPipe::Send(long)",
          "<< CQorlixSRVPipe::Send SendResult=0x0 writeResult=0x1  DataLength=6",
          "while - WaitForMultipleObjects", "WaitForMultipleObjects received Element on dwWait=0x5",
          "No Pending Operation -> check Pipe-State", "READING_STATE -> ReadFile: Pipe(5)=0x7d6",
          "ReadFile: ReceivePointer=0 Byte"));
}

TEST_F(ServerTraceTest, ARequestThatIsReadAtOnceTracesItsLength) {
  OnWait([] {
    fake_pipe_io::Complete(5);
    fake_pipe_io::ScriptRead(5, Wire("1000"));
  });
  EXPECT_THAT(Lines(), Contains("ReadFile: ReceivePointer=2 Byte"));
}

TEST_F(ServerTraceTest, ALostClientIsTracedWithWhatWasLeftOfIt) {
  OnWait([] { fake_pipe_io::Complete(5); });
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/false, 0, ERROR_BROKEN_PIPE); });
  EXPECT_THAT(From(Lines(), "Pending: READING_STATE"),
              ElementsAre("Pending: READING_STATE", "fSuccess != Success", "cbRet == 0",
                          "CurrentPointer=0x0  fPendingIO=0x1  hPipe=0x7d6  Event=0x0",
                          "Pending: READING_STATE: Client disconnected ... prepare Pipe for new "
                          "Client: ->DisconnectAndReconnect",
                          "DisconnectAndReconnect for Pipe(5)"));
}

TEST_F(ServerTraceTest, AFailedReadThatMovedBytesDumpsTheFirst64) {
  OnWait([] { fake_pipe_io::Complete(5); });
  OnWait([] {
    for (std::uint32_t i = 0; i < 70; ++i) Pipe[5].RequestBuffer[i] = static_cast<std::uint8_t>(i);
    fake_pipe_io::Complete(5, /*success=*/false, 70, ERROR_BROKEN_PIPE);
  });
  EXPECT_THAT(From(Lines(), "fSuccess != Success"),
              ElementsAre("fSuccess != Success", "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F",
                          "10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F",
                          "20 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F",
                          "30 31 32 33 34 35 36 37 38 39 3A 3B 3C 3D 3E 3F", testing::_, testing::_,
                          "DisconnectAndReconnect for Pipe(5)"));
}

TEST_F(ServerTraceTest, AWriteThatFailsOutrightShowsUpOnTheNextPass) {
  Script(Op::Write, 5, {false, ERROR_NO_DATA, 0});
  ClientSends(5, "1000");
  EXPECT_THAT(Lines(TRC_ERROR),
              ElementsAre("WRITING_STATE: ReceivePointer is wrong: ->DisconnectAndReconnect",
                          testing::StartsWith("<< Out of Range")));
}

TEST_F(ServerTraceTest, AShortPendingWriteIsTraced) {
  Script(Op::Write, 5, {false, ERROR_IO_PENDING, 0});
  ClientSends(5, "1000");
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/true, 3); });
  EXPECT_THAT(Lines(),
              Contains("Pending: WRITING_STATE: Something is wrong: ->DisconnectAndReconnect"));
}

TEST_F(ServerTraceTest, AReadThatFailsOutrightIsTraced) {
  Script(Op::Read, 5, {false, ERROR_BROKEN_PIPE, 0});
  OnWait([] { fake_pipe_io::Complete(5); });
  EXPECT_THAT(Lines(), Contains("READING_STATE: Something is wrong: ->DisconnectAndReconnect"));
}

TEST_F(ServerTraceTest, ConnectAndDisconnectFailuresPrintTheAddressOfTheErrorQuery) {
  Script(Op::Connect, 5, {false, 1450, 0});
  Script(Op::Disconnect, 5, {false, 233, 0});
  OnWait([] {});
  const std::vector<std::string> lines = Lines(TRC_ERROR);
  EXPECT_THAT(lines, Contains("ConnectNamedPipe failed with 4711"));
  EXPECT_THAT(lines, Contains("DisconnectNamedPipe failed with 4711"));
}

TEST_F(ServerTraceTest, TheEndOfTheLoopNamesWaitResultAndError) {
  EXPECT_THAT(Lines(TRC_ERROR),
              ElementsAre("<< Out of Range dwWait(0xffffffff) or Server-Timeout reached .. Get "
                          "ErrorCode=6"));
}

TEST_F(ServerTraceTest, AFailedConnectEndsTheLoopWithItsError) {
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/false, 0, 64); });
  EXPECT_THAT(Lines(TRC_ERROR), ElementsAre("<< Error CONNECTING_STATE ret=64"));
}

TEST_F(ServerTraceTest, AHandlersFailureIsTracedAsTheLoopSendsIt) {
  ClientSends(5, "0100");
  EXPECT_THAT(Lines(), Contains("Error occured : lResult=0x219a"));
}

TEST_F(ServerTraceTest, FailuresOfOneClientAreLinesOfTheErrorBit) {
  Script(Op::Write, 6, {false, ERROR_IO_PENDING, 0});
  Script(Op::Read, 7, {false, ERROR_BROKEN_PIPE, 0});
  ClientSends(5, "0100");
  OnWait([] { fake_pipe_io::Complete(5, /*success=*/false, 0, ERROR_BROKEN_PIPE); });
  ClientSends(6, "1000");
  OnWait([] { fake_pipe_io::Complete(6, /*success=*/true, 3); });
  OnWait([] { fake_pipe_io::Complete(7); });
  EXPECT_THAT(Lines(TRC_ERROR),
              ElementsAre("ReadLong exit with BUFFER_OVERFLOW", "<< result = 0x219a DelKey",
                          "Error occured : lResult=0x219a", "fSuccess != Success", "cbRet == 0",
                          "Pending: WRITING_STATE: Something is wrong: ->DisconnectAndReconnect",
                          "READING_STATE: Something is wrong: ->DisconnectAndReconnect",
                          testing::StartsWith("<< Out of Range")));
}

TEST_F(ServerTraceTest, LinesOfTheLoopAreTracedUnderItsName) {
  ClientSends(5, "1000");
  (void)Lines();
  for (const FakeTrace::Line& line : FakeTrace::Lines()) {
    if (line.text == "opCode 0x10" || line.text == "while - WaitForMultipleObjects") {
      EXPECT_EQ(line.function, "RunSrvLoop: ");
    }
    EXPECT_EQ(line.component, "SRV");
  }
}

TEST_F(ServerTraceTest, AnUnansweredClientIsReconnected) {
  ClientSends(5, "1000");
  Pipe[5].cbToWrite = kPipeBufferSize;
  EXPECT_THAT(Lines(), Contains("PipeSend: sendResult != ERROR_SUCCESS => Reconnect Pipe"));
}

TEST_F(ServerTraceTest, AStopMessageIsTracedAndLaterRequestsShowTheShutdown) {
  ClientSends(5, "FD00 00000000");
  OnWait([] { fake_pipe_io::CompleteRead(5, Wire("1000")); });
  const std::vector<std::string> lines = Lines();
  EXPECT_THAT(lines, Contains("Stop-Server-Message from Connection(5) arrived"));
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "Server Shutdown: SHUTDOWN == TRUE"), 2);
}

TEST_F(ServerTraceTest, AStopWithoutAConfirmationTracesTheFailedRead) {
  ClientSends(5, "FD00");
  EXPECT_THAT(Lines(TRC_ERROR), Contains("<< ReadLong(ValueLen) result = 0x219a "));
}

TEST_F(ServerTraceTest, ClosingThePoolIsTracedFromBeginToEnd) {
  ClientSends(5, "FD00 FD000000");
  const std::vector<std::string> lines = Lines();
  const auto begin = std::find(lines.begin(), lines.end(), ">> ClosePipes");
  ASSERT_NE(begin, lines.end());
  EXPECT_EQ(*(begin + 1), "<< ClosePipes");
}

}  // namespace
