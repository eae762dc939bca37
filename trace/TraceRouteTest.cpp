#include "trace/TraceRoute.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/fakes/trace/FakeTrace.h"
#include "trace/TraceRing.h"

namespace {

using FakeTrace::TheMachine;
using testing::ElementsAre;
using testing::IsEmpty;
using zqotrc::Deliver;
using zqotrc::PrepareOutput;
using zqotrc::TraceConfig;
using zqotrc::TraceOutput;

constexpr char kRing[] = "Global\\ZqSDD_Trace";

class TraceRouteTest : public testing::Test {
 protected:
  TraceRouteTest() { FakeTrace::Reset(); }
  ~TraceRouteTest() override {
    zqotrc::ReleaseOutputs();
    EXPECT_EQ(TheMachine().views, 0);
    EXPECT_EQ(TheMachine().openSections, 0);
    FakeTrace::Reset();
  }

  void Prepare(TraceOutput output) {
    config_.output = output;
    PrepareOutput(config_, /*security=*/nullptr);
  }
  void Line(std::string_view line) { Deliver(config_, line); }

  /// Somebody else's ring, in a section of `sectionBytes`.
  static FakeTrace::Machine::Section& Foreign(std::uint32_t size, std::uint32_t layout,
                                              std::uint32_t sectionBytes) {
    FakeTrace::Machine::Section& section = TheMachine().sections[kRing];
    section.words.assign((sectionBytes + 3) / 4, 0);
    section.words[zqotrc::kRingSize] = size;
    section.words[zqotrc::kRingAttached] = 1;
    section.words[zqotrc::kRingLayout] = layout;
    return section;
  }
  static std::uint32_t Word(std::uint32_t index) {
    return TheMachine().sections.at(kRing).words[index];
  }
  static std::string RingData() {
    const auto& section = TheMachine().sections.at(kRing);
    return reinterpret_cast<const char*>(section.words.data()) + zqotrc::kRingHeaderSize;
  }

