#include <windows.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/e2e/EventLogTail.h"
#include "tests/e2e/PluginTest.h"
#include "tests/support/RegistryKeyScratch.h"
#include "tests/support/RestrictedProcess.h"

// The strict profile as a machine has it: the setting in the registry, real plug-ins, real clients.
//
// Wine takes the server's own token for that of every client. So a client who is no administrator
// is one of a server that runs under a token without that group; Wine lets it change the registry
// all the same. Elsewhere that server could not serve, and these tests skip.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

constexpr char kSettings[] = "SOFTWARE\\Vesmark\\Shared Tools\\MIREL";
constexpr char kTrace[] = "SOFTWARE\\Vesmark\\NORVA\\TrcParams";
constexpr DWORD kExitMs = 5000;

enum class Client { Administrator, Other };

bool TakesTheServersTokenForTheClients() {
  return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}

class StrictProfileTest : public OwnServerActionsTest {
 protected:
  void Start(const char* profile, Client client) {
    if (*profile != '\0') settings_.SetText("StrictProfile", profile);
    libraries_.PlaceAll();
    libraries_.Place("sampledev.dll", "..\\sampledev.dll");
    if (client == Client::Administrator) {
      ASSERT_TRUE(server_.Start());
    } else {
      const HANDLE token = TokenWithoutAdministrators();
      ASSERT_NE(token, nullptr);
      ASSERT_TRUE(server_.StartUnder(token));
      CloseHandle(token);
    }
    ASSERT_TRUE(client_.Connect());
    ASSERT_TRUE(client_.IsServed());
    libraries_.Answer("SampleRefuse", "result = 7");
    devices_.Add("D", "sampledev.dll,SampleRefuse");
    devices_.Add("OUT", "..\\sampledev.dll,SampleRefuse");
    devices_.Registry().CreateKey(std::string(kDeviceKeys) + "D\\" + kDeviceKeys + "D");
    devices_.Registry().CreateKey(kTrace);
  }

  static Bytes SetValue(const std::string& path, const std::string& name) {
    return Wire("0300") + Text(path) + Text(name) + Text("sampledev.dll,SampleRefuse");
  }
  static Bytes SetBase(const std::string& path, const std::string& name) {
    return Wire("1C00 02000080") + Text(path) + Text(name) + Text("sampledev.dll,SampleRefuse");
  }

  // Everything that the profile keeps from clients who are no administrators, each in another
  // spelling; behind it what the report says of it.
  struct Asked {
    Bytes request;
    std::string report;
  };
  static std::vector<Asked> ForAdministrators() {
    const std::string device = std::string(kDeviceKeys) + "D";
    const std::string twin = "SOFTWARE\\Wow6432Node\\Vesmark\\NORVA\\.\\TrcParams\\x";
    const std::string detour = "software\\vesmark\\norva\\y\\..\\\\trcparams\\";
    return {
        {SetValue(device, "INSTALLER"), "a change of the plug-in value " + device + "\\INSTALLER"},
        {SetBase(device + "\\x\\..", "Deinstaller"),
         "a change of the plug-in value " + device + "\\x\\..\\Deinstaller"},
        {SetValue(kTrace, "Mark"), std::string("a change of the trace key: ") + kTrace + "\\Mark"},
        {Wire("1200") + Text(detour) + Text("mark"),
         "a change of the trace key: " + detour + "\\mark"},
        {Wire("1D00 02000080") + Text(twin), "a change of the trace key: " + twin},
        {Wire("0200") + Text(std::string(kTrace) + "\\x"),
         std::string("a change of the trace key: ") + kTrace + "\\x"},
        {Wire("0100") + Text(device), "a deletion below the keys of the devices: " + device},
        {Wire("1200") + Text(device) + Text("installer"),
         "a change of the plug-in value " + device + "\\installer"},
    };
  }

  testing::AssertionResult IsAnswered(const Bytes& request, std::uint32_t result) {
    return client_.Answers(request, Answer(result));
  }

  // What was reported since the last call.
  std::vector<std::string> Reports() {
    std::vector<std::string> texts = log_.Texts();
    log_ = EventLogTail();
    return texts;
  }
  void ExpectReport(const std::string& report) {
    if (!EventLogTail::IsVisible()) return;
    EXPECT_THAT(Reports(), ElementsAre("Strict profile " + report + ", asked for by process " +
                                       std::to_string(GetCurrentProcessId())));
  }
  void ExpectNoReport() { EXPECT_THAT(Reports(), IsEmpty()); }

  void ExpectAllDone() {
    for (const Asked& asked : ForAdministrators()) EXPECT_TRUE(IsAnswered(asked.request, 0));
    EXPECT_FALSE(devices_.Registry().Value(std::string(kDeviceKeys) + "D", "Installer"));
    EXPECT_FALSE(devices_.Registry().HasKey(std::string(kDeviceKeys) + "D\\" + kDeviceKeys + "D"));
    EXPECT_TRUE(devices_.Registry().HasKey(std::string(kTrace) + "\\x"));
  }

  void ExpectStops() {
    ASSERT_TRUE(client_.Send(Wire("FD00 FD000000")));
    EXPECT_TRUE(client_.IsBroken());
    EXPECT_THAT(server_.ExitCode(kExitMs), Optional(1u));
  }

  const std::string kOutside =
      "a plug-in from outside the system directory: " + StandIns::InSystemDirectory("") +
      "..\\sampledev.dll";
  RegistryKeyScratch settings_{kSettings};
  Devices devices_;
  EventLogTail log_;
};

class StrictProfileOthersTest : public StrictProfileTest {
 protected:
  void SetUp() override {
    if (!TakesTheServersTokenForTheClients()) GTEST_SKIP() << "the server could not serve";
  }
  void TearDown() override {
    devices_.Registry().DeleteTree("SOFTWARE\\Wow6432Node\\Vesmark\\NORVA\\TrcParams");
    devices_.Registry().DeleteTree(kTrace);
  }
};

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
