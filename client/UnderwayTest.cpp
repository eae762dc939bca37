#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "client/QorlixClient.h"
#include "client/testing/ScriptedServer.h"

// Calls that are begun and waited for, cancelled ones, and connections that are replaced. Runs
// natively against a fake of the pipe and on Windows against a real one.

namespace client {
namespace {

constexpr std::uint32_t kPatience = 5000;

class UnderwayTest : public testing::Test {
 protected:
  UnderwayTest() : client_(server_.PipeName()) { client_.SetTimeouts(kPatience, kPatience); }

  static Bytes Ping() {
    static const std::vector<std::uint8_t> bytes = FromHex("1000");
    return bytes;
  }
  static Bytes Panel() {
    static const std::vector<std::uint8_t> bytes = FromHex("1100");
    return bytes;
  }
  // A request that was written need not have been read yet.
  void BeginAndWaitUntilItIsRead() {
    const std::size_t before = server_.Requests().size();
    ASSERT_TRUE(client_.Begin(Ping(), kPatience).ok());
    for (int i = 0; server_.Requests().size() == before; ++i) {
      ASSERT_LT(i, 1000);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  Result WaitForEnd() {
    Result result;
    for (int i = 0; !client_.Wait(/*timeoutMs=*/50, result, reply_); ++i) {
      // The fake's waits take no time.
      if (i > 400) std::this_thread::sleep_for(std::chrono::milliseconds(5));
      EXPECT_LT(i, 1000);
      if (i >= 1000) break;
    }
    return result;
  }

  ScriptedServer server_;
  QorlixClient client_;
  Reply reply_;
};

TEST_F(UnderwayTest, ACallThatWasBegunIsFetchedLater) {
  server_.Answers({"0400 00000000"});
  EXPECT_TRUE(client_.Begin(Ping(), kPatience).ok());
  EXPECT_TRUE(client_.IsUnderway());
  EXPECT_TRUE(WaitForEnd().ok());
  EXPECT_FALSE(client_.IsUnderway());
  EXPECT_EQ(ToHex(reply_.bytes.data(), reply_.bytes.size()), "040000000000");
  EXPECT_EQ(server_.Requests(), std::vector<std::string>{"1000"});
}

TEST_F(UnderwayTest, AWaitThatEndsBeforeTheDeadlineIsNoFailure) {
  server_.StaysSilent();
  Result result;
  ASSERT_TRUE(client_.Begin(Ping(), kPatience).ok());
  EXPECT_FALSE(client_.Wait(0, result, reply_));
  EXPECT_FALSE(client_.Wait(20, result, reply_));
  EXPECT_TRUE(client_.IsUnderway());
}

TEST_F(UnderwayTest, BehindTheDeadlineTheCallHasFailedAndTheConnectionIsClosed) {
  server_.StaysSilent();
  server_.Answers({"0400 00000000"});
  ASSERT_TRUE(client_.Begin(Ping(), /*deadlineMs=*/60).ok());
  const auto start = std::chrono::steady_clock::now();
  const Result result = WaitForEnd();
  EXPECT_EQ(result.origin(), Origin::Receive);
  EXPECT_EQ(result.code(), kTimedOut);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(40));
  EXPECT_TRUE(client_.NoOperation().ok());
  EXPECT_EQ(server_.Connections(), 2);
}

// Natively a busy pipe takes no time in any case.
TEST_F(UnderwayTest, TheDeadlineHoldsForTheConnectionToo) {
  server_.IsBusy();
  const auto start = std::chrono::steady_clock::now();
  const Result result = client_.Begin(Ping(), /*deadlineMs=*/100);
  EXPECT_EQ(result.origin(), Origin::Connect);
  EXPECT_EQ(result.code(), kPipeBusy);
  EXPECT_FALSE(client_.IsUnderway());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(kPatience / 2));
}

TEST_F(UnderwayTest, AReplyThatIsDoubledPerhapsIsWaitedForInPieces) {
  server_.Answers({"0400 00000000", "0400 00000000 0400 00000000"});
  server_.Answers({"0400 00000000"});
  ASSERT_TRUE(client_.Begin(Panel(), kPatience).ok());
  EXPECT_TRUE(WaitForEnd().ok());
  EXPECT_EQ(reply_.layout.parts, 3u);
  ASSERT_TRUE(client_.Begin(Panel(), kPatience).ok());
  Result result;
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(client_.Wait(/*timeoutMs=*/30, result, reply_));
  EXPECT_TRUE(WaitForEnd().ok());
  EXPECT_EQ(reply_.layout.parts, 1u);
}

TEST_F(UnderwayTest, MeanwhileEveryOtherCallIsRefused) {
  server_.Answers({"0400 1F000000"});
  ASSERT_TRUE(client_.Begin(Ping(), kPatience).ok());
  for (const Result& result :
       {client_.NoOperation(), client_.Send(Ping()), client_.Begin(Ping(), kPatience),
        client_.Receive(Ping(), reply_), client_.Connect()}) {
    EXPECT_EQ(result.origin(), Origin::Request);
    EXPECT_EQ(result.code(), kCallUnderway);
  }
  EXPECT_TRUE(WaitForEnd().is(31));
  EXPECT_EQ(server_.Requests().size(), 1u);
}

TEST_F(UnderwayTest, WithoutACallThereIsNothingToWaitFor) {
  Result result;
  EXPECT_TRUE(client_.Wait(kPatience, result, reply_));
  EXPECT_EQ(result.origin(), Origin::Request);
  EXPECT_EQ(result.code(), kNoCallUnderway);
  EXPECT_STRNE(result.text(), Result(Origin::Request, BUFFER_OVERFLOW).text());
}

TEST_F(UnderwayTest, ARequestThatIsTooLongIsNotBegun) {
  const std::vector<std::uint8_t> bytes(8193, 0xEE);
  const Result result = client_.Begin(bytes, kPatience);
  EXPECT_EQ(result.origin(), Origin::Request);
  EXPECT_EQ(result.code(), BUFFER_OVERFLOW);
  EXPECT_EQ(server_.Connections(), 0);
}

TEST_F(UnderwayTest, ACancelledCallEndsAndItsReplyDoesNotMeetTheNextRequest) {
  server_.StaysSilent();
  server_.Answers({"0400 00000000"});
  BeginAndWaitUntilItIsRead();
  client_.Cancel();
  Result result;
  ASSERT_TRUE(client_.Wait(0, result, reply_));
  EXPECT_EQ(result.origin(), Origin::Receive);
  EXPECT_EQ(result.code(), kCancelled);
  EXPECT_TRUE(client_.NoOperation().ok());
  EXPECT_EQ(server_.Connections(), 2);
}

TEST_F(UnderwayTest, ACancelledCallMakesWayForTheNextWithoutBeingWaitedFor) {
  server_.StaysSilent();
  server_.Answers({"0400 00000000"});
  BeginAndWaitUntilItIsRead();
  client_.Cancel();
  EXPECT_TRUE(client_.NoOperation().ok());
  EXPECT_EQ(server_.Connections(), 2);
}

TEST_F(UnderwayTest, CancellingWithoutACallDoesNothing) {
  server_.Answers({"0400 00000000"});
  client_.Cancel();
  EXPECT_TRUE(client_.NoOperation().ok());
}

TEST_F(UnderwayTest, CancellingWithoutACallDoesNotKeepTheNextOneFromConnecting) {
  server_.IsBusy();
  client_.SetTimeouts(/*connectMs=*/100, kPatience);
  client_.Cancel();
  const Result result = client_.Connect();
  EXPECT_EQ(result.origin(), Origin::Connect);
  EXPECT_EQ(result.code(), kPipeBusy);
}

TEST_F(UnderwayTest, AConnectionThatIsDeadBeforeTheRequestIsReplacedAtOnce) {
  server_.Answers({"0400 00000000"});
  ASSERT_TRUE(client_.NoOperation().ok());
  server_.Restarts();
  server_.Answers({"0400 1F000000"});
  EXPECT_TRUE(client_.NoOperation().is(31));
  EXPECT_EQ(server_.Connections(), 2);
  server_.Restarts();
  server_.Answers({"0400 00000000"});
  ASSERT_TRUE(client_.Begin(Ping(), kPatience).ok());
  EXPECT_TRUE(WaitForEnd().ok());
  EXPECT_EQ(server_.Requests().size(), 3u);
}

TEST_F(UnderwayTest, ARequestThatWasTakenIsNotSentAgain) {
  server_.Answers({"0400 00000000"});
  server_.AnswersAndCloses({});
  ASSERT_TRUE(client_.NoOperation().ok());
  EXPECT_EQ(client_.NoOperation().origin(), Origin::Receive);
  EXPECT_EQ(server_.Requests().size(), 2u);
}

TEST_F(UnderwayTest, AServerThatIsGoneForGoodIsToldAsSuch) {
  server_.Answers({"0400 00000000"});
  ASSERT_TRUE(client_.NoOperation().ok());
  server_.Restarts();
  server_.IsGone();
  const Result result = client_.NoOperation();
  EXPECT_EQ(result.origin(), Origin::Connect);
  EXPECT_EQ(result.code(), kPipeNotFound);
}

}  // namespace
}  // namespace client
