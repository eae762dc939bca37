#include "tests/e2e/RegistryLink.h"
#include "tests/e2e/StrictProfileTest.h"
#include "tests/e2e/TraceSetup.h"

// Levers that the profile takes away, or leaves.

namespace e2e {
namespace {

// What the profile says of a change of this value.
std::string ChangeOf(const std::string& name) {
  return std::string("a change of the trace key: ") + kTrace + "\\" + name;
}

// --- A ring of the client's size ---

class StrictRingTest : public StrictProfileOthersTest {
 protected:
  static constexpr std::size_t kRingBytes = 200'000'000;

  void Start(const char* profile) {
    StrictProfileOthersTest::Start(profile, Client::Other);
    before_ = server_.MappedBytes();
  }

  // As any client may who is not kept from it. Of each value this is reported, if anything is.
  void Configure(const TraceParameters& parameters, std::uint32_t result, const char* verdict) {
    for (const auto& [name, text] : parameters) {
      EXPECT_TRUE(IsAnswered(SetValue(kTrace, name, text), result));
      if (verdict == nullptr) {
        ExpectNoReport();
      } else {
        ExpectReport(verdict + ChangeOf(name));
      }
    }
    trace_setup::Refresh();
    EXPECT_TRUE(client_.IsServed());
  }
  void AskForRing(std::uint32_t result, const char* verdict) {
    Configure({{"Level", "1"},
               {"zqserver_level", "0xFFFFFFFF"},
               {"Output", "SM"},
               {"sm_size", std::to_string(kRingBytes)}},
              result, verdict);
  }

  bool ItsRingIsMapped() const { return server_.MappedBytes() >= before_ + kRingBytes; }
  static bool ThereIsARing() { return SharedWords(SharedWords::kRing).IsThere(); }

 private:
  std::size_t before_ = 0;
};

TEST_F(StrictRingTest, OffARingOfAClientsSizeStaysMappedUntilTheServerEnds) {
  Start("");
  EXPECT_FALSE(ThereIsARing());
  AskForRing(0, nullptr);
  EXPECT_TRUE(ItsRingIsMapped());
  for (const TraceParameters& back :
       {TraceParameters{{"sm_size", "1000"}}, {{"Output", "DBG"}}, {{"Level", "0"}}}) {
    Configure(back, 0, nullptr);
    EXPECT_TRUE(ItsRingIsMapped()) << back.front().first;
  }
  EXPECT_TRUE(ThereIsARing());
  ExpectStops();
  EXPECT_FALSE(ThereIsARing());
}

TEST_F(StrictRingTest, ReportedARingOfAClientsSizeIsMapped) {
  Start("report");
  AskForRing(0, "would refuse: ");
  EXPECT_TRUE(ItsRingIsMapped());
}

TEST_F(StrictRingTest, EnforcedThereIsNone) {
  Start("enforce");
  AskForRing(5, "refuses: ");
  EXPECT_FALSE(ItsRingIsMapped());
  EXPECT_FALSE(ThereIsARing());
}

// --- As many events as anybody wants ---

class StrictEventTest : public StrictProfileOthersTest {
 protected:
  void ExpectAnEventOfEach(const Bytes& request, std::uint32_t result, const std::string& event) {
    constexpr std::size_t kTimes = 100;
    for (std::size_t i = 0; i < kTimes; ++i) ASSERT_TRUE(IsAnswered(request, result));
    if (!EventLogTail::IsVisible()) return;
    EXPECT_EQ(Reports(), std::vector<std::string>(kTimes, event));
  }
  void ExpectAnEventOfEachOutside() {
    ExpectAnEventOfEach(Wire("0200") + Text("SOFTWARE\\E2E"), 5,
                        "Invalid Access to Reg-Key: SOFTWARE\\E2E");
  }

  const Bytes kChange = SetValue(kTrace, "Mark");
  const std::string kItsEvent =
      ChangeOf("Mark") + ", asked for by process " + std::to_string(GetCurrentProcessId());
};

TEST_F(StrictEventTest, OffEveryRefusalIsAnEventHoweverManyThereAre) {
  Start("", Client::Other);
  ExpectAnEventOfEachOutside();
}

TEST_F(StrictEventTest, ReportedEveryReportIsAnEventTooHoweverManyThereAre) {
  Start("report", Client::Other);
  ExpectAnEventOfEachOutside();
  ExpectAnEventOfEach(kChange, 0, "Strict profile would refuse: " + kItsEvent);
}

TEST_F(StrictEventTest, EnforcedEveryRefusalIsAnEventTooHoweverManyThereAre) {
  Start("enforce", Client::Other);
  ExpectAnEventOfEachOutside();
  ExpectAnEventOfEach(kChange, 5, "Strict profile refuses: " + kItsEvent);
}

// --- Links that an administrator has placed ---

class StrictLinkTest : public StrictProfileOthersTest {};

TEST_F(StrictLinkTest, EnforcedALinkToTheTraceKeyIsFollowedAllTheSame) {
  Start("enforce", Client::Other);
  const std::string path = std::string(kDeviceKeys) + "link";
  const RegistryLink link(path, kTrace);
  EXPECT_TRUE(IsAnswered(SetValue(kTrace, "Mark", "V"), 5));
  ExpectReport("refuses: " + ChangeOf("Mark"));
  EXPECT_TRUE(IsAnswered(SetValue(path, "Mark", "V"), 0));
  EXPECT_EQ(devices_.Registry().Value(kTrace, "Mark"), (StoredValue{kText, Wire("'V' 00")}));
  ExpectNoReport();
}

}  // namespace
}  // namespace e2e
