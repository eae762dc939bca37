#include <windows.h>

#include <gmock/gmock.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tests/e2e/Clients.h"
#include "tests/e2e/RegistryCommandTest.h"

namespace e2e {
namespace {

constexpr int kManyClients = 1000;
constexpr DWORD kWithinASecond = 1000;

class HostileTest : public RegistryCommandTest {
 protected:
  void SetUp() override {
    RegistryCommandTest::SetUp();
    SetValue("Big", REG_SZ, Bytes(8100, 'x') + Wire("00"));
    handles_ = Server().HandleCount();
    ASSERT_NE(handles_, 0u);
  }

  void TearDown() override {
    EXPECT_TRUE(client_.IsServed());
    // Those that left are noticed before those that ask now.
    EXPECT_TRUE(AllButOneInstanceServe());
    EXPECT_TRUE(Server().ComesBackToHandleCount(handles_));
    RegistryCommandTest::TearDown();
  }

  static testing::AssertionResult AllButOneInstanceServe() {
    std::vector<WireClient> clients;
    const auto connected = ConnectMore(clients, kInstances - 1);
    return connected ? AreServedAtOnce(clients) : connected;
  }

  // A client that asks for more than its pipe holds and reads none of it.
  static WireClient NeverReading() {
    WireClient client;
    EXPECT_TRUE(client.Connect());
    EXPECT_TRUE(client.StartSend(Padded(kGetBig) + Padded(kGetBig) + Padded(kGetBig)));
    EXPECT_TRUE(client.HasWaiting(kBigReply.size()));
    return client;
  }

  static const Bytes kGetBig;
  static const Bytes kBigReply;
  std::uint32_t handles_ = 0;
};

const Bytes HostileTest::kGetBig =
    Wire("1600 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 03000000 'Big'");
const Bytes HostileTest::kBigReply =
    Wire("0400 00000000 A41F0000") + Bytes(8100, 'x') + Wire("A41F0000");

TEST_F(HostileTest, ManyClientsThatConnectAndLeaveCostNoInstance) {
  for (int i = 0; i < kManyClients; ++i) {
    WireClient client;
    ASSERT_TRUE(client.Connect()) << i;
  }
  EXPECT_TRUE(AllButOneInstanceServe());
}

TEST_F(HostileTest, ManyClientsThatSendAndLeaveCostNoInstance) {
  for (int i = 0; i < kManyClients; ++i) {
    WireClient client;
    ASSERT_TRUE(client.Connect()) << i;
    ASSERT_TRUE(client.Send(Wire("1000"))) << i;
  }
  EXPECT_TRUE(AllButOneInstanceServe());
}

TEST_F(HostileTest, ManyClientsThatSendOneByteOrAskForMuchAndLeaveCostNoInstance) {
  for (int i = 0; i < kManyClients; ++i) {
    WireClient client;
    ASSERT_TRUE(client.Connect()) << i;
    ASSERT_TRUE(client.Send(i % 2 == 0 ? Wire("10") : kGetBig)) << i;
  }
  EXPECT_TRUE(AllButOneInstanceServe());
}

TEST_F(HostileTest, ManyClientsThatReadHalfAReplyAndLeaveCostNoInstance) {
  for (int i = 0; i < kManyClients / 4; ++i) {
    WireClient client;
    ASSERT_TRUE(client.Connect()) << i;
    ASSERT_TRUE(client.Send(kGetBig)) << i;
    ASSERT_EQ(client.Receive(100).size(), 100u) << i;
  }
  EXPECT_TRUE(AllButOneInstanceServe());
}

TEST_F(HostileTest, CrowdsThatConnectTogetherAndLeaveTogetherCostNoInstance) {
  for (int i = 0; i < 10; ++i) {
    std::vector<WireClient> crowd;
    ASSERT_TRUE(ConnectMore(crowd, kInstances - 1)) << i;
    for (std::size_t k = 0; k < crowd.size(); k += 3) ASSERT_TRUE(crowd[k].Send(kGetBig));
  }
  EXPECT_TRUE(AllButOneInstanceServe());
}

TEST_F(HostileTest, ClientsThatNeverReadDoNotDisturbTheOneThatDoes) {
  std::vector<WireClient> silent;
  while (silent.size() < kInstances - 1) silent.push_back(NeverReading());
  for (int i = 0; i < 200; ++i) ASSERT_TRUE(client_.IsServed(kWithinASecond)) << i;
}

TEST_F(HostileTest, ClientsThatNeverReadAndLeaveCostNoInstance) {
  for (int i = 0; i < 3; ++i) {
    std::vector<WireClient> silent;
    while (silent.size() < kInstances - 1) silent.push_back(NeverReading());
  }
  EXPECT_TRUE(AllButOneInstanceServe());
}

TEST_F(HostileTest, FloodOfRequestsIsAnsweredWholeOnceItIsRead) {
  constexpr int kRequests = 40;
  Bytes flood;
  for (int i = 0; i < kRequests; ++i) flood += Padded(i % 2 == 0 ? kGetBig : Wire("0400"));
  WireClient other;
  ASSERT_TRUE(other.Connect());
  ASSERT_TRUE(client_.StartSend(flood));
  EXPECT_FALSE(client_.SendIsDone(100));
  EXPECT_TRUE(other.IsServed(kWithinASecond));
  for (int i = 0; i < kRequests; ++i) {
    ASSERT_TRUE(client_.YieldsNext(i % 2 == 0 ? kBigReply : Wire("0400 AC210000"))) << i;
  }
  EXPECT_TRUE(client_.SendIsDone(kPatienceMs));
}

TEST_F(HostileTest, FloodingClientThatDiesCostsOnlyItsOwnConnection) {
  for (int i = 0; i < 20; ++i) {
    WireClient flooding = NeverReading();
    ASSERT_TRUE(client_.IsServed(kWithinASecond));
  }
}

TEST_F(HostileTest, ServerDoesNotGrow) {
  constexpr int kRounds = 1000;
  constexpr std::size_t kNoise = 64 * 1024;
  const auto bother = [this](int rounds) {
    for (int i = 0; i < rounds; ++i) {
      ASSERT_TRUE(client_.Answers(kGetBig, kBigReply));
      ASSERT_TRUE(client_.Answers(Wire("0200 05000000 'ABCDE'"), Wire("0400 05000000")));
      ASSERT_TRUE(client_.Answers(Wire("0200 05000000"), Wire("0400 9A210000")));
      WireClient client;
      ASSERT_TRUE(client.Connect());
      ASSERT_TRUE(client.Send(i % 2 == 0 ? Wire("10") : kGetBig));
    }
  };
  bother(100);
  const std::size_t before = Server().PrivateBytes();
  ASSERT_NE(before, 0u);
  bother(kRounds);
  EXPECT_LE(Server().PrivateBytes(), before + kNoise);
}

// Clients that always have their next request ready, and read what they are answered.
class FloodTest : public HostileTest {
 protected:
  static constexpr int kFlooding = 16;

