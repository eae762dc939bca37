#include "server/HangDetector.h"

#include <gtest/gtest.h>

namespace {

using request_log::Record;

constexpr std::uint32_t kLimitMs = 45000;
constexpr std::uint64_t kStart = 1000000;

class HangDetectorTest : public testing::Test {
 protected:
  // Time passes, and the request of this number is being served; 0 for none.
  bool LookAfter(std::uint64_t milliseconds, std::uint32_t number) {
    now_ += milliseconds;
    const Record record = {.number = number, .beingServed = true};
    return detector_.Look(number != 0 ? &record : nullptr, now_);
  }
  // As many looks as the watch makes. \returns how many of them reported.
  int LooksFor(std::uint64_t milliseconds, std::uint32_t number) {
    int reports = 0;
    for (std::uint64_t passed = 0; passed < milliseconds; passed += detector_.PeriodMs()) {
      if (LookAfter(detector_.PeriodMs(), number)) ++reports;
    }
    return reports;
  }

  HangDetector detector_{kLimitMs};
  std::uint64_t now_ = kStart;
};

TEST_F(HangDetectorTest, ItLooksFourTimesWithinTheLimitAndNeverWithoutAPause) {
  EXPECT_EQ(detector_.PeriodMs(), kLimitMs / 4);
  EXPECT_EQ(HangDetector(500).PeriodMs(), 125u);
  EXPECT_EQ(HangDetector(1).PeriodMs(), 25u);
  EXPECT_EQ(HangDetector(0xFFFFFFFF).PeriodMs(), 0x3FFFFFFFu);
}

TEST_F(HangDetectorTest, AnIdleServerHangsNever) { EXPECT_EQ(LooksFor(3600000, 0), 0); }

TEST_F(HangDetectorTest, ARequestIsReportedAtTheLimitAndNotBefore) {
  EXPECT_FALSE(LookAfter(1, 1));
  EXPECT_FALSE(LookAfter(22000, 1));
  EXPECT_FALSE(LookAfter(22500, 1));
  EXPECT_FALSE(LookAfter(499, 1));
  EXPECT_TRUE(LookAfter(1, 1));
}

TEST_F(HangDetectorTest, AHangIsReportedOnceHoweverLongItLasts) {
  EXPECT_EQ(LooksFor(3600000, 1), 1);
}

TEST_F(HangDetectorTest, ARowOfShortRequestsIsNone) {
  for (std::uint32_t number = 1; number < 100; ++number) EXPECT_EQ(LooksFor(kLimitMs, number), 0);
}

TEST_F(HangDetectorTest, TheNextHangIsReportedAgain) {
  EXPECT_EQ(LooksFor(100000, 1), 1);
  EXPECT_EQ(LooksFor(100000, 2), 1);
  EXPECT_EQ(LooksFor(100000, 0), 0);
  EXPECT_EQ(LooksFor(100000, 3), 1);
}

TEST_F(HangDetectorTest, TimeBeforeARequestDoesNotCount) {
  (void)LooksFor(100000, 0);
  EXPECT_FALSE(LookAfter(100000, 1));
  EXPECT_FALSE(LookAfter(kLimitMs / 4, 1));
}

TEST_F(HangDetectorTest, AMachineThatSleptMakesNoHang) {
  EXPECT_FALSE(LookAfter(1, 1));
  EXPECT_FALSE(LookAfter(8 * 3600000, 1));
  // Half the limit is what it counts for.
  EXPECT_FALSE(LookAfter(kLimitMs / 4, 1));
  EXPECT_TRUE(LookAfter(kLimitMs / 4, 1));
}

}  // namespace
