#include <windows.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/e2e/StrictProfileTest.h"

// The strict profile as a machine has it: the setting in the registry, real plug-ins, real clients.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

TEST_F(StrictProfileOthersTest, OffEverythingIsDoneAndNothingReported) {
  Start("", Client::Other);
  ExpectAllDone();
  EXPECT_TRUE(IsAnswered(kInstall.Request("OUT"), 7));
  EXPECT_TRUE(IsAnswered(Wire("FD00 00000000"), 1255));
  ExpectStops();
  ExpectNoReport();
}

TEST_F(StrictProfileOthersTest, AnyOtherTextIsOff) {
  Start("enforced", Client::Other);
  ExpectAllDone();
  ExpectStops();
  ExpectNoReport();
}

TEST_F(StrictProfileOthersTest, ReportedEverythingIsDoneAndReported) {
  Start("report", Client::Other);
  for (const Asked& asked : ForAdministrators()) {
    EXPECT_TRUE(IsAnswered(asked.request, 0));
    ExpectReport("would refuse: " + asked.report);
  }
  EXPECT_FALSE(devices_.Registry().Value(std::string(kDeviceKeys) + "D", "Installer"));
  EXPECT_TRUE(IsAnswered(kInstall.Request("OUT"), 7));
  ExpectReport("would refuse: " + kOutside);
  ExpectStops();
  ExpectReport("would refuse: a stop request");
}

TEST_F(StrictProfileOthersTest, EnforcedEverythingIsRefusedReportedAndUnchanged) {
  Start("ENFORCE", Client::Other);
  for (const Asked& asked : ForAdministrators()) {
    EXPECT_TRUE(IsAnswered(asked.request, 5));
    ExpectReport("refuses: " + asked.report);
  }
  RegistryScratch& registry = devices_.Registry();
  EXPECT_EQ(registry.Value(std::string(kDeviceKeys) + "D", "Installer"),
            (StoredValue{kText, Wire("'sampledev.dll,SampleRefuse' 00")}));
  EXPECT_TRUE(registry.HasKey(std::string(kDeviceKeys) + "D\\" + kDeviceKeys + "D"));
  EXPECT_FALSE(registry.HasKey(std::string(kTrace) + "\\x"));
  EXPECT_FALSE(registry.Value(kTrace, "Mark"));

  EXPECT_TRUE(IsAnswered(kInstall.Request("OUT"), 5));
  ExpectReport("refuses: " + kOutside);
  EXPECT_TRUE(IsAnswered(kDeinstall.Request("OUT"), 5));
  ExpectReport("refuses: " + kOutside);
  EXPECT_THAT(libraries_.Calls(), IsEmpty());

  EXPECT_TRUE(IsAnswered(Wire("FD00 FD000000"), 5));
  ExpectReport("refuses: a stop request");
  EXPECT_TRUE(client_.IsServed());
}

TEST_F(StrictProfileOthersTest, EnforcedEverythingElseIsServedAsEver) {
  Start("enforce", Client::Other);
  const std::string device = std::string(kDeviceKeys) + "D";
  EXPECT_TRUE(IsAnswered(SetValue(device, "HardwareID"), 0));
  EXPECT_TRUE(IsAnswered(Wire("0200") + Text(device + "\\new"), 0));
  EXPECT_TRUE(IsAnswered(Wire("0100") + Text(device + "\\new"), 2));
  EXPECT_TRUE(client_.Answers(
      Wire("1600") + Text(device) + Text("Installer"),
      Wire("0400 00000000") + Text("sampledev.dll,SampleRefuse") + Wire("1A000000")));
  EXPECT_TRUE(IsAnswered(kInstall.Request("D"), 7));
  EXPECT_TRUE(client_.Answers(Wire("FD00"), Answer(5) + Answer(5) + Answer(8602)));
  ExpectNoReport();
}

TEST_F(StrictProfileTest, EnforcedAnAdministratorIsServedAsEver) {
  Start("enforce", Client::Administrator);
  ExpectAllDone();
  EXPECT_TRUE(IsAnswered(Wire("FD00 00000000"), 1255));
  ExpectStops();
  ExpectNoReport();
}

TEST_F(StrictProfileTest, EnforcedAnAdministratorsPluginHasToLieInTheSystemDirectoryToo) {
  Start("enforce", Client::Administrator);
  EXPECT_TRUE(IsAnswered(kInstall.Request("D"), 7));
  libraries_.ForgetCalls();
  EXPECT_TRUE(IsAnswered(kInstall.Request("OUT"), 5));
  ExpectReport("refuses: " + kOutside);
  EXPECT_THAT(libraries_.Calls(), IsEmpty());
}