  void StartFlood() {
    for (int i = 0; i < kFlooding; ++i) {
      flood_.emplace_back([this] { Flood(); });
    }
    while (running_ < kFlooding && failures_ == 0) Sleep(5);
  }

  void StopFlood() {
    ending_ = true;
    for (std::thread& thread : flood_) thread.join();
    flood_.clear();
    EXPECT_EQ(failures_, 0);
  }

  void TearDown() override {
    StopFlood();
    HostileTest::TearDown();
  }

 private:
  void Flood() {
    constexpr int kAhead = 16;
    Bytes requests;
    Bytes replies;
    for (int i = 0; i < kAhead; ++i) {
      requests += Padded(Wire("1000"));
      replies += Wire("0400 00000000");
    }
    WireClient client;
    if (!client.Connect()) ++failures_;
    ++running_;
    while (!ending_ && failures_ == 0) {
      if (!client.StartSend(requests) || client.Receive(replies.size()) != replies ||
          !client.SendIsDone(kPatienceMs)) {
        ++failures_;
      }
    }
  }

  std::vector<std::thread> flood_;
  std::atomic<int> running_ = 0;
  std::atomic<int> failures_ = 0;
  std::atomic<bool> ending_ = false;
};

TEST_F(FloodTest, OccasionalClientThatCameFirstIsServedWithinASecond) {
  StartFlood();
  for (int i = 0; i < 20; ++i) {
    Sleep(20);
    ASSERT_TRUE(client_.IsServed(kWithinASecond)) << i;
  }
}

TEST_F(FloodTest, OccasionalClientThatCameLastIsServedWithinASecond) {
  StartFlood();
  std::vector<WireClient> idle;
  ASSERT_TRUE(ConnectMore(idle, kInstances - kFlooding - 1));
  for (int i = 0; i < 20; ++i) {
    Sleep(20);
    ASSERT_TRUE(idle.back().IsServed(kWithinASecond)) << i;
  }
}

TEST_F(FloodTest, NewClientIsServedWithinASecond) {
  StartFlood();
  for (int i = 0; i < 20; ++i) {
    WireClient client;
    ASSERT_TRUE(client.Connect(kWithinASecond)) << i;
    ASSERT_TRUE(client.IsServed(kWithinASecond)) << i;
  }
}

}  // namespace
}  // namespace e2e
