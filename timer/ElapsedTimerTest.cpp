#include "timer/ElapsedTimer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/FakeWallClock.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "trace/Zqotrc.h"

// The worker over a clock that the test moves; every sleep of a second ends when the test says so.

namespace {

using fake_wall_clock::EndOneSleep;
using fake_wall_clock::SomebodySleeps;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

constexpr char kCreate[] = "marker Global\\SetOpenTCPConnections";
constexpr char kClose[] = "close";

// A timer whose worker sleeps no more once the test has seen enough: the destructor waits for it.
struct Timer : CElapsedTimer {
  Timer() : CElapsedTimer(nullptr) {}
  ~Timer() override { fake_wall_clock::EndAllSleeps(); }
};

class ElapsedTimerTest : public testing::Test {
 protected:
  ElapsedTimerTest() {
    fake_named_object::Reset();
    fake_wall_clock::Reset();
  }
  ~ElapsedTimerTest() override {
    fake_wall_clock::EndAllSleeps();
    FakeTrace::Reset();
  }

  static bool IsAdvertised() {
    int open = 0;
    for (const std::string& call : fake_named_object::Calls()) {
      open += call == kCreate ? 1 : 0;
      open -= call == kClose ? 1 : 0;
    }
    return open > 0;
  }

  // The worker ends by itself soon after its last sleep.
  static bool BecomesSilent() {
    for (int i = 0; i < 500 && IsAdvertised(); ++i) platform::SleepMilliseconds(2);
    return !IsAdvertised();
  }
};

TEST_F(ElapsedTimerTest, AStartAdvertisesAndTheLimitEndsIt) {
  Timer timer;
  EXPECT_EQ(timer.start(3), 0);
  EXPECT_TRUE(IsAdvertised());
  ASSERT_TRUE(SomebodySleeps());
  fake_wall_clock::Move(3);
  EndOneSleep();
  ASSERT_TRUE(SomebodySleeps()) << "what counts is the time before the sleep";
  EXPECT_TRUE(IsAdvertised());
  EndOneSleep();
  EXPECT_TRUE(BecomesSilent());
}

TEST_F(ElapsedTimerTest, ALimitOfNothingIsLookedAtAfterASleepAsAnyOther) {
  Timer timer;
  EXPECT_EQ(timer.start(0), 0);
  ASSERT_TRUE(SomebodySleeps());
  EXPECT_TRUE(IsAdvertised());
  EndOneSleep();
  EXPECT_TRUE(BecomesSilent());
}

TEST_F(ElapsedTimerTest, TheLimitOfALaterStartDoesNotCount) {
  Timer timer;
  EXPECT_EQ(timer.start(3), 0);
  EXPECT_EQ(timer.start(1000), 0);
  EXPECT_EQ(timer.stop(), 0);
  fake_wall_clock::Move(3);
  fake_wall_clock::EndAllSleeps();
  EXPECT_TRUE(BecomesSilent());
}

TEST_F(ElapsedTimerTest, BehindTheEndItStartsAnew) {
  Timer timer;
  EXPECT_EQ(timer.start(0), 0);
  ASSERT_TRUE(SomebodySleeps());
  EndOneSleep();
  EXPECT_TRUE(BecomesSilent());
  // The worker closes the mutex just before it has ended itself.
  for (int i = 0; i < 500 && timer.stop() == 0; ++i) platform::SleepMilliseconds(2);
  EXPECT_EQ(timer.stop(), -1);
  EXPECT_EQ(timer.start(1000), 0);
  EXPECT_TRUE(IsAdvertised());
  EXPECT_TRUE(SomebodySleeps());
}

TEST_F(ElapsedTimerTest, AStopForEveryStartEndsItBeforeTheLimit) {
  Timer timer;
  EXPECT_EQ(timer.start(1000), 0);
  EXPECT_EQ(timer.start(1000), 0);
  EXPECT_EQ(timer.stop(), 0);
  EndOneSleep();
  EXPECT_TRUE(IsAdvertised());
  EXPECT_EQ(timer.stop(), 0);
  fake_wall_clock::EndAllSleeps();
  EXPECT_TRUE(BecomesSilent());
}

TEST_F(ElapsedTimerTest, ALaterStartMovesTheStartTime) {
  Timer timer;
  EXPECT_EQ(timer.start(5), 0);
  fake_wall_clock::Move(4);
  EXPECT_EQ(timer.start(5), 0);
  fake_wall_clock::Move(4);  // eight after the first start, four after the second
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(SomebodySleeps());
    EndOneSleep();
  }
  EXPECT_TRUE(SomebodySleeps()) << "the worker goes on";
  EXPECT_TRUE(IsAdvertised());
}

