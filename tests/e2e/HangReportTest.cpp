#include <windows.h>

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/DebugOutput.h"
#include "tests/e2e/PluginTest.h"
#include "tests/e2e/TraceLines.h"
#include "tests/e2e/TraceSetup.h"
#include "tests/support/RegistryKeyScratch.h"

// What a server tells of a plug-in that does not come back for a while.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Optional;

constexpr char kId[] = "DEV1";
constexpr char kReport[] = "has been running";
constexpr DWORD kStopMs = 5000;

class HangReportTest : public OwnServerActionsTest {
 protected:
  HangReportTest() {
    trace_setup::Replace(AllLinesWith({{"FctName", "WATCHREQ*"}, {"zqserver_level", "16"}}));
    libraries_.Place("sampledev.dll");
    libraries_.Answer("SampleRefuse", "delay = 1500\nresult = 1603");
    devices_.Add(kId, "sampledev.dll,SampleRefuse");
  }
  ~HangReportTest() override {
    client_.Close();
    server_.Kill();
    trace_setup::Clear();
  }

  void StartWithLimit(const char* milliseconds) {
    settings_.SetRaw("HangReportMs", REG_DWORD, Wire(milliseconds));
    Start();
  }
  // A request that takes a second and a half.
  void Hang() {
    ASSERT_TRUE(client_.Send(kInstall.Request(kId)));
    ASSERT_TRUE(client_.YieldsNext(Answer(1603), 2 * kPatienceMs));
  }
  std::vector<std::string> Told() const { return output_.TextsOf(server_.Id(), kReport); }
  static Lines Traced() { return TextLines(trace_setup::ReadFile(trace_setup::FileName(1))); }

  // The two are the same but for what is in front.
  static std::string Report(const std::string& before, const std::string& behind) {
    return before + "opCode 0x5 from Connection\\(\\d+\\), client process " +
           std::to_string(GetCurrentProcessId()) + ", has been running for more than 500 ms" +
           behind;
  }

  const char* const kHalfASecond = "F4010000";
  Devices devices_;
  RegistryKeyScratch settings_{"SOFTWARE\\Vesmark\\Shared Tools\\MIREL"};
  const DebugOutput output_;
};

TEST_F(HangReportTest, AHangIsToldOnceOnTheTraceAndToTheDebugger) {
  StartWithLimit(kHalfASecond);
  Hang();
  EXPECT_THAT(Told(), ElementsAre(MatchesRegex(Report("QorlixSRV: ", "\n"))));
  EXPECT_THAT(Traced(), ElementsAre(MatchesRegex(Report(".*WatchRequest: +", ".*"))));
}

TEST_F(HangReportTest, ItIsToldWhileItLasts) {
  libraries_.Answer("SampleRefuse", "delay = 4000\nresult = 1603");
  StartWithLimit(kHalfASecond);
  ASSERT_TRUE(client_.Send(kInstall.Request(kId)));
  EXPECT_THAT(output_.Await(server_.Id(), kReport), testing::SizeIs(1));
  EXPECT_EQ(client_.Waiting(), 0u);
}

TEST_F(HangReportTest, ShortRequestsAreNotTold) {
  StartWithLimit(kHalfASecond);
  const ULONGLONG end = GetTickCount64() + 1500;
  while (GetTickCount64() < end) ASSERT_TRUE(client_.IsServed());
  Sleep(1000);  // idle
  EXPECT_THAT(Told(), IsEmpty());
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(HangReportTest, TheNextHangIsToldAgain) {
  StartWithLimit(kHalfASecond);
  Hang();
  ASSERT_TRUE(client_.IsServed());
  Hang();
  EXPECT_THAT(Told(), testing::SizeIs(2));
  EXPECT_THAT(Traced(), testing::SizeIs(2));
}

TEST_F(HangReportTest, WithoutALimitNothingIsTold) {
  StartWithLimit("00000000");
  const std::uint32_t threads = server_.ThreadCount();
  Hang();
  EXPECT_THAT(Told(), IsEmpty());
  EXPECT_THAT(Traced(), IsEmpty());

  client_.Close();
  server_.Kill();
  StartWithLimit(kHalfASecond);
  EXPECT_EQ(server_.ThreadCount(), threads + 1);
}

TEST_F(HangReportTest, TheOrdinaryLimitIsNotReachedSoSoon) {
  Start();
  Hang();
  EXPECT_THAT(Told(), IsEmpty());
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(HangReportTest, AStopDoesNotWaitForTheNextLookOfTheWatch) {
  Start();
  const ULONGLONG start = GetTickCount64();
  ASSERT_TRUE(client_.Send(Wire("FD00 FD000000")));
  EXPECT_THAT(server_.ExitCode(kStopMs), Optional(1u));
  EXPECT_LT(GetTickCount64() - start, 2000u);
}

// Somebody keeps the lock of the trace, for which the watch waits ten seconds: the debugger is told
// all the same, and the stop waits for the watch no longer than a second.
TEST_F(HangReportTest, AWatchThatWaitsForTheTraceHoldsUpNobody) {
  StartWithLimit(kHalfASecond);
  const TraceMutex nobodyTraces;
  ASSERT_TRUE(client_.Send(kInstall.Request(kId)));
  EXPECT_THAT(output_.Await(server_.Id(), kReport), testing::SizeIs(1));
  ASSERT_TRUE(client_.YieldsNext(Answer(1603)));
  ASSERT_TRUE(client_.IsServed());
  ASSERT_TRUE(client_.Send(Wire("FD00 FD000000")));
  EXPECT_THAT(server_.ExitCode(kStopMs), Optional(1u));
}

}  // namespace
}  // namespace e2e
