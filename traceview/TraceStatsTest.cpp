#include "traceview/TraceStats.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace traceview {
namespace {

constexpr std::int64_t kDay = 24ll * 60 * 60 * 1000000;

class TraceStatsTest : public testing::Test {
 protected:
  void Add(const char* function, const char* text, std::int64_t time = -1,
           std::uint32_t thread = 1) {
    TraceLine line;
    line.layout = Layout::kLong;
    line.process = 1;
    line.thread = thread;
    line.function = function;
    line.text = text;
    line.microseconds = time;
    lines_.push_back(line);
  }
  FunctionStats Of(const std::string& name) const {
    for (const FunctionStats& stats : StatsOf(lines_)) {
      if (stats.name == name) return stats;
    }
    ADD_FAILURE() << "no " << name;
    return {};
  }
  std::vector<TraceLine> lines_;
};

TEST_F(TraceStatsTest, LinesCallsAndErrorsAreCounted) {
  Add("F", ">> Start");
  Add("F", "<< RegSetValueBL result = 0x5");
  Add("F", "Exception: RegSetValueBL");
  Add("F", "<< F result = 0x0");
  Add("G", "word");
  const FunctionStats stats = Of("F");
  EXPECT_EQ(stats.lines, 4u);
  EXPECT_EQ(stats.calls, 1u);
  EXPECT_EQ(stats.errors, 1u);
  EXPECT_EQ(stats.notices, 1u);
  EXPECT_EQ(stats.timed, 0u);
  EXPECT_EQ(StatsOf(lines_).front().name, "F");
}

TEST_F(TraceStatsTest, ACallThatOpensWithABlankIsOneAsWell) {
  Add("GetDeviceStateEx", " >> Start", 100);
  Add("GetDeviceStateEx", "<< result = 0x0", 120);
  const FunctionStats stats = Of("GetDeviceStateEx");
  EXPECT_EQ(stats.calls, 1u);
  EXPECT_EQ(stats.longest, 20);
}

TEST_F(TraceStatsTest, StepsOfACallAreNoCalls) {
  Add("BC_Scan", ">> Start", 10);
  Add("BC_Scan", "<< BRDX_ScanBL result = 0x0", 20);
  Add("BC_Scan", ">> intern Send", 30);
  Add("BC_Scan", "<< intern Send", 40);
  EXPECT_EQ(Of("BC_Scan").calls, 1u);
  EXPECT_EQ(Of("BC_Scan").timed, 1u);
  EXPECT_EQ(Of("BC_Scan").longest, 30);
}

TEST_F(TraceStatsTest, AClientThatGoesAwayIsNoError) {
  Add("RunSrvLoop", "fSuccess != Success");
  Add("RunSrvLoop", "cbRet == 0");
  Add("RunSrvLoop", "READING_STATE: Something is wrong: ->DisconnectAndReconnect");
  Add("RunSrvLoop", "Pending: WRITING_STATE: Something is wrong: ->DisconnectAndReconnect");
  EXPECT_EQ(Of("RunSrvLoop").errors, 1u);
  EXPECT_EQ(Of("RunSrvLoop").notices, 0u);
}

TEST_F(TraceStatsTest, ACallEndsWithItsLastResult) {
  Add("F", ">> Start", 100);
  Add("F", "<< step result = 0x0", 110);
  Add("G", ">> other", 111);
  Add("F", "<< F result = 0x0", 150);
  Add("F", ">> Start", 200);
  Add("F", "<< F result = 0x0", 210);
  const FunctionStats stats = Of("F");
  EXPECT_EQ(stats.timed, 2u);
  EXPECT_EQ(stats.shortest, 10);
  EXPECT_EQ(stats.longest, 50);
  EXPECT_EQ(stats.mean, 30);
  EXPECT_EQ(stats.p99, 50);
}

TEST_F(TraceStatsTest, ThreadsAreKeptApartAndMidnightIsCrossed) {
  Add("F", ">> Start", kDay - 10, 1);
  Add("F", ">> Start", kDay - 5, 2);
  Add("F", "<< end", 10, 1);
  Add("F", "<< end", 20, 2);
  const FunctionStats stats = Of("F");
  EXPECT_EQ(stats.timed, 2u);
  EXPECT_EQ(stats.shortest, 20);
  EXPECT_EQ(stats.longest, 25);
}

TEST_F(TraceStatsTest, ACallWithoutAnEndAndAnEndWithoutACallAreNotTimed) {
  Add("F", "<< end", 5);
  Add("F", ">> Start", 10);
  Add("F", ">> Start", 20);
  EXPECT_EQ(Of("F").calls, 2u);
  EXPECT_EQ(Of("F").timed, 0u);
}

TEST_F(TraceStatsTest, NinetyNineOfAHundredCallsAreNoLongerThanP99) {
  std::int64_t now = 0;
  for (int i = 1; i <= 200; ++i) {
    Add("F", ">> Start", now);
    Add("F", "<< end", now + i);
    now += 1000;
  }
  EXPECT_EQ(Of("F").p99, 198);
  EXPECT_EQ(Of("F").longest, 200);
}

}  // namespace
}  // namespace traceview
