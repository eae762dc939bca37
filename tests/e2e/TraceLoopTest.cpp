#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>

#include "tests/e2e/TraceTest.h"

// What start-up, loop, dispatch and stop trace: every line, in order.

namespace e2e {
namespace {

using lines::NextRead;
using lines::Refused;
using lines::Request;
using lines::RequestComes;
using lines::SendLong;
using testing::Optional;

constexpr DWORD kExitMs = 10000;

const Lines kConnects = {"RunSrvLoop:  WaitForMultipleObjects received Element on dwWait=0x{con:x}",
                         "RunSrvLoop:  Pending: CONNECTING_STATE",
                         "RunSrvLoop:  READING_STATE -> ReadFile: Pipe({con})=0x{pipe:x}",
                         "RunSrvLoop:  ReadFile: ReceivePointer=0 Byte",
                         "RunSrvLoop:  while - WaitForMultipleObjects"};
const Lines kNoOperation = SendLong("0x0");
const Lines kReconnects = {"DisconnectAndReconnect:  DisconnectAndReconnect for Pipe({con})",
                           "RunSrvLoop:  while - WaitForMultipleObjects"};

class TraceLoopTest : public TraceTest {};

TEST_F(TraceLoopTest, AClientThatConnectsIsReadFrom) {
  WireClient client;
  ASSERT_TRUE(client.Connect());
  EXPECT_TRUE(LinesAre(NewLines(), kConnects));
  CloseAndWait(client);
}

TEST_F(TraceLoopTest, ARequestIsTracedFromWaitToWait) {
  EXPECT_TRUE(LinesAre(LinesOf(Wire("1000")), Request("0x10", kNoOperation)));
}

TEST_F(TraceLoopTest, AnUnknownCodeIsTracedAndAnswered) {
  EXPECT_TRUE(LinesAre(LinesOf(Wire("0400")), Request("0x4", SendLong("0x21ac"))));
  EXPECT_TRUE(LinesAre(LinesOf(Wire("FFFF 00")), Request("0xffff", SendLong("0x21ac"))));
}

// The second reply goes behind the first, so its length counts both.
TEST_F(TraceLoopTest, ARequestOfOneByteIsTracedAsCodeZeroAndAsAnError) {
  EXPECT_TRUE(
      LinesAre(LinesOf(Wire("10")),
               Lines{"RunSrvLoop:  WaitForMultipleObjects received Element on dwWait=0x{con:x}",
                     "RunSrvLoop:  Pending: READING_STATE",
                     "RunSrvLoop:  WRITING_STATE -> GetCommand for Pipe({con})",
                     "ReadShort:  ReadShort exit with BUFFER_OVERFLOW", "RunSrvLoop:  opCode 0x0"} +
                   SendLong("0x21ac") + Lines{"RunSrvLoop:  Error occured : lResult=0x219a"} +
                   SendLong("0x219a", 12) + NextRead()));
}

TEST_F(TraceLoopTest, AStopWithoutItsConfirmationIsTracedWithTheFailedRead) {
  EXPECT_TRUE(LinesAre(
      LinesOf(Wire("FD00 FD0000")),
      Request("0xfd", Lines{"StopServer:  Stop-Server-Message from Connection({con}) arrived",
                            "ReadLong:  ReadLong exit with BUFFER_OVERFLOW",
                            "StopServer:  << ReadLong(ValueLen) result = 0x219a "} +
                          SendLong("0x5") + Lines{"RunSrvLoop:  Error occured : lResult=0x219a"} +
                          SendLong("0x219a", 12))));
}

// What is too long for one request waits in the pipe, and is there when the next is asked for.
TEST_F(TraceLoopTest, ARequestThatIsReadAtOnceIsServedOnTheNextPass) {
  EXPECT_TRUE(
      LinesAre(LinesOf(Padded(Wire("1000")) + Wire("1000")),
               RequestComes("0x10") + kNoOperation +
                   Lines{"RunSrvLoop:  while - WaitForMultipleObjects",
                         "RunSrvLoop:  WaitForMultipleObjects received Element on dwWait=0x{con:x}",
                         "RunSrvLoop:  No Pending Operation -> check Pipe-State",
                         "RunSrvLoop:  READING_STATE -> ReadFile: Pipe({con})=0x{pipe:x}",
                         "RunSrvLoop:  ReadFile: ReceivePointer=2 Byte",
                         "RunSrvLoop:  while - WaitForMultipleObjects",
                         "RunSrvLoop:  WaitForMultipleObjects received Element on dwWait=0x{con:x}",
                         "RunSrvLoop:  No Pending Operation -> check Pipe-State",
                         "RunSrvLoop:  WRITING_STATE -> GetCommand for Pipe({con})",
                         "RunSrvLoop:  opCode 0x10"} +
                   kNoOperation + NextRead()));
}

TEST_F(TraceLoopTest, AClientThatLeavesIsTracedWithWhatIsKnownOfIt) {
  WireClient client;
  ASSERT_TRUE(client.Connect());
  (void)NewLines();
  client.Close();
  EXPECT_TRUE(LinesAre(
      NewLines(),
      Lines{"RunSrvLoop:  WaitForMultipleObjects received Element on dwWait=0x{con:x}",
            "RunSrvLoop:  Pending: READING_STATE", "RunSrvLoop:  fSuccess != Success",
            "RunSrvLoop:  cbRet == 0",
            "RunSrvLoop:  CurrentPointer=0x0  fPendingIO=0x1  hPipe=0x{pipe:x}  Event=0x0",
            "RunSrvLoop:  Pending: READING_STATE: Client disconnected ... prepare Pipe for new "
            "Client: ->DisconnectAndReconnect"} +
          kReconnects));
}

// The server is held up at its first line while the client sends and goes.
TEST_F(TraceLoopTest, AReplyThatNobodyWaitsForEndsInAReconnect) {
  WireClient client;
  ASSERT_TRUE(client.Connect());
  (void)NewLines();
  {
    const TraceMutex held;
    ASSERT_TRUE(client.Send(Wire("1000")));
    client.Close();
  }
  EXPECT_TRUE(LinesAre(
      NewLines(),
      RequestComes("0x10") +
          Lines{"Send:  >> Begin CQorlixSRVPipe::Send(long)",
                "Send:  << CQorlixSRVPipe::Send SendResult=0x0 writeResult=0x0  DataLength=6",
                "RunSrvLoop:  while - WaitForMultipleObjects",
                "RunSrvLoop:  WaitForMultipleObjects received Element on dwWait=0x{con:x}",
                "RunSrvLoop:  No Pending Operation -> check Pipe-State",
                "RunSrvLoop:  WRITING_STATE -> GetCommand for Pipe({con})",
                "RunSrvLoop:  WRITING_STATE: ReceivePointer is wrong: ->DisconnectAndReconnect"} +
          kReconnects));
}

TEST_F(TraceLoopTest, AClientThatComesAndGoesIsNoticedAtTheRead) {
  {
    const TraceMutex held;
    WireClient client;
    ASSERT_TRUE(client.Connect());
  }
  EXPECT_TRUE(
      LinesAre(NewLines(),
               Lines{"RunSrvLoop:  WaitForMultipleObjects received Element on dwWait=0x{con:x}",
                     "RunSrvLoop:  Pending: CONNECTING_STATE",
                     "RunSrvLoop:  READING_STATE -> ReadFile: Pipe({con})=0x{pipe:x}",
                     "RunSrvLoop:  READING_STATE: Something is wrong: ->DisconnectAndReconnect"} +
                   kReconnects));
}

// Replies that nobody reads, until the pipe is full and a write has to wait.
class TracePendingWriteTest : public TraceLoopTest {
 protected:
  void SetUp() override {
    TraceLoopTest::SetUp();
    ASSERT_TRUE(slow_.Connect());
    (void)NewLines();
    // A long reply and some short ones leave room for less than one more.
    constexpr std::size_t kLong = 14 + 8150;
    const Bytes shortOne = Wire("1000");
    trace_setup::SetRaw("Fill", REG_SZ, Bytes(8150, 'x') + '\0');
    ASSERT_TRUE(
        slow_.Send(Wire("1600") + Text("SOFTWARE\\Vesmark\\NORVA\\TrcParams") + Text("Fill")));
    ASSERT_TRUE(slow_.HasWaiting(kLong));
    for (std::size_t i = 1; i <= 4; ++i) {
      ASSERT_TRUE(slow_.Send(shortOne));
      ASSERT_TRUE(slow_.HasWaiting(kLong + 6 * i));
    }
    (void)NewLines();
    ASSERT_TRUE(slow_.Send(shortOne));
    EXPECT_TRUE(LinesAre(
        NewLinesUpTo("RunSrvLoop:  while - WaitForMultipleObjects"),
        RequestComes("0x10") +
            Lines{"Send:  >> Begin CQorlixSRVPipe::Send(long)",
                  "Send:  << CQorlixSRVPipe::Send SendResult=0x0 writeResult=0x0  DataLength=6",
                  "RunSrvLoop:  while - WaitForMultipleObjects"}));
  }

