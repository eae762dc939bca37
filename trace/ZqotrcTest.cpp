#include "trace/Zqotrc.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "tests/fakes/trace/FakeTrace.h"
#include "trace/TraceHost.h"
#include "trace/TraceWriter.h"

namespace {

using FakeTrace::SetText;
using FakeTrace::TheMachine;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kMask[] = "zqserver_level";
constexpr char kFct[] = "Install: ";

/// Tracing to the debugger in the text layout, at all bits.
class ZqotrcTest : public testing::Test {
 protected:
  ZqotrcTest() {
    FakeTrace::Reset();
    SetText("Level", "0xFFFFFFFF");
    SetText(kMask, "0xFFFFFFFF");
    SetText("Output", "DBG");
    SetText("Format", "TEXT");
  }
  ~ZqotrcTest() override { FakeTrace::Reset(); }

  static void Initialise() { zqotrc::Initialise(/*security=*/nullptr, kMask); }
  static std::vector<std::string>& Debugger() { return TheMachine().debugger; }
};

int Counted(int& count) { return ++count; }

// --- The gate ---

TEST_F(ZqotrcTest, BeforeInitialiseNothingIsWanted) { EXPECT_FALSE(zqotrc::Wanted(0xFFFFFFFF)); }

TEST_F(ZqotrcTest, ABitIsWantedWhenTheProgramMaskHoldsIt) {
  SetText(kMask, "0x50");
  Initialise();
  EXPECT_TRUE(zqotrc::Wanted(TRC_ERROR));
  EXPECT_TRUE(zqotrc::Wanted(TRC_PROGRESS));
  EXPECT_FALSE(zqotrc::Wanted(TRC_RESULT));
  EXPECT_FALSE(zqotrc::Wanted(TRC_ENTER));
}

TEST_F(ZqotrcTest, NothingIsWantedAtLevelZero) {
  SetText("Level", "0");
  Initialise();
  EXPECT_FALSE(zqotrc::Wanted(0xFFFFFFFF));
}

TEST_F(ZqotrcTest, ALineThatIsNotWantedEvaluatesNothingAndTakesNoLock) {
  SetText(kMask, "16");
  Initialise();
  int evaluated = 0;
  ZQ_TRACE(TRC_PROGRESS, kFct, "%d", Counted(evaluated));
  EXPECT_EQ(evaluated, 0);
  EXPECT_THAT(TheMachine().waits, IsEmpty());
  EXPECT_THAT(Debugger(), IsEmpty());
}

TEST_F(ZqotrcTest, AWantedLineIsWrittenUnderTheLock) {
  Initialise();
  int evaluated = 0;
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< result = 0x%x", static_cast<unsigned>(Counted(evaluated)));
  EXPECT_THAT(Debugger(), ElementsAre("Install:  << result = 0x1 \n"));
  EXPECT_THAT(TheMachine().waits, ElementsAre(10000u));
  EXPECT_EQ(TheMachine().mutexHolds, 0);
  EXPECT_EQ(evaluated, 1);
}

TEST_F(ZqotrcTest, ATraceCallMayStandWithoutBraces) {
  Initialise();
  if (Debugger().empty())
    ZQ_TRACE(TRC_ERROR, kFct, "first");
  else
    ZQ_TRACE(TRC_ERROR, kFct, "second");
  EXPECT_THAT(Debugger(), ElementsAre("Install:  first \n"));
}

// --- A line ---

TEST_F(ZqotrcTest, ALineCarriesComponentFileLineAndAllLevelBits) {
  SetText("Format", "LONG");
  Initialise();
  const int line = __LINE__ + 1;
  ZQ_TRACE_AS(TRC_PROGRESS, "PST", kFct, "text");
  char expected[100];
  (void)std::snprintf(expected, sizeof(expected),
                      "L QORLIXSR P000004711T000000815 -- PST  0  0000 13:05:09,042 "
                      "ZqotrcTest.c,%05d Install:  text\n",
                      line);
  EXPECT_THAT(Debugger(), ElementsAre(expected));
}

TEST_F(ZqotrcTest, AnAbsentTextIsWrittenAsNull) {
  Initialise();
  const char* volatile absent = nullptr;
  ZQ_TRACE(TRC_PROGRESS, kFct, "Parameter=%s", static_cast<const char*>(absent));
  EXPECT_THAT(Debugger(), ElementsAre("Install:  Parameter=(null) \n"));
}

TEST_F(ZqotrcTest, AClientTextOfEightKibibytesIsCut) {
  Initialise();
  const std::string client(8192, 'c');
  ZQ_TRACE(TRC_PROGRESS, kFct, "%s", client.c_str());
  EXPECT_THAT(Debugger(), ElementsAre("Install:  " + std::string(256, 'c') + " \n"));
}

TEST_F(ZqotrcTest, ErrnoAndTheLastErrorStayAsTheyWere) {
  Initialise();
  errno = EDOM;
  zqotrc::SetLastErrorCode(1234);
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_EQ(errno, EDOM);
  EXPECT_EQ(zqotrc::LastErrorCode(), 1234u);
  EXPECT_EQ(Debugger().size(), 1u);
}

TEST_F(ZqotrcTest, TheTimeLayoutDividesTheCounterByItsFrequency) {
  SetText("Format", "TIME");
  TheMachine().frequency = 1000;
  TheMachine().moment.counter = 1500;
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_THAT(Debugger(), ElementsAre("T QORLIXSR -- SRV  0  0000 00001.500000 Install:  text\n"));
}

TEST_F(ZqotrcTest, WithoutACounterTheFrequencyIsOne) {
  SetText("Format", "TIME");
  TheMachine().frequency = 0;
  TheMachine().moment.counter = 7;
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_THAT(Debugger(), ElementsAre("T QORLIXSR -- SRV  0  0000 00007.000000 Install:  text\n"));
}

// --- Filters ---

class ZqotrcFilterTest : public ZqotrcTest {
 protected:
  static bool Passes(const char* filter, const char* patterns) {
    SetText(filter, patterns);
    Initialise();
    ZQ_TRACE(TRC_PROGRESS, "Install", "abcdef");
    return !Debugger().empty();
  }
};

TEST_F(ZqotrcFilterTest, TheFunctionHasToMatchAsAWhole) {
  EXPECT_FALSE(Passes("FctName", "INST"));
  EXPECT_TRUE(Passes("FctName", "INST*"));
}

TEST_F(ZqotrcFilterTest, TheComponentHasToMatchAsAWhole) {
  EXPECT_FALSE(Passes("Module", "SR PST"));
  EXPECT_TRUE(Passes("Module", "PST srv"));
}

TEST_F(ZqotrcFilterTest, TheWholeTraceIdHasToMatch) {
  EXPECT_FALSE(Passes("TraceId", "QORLIXSR"));
  EXPECT_TRUE(Passes("TraceId", "qorlixsrv64"));
}

TEST_F(ZqotrcFilterTest, ALeadingPartOfTheTextHasToMatch) {
  EXPECT_FALSE(Passes("String", "BCD"));
  EXPECT_TRUE(Passes("String", "ABC*"));
}

TEST_F(ZqotrcFilterTest, AllFourHaveToPass) {
  SetText("FctName", "INSTALL");
  SetText("Module", "SRV");
  SetText("TraceId", "*64");
  EXPECT_FALSE(Passes("String", "X"));
  EXPECT_TRUE(Passes("String", "A"));
}

// --- Taking a changed configuration up ---

TEST_F(ZqotrcTest, AChangedKeyHasNoEffectByItself) {
  Initialise();
  SetText("Format", "SHORT");
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_THAT(Debugger(), ElementsAre("Install:  text \n"));
}

TEST_F(ZqotrcTest, AnotherProcessesRefreshIsTakenUpByTheNextLine) {
  SetText("Level", "0");
  Initialise();
  SetText("Level", "1");
  SetText("Format", "SHORT");
  ++FakeTrace::Generation();
  EXPECT_TRUE(zqotrc::Wanted(TRC_ERROR));
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_THAT(Debugger(), ElementsAre("S QORLIXSR -- SRV  0  0000 Install:  text\n"));
}

TEST_F(ZqotrcTest, TheLineThatTakesItUpIsDroppedAtLevelZero) {
  Initialise();
  SetText("Level", "0");
  ++FakeTrace::Generation();
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_THAT(Debugger(), IsEmpty());
  EXPECT_FALSE(zqotrc::Wanted(0xFFFFFFFF));
}

TEST_F(ZqotrcTest, KeptTheLineThatTakesItUpPassesWhateverTheProgramMaskSays) {
  Initialise();
  SetText(kMask, "0");
  ++FakeTrace::Generation();
  ZQ_TRACE(TRC_PROGRESS, kFct, "first");
  ZQ_TRACE(TRC_PROGRESS, kFct, "second");
  EXPECT_THAT(Debugger(), ElementsAre("Install:  first \n"));
}

TEST_F(ZqotrcTest, TheLevelOfTheLineCountsOnlyAfterANewReading) {
  Initialise();
  SetText("Level", "4");
  const zqotrc::TraceCall call = {"f", /*level=*/2, "SRV", 0, 0, "f.cpp", 1, "text"};
  zqotrc::Write(call);
  EXPECT_EQ(Debugger().size(), 1u);
  ++FakeTrace::Generation();
  zqotrc::Write(call);
  EXPECT_EQ(Debugger().size(), 1u);
  zqotrc::Write(call);
  EXPECT_EQ(Debugger().size(), 2u);
}

TEST_F(ZqotrcTest, ALineWhoseReasonIsGoneWhenItHasTheLockIsDropped) {
  SetText("Level", "0");
  Initialise();
  zqotrc::TraceLine(kFct, "SRV", "f.cpp", 1, "text");
  EXPECT_THAT(Debugger(), IsEmpty());
}

TEST_F(ZqotrcTest, RefreshAllCountsTheGenerationUpAndReadsAgainAtOnce) {
  Initialise();
  const std::uint32_t before = FakeTrace::Generation();
  SetText(kMask, "16");
  zqotrc::RefreshAll();
  EXPECT_EQ(FakeTrace::Generation(), before + 1);
  EXPECT_TRUE(zqotrc::Wanted(16));
  EXPECT_FALSE(zqotrc::Wanted(64));
}

TEST_F(ZqotrcTest, RefreshAllTellsTheEngineWhenLinesGoThere) {
  SetText("Output", "ZqTRACEENGINE");
  Initialise();
  zqotrc::RefreshAll();
  ASSERT_FALSE(TheMachine().engineSteps.empty());
  EXPECT_EQ(TheMachine().engineSteps.back(), "command 2 Zqsdd_TraceWriterFile");
}

TEST_F(ZqotrcTest, ConsultReadsAgainWhenItsSecondsHavePassed) {
  SetText("Consult", "30");
  Initialise();
  SetText("Format", "SHORT");
  TheMachine().seconds += 29;
  ZQ_TRACE(TRC_PROGRESS, kFct, "early");
  TheMachine().seconds += 1;
  ZQ_TRACE(TRC_PROGRESS, kFct, "due");
  EXPECT_THAT(Debugger(),
              ElementsAre("Install:  early \n", "S QORLIXSR -- SRV  0  0000 Install:  due\n"));
}

TEST_F(ZqotrcTest, ConsultNeverFiresWhileNothingIsWanted) {
  SetText("Consult", "30");
  SetText(kMask, "0");
  Initialise();
  SetText(kMask, "255");
  TheMachine().seconds += 1000;
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_THAT(Debugger(), IsEmpty());
}

TEST_F(ZqotrcTest, ConsultStartsAnewAtEveryReading) {
  SetText("Consult", "30");
  Initialise();
  TheMachine().seconds += 29;
  zqotrc::RefreshAll();
  SetText("Format", "SHORT");
  TheMachine().seconds += 29;
  ZQ_TRACE(TRC_PROGRESS, kFct, "early");
  EXPECT_THAT(Debugger(), ElementsAre("Install:  early \n"));
}

TEST_F(ZqotrcTest, AClockThatIsSetBackDoesNotMakeConsultDue) {
  SetText("Consult", "30");
  Initialise();
  SetText("Format", "SHORT");
  TheMachine().seconds -= 1000;
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_THAT(Debugger(), ElementsAre("Install:  text \n"));
}

TEST_F(ZqotrcTest, WithoutTheSharedCounterTheProcessHasItsOwn) {
  TheMachine().generationError = 5;
  Initialise();
  EXPECT_THAT(Debugger(), ElementsAre("ERROR: Can't create ZqTRC_SECTION, GetLastError()=5 \n"));
  Debugger().clear();

  const std::uint32_t shared = FakeTrace::Generation();
  SetText("Format", "SHORT");
  zqotrc::RefreshAll();
  EXPECT_EQ(FakeTrace::Generation(), shared);
  Debugger().clear();
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_THAT(Debugger(), ElementsAre("S QORLIXSR -- SRV  0  0000 Install:  text\n"));
}

TEST_F(ZqotrcTest, AGenerationThatRunsWildOnlyCostsReadings) {
  Initialise();
  for (const std::uint32_t generation : {0xFFFFFFFFu, 0u, 12345u}) {
    FakeTrace::Generation() = generation;
    ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  }
  EXPECT_EQ(Debugger().size(), 3u);
}

TEST_F(ZqotrcTest, OneMaskIsReadByItsName) {
  SetText("zqother_level", "0x11");
  EXPECT_EQ(zqotrc::ReadMask("zqother_level"), 0x11u);
  EXPECT_EQ(zqotrc::ReadMask("zqmissing_level"), 0u);
}

// --- Shutting down ---

TEST_F(ZqotrcTest, ShutDownGivesMutexAndCounterBack) {
  Initialise();
  zqotrc::ShutDown();
  EXPECT_FALSE(TheMachine().hasMutex);
  const std::uint32_t before = FakeTrace::Generation()++;
  EXPECT_FALSE(zqotrc::Wanted(0));
  FakeTrace::Generation() = before;
}

TEST_F(ZqotrcTest, ALineAfterShutDownIsStillWritten) {
  SECURITY_ATTRIBUTES security = {};
  zqotrc::Initialise(&security, kMask);
  zqotrc::ShutDown();
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< ClosePipes");
  EXPECT_THAT(Debugger(), ElementsAre("Install:  << ClosePipes \n"));
  EXPECT_EQ(TheMachine().mutexSecurity, nullptr);
}

TEST_F(ZqotrcTest, ShutDownWithoutInitialiseDoesNothing) {
  zqotrc::ShutDown();
  EXPECT_FALSE(zqotrc::Wanted(0xFFFFFFFF));
}

// --- Threads ---

TEST_F(ZqotrcTest, LinesOfSeveralThreadsComeWholeEvenWithoutTheMutex) {
  TheMachine().mutexError = 5;
  Initialise();
  Debugger().clear();
  std::vector<std::thread> threads;
  for (const char letter : {'a', 'b', 'c', 'd'}) {
    threads.emplace_back([letter] {
      const std::string text(200, letter);
      for (int line = 0; line < 500; ++line) ZQ_TRACE(TRC_PROGRESS, "f", "%s", text.c_str());
    });
  }
  for (std::thread& thread : threads) thread.join();
  ASSERT_EQ(Debugger().size(), 2000u);
  for (const std::string& line : Debugger()) {
    EXPECT_EQ(line, "f " + std::string(200, line[2]) + " \n");
  }
}

TEST_F(ZqotrcTest, LinesMayBeWrittenWhileTheConfigurationChangesAndTheFacilityShutsDown) {
  Initialise();
  std::thread writer([] {
    for (int line = 0; line < 2000; ++line) ZQ_TRACE(TRC_PROGRESS, "f", "%d", line);
  });
  for (int round = 0; round < 200; ++round) {
    zqotrc::RefreshAll();
    zqotrc::ShutDown();
    Initialise();
  }
  writer.join();
  EXPECT_EQ(Debugger().size(), 2000u);
}

}  // namespace
