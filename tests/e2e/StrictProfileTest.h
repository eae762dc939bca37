#ifndef TESTS_E2E_STRICTPROFILETEST_H_
#define TESTS_E2E_STRICTPROFILETEST_H_

#include <windows.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/e2e/EventLogTail.h"
#include "tests/e2e/PluginTest.h"
#include "tests/support/RegistryKeyScratch.h"
#include "tests/support/RestrictedProcess.h"

namespace e2e {

inline constexpr char kSettings[] = "SOFTWARE\\Vesmark\\Shared Tools\\MIREL";
inline constexpr char kTrace[] = "SOFTWARE\\Vesmark\\NORVA\\TrcParams";
inline constexpr std::uint32_t kExitMs = 5000;

/// Whether clients are administrators.
enum class Client { Administrator, Other };

inline bool TakesTheServersTokenForTheClients() {
  return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}

/// A server of its own with one of the profiles, a device D and a device OUT whose plug-in lies
/// outside the system directory.
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

  static Bytes SetValue(const std::string& path, const std::string& name,
                        const std::string& text = "sampledev.dll,SampleRefuse") {
    return Wire("0300") + Text(path) + Text(name) + Text(text);
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
    EXPECT_THAT(Reports(),
                testing::ElementsAre("Strict profile " + report + ", asked for by process " +
                                     std::to_string(GetCurrentProcessId())));
  }
  void ExpectNoReport() { EXPECT_THAT(Reports(), testing::IsEmpty()); }

  void ExpectAllDone() {
    for (const Asked& asked : ForAdministrators()) EXPECT_TRUE(IsAnswered(asked.request, 0));
    EXPECT_FALSE(devices_.Registry().Value(std::string(kDeviceKeys) + "D", "Installer"));
    EXPECT_FALSE(devices_.Registry().HasKey(std::string(kDeviceKeys) + "D\\" + kDeviceKeys + "D"));
    EXPECT_TRUE(devices_.Registry().HasKey(std::string(kTrace) + "\\x"));
  }

  void ExpectStops() {
    ASSERT_TRUE(client_.Send(Wire("FD00 FD000000")));
    EXPECT_TRUE(client_.IsBroken());
    EXPECT_THAT(server_.ExitCode(kExitMs), testing::Optional(1u));
  }

  const std::string kOutside =
      "a plug-in from outside the system directory: " + StandIns::InSystemDirectory("") +
      "..\\sampledev.dll";
  RegistryKeyScratch settings_{kSettings};
  Devices devices_;
  EventLogTail log_;
};

/// Clients who are no administrators.
///
/// Wine takes the server's own token for that of every client. So a client who is no administrator
/// is one of a server that runs under a token without that group; Wine lets it change the registry
/// all the same. Elsewhere that server could not serve, and these tests skip.
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

}  // namespace e2e

#endif  // TESTS_E2E_STRICTPROFILETEST_H_