TEST_F(ElapsedTimerTest, TwoStartsThatNoStopMatchedKeepTheMutexBehindTheLimit) {
  {
    Timer timer;
    FakeTrace::Collect(TRC_PROGRESS);
    EXPECT_EQ(timer.start(2), 0);
    EXPECT_EQ(timer.start(2), 0);
    ASSERT_TRUE(SomebodySleeps());
    fake_wall_clock::Move(2);
    fake_wall_clock::EndAllSleeps();
    platform::SleepMilliseconds(200);  // the worker ends without a sign
    EXPECT_TRUE(IsAdvertised());
    EXPECT_EQ(timer.stop(), -1);
    // The mutex is held, so another start counts and starts no worker.
    EXPECT_EQ(timer.start(2), 0);
    EXPECT_EQ(FakeTrace::Texts().back(), "start: >> cnt=2");
    EXPECT_EQ(timer.stop(), -1);
  }
  EXPECT_TRUE(IsAdvertised()) << "the destructor forgets the mutex, it does not close it";
}

TEST_F(ElapsedTimerTest, TwoStartsAndOneStopEndAtTheLimit) {
  Timer timer;
  EXPECT_EQ(timer.start(2), 0);
  EXPECT_EQ(timer.start(2), 0);
  EXPECT_EQ(timer.stop(), 0);
  ASSERT_TRUE(SomebodySleeps());
  EndOneSleep();
  ASSERT_TRUE(SomebodySleeps());
  EXPECT_TRUE(IsAdvertised());
  fake_wall_clock::Move(2);
  fake_wall_clock::EndAllSleeps();
  EXPECT_TRUE(BecomesSilent());
}

TEST_F(ElapsedTimerTest, AClockThatWasSetBackJustGoesOn) {
  Timer timer;
  EXPECT_EQ(timer.start(1), 0);
  fake_wall_clock::Move(-100);
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(SomebodySleeps());
    EndOneSleep();
  }
  EXPECT_TRUE(SomebodySleeps()) << "the worker goes on";
  EXPECT_TRUE(IsAdvertised());
}

TEST_F(ElapsedTimerTest, AStopWithoutAWorkerIsRefusedAndTraced) {
  FakeTrace::Collect(TRC_PROGRESS);
  Timer timer;
  EXPECT_EQ(timer.stop(), -1);
  EXPECT_THAT(FakeTrace::Texts(), ElementsAre("stop: not active"));
}

TEST_F(ElapsedTimerTest, AMutexThatCannotBeCreatedIsAFailure) {
  fake_named_object::RefuseMutexes();
  FakeTrace::Collect(TRC_PROGRESS | TRC_ERROR);
  Timer timer;
  EXPECT_EQ(timer.start(1), -1);
  EXPECT_EQ(timer.stop(), -1);
  EXPECT_THAT(
      FakeTrace::Texts(),
      ElementsAre("start: >> Begin", "start: >> Error creating mutex: 5", "stop: not active"));
}

TEST_F(ElapsedTimerTest, TheTextsOfALife) {
  FakeTrace::Collect(TRC_PROGRESS | TRC_ERROR);
  {
    Timer timer;
    EXPECT_EQ(timer.start(1000), 0);
    EXPECT_EQ(timer.start(1000), 0);
    EXPECT_EQ(timer.stop(), 0);
    EXPECT_EQ(timer.stop(), 0);
    fake_wall_clock::EndAllSleeps();
    EXPECT_TRUE(BecomesSilent());
  }
  const std::vector<std::string> texts = FakeTrace::Texts();
  EXPECT_THAT(texts, Contains("start: >> Creating new thread, cnt=1"));
  EXPECT_THAT(texts, Contains("start: >> cnt=2"));
  EXPECT_THAT(texts, Contains("runTimer: >> Begin"));
  EXPECT_THAT(texts, Contains("stop: cnt=1"));
  EXPECT_THAT(texts, Contains("stop: cnt=0"));
  EXPECT_THAT(texts, Contains("runTimer: stop thread!"));
  EXPECT_THAT(texts, Contains("runTimer: cleaning up"));
}

TEST_F(ElapsedTimerTest, AnExpiredRunDoesNotSayThatItWasStopped) {
  FakeTrace::Collect(TRC_PROGRESS);
  {
    Timer timer;
    EXPECT_EQ(timer.start(0), 0);
    fake_wall_clock::EndAllSleeps();
    EXPECT_TRUE(BecomesSilent());
  }
  EXPECT_THAT(FakeTrace::Texts(), Not(Contains("runTimer: stop thread!")));
}

TEST_F(ElapsedTimerTest, DestructionWhileRunningLetsTheWorkerTakeTheMutexAway) {
  auto* const timer = new CElapsedTimer(nullptr);
  EXPECT_EQ(timer->start(1000), 0);
  ASSERT_TRUE(SomebodySleeps());
  std::thread waker([] {
    platform::SleepMilliseconds(100);
    fake_wall_clock::EndAllSleeps();
  });
  delete timer;
  EXPECT_FALSE(IsAdvertised());
  waker.join();
}

}  // namespace
