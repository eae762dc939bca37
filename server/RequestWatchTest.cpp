#include "server/RequestWatch.h"

#include <windows.h>

#include <gtest/gtest.h>

#include "server/RequestLog.h"

namespace {

DWORD Handles() {
  DWORD count = 0;
  (void)GetProcessHandleCount(GetCurrentProcess(), &count);
  return count;
}

TEST(RequestWatchTest, AWatchEndsAtOnceHoweverLongItsLimitIs) {
  for (const std::uint32_t limit : {1u, 45000u, 0xFFFFFFFFu}) {
    RequestWatch watch(limit);
    const ULONGLONG start = GetTickCount64();
    EXPECT_TRUE(watch.Stop());
    EXPECT_LT(GetTickCount64() - start, 500u);
    EXPECT_TRUE(watch.Stop()) << "a second time";
  }
}

TEST(RequestWatchTest, WithoutALimitThereIsNoWatch) {
  const DWORD before = Handles();
  RequestWatch watch(0);
  EXPECT_EQ(Handles(), before);
  EXPECT_TRUE(watch.Stop());
}

TEST(RequestWatchTest, ItLeavesNothingBehind) {
  { const RequestWatch first(1000); }
  const DWORD before = Handles();
  for (int i = 0; i < 20; ++i) const RequestWatch watch(1000);
  EXPECT_EQ(Handles(), before);
}

}  // namespace
