#include <windows.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/e2e/ActionsTest.h"
#include "tests/e2e/RestartTest.h"

// A restart, its ring check, its event and its result, one or a few at a time.

namespace e2e {
namespace {

using restart::Ask;
using restart::Begin;
using restart::kAccepted;
using restart::kNothing;
using restart::NamedEvent;
using restart::Result;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

constexpr char kEvent[] = "QorlixE2ERestart";
constexpr char kDevice[] = "CP_L2_1:";

const std::string kRestartCall = "DllEntryFktSilent logDevName=\"CP_L2_1:\" -> ";
const std::string kRingCall = "EpIsCpInRing logDevName=\"CP_L2_1:\" time=6000 -> 0 out=0";

class SilentRestartTest : public ActionsTest {
 protected:
  // One restart from the request to its result, which is there once.
  testing::AssertionResult Yields(std::uint32_t result) {
    NamedEvent event(kEvent);
    auto done = client_.Answers(Begin(kDevice, kEvent), kAccepted);
    if (done) done = event.IsSet();
    if (done) done = client_.Answers(Ask(kEvent), Result(result));
    if (done) done = client_.Answers(Ask(kEvent), kNothing);
    return done;
  }
};

TEST_F(SilentRestartTest, TheResultIsNotThereThenThereOnceThenNotThere) {
  NamedEvent event(kEvent);
  Libraries().Answer("DllEntryFktSilent", "delay = 300\nresult = 17");
  EXPECT_TRUE(client_.Answers(Begin(kDevice, kEvent), Wire("0400 00000000")));
  EXPECT_TRUE(client_.Answers(Ask(kEvent), Wire("0400 03010000")));
  EXPECT_FALSE(event.IsSet(0));
  EXPECT_TRUE(event.IsSet());
  EXPECT_TRUE(client_.Answers(Ask(kEvent), Wire("0400 11000000")));
  EXPECT_TRUE(client_.Answers(Ask(kEvent), Wire("0400 03010000")));
}

TEST_F(SilentRestartTest, TheRingIsCheckedAfterARestartAndBothLibrariesAreFreed) {
  EXPECT_TRUE(Yields(0));
  EXPECT_THAT(Libraries().Calls(), ElementsAre(kRestartCall + "0", kRingCall));
  EXPECT_FALSE(Server().HasModule("rstagent9.dll"));
  EXPECT_FALSE(Server().HasModule("ringdiag.dll"));
}

TEST_F(SilentRestartTest, ARestartThatFailsIsFollowedByTheRingCheckAsWell) {
  for (const std::uint32_t result : {1u, 87u, 259u, 8602u, 8620u, 0xFFFFFFFFu}) {
    Libraries().ForgetCalls();
    Libraries().Answer("DllEntryFktSilent", "result = " + std::to_string(result));
    EXPECT_TRUE(Yields(result));
    EXPECT_THAT(Libraries().Calls(), ElementsAre(kRestartCall + std::to_string(result), kRingCall));
  }
}

// 10006, and the codes that the server itself uses, whoever returns them.
TEST_F(SilentRestartTest, NoRingCheckFollowsTheseResults) {
  for (const std::uint32_t result : {10006u, 8601u, 8603u, 8604u}) {
    Libraries().ForgetCalls();
    Libraries().Answer("DllEntryFktSilent", "result = " + std::to_string(result));
    EXPECT_TRUE(Yields(result));
    EXPECT_THAT(Libraries().Calls(), ElementsAre(kRestartCall + std::to_string(result)));
  }
}

TEST_F(SilentRestartTest, WhatTheRingCheckFindsDoesNotMatter) {
  Libraries().Answer("EpIsCpInRing", "result = 5\nout = 7");
  EXPECT_TRUE(Yields(0));
  EXPECT_THAT(
      Libraries().Calls(),
      ElementsAre(kRestartCall + "0", "EpIsCpInRing logDevName=\"CP_L2_1:\" time=6000 -> 5 out=7"));
}

TEST_F(SilentRestartTest, AMissingRestartLibraryIs8603) {
  Libraries().Remove("rstagent9.dll");
  EXPECT_TRUE(Yields(8603));
  Libraries().Place("rstagent9.dll");
  EXPECT_THAT(Libraries().Calls(), IsEmpty());
}

TEST_F(SilentRestartTest, AMissingRestartExportIs8601) {
  Libraries().PlaceTwin("rstagent9.dll");
  EXPECT_TRUE(Yields(8601));
  Libraries().Place("rstagent9.dll");
  EXPECT_THAT(Libraries().Calls(), IsEmpty());
}

TEST_F(SilentRestartTest, AMissingRingLibraryOrExportLeavesTheResult) {
  Libraries().Answer("DllEntryFktSilent", "result = 17");
  Libraries().Remove("ringdiag.dll");
  EXPECT_TRUE(Yields(17));
  Libraries().PlaceTwin("ringdiag.dll");
  EXPECT_TRUE(Yields(17));
  Libraries().Place("ringdiag.dll");
  EXPECT_THAT(Libraries().Calls(), ElementsAre(kRestartCall + "17", kRestartCall + "17"));
}

// Only the system directory counts.
TEST_F(SilentRestartTest, ALibraryBesideTheServerIsNotTaken) {
  Libraries().Remove("rstagent9.dll");
  Libraries().PlaceBesideServer("rstagent9.dll");
  EXPECT_TRUE(Yields(8603));
  Libraries().RemoveBesideServer("rstagent9.dll");
  Libraries().Place("rstagent9.dll");
}

TEST_F(SilentRestartTest, AnExceptionInEitherLibraryIs8604AndTheServerServes) {
  for (const char* const raise : {"access-violation", "cxx", "divide-by-zero", "int-overflow"}) {
    Libraries().ForgetCalls();
    Libraries().Answer("DllEntryFktSilent", std::string("raise = ") + raise);
    EXPECT_TRUE(Yields(8604)) << raise;
    EXPECT_THAT(Libraries().Calls(), ElementsAre(kRestartCall + "raise " + raise));
    Libraries().Answer("EpIsCpInRing", std::string("raise = ") + raise);
    EXPECT_TRUE(Yields(8604)) << raise;
    EXPECT_FALSE(Server().HasModule("rstagent9.dll"));
    EXPECT_FALSE(Server().HasModule("ringdiag.dll"));
  }
}

TEST_F(SilentRestartTest, AResultWhoseEventNobodyMadeIsDropped) {
  const std::uint32_t threads = Server().ThreadCount();
  EXPECT_TRUE(client_.Answers(Begin(kDevice, kEvent), kAccepted));
  EXPECT_EQ(Libraries().CallsOnceThereAre(2).size(), 2u);
  EXPECT_TRUE(Server().ComesBackToThreadCount(threads)) << "the worker looks for the event last";
  // An event that comes too late does not bring it back.
  NamedEvent event(kEvent);
  EXPECT_FALSE(event.IsSet(200));
  EXPECT_TRUE(client_.Answers(Ask(kEvent), kNothing));
}

TEST_F(SilentRestartTest, AResultOfAnEmptyOrAnUnusableEventNameIsDropped) {
  for (const std::string& name : {std::string(), std::string("No\\Such\\Folder")}) {
    Libraries().ForgetCalls();
    EXPECT_TRUE(client_.Answers(Begin(kDevice, name), kAccepted));
    EXPECT_EQ(Libraries().CallsOnceThereAre(2).size(), 2u);
    Sleep(100);
    EXPECT_TRUE(client_.Answers(Ask(name), kNothing));
  }
}

TEST_F(SilentRestartTest, AbsentTextsStartNothing) {
  NamedEvent event(kEvent);
  const Bytes absent = Long(0xFFFF);
  EXPECT_TRUE(client_.Answers(Wire("2001") + absent + Text(kEvent), Wire("0400 57000000")));
  EXPECT_TRUE(client_.Answers(Wire("2001") + Text(kDevice) + absent, Wire("0400 57000000")));
  EXPECT_TRUE(client_.Answers(Wire("2101") + absent, kNothing));
  EXPECT_FALSE(event.IsSet(100));
  EXPECT_THAT(Libraries().Calls(), IsEmpty());
}

TEST_F(SilentRestartTest, NamesOf259BytesGoAllTheWay) {
  const std::string device(259, 'd');
  const std::string name(259, 'e');
  NamedEvent event(name);
  EXPECT_TRUE(client_.Answers(Begin(device, name), kAccepted));
  EXPECT_TRUE(event.IsSet());
  EXPECT_THAT(Libraries().Calls(),
              ElementsAre("DllEntryFktSilent logDevName=\"" + device + "\" -> 0",
                          "EpIsCpInRing logDevName=\"" + device + "\" time=6000 -> 0 out=0"));
  EXPECT_TRUE(client_.Answers(Ask(name + 'e'), kNothing));
  EXPECT_TRUE(client_.Answers(Ask(name.substr(1)), kNothing));
  EXPECT_TRUE(client_.Answers(Ask(name), Result(0)));
}

// Byte by byte: the system may find an event by a name that the list does not know.
TEST_F(SilentRestartTest, NamesDifferInUpperAndLowerCase) {
  NamedEvent event(kEvent);
  EXPECT_TRUE(client_.Answers(Begin(kDevice, kEvent), kAccepted));
  EXPECT_TRUE(event.IsSet());
  EXPECT_TRUE(client_.Answers(Ask("QORLIXE2ERESTART"), kNothing));
  EXPECT_TRUE(client_.Answers(Ask(kEvent), Result(0)));
}

TEST_F(SilentRestartTest, AnotherClientMayFetchTheResult) {
  NamedEvent event(kEvent);
  Libraries().Answer("DllEntryFktSilent", "result = 17");
  EXPECT_TRUE(client_.Answers(Begin(kDevice, kEvent), kAccepted));
  EXPECT_TRUE(event.IsSet());
  WireClient other;
  ASSERT_TRUE(other.Connect());
  EXPECT_TRUE(other.Answers(Ask(kEvent), Result(17)));
  EXPECT_TRUE(client_.Answers(Ask(kEvent), kNothing));
}

TEST_F(SilentRestartTest, AResultWaitsForWhoeverAsksLater) {
  NamedEvent event(kEvent);
  {
    WireClient leaving;
    ASSERT_TRUE(leaving.Connect());
    Libraries().Answer("DllEntryFktSilent", "delay = 200\nresult = 17");
    EXPECT_TRUE(leaving.Answers(Begin(kDevice, kEvent), kAccepted));
  }
  EXPECT_TRUE(event.IsSet());
  EXPECT_TRUE(client_.Answers(Ask(kEvent), Result(17)));
}

// A client that dies takes its event with it.
TEST_F(SilentRestartTest, AResultOfAClientThatDiedMeanwhileIsDropped) {
  Libraries().Answer("DllEntryFktSilent", "delay = 200\nresult = 17");
  {
    NamedEvent event(kEvent);
    WireClient dying;
    ASSERT_TRUE(dying.Connect());
    EXPECT_TRUE(dying.Answers(Begin(kDevice, kEvent), kAccepted));
  }
  EXPECT_EQ(Libraries().CallsOnceThereAre(2).size(), 2u);
  Sleep(100);
  NamedEvent event(kEvent);
  EXPECT_FALSE(event.IsSet(0));
  EXPECT_TRUE(client_.Answers(Ask(kEvent), kNothing));
}

TEST_F(SilentRestartTest, NobodyWaitsForARestart) {
  NamedEvent event(kEvent);
  Libraries().Answer("DllEntryFktSilent", "delay = 1000");
  EXPECT_TRUE(client_.Answers(Begin(kDevice, kEvent), kAccepted));
  std::vector<WireClient> others;
  for (int i = 0; i < 4; ++i) {
    WireClient other;
    ASSERT_TRUE(other.Connect());
    EXPECT_TRUE(other.IsServed());
  }
  EXPECT_FALSE(event.IsSet(0)) << "served before the restart was over";
  EXPECT_TRUE(event.IsSet());
}

// Calls are counted from the start of the server.
class SharedEventTest : public OwnServerActionsTest {
 protected:
  void SetUp() override {
    libraries_.PlaceAll();
    libraries_.Script(
        "[answer DllEntryFktSilent]\ncall = 1\ndelay = 300\nresult = 11\n"
        "[answer DllEntryFktSilent]\ncall = 2\ndelay = 900\nresult = 12\n");
    OwnServerActionsTest::Start();
    EXPECT_TRUE(client_.Answers(restart::Begin("first", kEvent), kAccepted));
    // The first one must have its number before the second asks for one.
    Sleep(100);
    EXPECT_TRUE(client_.Answers(restart::Begin("second", kEvent), kAccepted));
  }
};

TEST_F(SharedEventTest, TwoResultsUnderOneNameComeInTheOrderFiled) {
  NamedEvent event(kEvent);
  EXPECT_TRUE(event.IsSet());
  event.Reset();
  EXPECT_TRUE(event.IsSet());
  EXPECT_TRUE(client_.Answers(Ask(kEvent), Result(11)));
  EXPECT_TRUE(client_.Answers(Ask(kEvent), Result(12)));
  EXPECT_TRUE(client_.Answers(Ask(kEvent), kNothing));
}

TEST_F(SharedEventTest, AResultThatNobodyWaitsForTakesTheOthersOfItsNameAlong) {
  {
    NamedEvent event(kEvent);
    EXPECT_TRUE(event.IsSet());
  }
  EXPECT_EQ(libraries_.CallsOnceThereAre(4).size(), 4u);
  Sleep(200);
  EXPECT_TRUE(client_.Answers(Ask(kEvent), kNothing));
}

}  // namespace
}  // namespace e2e
