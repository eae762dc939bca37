#include "trace/TraceLock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fakes/trace/FakeTrace.h"

namespace {

using FakeTrace::TheMachine;
using testing::ElementsAre;
using testing::IsEmpty;
using zqotrc::TraceLock;

constexpr SECURITY_ATTRIBUTES* kNoSecurity = nullptr;

class TraceLockTest : public testing::Test {
 protected:
  TraceLockTest() { FakeTrace::Reset(); }
  ~TraceLockTest() override {
    TheMachine() = {};
    // Whatever was held hostage is free again, and is trusted again.
    for (std::uint32_t line = 0; line <= zqotrc::kProbationLines; ++line) Once();
    FakeTrace::Reset();
  }
  static void Once() { const TraceLock lock(kNoSecurity); }
};

TEST_F(TraceLockTest, TheMutexIsCreatedByTheFirstWhoNeedsIt) {
  SECURITY_ATTRIBUTES attributes = {};
  SECURITY_ATTRIBUTES* const security = &attributes;
  {
    const TraceLock lock(security);
    EXPECT_TRUE(TheMachine().hasMutex);
    EXPECT_EQ(TheMachine().mutexSecurity, security);
    EXPECT_EQ(TheMachine().mutexHolds, 1);
  }
  EXPECT_EQ(TheMachine().mutexHolds, 0);
  EXPECT_THAT(TheMachine().waits, ElementsAre(10000u));
}

TEST_F(TraceLockTest, AnAbandonedMutexIsOwnedLikeAnyOther) {
  TheMachine().waitResults = {WAIT_ABANDONED};
  Once();
  EXPECT_EQ(TheMachine().mutexHolds, 0);
  EXPECT_EQ(TheMachine().waits.size(), 1u);
}

TEST_F(TraceLockTest, AMutexThatWasNotObtainedIsNotReleased) {
  TheMachine().waitResults = {WAIT_TIMEOUT, WAIT_FAILED};
  Once();
  Once();
  EXPECT_EQ(TheMachine().mutexHolds, 0);
}

TEST_F(TraceLockTest, AHostageMutexCostsTheFullWaitOnce) {
  TheMachine().waitResults = {WAIT_TIMEOUT, WAIT_TIMEOUT, WAIT_TIMEOUT};
  for (int line = 0; line < 3; ++line) Once();
  EXPECT_THAT(TheMachine().waits, ElementsAre(10000u, 1u, 1u));
}

TEST_F(TraceLockTest, AHostageMutexIsReportedOnce) {
  TheMachine().waitResults = {WAIT_TIMEOUT, WAIT_TIMEOUT, WAIT_TIMEOUT};
  for (int line = 0; line < 3; ++line) Once();
  EXPECT_THAT(TheMachine().debugger,
              ElementsAre("ERROR: ZqTRC_MUTEX is held by somebody, tracing goes on without it \n"));
}

TEST_F(TraceLockTest, AMutexThatIsHadAgainForAWhileIsWaitedForInFull) {
  TheMachine().waitResults = {WAIT_TIMEOUT};
  Once();
  for (std::uint32_t line = 0; line < zqotrc::kProbationLines; ++line) Once();
  EXPECT_EQ(TheMachine().waits.back(), 1u);
  Once();
  EXPECT_EQ(TheMachine().waits.back(), 10000u);
}

TEST_F(TraceLockTest, WhoLetsGoNowAndThenCostsTheFullWaitOnceAllTheSame) {
  TheMachine().waitResults = {WAIT_TIMEOUT, WAIT_OBJECT_0, WAIT_TIMEOUT, WAIT_OBJECT_0};
  for (int line = 0; line < 5; ++line) Once();
  EXPECT_THAT(TheMachine().waits, ElementsAre(10000u, 1u, 1u, 1u, 1u));
  EXPECT_EQ(TheMachine().debugger.size(), 1u);
}

TEST_F(TraceLockTest, AMutexThatCannotBeCreatedIsReportedOnceAndTriedAgain) {
  TheMachine().mutexError = ERROR_ACCESS_DENIED;
  Once();
  Once();
  EXPECT_THAT(TheMachine().debugger,
              ElementsAre("ERROR: Can't create ZqTRC_MUTEX, GetLastError()=5 \n"));
  EXPECT_THAT(TheMachine().waits, IsEmpty());

  TheMachine().mutexError = 0;
  Once();
  EXPECT_EQ(TheMachine().waits.size(), 1u);
}

TEST_F(TraceLockTest, TheOwnerMayEnterAgain) {
  const TraceLock outer(kNoSecurity);
  {
    const TraceLock inner(kNoSecurity);
    EXPECT_EQ(TheMachine().mutexHolds, 2);
  }
  EXPECT_EQ(TheMachine().mutexHolds, 1);
}

}  // namespace
