#include <windows.h>

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/ActionTraceTest.h"
#include "tests/e2e/RestartTest.h"

// What a silent restart traces, on the serving thread and in its worker, and the diagnostic command
// as far as it shows nothing.

namespace e2e {
namespace {

using restart::Ask;
using restart::Begin;
using restart::NamedEvent;

class TraceRestartTest : public ActionTraceTest {
 protected:
  static std::string Load(const std::string& library) {
    return "LoadLibrary(" + StandIns::InSystemDirectory(library) + ")";
  }

  void ExpectWorker(const BitLines& lines) { ExpectLines(Begin("CP", kEvent), 6, lines, kWorker); }

  // Of every test its own: what one leaves in the list is not the next one's.
  const std::string kEvent =
      std::string("QorlixE2E") + testing::UnitTest::GetInstance()->current_test_info()->name();
  const Of kRestart{"SilentRestart: "}, kResult{"GetSilentRestartResult: "};
  const Of kWork{"RunSilentRestart: "};
  const BitLines kRestarts = {kWork(kStep, Load("rstagent9.dll")),
                              kWork(kStep, "GetProcAddress(DllEntryFktSilent)"),
                              kWork(kStep, "--> DllEntryFktSilent(CP)")};
  const BitLines kChecks = {kWork(kStep, Load("ringdiag.dll")),
                            kWork(kStep, "GetProcAddress(EpIsCpInRing)"),
                            // Kept: the text of the restart.
                            kWork(kStep, "--> DllEntryFktSilent(CP)")};
  // Kept: a success at the bit of failures.
  const BitLines kSignals = {kWork(kError, "successfully SetEvent: " + kEvent + ' ')};
};

TEST_F(TraceRestartTest, TheServingThreadTracesTheStartAndTheReply) {
  // The event exists, and the worker is filtered away.
  NamedEvent event(kEvent);
  ExpectLines(Begin("CP", kEvent), 6,
              BitLines{kRestart(kStep, ">> Start"), kRestart(kStep, "Start RunSilentRestart!")} +
                  SendsLong("0x0") + BitLines{kRestart(kStep, "<< SilentRestart result = 0x0")});
}

TEST_F(TraceRestartTest, FieldsThatCannotBeReadAreTraced) {
  const auto refused = [&](const Bytes& request, const Of& function, const BitLine& reader,
                           const std::string& field) {
    ExpectLines(request, 6,
                BitLines{function(kStep, ">> Start"), reader,
                         function(kError, "<< ReadString(" + field + ") result = 0x219a ")} +
                    SendsLong("0x219a"));
  };
  const Bytes cut = Wire("0100");
  const Bytes tooLong = Wire("05000000 'abcd'");
  refused(Wire("2001") + cut, kRestart, CutLength(), "LogDevName");
  refused(Wire("2001") + tooLong, kRestart, CutText(), "LogDevName");
  refused(Wire("2001") + Text("CP") + cut, kRestart, CutLength(), "EventName");
  refused(Wire("2001") + Text("CP") + tooLong, kRestart, CutText(), "EventName");
  refused(Wire("2101") + cut, kResult, CutLength(), "pEventName");
  refused(Wire("2101") + tooLong, kResult, CutText(), "pEventName");
  refused(Wire("F000") + tooLong, Of("TestFunction: "), CutText(), "String");
}

TEST_F(TraceRestartTest, TheWorkerTracesBothLibrariesAndTheEvent) {
  NamedEvent event(kEvent);
  ExpectWorker(kRestarts + kChecks + kSignals);
}

TEST_F(TraceRestartTest, TheWorkerTracesNoRingCheckWhereNoneRuns) {
  NamedEvent event(kEvent);
  Libraries().Answer("DllEntryFktSilent", "result = 10006");
  ExpectWorker(kRestarts + kSignals);
}

TEST_F(TraceRestartTest, TheWorkerTracesAnEventThatNobodyMadeAndWhatItRemoved) {
  ExpectWorker(kRestarts + kChecks +
               BitLines{kWork(kError, "Could not set event! ErrorCode: 2"),
                        kWork(kError, "Removed Event: " + kEvent)});
}

TEST_F(TraceRestartTest, TheWorkerTracesAMissingLibraryOrExport) {
  NamedEvent event(kEvent);
  Libraries().Remove("rstagent9.dll");
  ExpectWorker(
      BitLines{kRestarts[0], kWork(kError, "LoadLibrary failed -> SRV_ERR_DLL_NOT_FOUND!")} +
      kSignals);
  Libraries().PlaceTwin("rstagent9.dll");
  ExpectWorker(BitLines{kRestarts[0], kRestarts[1],
                        kWork(kError, "Couldn't get PorcAddress of SilentRestart!")} +
               kSignals);
  Libraries().Place("rstagent9.dll");
}

TEST_F(TraceRestartTest, TheWorkerTracesAnExceptionWithItsLibrary) {
  NamedEvent event(kEvent);
  Libraries().Answer("DllEntryFktSilent", "raise = cxx");
  ExpectWorker(kRestarts +
               BitLines{kWork(kError, "Loading rstagent9.dll threw SRV_ERR_EXCEPTION_OCCURED!")} +
               kSignals);
  Libraries().Answer("EpIsCpInRing", "raise = cxx");
  ExpectWorker(kRestarts + kChecks +
               BitLines{kWork(kError, "Loading ringdiag.dll threw SRV_ERR_EXCEPTION_OCCURED!")} +
               kSignals);
}

TEST_F(TraceRestartTest, AnUnknownNameIsTracedAsNotFound) {
  const BitLines ends =
      SendsLong("0x103") +
      BitLines{kResult(kAnswered, "<< GetSilentRestartResult returning with result: 259 ")};
  ExpectLines(
      Ask("None"), 6,
      BitLines{kResult(kStep, ">> Start"), kResult(kError, "Couldn't find Event : None ")} + ends);
  ExpectLines(
      Wire("2101 FFFF0000"), 6,
      BitLines{kResult(kStep, ">> Start"), kResult(kError, "Couldn't find Event : (null) ")} +
          ends);
}

TEST_F(TraceRestartTest, AResultThatIsFetchedIsTracedAsFound) {
  NamedEvent event(kEvent);
  Libraries().Answer("DllEntryFktSilent", "result = 0xFFFFFFFF");
  // As many results as there are requests for one.
  for (int i = 0; i < 6; ++i) {
    event.Reset();
    ASSERT_TRUE(client_.Answers(Begin("CP", kEvent), restart::kAccepted));
    ASSERT_TRUE(event.IsSet());
  }
  ExpectLines(
      Ask(kEvent), 6,
      BitLines{kResult(kStep, ">> Start"), kResult(kError, "Event found : " + kEvent + ' ')} +
          SendsLong("0xffffffff") +
          BitLines{kResult(kAnswered, "<< GetSilentRestartResult returning with result: -1 ")});
}

}  // namespace
}  // namespace e2e
