#include <windows.h>

#include <gtest/gtest.h>

#include "timer/ElapsedTimer.h"

// The real mutex and the real clock.

namespace {

bool IsAdvertised() {
  const HANDLE mutex =
      OpenMutexA(SYNCHRONIZE, /*bInheritHandle=*/FALSE, "Global\\SetOpenTCPConnections");
  if (mutex != nullptr) CloseHandle(mutex);
  return mutex != nullptr;
}

bool BecomesSilent() {
  for (int i = 0; i < 100 && IsAdvertised(); ++i) Sleep(50);
  return !IsAdvertised();
}

TEST(ElapsedTimerWinTest, TheMutexIsThereUntilTheLimitHasPassed) {
  CElapsedTimer timer(nullptr);
  EXPECT_FALSE(IsAdvertised());
  EXPECT_EQ(timer.start(1), 0);
  EXPECT_TRUE(IsAdvertised());
  EXPECT_TRUE(BecomesSilent());
  EXPECT_EQ(timer.stop(), -1);
}

TEST(ElapsedTimerWinTest, TheMutexGoesWithTheLastStop) {
  CElapsedTimer timer(nullptr);
  EXPECT_EQ(timer.start(1000), 0);
  EXPECT_EQ(timer.start(1000), 0);
  EXPECT_EQ(timer.stop(), 0);
  EXPECT_TRUE(IsAdvertised());
  EXPECT_EQ(timer.stop(), 0);
  EXPECT_TRUE(BecomesSilent());
}

}  // namespace
