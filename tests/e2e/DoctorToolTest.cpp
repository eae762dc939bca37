#include <windows.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/ServerProcess.h"
#include "tests/e2e/Tool.h"
#include "tests/e2e/WireClient.h"
#include "tests/support/RegistryKeyScratch.h"

// What the real qorlixctl finds out about the real server and about what is wrong with its keys.

namespace e2e {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

constexpr char kDevices[] = "Software\\VESMARK\\NORVA\\DefDevices\\DeviceID";
constexpr char kGate[] = "SOFTWARE\\Vesmark\\Shared Tools\\MIREL";

class DoctorToolTest : public testing::Test {
 protected:
  ~DoctorToolTest() override { server_.Kill(); }

  ServerProcess server_;
  RegistryKeyScratch devices_{kDevices};
  RegistryKeyScratch gate_{kGate};
};

TEST_F(DoctorToolTest, WithoutAServerThereIsNoPipe) {
  devices_.SetText("unused", "");
  EXPECT_THAT(Tool::Run("doctor"), HasSubstr("warning  pipe       there is no pipe"));
}

TEST_F(DoctorToolTest, AServerThatRunsIsSeenFromItsPipe) {
  devices_.SetText("unused", "");
  gate_.SetText("SetupSucceeded", "1");
  gate_.SetText("StrictProfile", "enforce");
  ASSERT_TRUE(server_.Start());
  const std::string shown = Tool::Run("doctor");
  EXPECT_THAT(shown, HasSubstr("belongs to process " + std::to_string(server_.Id()) + ", " +
                               ServerProcess::Path() + "\n"));
  EXPECT_THAT(shown, HasSubstr("ok       pipe       all 64 instances exist, and one was free"));
  EXPECT_THAT(shown, HasSubstr("ok       pipe       the server answers"));
  EXPECT_THAT(shown, ContainsRegex("note     library    .*.boardsvc32.dll is a stand-in"));
  EXPECT_THAT(shown, HasSubstr("ok       set-up     SetupSucceeded is set"));
  EXPECT_THAT(shown, HasSubstr("ok       profile    the strict profile is enforced"));
  EXPECT_THAT(shown, HasSubstr(", 0 errors\n"));
  EXPECT_TRUE(server_.IsRunning());
}

TEST_F(DoctorToolTest, AServerWithoutAFreeInstanceIsAnError) {
  devices_.SetText("unused", "");
  ASSERT_TRUE(server_.Start());
  std::vector<std::unique_ptr<WireClient>> clients;
  for (int i = 0; i < 64; ++i) {
    clients.push_back(std::make_unique<WireClient>());
    ASSERT_TRUE(clients.back()->Connect()) << i;
  }
  EXPECT_THAT(Tool::Run("doctor --timeout 0.2", 1),
              ContainsRegex("error    pipe       all instances of .* are in use"));
}

TEST_F(DoctorToolTest, APluginThatCannotWorkIsFound) {
  const RegistryKeyScratch device(std::string(kDevices) + "\\DOCTOR1");
  device.SetText("HardwareID", "PCI");
  device.SetText("Installer", "..\\doctor.dll");
  device.SetText("Deinstaller", "kernel32.dll,Sleep");
  const std::string shown = Tool::Run("doctor", 1);
  EXPECT_THAT(shown, HasSubstr("error    device     DOCTOR1, Installer: \"..\\doctor.dll\" has no "
                               "comma"));
  EXPECT_THAT(shown, HasSubstr("error    device     DOCTOR1, Installer: \"..\\doctor.dll\" leads "
                               "out of the system directory"));
  EXPECT_THAT(shown, HasSubstr("error    device     DOCTOR1, Installer: ..\\doctor.dll is not in"));
  EXPECT_THAT(shown, HasSubstr("ok       device     DOCTOR1, Deinstaller: kernel32.dll is there"));
}

TEST_F(DoctorToolTest, DecodeNeedsNoServer) {
  EXPECT_THAT(Tool::Run("decode FD00 FD000000"), HasSubstr("confirmation: 253 (0xfd)"));
  EXPECT_THAT(Tool::Run("decode --reply --command TestFunction 0400 E7030000 02000000 4869"),
              HasSubstr("text: 2 bytes: \"Hi\""));
  EXPECT_THAT(Tool::Run("decode FD00", 1), HasSubstr("would answer 5"));
}

}  // namespace
}  // namespace e2e
