#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <vector>

#include "tests/e2e/Clients.h"
#include "tests/e2e/RegistryCommandTest.h"

namespace e2e {
namespace {

// What a pipe holds for a client that does not read.
constexpr std::size_t kPipeRoom = 8192;
constexpr std::size_t kDoubledReply = 18;

// Replies to clients that have not read the ones before, so that a write has to wait for them.
class PendingReplyTest : public RegistryCommandTest {
 protected:
  void SetUp() override {
    RegistryCommandTest::SetUp();
    ASSERT_TRUE(other_.Connect());
  }

  // Has the client left with exactly this many unread bytes. \returns them.
  Bytes Fill(WireClient& client, std::size_t size) {
    constexpr std::size_t kSmallReplies = 6;
    const Bytes small = Wire("0400 00000000");
    const std::size_t length = size - kSmallReplies * small.size() - 14;
    const Bytes text(length, 'x');
    SetValue("Fill", REG_SZ, text + Wire("00"));
    Bytes unread = Wire("0400 00000000") + Text(text) + Long(static_cast<std::uint32_t>(length));
    EXPECT_TRUE(client.Send(Wire("1600 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 04000000 'Fill'")));
    EXPECT_TRUE(client.HasWaiting(unread.size()));
    for (std::size_t i = 0; i < kSmallReplies && !HasFailure(); ++i) {
      EXPECT_TRUE(client.Send(Wire("1000")));
      unread += small;
      EXPECT_TRUE(client.HasWaiting(unread.size()));
    }
    return unread;
  }

  // The server has seen what was sent before this, and done what it could.
  void LetTheServerHaveItsTurn() {
    for (int i = 0; i < 4; ++i) ASSERT_TRUE(other_.IsServed());
  }

  const Bytes kOneByteReplies = Wire("0400 AC210000 0400 AC210000 0400 9A210000");
  const Bytes kStopReplies = Wire("0400 05000000 0400 05000000 0400 9A210000");
  WireClient other_;
};

TEST_F(PendingReplyTest, DoubledReplyArrivesInOrderHoweverFullThePipeIs) {
  // Up to 8174 both writes find room, up to 8186 the first one does.
  for (const std::size_t unread : {8173u, 8174u, 8175u, 8180u, 8185u, 8186u, 8187u, 8191u, 8192u}) {
    SCOPED_TRACE(unread);
    WireClient client;
    ASSERT_TRUE(client.Connect());
    const Bytes filling = Fill(client, unread);
    ASSERT_TRUE(client.Send(Wire("10")));
    LetTheServerHaveItsTurn();
    EXPECT_TRUE(client.Yields(filling + kOneByteReplies));
  }
}

TEST_F(PendingReplyTest, DoubledRefusalOfAStopArrivesInOrderHoweverFullThePipeIs) {
  for (const std::size_t unread : {8174u, 8175u, 8186u, 8187u, 8192u}) {
    SCOPED_TRACE(unread);
    WireClient client;
    ASSERT_TRUE(client.Connect());
    const Bytes filling = Fill(client, unread);
    ASSERT_TRUE(client.Send(Wire("FD00 FD0000")));
    LetTheServerHaveItsTurn();
    EXPECT_TRUE(client.Yields(filling + kStopReplies));
  }
}

TEST_F(PendingReplyTest, SlowReaderGetsTheDoubledReplyInOrder) {
  const Bytes filling = Fill(client_, kPipeRoom);
  ASSERT_TRUE(client_.Send(Wire("10")));
  const Bytes expected = filling + kOneByteReplies;
  Bytes received;
  while (received.size() < expected.size()) {
    const Bytes some = client_.Receive(std::min<std::size_t>(5, expected.size() - received.size()));
    ASSERT_FALSE(some.empty()) << "after " << received.size();
    received += some;
  }
  EXPECT_EQ(received, expected) << DescribeDifference(expected, received);
  EXPECT_TRUE(client_.IsServed());
}

TEST_F(PendingReplyTest, RequestsBehindADoubledReplyWaitUntilItIsRead) {
  const Bytes filling = Fill(client_, kPipeRoom);
  ASSERT_TRUE(client_.Send(Wire("10")));
  LetTheServerHaveItsTurn();
  // The next request stands ready all the time, and a second doubled reply follows the first.
  ASSERT_TRUE(client_.StartSend(Padded(Wire("0400")) + Padded(Wire("1000")) + Wire("10")));
  LetTheServerHaveItsTurn();
  EXPECT_TRUE(client_.Yields(filling + kOneByteReplies + Wire("0400 AC210000 0400 00000000") +
                             kOneByteReplies));
}

TEST_F(PendingReplyTest, SingleReplyThatHadToWaitIsFollowedByTheNextOne) {
  for (int i = 0; i < 3; ++i) {
    const Bytes filling = Fill(client_, kPipeRoom - 3);
    ASSERT_TRUE(client_.Send(Wire("0400")));
    LetTheServerHaveItsTurn();
    EXPECT_TRUE(client_.Yields(filling + Wire("0400 AC210000")));
  }
}

TEST_F(PendingReplyTest, ReplyIsHeldForAClientThatReadsLate) {
  const Bytes filling = Fill(client_, kPipeRoom);
  ASSERT_TRUE(client_.Send(Wire("1000")));
  Sleep(1000);
  EXPECT_TRUE(other_.IsServed());
  EXPECT_TRUE(client_.Yields(filling + Wire("0400 00000000")));
}

// The next client is on the same instance, because all others are taken.
class LastInstanceTest : public PendingReplyTest {
 protected:
  void SetUp() override {
    PendingReplyTest::SetUp();
    ASSERT_TRUE(ConnectMore(taken_, kInstances - 2));
  }

  void Reconnect() {
    client_.Close();
    ASSERT_TRUE(client_.Connect());
  }

  std::vector<WireClient> taken_;
};

TEST_F(LastInstanceTest, ReplyThatWasNeverReadDoesNotReachTheNextClient) {
  for (int i = 0; i < 5; ++i) {
    Fill(client_, kPipeRoom);
    ASSERT_TRUE(client_.Send(Wire("0400")));
    LetTheServerHaveItsTurn();
    Reconnect();
    EXPECT_TRUE(client_.Answers(Wire("1000"), Wire("0400 00000000")));
    EXPECT_TRUE(client_.IsQuiet(20));
  }
}

TEST_F(LastInstanceTest, SecondReplyThatWasNeverWrittenDoesNotReachTheNextClient) {
  for (const std::size_t unread : {kPipeRoom - kDoubledReply + 1, kPipeRoom}) {
    SCOPED_TRACE(unread);
    Fill(client_, unread);
    ASSERT_TRUE(client_.Send(Wire("10")));
    LetTheServerHaveItsTurn();
    Reconnect();
    // The next client has a reply to wait for as well, which must not bring the old one along.
    const Bytes filling = Fill(client_, kPipeRoom);
    ASSERT_TRUE(client_.Send(Wire("1000")));
    LetTheServerHaveItsTurn();
    EXPECT_TRUE(client_.Yields(filling + Wire("0400 00000000")));
    EXPECT_TRUE(client_.IsQuiet(20));
  }
}

TEST_F(LastInstanceTest, HalfReadRequestOfALostClientIsNotContinuedByTheNext) {
  ASSERT_TRUE(client_.Send(Padded(Wire("1000")) + Wire("10")));
  Reconnect();
  EXPECT_TRUE(client_.Answers(Wire("0400"), Wire("0400 AC210000")));
}

}  // namespace
}  // namespace e2e