// Wine lets everybody be the first; a system that does not ends this server instead.
TEST_F(StrictProfileTest, EnforcedAPipeWhoseNameIsTakenIsNotServed) {
  settings_.SetText("StrictProfile", "enforce");
  const HANDLE taken = CreateNamedPipeA(kPipeName, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE,
                                        PIPE_UNLIMITED_INSTANCES, 64, 64, 0, nullptr);
  ASSERT_NE(taken, INVALID_HANDLE_VALUE);
  if (TakesTheServersTokenForTheClients()) {
    CloseHandle(taken);
    GTEST_SKIP() << "this system does not look at the flag";
  }
  ASSERT_TRUE(server_.StartWithoutEvent());
  EXPECT_THAT(server_.ExitCode(kExitMs), Optional(1u));
  CloseHandle(taken);
}

// --- A pipe without its descriptor ---

class StrictDescriptorTest : public StrictProfileTest {
 protected:
  // The step of building the descriptor that fails without a word.
  static constexpr ServerProcess::Failure kNoAccessList = {"advapi32.dll", "SetEntriesInAclA",
                                                           ERROR_NOT_ENOUGH_MEMORY, 16};
  static constexpr char kWhat[] =
      "to serve a pipe without its access list: \\\\.\\pipe\\QorlixSRVPIPE32";

  // The server starts, serves a client, and has reported this.
  void ExpectServed(const std::vector<std::string>& reports) {
    ASSERT_TRUE(server_.StartWith(kNoAccessList));
    ASSERT_TRUE(client_.Connect());
    EXPECT_TRUE(client_.IsServed());
    if (!EventLogTail::IsVisible()) return;
    EXPECT_EQ(Reports(), reports);
  }
};

TEST_F(StrictDescriptorTest, OffItIsServedAndNotReported) { ExpectServed({}); }

TEST_F(StrictDescriptorTest, ReportedItIsServed) {
  settings_.SetText("StrictProfile", "report");
  ExpectServed({std::string("Strict profile would refuse: ") + kWhat});
}

TEST_F(StrictDescriptorTest, EnforcedTheServerEndsWithTheErrorOfADescriptor) {
  settings_.SetText("StrictProfile", "enforce");
  EXPECT_FALSE(server_.StartWith(kNoAccessList));
  EXPECT_THAT(server_.ExitCode(kExitMs), Optional(1338u));
  EXPECT_EQ(client_.TryConnect(), static_cast<std::uint32_t>(ERROR_FILE_NOT_FOUND));
  if (!EventLogTail::IsVisible()) return;
  EXPECT_THAT(Reports(), ElementsAre(std::string("Strict profile refuses: ") + kWhat));
}

// --- A client whose identity cannot be told ---

class StrictIdentityTest : public StrictProfileTest {
 protected:
  void StartEnforcedWith(const ServerProcess::Failure& failure) {
    settings_.SetText("StrictProfile", "enforce");
    ASSERT_TRUE(server_.StartWith(failure));
    ASSERT_TRUE(client_.Connect());
    ASSERT_TRUE(client_.IsServed());
  }
};

TEST_F(StrictIdentityTest, OneWhoCannotBeImpersonatedIsNoAdministrator) {
  StartEnforcedWith({"advapi32.dll", "ImpersonateNamedPipeClient", FALSE, 4});
  EXPECT_TRUE(IsAnswered(Wire("FD00 FD000000"), 5));
  ExpectReport("refuses: a stop request");
}

TEST_F(StrictIdentityTest, OneWhoseTokenCannotBeOpenedIsNoAdministrator) {
  StartEnforcedWith({"advapi32.dll", "OpenThreadToken", FALSE, 16});
  EXPECT_TRUE(IsAnswered(Wire("FD00 FD000000"), 5));
  ExpectReport("refuses: a stop request");
}

TEST_F(StrictIdentityTest, OneWhoseGroupsCannotBeToldIsNoAdministrator) {
  StartEnforcedWith({"advapi32.dll", "CheckTokenMembership", FALSE, 12});
  EXPECT_TRUE(IsAnswered(Wire("FD00 FD000000"), 5));
  ExpectReport("refuses: a stop request");
}

TEST_F(StrictIdentityTest, AServerThatCannotBeItselfAgainEnds) {
  StartEnforcedWith({"advapi32.dll", "RevertToSelf", FALSE, 0});
  ASSERT_TRUE(client_.Send(Wire("FD00 FD000000")));
  EXPECT_TRUE(client_.IsBroken());
  EXPECT_THAT(server_.ExitCode(kExitMs), Optional(1368u));
}

}  // namespace
}  // namespace e2e
