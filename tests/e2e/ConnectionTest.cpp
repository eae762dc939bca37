#include <windows.h>

#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/e2e/Clients.h"
#include "tests/e2e/RegistryCommandTest.h"

namespace e2e {
namespace {

class ConnectionTest : public RegistryCommandTest {};

TEST_F(ConnectionTest, OneClientIsServedAsOftenAsItAsks) {
  for (int i = 0; i < 500; ++i) {
    ASSERT_TRUE(client_.Answers(Wire("0400 'anything'"), Wire("0400 AC210000"))) << i;
  }
}

TEST_F(ConnectionTest, ReplyCanBeReadByteByByte) {
  ASSERT_TRUE(client_.Send(Wire("1000")));
  Bytes reply;
  while (reply.size() < 6) reply += client_.Receive(1);
  EXPECT_EQ(reply, Wire("0400 00000000"));
  EXPECT_TRUE(client_.IsQuiet(50));
}

TEST_F(ConnectionTest, EveryOf64ClientsAtOnceGetsItsOwnAnswers) {
  std::vector<WireClient> clients;
  ASSERT_TRUE(ConnectMore(clients, kInstances - 1));
  clients.push_back(std::move(client_));
  for (int i = 0; i < static_cast<int>(kInstances); ++i) {
    SetValue(std::to_string(i), REG_SZ, "value of " + std::to_string(i) + Wire("00"));
  }
  for (int round = 0; round < 5; ++round) {
    for (std::size_t i = 0; i < kInstances; ++i) {
      ASSERT_TRUE(clients[i].Send(Wire("1600 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'") +
                                  Text(std::to_string(i))));
    }
    for (std::size_t i = kInstances; i-- > 0;) {
      const std::string text = "value of " + std::to_string(i);
      EXPECT_TRUE(clients[i].Yields(Wire("0400 00000000") + Text(text) +
                                    Long(static_cast<std::uint32_t>(text.size()))));
    }
  }
}

TEST_F(ConnectionTest, Client65FindsThePipeBusyUntilOneLeaves) {
  std::vector<WireClient> clients;
  ASSERT_TRUE(ConnectMore(clients, kInstances - 1));
  WireClient late;
  EXPECT_EQ(late.TryConnect(), static_cast<std::uint32_t>(ERROR_PIPE_BUSY));
  EXPECT_TRUE(client_.IsServed());
  clients[17].Close();
  ASSERT_TRUE(late.Connect());
  EXPECT_TRUE(late.IsServed());
  EXPECT_EQ(clients[17].TryConnect(), static_cast<std::uint32_t>(ERROR_PIPE_BUSY));
}

TEST_F(ConnectionTest, WaitingClientIsLetInWhenOneLeaves) {
  std::vector<WireClient> clients;
  ASSERT_TRUE(ConnectMore(clients, kInstances - 1));
  std::thread leaving([&clients] {
    Sleep(200);
    clients[0].Close();
  });
  WireClient late;
  EXPECT_TRUE(late.Connect());
  leaving.join();
  EXPECT_TRUE(late.IsServed());
}

TEST_F(ConnectionTest, DefaultWaitForAFreeInstanceIsFiveSeconds) {
  std::vector<WireClient> clients;
  ASSERT_TRUE(ConnectMore(clients, kInstances - 1));
  const ULONGLONG start = GetTickCount64();
  EXPECT_EQ(WaitNamedPipeA(kPipeName, NMPWAIT_USE_DEFAULT_WAIT), FALSE);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SEM_TIMEOUT));
  const ULONGLONG waited = GetTickCount64() - start;
  EXPECT_GE(waited, 4900u);
  EXPECT_LE(waited, 6500u);
}

TEST_F(ConnectionTest, InstanceOfALeavingClientServesTheNextOne) {
  std::vector<WireClient> clients;
  ASSERT_TRUE(ConnectMore(clients, kInstances - 1));
  // Only one instance is left to be used, again and again.
  for (int i = 0; i < 50; ++i) {
    client_.Close();
    ASSERT_TRUE(client_.Connect()) << i;
    ASSERT_TRUE(client_.IsServed()) << i;
  }
  EXPECT_TRUE(AreServedAtOnce(clients));
}