  const Lines kWriteCompletes = {
      "RunSrvLoop:  WaitForMultipleObjects received Element on dwWait=0x{con:x}",
      "RunSrvLoop:  Pending: WRITING_STATE"};
  WireClient slow_;
};

TEST_F(TracePendingWriteTest, AWriteThatCompletesIsFollowedByTheNextRead) {
  (void)slow_.Receive(slow_.Waiting());
  EXPECT_TRUE(
      LinesAre(NewLines(),
               kWriteCompletes + Lines{"RunSrvLoop:  READING_STATE -> ReadFile: Pipe({con})=0x{:x}",
                                       "RunSrvLoop:  ReadFile: ReceivePointer=0 Byte",
                                       "RunSrvLoop:  while - WaitForMultipleObjects"}));
  CloseAndWait(slow_);
}

TEST_F(TracePendingWriteTest, AWriteThatIsGivenUpEndsInAReconnect) {
  slow_.Close();
  EXPECT_TRUE(LinesAre(NewLines(), kWriteCompletes +
                                       Lines{"RunSrvLoop:  Pending: WRITING_STATE: Something "
                                             "is wrong: ->DisconnectAndReconnect"} +
                                       kReconnects));
}

// --- Start and stop ---

Lines PoolOf64() {
  Lines pool = {"StartSRV:  >> StartSRV"};
  for (int i = 0; i < 64; ++i) {
    const std::string number = std::to_string(i);
    pool.push_back("StartSRV:  CreateEvent hEvent=0x{event" + number + ":x}");
    pool.push_back("StartSRV:  Call ConnectToNewClient for Connection(" + number +
                   ") Pipe=0x{pipe" + number + ":x}");
  }
  return pool;
}

const Lines kStarts = {"CreateSRV:  >> Start Pipe Server",
                       "CreateSRV:  namedMutex erfolgreich angelegt!"};
// A machine without the stack has nothing to bring into order.
const Lines kServes = {
    "BRDX_RunPlausibilitaet:  >> Start",
    "BRDX_RunPlausibilitaet:  Error in RegGetValueBL --> Can't run Plausibilitaet!",
    "RunSrvLoop:  >> Start receiving loop ", "RunSrvLoop:  while - WaitForMultipleObjects"};

class TraceStartAndStopTest : public OwnServerTraceTest {
 protected:
  // All from the request with that code on.
  static Lines FromTheCode(const std::string& code, const Lines& all) {
    return {std::find(all.begin(), all.end(), "RunSrvLoop:  opCode " + code), all.end()};
  }
};

TEST_F(TraceStartAndStopTest, AStartIsTracedFromTheEntryToTheFirstWait) {
  ASSERT_TRUE(server_.Start());
  EXPECT_TRUE(LinesAre(
      AllLinesOnceItWaits(),
      kStarts + PoolOf64() + Lines{"StartSRV:  _QorlixSRVStartSRVEvent has been set!"} + kServes));
}

TEST_F(TraceStartAndStopTest, AMissingStartEventIsNotTraced) {
  ASSERT_TRUE(server_.StartWithoutEvent());
  EXPECT_TRUE(LinesAre(AllLinesOnceItWaits(), kStarts + PoolOf64() + kServes));
}

// The server is let go line by line, until it has made its first pipe but not offered it yet.
TEST_F(TraceStartAndStopTest, AClientThatIsThereBeforeItsPipeIsOfferedIsReadFromAtOnce) {
  constexpr std::size_t kLinesUpToTheFirstPipe = 4;
  WireClient client;
  const auto startsWithTheClientInside = [&] {
    server_.Kill();
    client.Close();
    trace_setup::Replace(AllLinesWith());
    auto held = std::make_unique<TraceMutex>();
    EXPECT_TRUE(server_.StartWithoutEvent());
    while (AllLines().size() < kLinesUpToTheFirstPipe && server_.IsRunning()) {
      held.reset();
      held = std::make_unique<TraceMutex>();
    }
    const ULONGLONG end = GetTickCount64() + kPatienceMs;
    while (client.TryConnect() != ERROR_SUCCESS && GetTickCount64() < end) Sleep(1);
    return AllLines().size() == kLinesUpToTheFirstPipe;
  };
  int attempts = 0;
  while (!startsWithTheClientInside()) ASSERT_LT(++attempts, 10) << "it was too fast each time";

  const Lines expected = kStarts + PoolOf64() + kServes +
                         Lines{"RunSrvLoop:  WaitForMultipleObjects received Element on dwWait=0x0",
                               "RunSrvLoop:  No Pending Operation -> check Pipe-State",
                               "RunSrvLoop:  READING_STATE -> ReadFile: Pipe(0)=0x{pipe0:x}",
                               "RunSrvLoop:  ReadFile: ReceivePointer=0 Byte",
                               "RunSrvLoop:  while - WaitForMultipleObjects"};
  const ULONGLONG end = GetTickCount64() + kPatienceMs;
  while (AllLines().size() < expected.size() && GetTickCount64() < end) Sleep(1);
  EXPECT_TRUE(LinesAre(AllLines(), expected));
  EXPECT_TRUE(client.IsServed());
}

TEST_F(TraceStartAndStopTest, APoolThatCannotBeBuiltEndsTheServer) {
  const HANDLE foreign = CreateNamedPipeA(kPipeName, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED, 0,
                                          /*nMaxInstances=*/1, 0, 0, 0, nullptr);
  ASSERT_NE(foreign, INVALID_HANDLE_VALUE);
  ASSERT_TRUE(server_.StartWithoutEvent());
  EXPECT_THAT(server_.ExitCode(kExitMs), Optional(1u));
  (void)CloseHandle(foreign);
  EXPECT_TRUE(LinesAre(
      AllLines(), kStarts + Lines{"StartSRV:  >> StartSRV", "StartSRV:  CreateEvent hEvent=0x{:x}",
                                  "StartSRV:  << Error CreateNamedPipe index=0 ret=231",
                                  "CloseSRV:  >> ClosePipes", "CloseSRV:  << ClosePipes"}));
}

TEST_F(TraceStartAndStopTest, AStopIsTracedUpToTheLastClosing) {
  ASSERT_TRUE(server_.Start());
  WireClient client;
  ASSERT_TRUE(client.Connect());
  ASSERT_TRUE(client.Send(Wire("FD00 FD000000")));
  ASSERT_THAT(server_.ExitCode(kExitMs), Optional(1u));
  EXPECT_TRUE(LinesAre(
      FromTheCode("0xfd", AllLines()),
      {"RunSrvLoop:  opCode 0xfd", "StopServer:  Stop-Server-Message from Connection({}) arrived",
       "CloseSRV:  >> ClosePipes", "CloseSRV:  << ClosePipes",
       "Send:  >> Begin CQorlixSRVPipe::Send(long)",
       "Send:  << CQorlixSRVPipe::Send SendResult=0x4e7 writeResult=0x0  DataLength=6",
       "RunSrvLoop:  Server Shutdown: SHUTDOWN == TRUE", "CloseSRV:  >> ClosePipes",
       "CloseSRV:  << ClosePipes"}));
}

TEST_F(TraceStartAndStopTest, AfterAnUnconfirmedStopEveryRequestShowsTheShutdown) {
  ASSERT_TRUE(server_.Start());
  WireClient client;
  ASSERT_TRUE(client.Connect());
  ASSERT_TRUE(client.Send(Wire("FD00 00000000")));
  ASSERT_TRUE(client.YieldsNext(Wire("0400 E7040000")));
  (void)AllLinesOnceItWaits();
  ASSERT_TRUE(client.IsServed());
  const Lines shutdown = {"RunSrvLoop:  Server Shutdown: SHUTDOWN == TRUE"};
  const Lines stop = {"StopServer:  Stop-Server-Message from Connection({con}) arrived"};
  EXPECT_TRUE(LinesAre(FromTheCode("0xfd", AllLinesOnceItWaits()),
                       Lines{"RunSrvLoop:  opCode 0xfd"} + stop + SendLong("0x4e7") + shutdown +
                           NextRead() + RequestComes("0x10") + SendLong("0x0") + shutdown +
                           NextRead()));
}

}  // namespace
}  // namespace e2e
