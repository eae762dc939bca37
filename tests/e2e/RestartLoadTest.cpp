#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/ActionsTest.h"
#include "tests/e2e/Clients.h"
#include "tests/e2e/RestartTest.h"

// Many restarts at once, restarts that hang or fault, a server that is stopped in the midst of
// them, and what thousands of them leave behind.

namespace e2e {
namespace {

using restart::Ask;
using restart::Begin;
using restart::kAccepted;
using restart::kNothing;
using restart::NamedEvent;
using restart::Result;
using testing::Optional;

constexpr char kDevice[] = "CP_L2_1:";
constexpr DWORD kStopMs = 5000;
constexpr int kInFlight = 500;

std::string EventName(int number) { return "QorlixE2ELoad" + std::to_string(number); }

class RestartLoadTest : public OwnServerActionsTest {
 protected:
  void SetUp() override { libraries_.PlaceAll(); }

  void StartWith(const std::string& restart) {
    libraries_.Answer("DllEntryFktSilent", restart);
    libraries_.NoteNothing();
    OwnServerActionsTest::Start();
  }

  void StartMany(int count) {
    for (int i = 0; i < count; ++i) {
      ASSERT_TRUE(client_.Answers(Begin(kDevice, EventName(i)), kAccepted)) << i;
    }
  }

  void ExpectStop() {
    ASSERT_TRUE(client_.Send(Wire("FD00 FD000000")));
    EXPECT_TRUE(client_.IsBroken());
    const ULONGLONG start = GetTickCount64();
    EXPECT_THAT(server_.ExitCode(kStopMs), Optional(1u));
    RecordProperty("StoppedAfterMs", static_cast<int>(GetTickCount64() - start));
  }
};

TEST_F(RestartLoadTest, FiveHundredAreInFlightWhileAllClientsAreServed) {
  StartWith("delay = 6000\nresult = 17");
  std::vector<std::unique_ptr<NamedEvent>> events;
  for (int i = 0; i < kInFlight; ++i) events.push_back(std::make_unique<NamedEvent>(EventName(i)));
  std::vector<WireClient> clients;
  ASSERT_TRUE(ConnectMore(clients, kInstances - 1));
  StartMany(kInFlight);

  for (int round = 0; round < 4; ++round) {
    ASSERT_TRUE(AreServedAtOnce(clients));
    ASSERT_TRUE(client_.IsServed());
  }
  EXPECT_FALSE(events.back()->IsSet(0)) << "the restarts were over before the clients were served";

  for (int i = 0; i < kInFlight; ++i) {
    ASSERT_TRUE(events[static_cast<std::size_t>(i)]->IsSet(20000)) << i;
    ASSERT_TRUE(client_.Answers(Ask(EventName(i)), Result(17))) << i;
    ASSERT_TRUE(client_.Answers(Ask(EventName(i)), kNothing)) << i;
  }
}

TEST_F(RestartLoadTest, OneThatHangsHoldsUpNoOther) {
  libraries_.Script(
      "[answer DllEntryFktSilent]\ncall = 1\ndelay = 600000\n"
      "[answer DllEntryFktSilent]\ncall = *\nresult = 17\n");
  OwnServerActionsTest::Start();
  NamedEvent hangs("QorlixE2EHangs");
  ASSERT_TRUE(client_.Answers(Begin(kDevice, "QorlixE2EHangs"), kAccepted));
  Sleep(100);
  for (int i = 0; i < 20; ++i) {
    NamedEvent event(EventName(i));
    ASSERT_TRUE(client_.Answers(Begin(kDevice, EventName(i)), kAccepted));
    ASSERT_TRUE(event.IsSet());
    ASSERT_TRUE(client_.Answers(Ask(EventName(i)), Result(17)));
  }
  EXPECT_FALSE(hangs.IsSet(0));
  EXPECT_TRUE(client_.Answers(Ask("QorlixE2EHangs"), kNothing));
  ExpectStop();
}

TEST_F(RestartLoadTest, ManyThatFaultAtOnceLeaveTheServerServing) {
  StartWith("delay = 300\nraise = access-violation");
  constexpr int kCount = 50;
  std::vector<std::unique_ptr<NamedEvent>> events;
  for (int i = 0; i < kCount; ++i) events.push_back(std::make_unique<NamedEvent>(EventName(i)));
  StartMany(kCount);
  for (int i = 0; i < kCount; ++i) {
    ASSERT_TRUE(events[static_cast<std::size_t>(i)]->IsSet());
    ASSERT_TRUE(client_.Answers(Ask(EventName(i)), Result(8604)));
  }
  client_.Close();
  EXPECT_TRUE(AllInstancesServe());
}

TEST_F(RestartLoadTest, AServerWithRestartsInFlightStops) {
  StartWith("delay = 600000");
  StartMany(100);
  ExpectStop();
}

// The workers come to their end while the server does.
TEST_F(RestartLoadTest, AServerWhoseRestartsEndWhileItStopsDoesNotCrash) {
  for (const int delay : {0, 5, 20, 50}) {
    StartWith("delay = " + std::to_string(delay));
    StartMany(60);
    ExpectStop();
    client_.Close();
    server_.Kill();
  }
}

// In the ordinary run few, for each loads and frees two libraries; the variable asks for more.
int ManyRestarts() {
  const char* const asked = std::getenv("QORLIX_RESTARTS");
  return asked != nullptr ? std::max(std::atoi(asked), 1) : 400;
}

class RestartGrowthTest : public RestartLoadTest {
 protected:
  // One after the other; for every tenth there is no event.
  void Run(int count) {
    NamedEvent event("QorlixE2EGrowth");
    for (int i = 0; i < count; ++i) {
      if (i % 10 == 0) {
        ASSERT_TRUE(client_.Answers(Begin(kDevice, "QorlixE2ENone"), kAccepted)) << i;
        continue;
      }
      event.Reset();
      ASSERT_TRUE(client_.Answers(Begin(kDevice, "QorlixE2EGrowth"), kAccepted)) << i;
      ASSERT_TRUE(event.IsSet()) << i;
      ASSERT_TRUE(client_.Answers(Ask("QorlixE2EGrowth"), Result(17))) << i;
    }
  }
};

TEST_F(RestartGrowthTest, ManyLeaveNoHandleAndNoMemory) {
  StartWith("result = 17");
  const std::uint32_t threads = server_.ThreadCount();
  Run(100);
  ASSERT_TRUE(server_.ComesBackToThreadCount(threads));
  const std::uint32_t handles = server_.HandleCount();
  const std::size_t bytes = server_.PrivateBytes();
  ASSERT_GT(bytes, 0u);

  const int count = ManyRestarts();
  // Heaps grow in steps; a few hundred bytes that each restart left behind would be more.
  const std::size_t bound = 256 * 1024 + static_cast<std::size_t>(count) * 128;
  const ULONGLONG begin = GetTickCount64();
  Run(count);
  const auto milliseconds = static_cast<int>(GetTickCount64() - begin);
  // A worker on its last steps, whose event was set already, has a stack and handles of its own.
  EXPECT_TRUE(server_.ComesBackToThreadCount(threads));
  const auto settled = server_.ComesBackToHandleCount(handles + 4);
  if (handles != 0) {
    EXPECT_TRUE(settled);
  }
  const std::size_t after = server_.PrivateBytes();
  EXPECT_LT(after, bytes + bound);
  std::printf("%d restarts in %d ms: handles %u -> %u, private bytes %zu -> %zu\n", count,
              milliseconds, handles, server_.HandleCount(), bytes, after);
}

}  // namespace
}  // namespace e2e