TEST_F(ConnectionTest, ClientThatSendsAndLeavesCostsOnlyItsOwnConnection) {
  SetValue("Name", REG_SZ, Bytes(8000, 'x') + Wire("00"));
  std::vector<WireClient> clients;
  ASSERT_TRUE(ConnectMore(clients, kInstances - 1));
  for (int i = 0; i < 50; ++i) {
    ASSERT_TRUE(
        client_.Send(Wire("1600 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 04000000 'Name'")));
    client_.Close();
    ASSERT_TRUE(client_.Connect()) << i;
    ASSERT_TRUE(client_.IsServed()) << i;
  }
  EXPECT_TRUE(AreServedAtOnce(clients));
}

TEST_F(ConnectionTest, RequestOfAClientThatLeftAtOnceMayStillBeDone) {
  // The bytes were taken before the connection ended, so either outcome is right, but nothing else.
  ASSERT_TRUE(client_.Send(Wire("0200 1C000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\A'")));
  client_.Close();
  ASSERT_TRUE(client_.Connect());
  EXPECT_TRUE(client_.IsServed());
  EXPECT_LE(scratch_.Subkeys(kKey).size(), 1u);
}

TEST_F(ConnectionTest, WriteOfNoBytesCostsAtMostItsOwnConnection) {
  WireClient other;
  ASSERT_TRUE(other.Connect());
  for (int i = 0; i < 100; ++i) {
    WireClient empty;
    ASSERT_TRUE(empty.Connect());
    ASSERT_TRUE(empty.StartSend({}));
    EXPECT_TRUE(other.IsServed());
  }
  EXPECT_TRUE(client_.IsServed());
  client_.Close();
  other.Close();
  EXPECT_TRUE(AllInstancesServe());
}

TEST_F(ConnectionTest, ClientThatCannotReadCostsAtMostItsOwnConnection) {
  for (int i = 0; i < 20; ++i) {
    const HANDLE pipe =
        CreateFileA(kPipeName, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    DWORD count = 0;
    EXPECT_NE(WriteFile(pipe, "\x10", 2, &count, nullptr), FALSE);
    EXPECT_TRUE(client_.IsServed());
    CloseHandle(pipe);
  }
  client_.Close();
  EXPECT_TRUE(AllInstancesServe());
}

TEST_F(ConnectionTest, ClientThatCannotWriteCostsAtMostItsOwnConnection) {
  for (int i = 0; i < 20; ++i) {
    const HANDLE pipe = CreateFileA(kPipeName, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(client_.IsServed());
    CloseHandle(pipe);
  }
  client_.Close();
  EXPECT_TRUE(AllInstancesServe());
}

TEST_F(ConnectionTest, PipeIsOfByteTypeWith64InstancesAndBuffersOf8192Bytes) {
  DWORD flags = 0;
  DWORD outSize = 0;
  DWORD inSize = 0;
  DWORD instances = 0;
  ASSERT_NE(GetNamedPipeInfo(client_.Handle(), &flags, &outSize, &inSize, &instances), FALSE);
  EXPECT_EQ(flags & PIPE_TYPE_MESSAGE, 0u);
  EXPECT_EQ(outSize, 8192u);
  EXPECT_EQ(inSize, 8192u);
  EXPECT_EQ(instances, 64u);
  DWORD mode = PIPE_READMODE_MESSAGE;
  EXPECT_EQ(SetNamedPipeHandleState(client_.Handle(), &mode, nullptr, nullptr), FALSE);
}

TEST_F(ConnectionTest, OnePipeInstanceExistsForEveryClientThatCanBeServed) {
  DWORD instances = 0;
  ASSERT_NE(
      GetNamedPipeHandleStateA(client_.Handle(), nullptr, &instances, nullptr, nullptr, nullptr, 0),
      FALSE);
  EXPECT_EQ(instances, 64u);
}

}  // namespace
}  // namespace e2e
