#include "server/StrictProfile.h"

#include "tests/fakes/trace/FakeTrace.h"
#include "tests/support/LoopFixture.h"
#include "tests/support/StrictProfileGuard.h"
#include "trace/Zqotrc.h"

// The profile over a whole server: what every request gets, who is asked, what is reported.

namespace {

using fake_event_log::Event;
using fake_pipe_io::Written;
using strict_profile::Mode;
using strict_profile::Threat;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kSource[] = "MIREL RegistryOperation";
constexpr char kCreateFirst[] = "create 0 \\\\.\\pipe\\QorlixSRVPIPE32";

class StrictProfileTest : public LoopFixture {
 protected:
  StrictProfileTest() {
    PipeOf(5).clientProcess = 4321;
    fake_pipe_io::SetClientProcess(5, 4321);
  }

  void Set(const std::string& text) { profile_.Set(text); }

  // What a client of a fresh server reads after this one request.
  Bytes Answer(const Bytes& request) {
    ClientSends(5, request);
    Run();
    return Written(5);
  }

  StrictProfileGuard profile_;
  const Bytes kRefused = Wire("0400 05000000");
  const Bytes kStop = Wire("FD00 FD000000");
  const Bytes kUnconfirmed = Wire("FD00 00000000");
};

// --- The setting ---

TEST_F(StrictProfileTest, WithoutTheValueItIsOff) {
  EXPECT_EQ(strict_profile::g_mode, Mode::Off);
  EXPECT_FALSE(strict_profile::IsOn());
}

TEST_F(StrictProfileTest, TwoWordsInAnyCaseSwitchItOn) {
  Set("report");
  EXPECT_EQ(strict_profile::g_mode, Mode::Report);
  Set("ENFORCE");
  EXPECT_EQ(strict_profile::g_mode, Mode::Enforce);
  Set("Report");
  EXPECT_EQ(strict_profile::g_mode, Mode::Report);
}

TEST_F(StrictProfileTest, AnyOtherTextSwitchesItOff) {
  for (const char* text : {"", "off", "on", "1", " enforce", "enforce ", "enforced", "reports",
                           "a text that is longer than any that means something"}) {
    Set("enforce");
    Set(text);
    EXPECT_EQ(strict_profile::g_mode, Mode::Off) << text;
  }
}

// --- Judging ---

TEST_F(StrictProfileTest, AReportSaysWhatWasAskedForAndByWhom) {
  Set("enforce");
  EXPECT_TRUE(strict_profile::Refuses(Threat::PluginValue, 5, "a\\b", "Installer"));
  EXPECT_TRUE(strict_profile::Refuses(Threat::TraceKey, 5, "a\\%s"));
  EXPECT_TRUE(strict_profile::Refuses(Threat::DeviceTree, 5, "a"));
  EXPECT_TRUE(strict_profile::Refuses(Threat::Stop, 5, ""));
  EXPECT_TRUE(strict_profile::Refuses(Threat::PluginPath, 5, "C:\\x.dll"));
  EXPECT_TRUE(strict_profile::Refuses(Threat::PipeDescriptor, strict_profile::kNoClient, "p"));
  EXPECT_TRUE(strict_profile::Refuses(Threat::FirstInstance, strict_profile::kNoClient, "p"));
  const std::string by = ", asked for by process 4321";
  EXPECT_THAT(
      fake_event_log::Take(),
      ElementsAre(
          Event{kSource,
                "Strict profile refuses: a change of the plug-in value a\\b\\Installer" + by},
          Event{kSource, "Strict profile refuses: a change of the trace key: a\\%s" + by},
          Event{kSource,
                "Strict profile refuses: a deletion below the keys of the devices: a" + by},
          Event{kSource, "Strict profile refuses: a stop request" + by},
          Event{kSource,
                "Strict profile refuses: a plug-in from outside the system directory: C:\\x.dll" +
                    by},
          Event{kSource, "Strict profile refuses: to serve a pipe without its access list: p"},
          Event{kSource,
                "Strict profile refuses: to serve a pipe whose name is taken already: p"}));
}

TEST_F(StrictProfileTest, AReportRefusesNothing) {
  Set("report");
  EXPECT_FALSE(strict_profile::Refuses(Threat::Stop, 5, ""));
  EXPECT_FALSE(strict_profile::Refuses(Threat::FirstInstance, strict_profile::kNoClient, "p"));
  EXPECT_THAT(
      fake_event_log::Take(),
      ElementsAre(
          Event{kSource, "Strict profile would refuse: a stop request, asked for by process 4321"},
          Event{kSource,
                "Strict profile would refuse: to serve a pipe whose name is taken already: p"}));
}

TEST_F(StrictProfileTest, AdministratorsMayDoWhatIsAboutTheClientAndNothingElse) {
  Set("enforce");
  fake_client_identity::SetAdministrator(true);
  for (const Threat threat :
       {Threat::PluginValue, Threat::DeviceTree, Threat::TraceKey, Threat::Stop}) {
    EXPECT_FALSE(strict_profile::Refuses(threat, 5, "x"));
  }
  EXPECT_THAT(fake_event_log::Take(), IsEmpty());
  EXPECT_TRUE(strict_profile::Refuses(Threat::PluginPath, 5, "x"));
  EXPECT_TRUE(strict_profile::Refuses(Threat::FirstInstance, strict_profile::kNoClient, "x"));
}

TEST_F(StrictProfileTest, WhatIsReportedIsTracedAsAnError) {
  Set("report");
  FakeTrace::Collect(TRC_ERROR);
  EXPECT_FALSE(strict_profile::Refuses(Threat::Stop, 5, ""));
  EXPECT_THAT(FakeTrace::Texts(),
              ElementsAre("StrictProfile: Strict profile would refuse: a stop request, asked for "
                          "by process 4321"));
  FakeTrace::Reset();
}

TEST_F(StrictProfileTest, TheLongestTextsAreReportedWhole) {
  Set("enforce");
  const std::string path(260, 'p');
  const std::string name(8159, 'n');
  EXPECT_TRUE(strict_profile::Refuses(Threat::PluginValue, 5, path.c_str(), name.c_str()));
  EXPECT_THAT(fake_event_log::Take(),
              ElementsAre(Event{kSource, "Strict profile refuses: a change of the plug-in value " +
                                             path + "\\" + name + ", asked for by process 4321"}));
}

// --- A stop ---

TEST_F(StrictProfileTest, OffAStopAsksNobody) {
  EXPECT_TRUE(Answer(kStop).empty());
  EXPECT_EQ(Count("close 0"), 1);
  EXPECT_EQ(fake_client_identity::Questions(), 0);
  EXPECT_THAT(fake_event_log::Take(), IsEmpty());
}

TEST_F(StrictProfileTest, EnforcedAStopIsAnsweredWithOneFiveAndTheServerServesOn) {
  Set("enforce");
  for (const Bytes& request : {kStop, kUnconfirmed}) {
    fake_pipe_io::Reset();
    ClientSends(5, request);
    fake_pipe_io::OnWait([] { fake_pipe_io::CompleteRead(5, Wire("1000")); });
    Run();
    EXPECT_EQ(Written(5), kRefused + Wire("0400 00000000"));
    EXPECT_EQ(Count("close 0"), 0);
    EXPECT_EQ(Count("give way"), 0);
    EXPECT_EQ(fake_client_identity::LastPipe(), Pipe[5].hPipe);
    EXPECT_THAT(fake_event_log::Take(),
                ElementsAre(Event{
                    kSource, "Strict profile refuses: a stop request, asked for by process 4321"}));
  }
}

TEST_F(StrictProfileTest, EnforcedTheConfirmationIsStillReadFirst) {
  Set("enforce");
  EXPECT_EQ(Answer(Wire("FD00 FD0000")), kRefused + kRefused + Wire("0400 9A210000"));
  EXPECT_EQ(fake_client_identity::Questions(), 0);
  EXPECT_THAT(fake_event_log::Take(), IsEmpty());
}

TEST_F(StrictProfileTest, ReportedAStopStops) {
  Set("report");
  EXPECT_TRUE(Answer(kStop).empty());
  EXPECT_EQ(Count("close 0"), 1);
  EXPECT_THAT(
      fake_event_log::Take(),
      ElementsAre(Event{kSource,
                        "Strict profile would refuse: a stop request, asked for by process 4321"}));
}

TEST_F(StrictProfileTest, AnAdministratorStopsAndNobodyReportsIt) {
  fake_client_identity::SetAdministrator(true);
  for (const char* mode : {"report", "enforce"}) {
    Set(mode);
    fake_pipe_io::Reset();
    EXPECT_TRUE(Answer(kStop).empty());
    EXPECT_EQ(Count("close 0"), 1);
    EXPECT_THAT(fake_event_log::Take(), IsEmpty());
  }
}

TEST_F(StrictProfileTest, EnforcedAnAdministratorsUnconfirmedStopIsAnsweredAsEver) {
  Set("enforce");
  fake_client_identity::SetAdministrator(true);
  EXPECT_EQ(Answer(kUnconfirmed), Wire("0400 E7040000"));
}

TEST_F(StrictProfileTest, WhatItIsNotAboutAsksNobody) {
  Set("enforce");
  ClientSends(5, "1000");
  for (const char* request : {"FFFF", "0100 0500", "F000 0500"}) {
    fake_pipe_io::OnWait([=] { fake_pipe_io::CompleteRead(5, Wire(request)); });
  }
  Run();
  EXPECT_EQ(Written(5), Wire("0400 00000000 0400 AC210000 0400 9A210000 0400 9A210000"));
  EXPECT_EQ(fake_client_identity::Questions(), 0);
}

// --- The descriptor ---

TEST_F(StrictProfileTest, OffAPipeWithoutADescriptorIsServed) {
  EXPECT_FALSE(strict_profile::RefusesPipe(SECURITY_ATTRIBUTES{}));
  EXPECT_THAT(fake_event_log::Take(), IsEmpty());
}

TEST_F(StrictProfileTest, OnAPipeWithoutADescriptorIsReportedAndEnforcedItIsRefused) {
  const std::string pipe = "to serve a pipe without its access list: \\\\.\\pipe\\QorlixSRVPIPE32";
  Set("report");
  EXPECT_FALSE(strict_profile::RefusesPipe(SECURITY_ATTRIBUTES{}));
  EXPECT_THAT(profile_.Reports(), ElementsAre("Strict profile would refuse: " + pipe));
  Set("enforce");
  EXPECT_TRUE(strict_profile::RefusesPipe(SECURITY_ATTRIBUTES{}));
  EXPECT_THAT(profile_.Reports(), ElementsAre("Strict profile refuses: " + pipe));
}

TEST_F(StrictProfileTest, EnforcedAPipeWithADescriptorIsServed) {
  Set("enforce");
  SECURITY_ATTRIBUTES attributes = {};
  attributes.lpSecurityDescriptor = &attributes;
  EXPECT_FALSE(strict_profile::RefusesPipe(attributes));
  EXPECT_THAT(fake_event_log::Take(), IsEmpty());
}

// --- The first instance ---

TEST_F(StrictProfileTest, OffNoInstanceClaimsToBeTheFirst) {
  fake_pipe_io::TakeName();
  Run();
  EXPECT_EQ(Count(kCreateFirst), 1);
  EXPECT_EQ(Count(std::string(kCreateFirst) + " as first"), 0);
  EXPECT_EQ(fake_pipe_io::Waits(), 1);
}

TEST_F(StrictProfileTest, OnTheFirstInstanceAloneClaimsIt) {
  for (const char* mode : {"report", "enforce"}) {
    Set(mode);
    fake_pipe_io::Reset();
    Run();
    EXPECT_EQ(Count(std::string(kCreateFirst) + " as first"), 1);
    EXPECT_EQ(Count(kCreateFirst), 0);
    EXPECT_EQ(Count("create 1 \\\\.\\pipe\\QorlixSRVPIPE32"), 1);
    EXPECT_EQ(fake_pipe_io::Waits(), 1);
  }
  EXPECT_THAT(fake_event_log::Take(), IsEmpty());
}

TEST_F(StrictProfileTest, ReportedANameThatIsTakenIsServedAllTheSame) {
  Set("report");
  fake_pipe_io::TakeName();
  ClientSends(5, "1000");
  Run();
  EXPECT_EQ(Written(5), Wire("0400 00000000"));
  EXPECT_EQ(Count(kCreateFirst), 1);
  EXPECT_THAT(fake_event_log::Take(),
              ElementsAre(Event{kSource,
                                "Strict profile would refuse: to serve a pipe whose name is taken "
                                "already: \\\\.\\pipe\\QorlixSRVPIPE32"}));
}

TEST_F(StrictProfileTest, EnforcedANameThatIsTakenIsNotServed) {
  Set("enforce");
  fake_pipe_io::TakeName();
  Run();
  EXPECT_EQ(Count(kCreateFirst), 0);
  EXPECT_EQ(Count("connect 0"), 0);
  EXPECT_EQ(fake_pipe_io::Waits(), 0);
  EXPECT_THAT(
      fake_event_log::Take(),
      ElementsAre(Event{kSource,
                        "Strict profile refuses: to serve a pipe whose name is taken already: "
                        "\\\\.\\pipe\\QorlixSRVPIPE32"}));
}

TEST_F(StrictProfileTest, AnInstanceThatFailsOtherwiseIsNoTakenName) {
  Set("enforce");
  fake_pipe_io::Script(fake_pipe_io::Op::CreatePipe, 0, {false, ERROR_NOT_ENOUGH_MEMORY, 0});
  Run();
  EXPECT_EQ(fake_pipe_io::Waits(), 0);
  EXPECT_THAT(fake_event_log::Take(), IsEmpty());
}

}  // namespace
