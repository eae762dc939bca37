#include <windows.h>

#include <gmock/gmock.h>

#include <vector>

#include "tests/e2e/Clients.h"
#include "tests/e2e/RegistryScratch.h"
#include "tests/e2e/ServerProcess.h"

namespace e2e {
namespace {

using testing::Optional;

constexpr char kKey[] = "SOFTWARE\\Vesmark\\NORVA\\E2E";

// How long a stop may take, whatever the clients do.
constexpr DWORD kStopMs = 5000;

// A stop ends the server, so every test has one of its own.
class StopTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(server_.Start());
    ASSERT_TRUE(client_.Connect());
  }

  void ExpectExit() {
    const ULONGLONG start = GetTickCount64();
    EXPECT_THAT(server_.ExitCode(kStopMs), Optional(1u));
    RecordProperty("StoppedAfterMs", static_cast<int>(GetTickCount64() - start));
  }

  void MakeBigValue() {
    scratch_.CreateKey(kKey);
    scratch_.SetValue(kKey, "Big", REG_SZ, Bytes(8100, 'x') + Wire("00"));
  }

  const Bytes kStop = Wire("FD00 FD000000");
  const Bytes kGetBig = Wire("1600 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 03000000 'Big'");
  const Bytes kBigReply = Wire("0400 00000000 A41F0000") + Bytes(8100, 'x') + Wire("A41F0000");
  RegistryScratch scratch_;
  ServerProcess server_;
  WireClient client_;
};

TEST_F(StopTest, ConfirmedStopBreaksThePipeOfTheOneWhoAskedAndExitsWithOne) {
  ASSERT_TRUE(client_.Send(kStop));
  EXPECT_TRUE(client_.IsBroken());
  ExpectExit();
}

TEST_F(StopTest, ConfirmedStopBreaksThePipesOfAllClients) {
  std::vector<WireClient> clients;
  ASSERT_TRUE(ConnectMore(clients, kInstances - 1));
  for (std::size_t i = 0; i < clients.size(); i += 2) ASSERT_TRUE(clients[i].IsServed());
  ASSERT_TRUE(client_.Send(kStop));
  EXPECT_TRUE(client_.IsBroken());
  for (WireClient& client : clients) EXPECT_TRUE(client.IsBroken());
  ExpectExit();
}

TEST_F(StopTest, BytesBehindTheConfirmationAreIgnored) {
  ASSERT_TRUE(client_.Send(kStop + Wire("00000000 'more'")));
  EXPECT_TRUE(client_.IsBroken());
  ExpectExit();
}

TEST_F(StopTest, StopAfterAnUnconfirmedOneIsTheSame) {
  EXPECT_TRUE(client_.Answers(Wire("FD00 00000000"), Wire("0400 E7040000")));
  EXPECT_TRUE(client_.Answers(Wire("FD00"), Wire("0400 05000000"
                                                 "0400 05000000 0400 9A210000")));
  EXPECT_TRUE(server_.IsRunning());
  ASSERT_TRUE(client_.Send(kStop));
  EXPECT_TRUE(client_.IsBroken());
  ExpectExit();
}

TEST_F(StopTest, PipeIsGoneAfterAStopAndTheServerCanBeStartedAgain) {
  ASSERT_TRUE(client_.Send(kStop));
  ExpectExit();
  EXPECT_EQ(WireClient().TryConnect(), static_cast<std::uint32_t>(ERROR_FILE_NOT_FOUND));
  server_.Kill();
  ASSERT_TRUE(server_.Start());
  EXPECT_TRUE(AllInstancesServe());
}

TEST_F(StopTest, ClientThatAsksToStopAndLeavesStopsTheServer) {
  ASSERT_TRUE(client_.Send(kStop));
  client_.Close();
  ExpectExit();
}

TEST_F(StopTest, ReplyThatIsBeingReadIsDeliveredBeforeTheEnd) {
  MakeBigValue();
  WireClient reading;
  ASSERT_TRUE(reading.Connect());
  ASSERT_TRUE(reading.Send(kGetBig));
  ASSERT_TRUE(reading.HasWaiting(kBigReply.size()));
  ASSERT_TRUE(client_.Send(kStop));
  Sleep(100);
  EXPECT_TRUE(reading.YieldsNext(kBigReply));
  EXPECT_TRUE(reading.IsBroken());
  ExpectExit();
}

TEST_F(StopTest, ReaderBehindOneWhoNeverReadsStillGetsEverything) {
  MakeBigValue();
  // Connected first, so it sits in a lower instance than the reader.
  std::vector<WireClient> silent;
  ASSERT_TRUE(ConnectMore(silent, 3));
  for (WireClient& client : silent) {
    ASSERT_TRUE(client.Send(kGetBig));
    ASSERT_TRUE(client.HasWaiting(kBigReply.size()));
  }
  WireClient reading;
  ASSERT_TRUE(reading.Connect());
  ASSERT_TRUE(reading.Send(kGetBig));
  ASSERT_TRUE(reading.HasWaiting(kBigReply.size()));
  ASSERT_TRUE(client_.Send(kStop));
  Sleep(1000);
  EXPECT_TRUE(reading.YieldsNext(kBigReply));
  ExpectExit();
}

TEST_F(StopTest, StopWith64NeverReadingClientsIsNotHeldUp) {
  MakeBigValue();
  std::vector<WireClient> clients;
  ASSERT_TRUE(ConnectMore(clients, kInstances - 1));
  for (WireClient& client : clients) {
    ASSERT_TRUE(client.StartSend(Padded(kGetBig) + Padded(kGetBig) + Padded(kGetBig)));
  }
  for (WireClient& client : clients) ASSERT_TRUE(client.HasWaiting(kBigReply.size()));
  // The one who asks has an unread answer as well.
  ASSERT_TRUE(client_.Send(kGetBig));
  ASSERT_TRUE(client_.HasWaiting(kBigReply.size()));
  ASSERT_TRUE(client_.Send(kStop));
  ExpectExit();
  for (WireClient& client : clients) EXPECT_TRUE(client.IsBroken());
  EXPECT_TRUE(client_.IsBroken());
}

TEST_F(StopTest, StopWithFloodingClientsIsNotHeldUp) {
  Bytes flood;
  for (int i = 0; i < 32; ++i) flood += Padded(Wire("1000"));
  std::vector<WireClient> clients;
  ASSERT_TRUE(ConnectMore(clients, 16));
  for (WireClient& client : clients) ASSERT_TRUE(client.StartSend(flood));
  ASSERT_TRUE(client_.Send(kStop));
  ExpectExit();
}

}  // namespace
}  // namespace e2e
