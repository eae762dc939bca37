#include "traceview/TraceQuery.h"

#include <gtest/gtest.h>

#include <vector>

namespace traceview {
namespace {

constexpr std::int64_t kMinute = 60ll * 1000000;
constexpr std::int64_t kHour = 60 * kMinute;

TraceLine Line(const char* level, const char* function, const char* text) {
  TraceLine line;
  line.layout = Layout::kLong;
  line.level = level;
  line.function = function;
  line.text = text;
  return line;
}

TEST(ParseLevelsTest, NamesCodesAndBitsAreTaken) {
  std::uint32_t levels = 0;
  EXPECT_TRUE(ParseLevels("error,Progress", levels));
  EXPECT_EQ(levels, 80u);
  EXPECT_TRUE(ParseLevels("fr", levels));
  EXPECT_EQ(levels, 16u);
  EXPECT_TRUE(ParseLevels("0x81,8", levels));
  EXPECT_EQ(levels, 0x89u);
  EXPECT_TRUE(ParseLevels("all", levels));
  EXPECT_EQ(levels, 0xFFFFFFFFu);
  for (const char* const wrong : {"", "errors", "error,", ",", "0x", "12x", "4294967296", "-1"}) {
    EXPECT_FALSE(ParseLevels(wrong, levels)) << wrong;
  }
}

TEST(PassesTest, ALevelPassesByItsBit) {
  TraceQuery query;
  query.levels = 16;
  EXPECT_TRUE(Passes(query, Line("FR", "F", "t")));
  EXPECT_FALSE(Passes(query, Line("FM", "F", "t")));
  EXPECT_FALSE(Passes(query, Line("##", "F", "t")));
}

TEST(PassesTest, ALineThatIsOfEveryLevelOrOfNoneThatIsKnownPasses) {
  TraceQuery query;
  for (const std::uint32_t levels : {16u, 0u}) {
    query.levels = levels;
    for (const char* const level : {"--", "??", "", "zz"}) {
      EXPECT_TRUE(Passes(query, Line(level, "F", "t"))) << level << " at " << levels;
    }
  }
}

TEST(PassesTest, ALineWithoutALevelsBitIsAskedForByName) {
  TraceQuery query;
  ASSERT_TRUE(ParseLevels("none", query.levels));
  EXPECT_TRUE(Passes(query, Line("##", "F", "t")));
  EXPECT_FALSE(Passes(query, Line("FR", "F", "t")));
}

TEST(PassesTest, TheFunctionMatchesAsAWholeAndTheTextWithItsBeginning) {
  TraceQuery query;
  query.function = PatternOf("reg_*");
  EXPECT_TRUE(Passes(query, Line("--", "Reg_SetValue", "t")));
  EXPECT_FALSE(Passes(query, Line("--", "ReadString", "t")));
  query.function = PatternOf("Reg_Set");
  EXPECT_FALSE(Passes(query, Line("--", "Reg_SetValue", "t")));
  query = {};
  query.text = PatternOf("<< *result = 0x5");
  EXPECT_TRUE(Passes(query, Line("--", "F", "<< RegSetValueBL result = 0x57")));
  EXPECT_FALSE(Passes(query, Line("--", "F", ">> Start")));
}

TEST(ParseSinceTest, TimesOfDayAndSpans) {
  Since since;
  EXPECT_TRUE(ParseSince("14:05:09,123", since));
  EXPECT_TRUE(since.isTimeOfDay);
  EXPECT_EQ(since.microseconds, 14 * kHour + 5 * kMinute + 9123000);
  EXPECT_TRUE(ParseSince("14:05", since));
  EXPECT_EQ(since.microseconds, 14 * kHour + 5 * kMinute);
  EXPECT_TRUE(ParseSince("10m", since));
  EXPECT_FALSE(since.isTimeOfDay);
  EXPECT_EQ(since.microseconds, 10 * kMinute);
  EXPECT_TRUE(ParseSince("2h", since));
  EXPECT_EQ(since.microseconds, 2 * kHour);
  for (const char* const wrong :
       {"", "10", "m", "10x", "0m", "-1m", "24:00", "12:60", "1:05", "12:", "12:05:", "12:05:09,",
        "12:05:09,12", "12:05:09,1234", "12;05"}) {
    EXPECT_FALSE(ParseSince(wrong, since)) << wrong;
  }
}

class FirstSinceTest : public testing::Test {
 protected:
  void Add(std::int64_t time) {
    lines_.push_back(Line("--", "F", "t"));
    lines_.back().microseconds = time;
  }
  std::ptrdiff_t First(const char* words, std::int64_t now) {
    Since since;
    EXPECT_TRUE(ParseSince(words, since));
    return FirstSince(lines_, since, now);
  }
  std::vector<TraceLine> lines_;
};

TEST_F(FirstSinceTest, ATimeOfDayFindsItsPlace) {
  for (const std::int64_t hour : {9, 10, 11, 12}) Add(hour * kHour);
  EXPECT_EQ(First("10:30", 13 * kHour), 2);
  EXPECT_EQ(First("11:00", 13 * kHour), 2);
  EXPECT_EQ(First("12:30", 13 * kHour), 4);
  EXPECT_EQ(First("08:00", 13 * kHour), 0);
}

TEST_F(FirstSinceTest, MidnightIsCrossed) {
  for (const std::int64_t hour : {22, 23, 0, 1}) Add(hour * kHour);
  EXPECT_EQ(First("22:30", 2 * kHour), 1);
  EXPECT_EQ(First("00:30", 2 * kHour), 3);
  EXPECT_EQ(First("150m", 2 * kHour), 2);
  EXPECT_EQ(First("4h", 2 * kHour), 0);
}

TEST_F(FirstSinceTest, LinesOfYesterdayAloneAreTakenForYesterdays) {
  for (const std::int64_t hour : {20, 22}) Add(hour * kHour);
  EXPECT_EQ(First("21:00", 8 * kHour), 1);
  EXPECT_EQ(First("07:00", 8 * kHour), 2);
}

TEST_F(FirstSinceTest, LinesThatChangedPlacesAreNoMidnight) {
  Add(10 * kHour + 1);
  Add(10 * kHour);
  Add(11 * kHour);
  EXPECT_EQ(First("10:00", 12 * kHour), 0);
}

TEST_F(FirstSinceTest, WithoutATimeOfDayThereIsNoAnswer) {
  Add(-1);
  EXPECT_EQ(First("10:00", 12 * kHour), -1);
  lines_.clear();
  EXPECT_EQ(First("10:00", 12 * kHour), -1);
}

}  // namespace
}  // namespace traceview