  TraceConfig config_;
};

TEST_F(TraceRouteTest, TheDebuggerGetsTheLineWithALineFeed) {
  Prepare(TraceOutput::kDebugger);
  Line("line");
  EXPECT_THAT(TheMachine().debugger, ElementsAre("line\n"));
}

TEST_F(TraceRouteTest, TheDebuggerGetsTheLongestLineWhole) {
  Prepare(TraceOutput::kDebugger);
  const std::string longest(zqotrc::kLineBufferSize - 1, 'x');
  Line(longest);
  EXPECT_THAT(TheMachine().debugger, ElementsAre(longest + "\n"));
}

TEST_F(TraceRouteTest, ThreeOutputsTakeNothing) {
  for (const TraceOutput output : {TraceOutput::kCom1, TraceOutput::kCom2, TraceOutput::kPipe}) {
    Prepare(output);
    Line("line");
  }
  EXPECT_THAT(TheMachine().debugger, IsEmpty());
  EXPECT_THAT(TheMachine().driver, IsEmpty());
  EXPECT_THAT(TheMachine().fileSteps, IsEmpty());
  EXPECT_THAT(TheMachine().engineSteps, IsEmpty());
  EXPECT_TRUE(TheMachine().sections.empty());
  EXPECT_THAT(TheMachine().events, IsEmpty());
}

TEST_F(TraceRouteTest, FilesGoOnInTheOneThatWasWrittenLast) {
  std::strcpy(config_.filePrefix, "C:\\t");
  TheMachine().files["C:\\t1.TRC"] = {"a", 1};
  TheMachine().files["C:\\t2.TRC"] = {"b", 2};
  Prepare(TraceOutput::kFile);
  Line("line");
  EXPECT_EQ(TheMachine().files["C:\\t2.TRC"].content, "bline\r\n");
}

TEST_F(TraceRouteTest, TheDriverGetsTheLineWithItsTerminator) {
  Prepare(TraceOutput::kDriver);
  Line("line");
  EXPECT_THAT(TheMachine().driver, ElementsAre(std::string("line\0", 5)));
}

TEST_F(TraceRouteTest, AMissingDriverGetsNeitherLinesNorTheErrorLine) {
  TheMachine().driverError = 2;
  Prepare(TraceOutput::kDriver);
  Line("line");
  EXPECT_THAT(TheMachine().driver, IsEmpty());
  EXPECT_THAT(TheMachine().lostToDriver,
              ElementsAre(std::string("E Unable to open VxD, got error code !\0", 39),
                          std::string("line\0", 5)));
}

TEST_F(TraceRouteTest, ADriverWithoutDeviceControlHasAnErrorLineOfItsOwn) {
  TheMachine().driverError = 50;
  Prepare(TraceOutput::kDriver);
  EXPECT_THAT(
      TheMachine().lostToDriver,
      ElementsAre(std::string("E Unable to open VxD, device does not support DeviceIOCTL\0", 58)));
}

TEST_F(TraceRouteTest, AnOpenDriverIsClosedAtTheEnd) {
  Prepare(TraceOutput::kDriver);
  EXPECT_TRUE(TheMachine().driverOpen);
  zqotrc::ReleaseOutputs();
  EXPECT_FALSE(TheMachine().driverOpen);
}

TEST_F(TraceRouteTest, TheEngineIsPreparedAndGetsTheLine) {
  Prepare(TraceOutput::kEngine);
  Line("line");
  EXPECT_EQ(TheMachine().engineRecords.size(), 1u);
  zqotrc::RefreshOutput(config_);
  EXPECT_EQ(TheMachine().engineSteps.back(), "command 2 Zqsdd_TraceWriterFile");
  config_.output = TraceOutput::kDebugger;
  zqotrc::RefreshOutput(config_);
  zqotrc::ReleaseOutputs();
  EXPECT_EQ(TheMachine().engineSteps.back(), "close 77");
}

TEST_F(TraceRouteTest, ANewRingIsOfTheConfiguredSize) {
  config_.ringSize = 1000;
  Prepare(TraceOutput::kRing);
  EXPECT_EQ(TheMachine().sections.at(kRing).words.size(), 1068u / 4);
  EXPECT_EQ(Word(zqotrc::kRingSize), 1000u);
  EXPECT_EQ(Word(zqotrc::kRingAttached), 1u);
  EXPECT_EQ(Word(zqotrc::kRingLayout), 1u);
}

TEST_F(TraceRouteTest, ALineStandsInTheRingWithTwoCharactersBehindIt) {
  config_.ringSize = 1000;
  Prepare(TraceOutput::kRing);
  Line("one");
  Line("two\n");
  EXPECT_EQ(RingData(), "one\r\ntwo\n\r\n");
  EXPECT_EQ(Word(zqotrc::kRingOffset), 11u);
}

TEST_F(TraceRouteTest, ARingThatExistsIsJoinedInItsOwnSize) {
  Foreign(/*size=*/8, /*layout=*/1, /*sectionBytes=*/76);
  config_.ringSize = 1000;
  Prepare(TraceOutput::kRing);
  EXPECT_EQ(Word(zqotrc::kRingAttached), 2u);
  Line("abcdefgh");
  EXPECT_EQ(Word(zqotrc::kRingOffset), 2u);
  EXPECT_EQ(Word(zqotrc::kRingWraps), 1u);
  zqotrc::ReleaseOutputs();
  EXPECT_EQ(Word(zqotrc::kRingAttached), 1u);
}

TEST_F(TraceRouteTest, ARingOfAnotherLayoutIsLeftAlone) {
  Foreign(/*size=*/100, /*layout=*/2, /*sectionBytes=*/168);
  Prepare(TraceOutput::kRing);
  Line("line");
  EXPECT_EQ(Word(zqotrc::kRingAttached), 1u);
  EXPECT_EQ(RingData(), "");
}

TEST_F(TraceRouteTest, ARingThatAnnouncesMoreThanIsMappedIsLeftAlone) {
  for (const std::uint32_t size :
       {101u, 4096u, 0x7FFFFFFFu, 0xFFFFFFBBu, 0xFFFFFFBCu, 0xFFFFFFFFu}) {
    Foreign(size, /*layout=*/1, /*sectionBytes=*/168);
    Prepare(TraceOutput::kRing);
    Line("line");
    EXPECT_EQ(Word(zqotrc::kRingAttached), 1u) << size;
    EXPECT_EQ(TheMachine().openSections, 0) << size;
  }
}

TEST_F(TraceRouteTest, ARingWithoutDataIsLeftAlone) {
  Foreign(/*size=*/0, /*layout=*/1, /*sectionBytes=*/68);
  Prepare(TraceOutput::kRing);
  Line("line");
  EXPECT_EQ(Word(zqotrc::kRingAttached), 1u);
}

TEST_F(TraceRouteTest, ASectionSmallerThanAHeaderIsLeftAlone) {
  TheMachine().sections[kRing].words.assign(4, 0xFFFFFFFF);
  Prepare(TraceOutput::kRing);
  Line("line");
  EXPECT_EQ(Word(0), 0xFFFFFFFF);
}

TEST_F(TraceRouteTest, MemoryThatIsOnlyReservedIsLeftAlone) {
  Foreign(/*size=*/100, /*layout=*/1, /*sectionBytes=*/168).committed = false;
  Prepare(TraceOutput::kRing);
  Line("line");
  EXPECT_EQ(Word(zqotrc::kRingAttached), 1u);
}

TEST_F(TraceRouteTest, WithoutASectionLinesAreDropped) {
  TheMachine().sectionsFail = true;
  Prepare(TraceOutput::kRing);
  Line("line");
  EXPECT_TRUE(TheMachine().sections.empty());
}

TEST_F(TraceRouteTest, ARingThatCouldNotBeJoinedIsTriedAgainAtTheNextReading) {
  Foreign(/*size=*/100, /*layout=*/0, /*sectionBytes=*/168);
  Prepare(TraceOutput::kRing);
  TheMachine().sections[kRing].words[zqotrc::kRingLayout] = 1;
  Prepare(TraceOutput::kRing);
  EXPECT_EQ(Word(zqotrc::kRingAttached), 2u);
}

TEST_F(TraceRouteTest, ARingKeepsItsMappingAcrossReadings) {
  config_.ringSize = 1000;
  Prepare(TraceOutput::kRing);
  config_.ringSize = 2000;
  Prepare(TraceOutput::kRing);
  Prepare(TraceOutput::kDebugger);
  Prepare(TraceOutput::kRing);
  EXPECT_EQ(TheMachine().openSections, 1);
  EXPECT_EQ(Word(zqotrc::kRingAttached), 1u);
  EXPECT_EQ(Word(zqotrc::kRingSize), 1000u);
}

TEST_F(TraceRouteTest, ALineAfterTheReleaseIsDropped) {
  Prepare(TraceOutput::kRing);
  zqotrc::ReleaseOutputs();
  Line("line");
  EXPECT_EQ(RingData(), "");
}

TEST_F(TraceRouteTest, WordsThatOthersWriteWhileWeAreAttachedStayWithoutHarm) {
  config_.ringSize = 100;
  Prepare(TraceOutput::kRing);
  for (std::uint32_t& word : TheMachine().sections.at(kRing).words) word = 0xFFFFFFFF;
  for (int line = 0; line < 10; ++line) Line("0123456789012345678901234567890123456789");
  EXPECT_LE(Word(zqotrc::kRingOffset), 100u);
  EXPECT_EQ(Word(zqotrc::kRingWraps), 0xFFFFFFFF);
}

}  // namespace
