#include <windows.h>

#include <gmock/gmock.h>

#include <optional>
#include <vector>

#include "tests/e2e/Clients.h"
#include "tests/e2e/ServerProcess.h"

namespace e2e {
namespace {

using testing::Optional;

constexpr char kStartEvent[] = "_QorlixSRVStartSRVEvent";
constexpr char kSingleInstance[] = "Global\\QORLIXSRV_SINGLE_INSTANCE_42";
constexpr char kBoardLock[] = "QorlixSrv_BC_Lock_Mutex";
constexpr DWORD kExitMs = 10000;

bool MutexExists(const char* name) {
  const HANDLE mutex = OpenMutexA(SYNCHRONIZE, FALSE, name);
  if (mutex != nullptr) CloseHandle(mutex);
  return mutex != nullptr;
}

// Every test has a server process of its own.
class ProcessTest : public testing::Test {
 protected:
  testing::AssertionResult ConnectAsSoonAsPossible() {
    const ULONGLONG end = GetTickCount64() + kExitMs;
    while (client_.TryConnect() != ERROR_SUCCESS) {
      if (GetTickCount64() > end) return testing::AssertionFailure() << "no pipe";
    }
    return testing::AssertionSuccess();
  }

  ServerProcess server_;
  WireClient client_;
};

TEST_F(ProcessTest, StartEventIsSetWhenAllInstancesCanBeReached) {
  ASSERT_TRUE(server_.Start());
  std::vector<WireClient> clients(kInstances);
  for (WireClient& client : clients) {
    EXPECT_EQ(client.TryConnect(), static_cast<std::uint32_t>(ERROR_SUCCESS));
  }
  EXPECT_TRUE(AreServedAtOnce(clients));
}

TEST_F(ProcessTest, WithoutAStartEventItServesAndMakesNone) {
  ASSERT_TRUE(server_.StartWithoutEvent());
  ASSERT_TRUE(ConnectAsSoonAsPossible());
  EXPECT_TRUE(client_.IsServed());
  EXPECT_EQ(OpenEventA(SYNCHRONIZE, FALSE, kStartEvent), nullptr);
}

TEST_F(ProcessTest, ClientsThatComeWhileThePoolIsBuiltAreServed) {
  for (int i = 0; i < 10; ++i) {
    ServerProcess server;
    ASSERT_TRUE(server.StartWithoutEvent());
    std::vector<WireClient> clients;
    for (int k = 0; k < 8; ++k) {
      ASSERT_TRUE(ConnectAsSoonAsPossible());
      clients.push_back(std::move(client_));
    }
    EXPECT_TRUE(AreServedAtOnce(clients));
    clients.clear();
    EXPECT_TRUE(AllInstancesServe());
  }
}

TEST_F(ProcessTest, CommandLineIsIgnored) {
  ASSERT_TRUE(server_.Start("--help /unregister \"with blanks\" -1"));
  ASSERT_TRUE(client_.Connect());
  EXPECT_TRUE(client_.IsServed());
}

TEST_F(ProcessTest, SecondServerExitsWith183AndTheFirstIsUndisturbed) {
  ASSERT_TRUE(server_.Start());
  std::vector<WireClient> clients;
  ASSERT_TRUE(ConnectMore(clients, kInstances - 1));
  for (int i = 0; i < 3; ++i) {
    ServerProcess second;
    ASSERT_TRUE(second.StartWithoutEvent());
    EXPECT_THAT(second.ExitCode(kExitMs), Optional(183u));
  }
  EXPECT_TRUE(server_.IsRunning());
  EXPECT_TRUE(AreServedAtOnce(clients));
  clients.clear();
  EXPECT_TRUE(AllInstancesServe());
}

TEST_F(ProcessTest, SecondServerDoesNotSetTheStartEvent) {
  ASSERT_TRUE(server_.Start());
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, kStartEvent);
  ResetEvent(event);
  ServerProcess second;
  ASSERT_TRUE(second.StartWithoutEvent());
  EXPECT_THAT(second.ExitCode(kExitMs), Optional(183u));
  EXPECT_EQ(WaitForSingleObject(event, 0), static_cast<DWORD>(WAIT_TIMEOUT));
  CloseHandle(event);
}

TEST_F(ProcessTest, SingleInstanceMutexOfAnyoneElseCountsAsAServer) {
  const HANDLE mutex = CreateMutexA(nullptr, FALSE, kSingleInstance);
  ASSERT_NE(mutex, nullptr);
  ASSERT_TRUE(server_.StartWithoutEvent());
  EXPECT_THAT(server_.ExitCode(kExitMs), Optional(183u));
  CloseHandle(mutex);
}

TEST_F(ProcessTest, NamedMutexesLiveAsLongAsTheServer) {
  ASSERT_FALSE(MutexExists(kSingleInstance));
  ASSERT_FALSE(MutexExists(kBoardLock));
  ASSERT_TRUE(server_.Start());
  EXPECT_TRUE(MutexExists(kSingleInstance));
  EXPECT_TRUE(MutexExists(kBoardLock));
  server_.Kill();
  EXPECT_FALSE(MutexExists(kSingleInstance));
  EXPECT_FALSE(MutexExists(kBoardLock));
}

TEST_F(ProcessTest, BoardControlLockIsNotOwned) {
  ASSERT_TRUE(server_.Start());
  const HANDLE lock = OpenMutexA(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, kBoardLock);
  ASSERT_NE(lock, nullptr);
  EXPECT_EQ(WaitForSingleObject(lock, 0), static_cast<DWORD>(WAIT_OBJECT_0));
  ReleaseMutex(lock);
  CloseHandle(lock);
}

TEST_F(ProcessTest, PoolThatCannotBeBuiltEndsTheServerWithOne) {
  // One instance of the name is taken, so the last one of the pool finds no place.
  const HANDLE taken =
      CreateNamedPipeA(kPipeName, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                       PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
                       64, 8192, 8192, 5000, nullptr);
  ASSERT_NE(taken, INVALID_HANDLE_VALUE);
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, kStartEvent);
  ASSERT_TRUE(server_.StartWithoutEvent());
  EXPECT_THAT(server_.ExitCode(kExitMs), Optional(1u));
  EXPECT_EQ(WaitForSingleObject(event, 0), static_cast<DWORD>(WAIT_TIMEOUT));
  CloseHandle(event);
  CloseHandle(taken);
}

TEST_F(ProcessTest, ServerThatWasEndedByForceCanBeStartedAgain) {
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(server_.Start()) << i;
    ASSERT_TRUE(client_.Connect()) << i;
    EXPECT_TRUE(client_.IsServed()) << i;
    server_.Kill();
    EXPECT_TRUE(client_.IsBroken()) << i;
  }
}

}  // namespace
}  // namespace e2e
