#include "doctor/Findings.h"
#include "doctor/PluginValue.h"
#include "doctor/testing/FindingsFixture.h"

// The stack's keys and the plug-ins that they name: one thing that is wrong, one finding.

namespace doctor {
namespace {

class RegistryFindingsTest : public FindingsFixture {
 protected:
  DeviceFacts& device_ = facts_.devices[0];
};

TEST_F(RegistryFindingsTest, AMissingTreeIsAWarning) {
  facts_.hasTree = false;
  ExpectOnly("warning registry: HKEY_LOCAL_MACHINE\\SOFTWARE\\Vesmark\\NORVA is missing", "set-up");
}

TEST_F(RegistryFindingsTest, AMissingGateKeepsTheStartUpRunFromHappening) {
  facts_.setUp = {};
  ExpectOnly("warning set-up: SetupSucceeded is missing", "set-up finish");
}

TEST_F(RegistryFindingsTest, AGateLongerThanTheServerReadsIsAsGoodAsMissing) {
  facts_.setUp.bytes = std::string(8160, '1');
  EXPECT_EQ(Wrong(), "");
  facts_.setUp.bytes = std::string(8161, '1');
  ExpectOnly("warning set-up: SetupSucceeded is too long to be read", "set-up finish");
}

TEST_F(RegistryFindingsTest, TheGateIsReadAsAText) {
  facts_.setUp.bytes = std::string("0\0", 2);
  ExpectOnly("warning set-up: SetupSucceeded is \"0\"", "set-up finish");
  facts_.setUp = {true, 4, std::string("\0\1\0\0", 4)};
  ExpectOnly("warning set-up: SetupSucceeded is empty or 0", "set-up finish");
  facts_.setUp = {true, 4, std::string("\1\0\0\0", 4)};
  EXPECT_EQ(Wrong(), "");
  facts_.setUp.bytes = "00";
  EXPECT_EQ(Wrong(), "");
}

TEST_F(RegistryFindingsTest, TheStrictProfileIsRightWhenItIsOffOrEnforced) {
  facts_.strictProfile = {true, 1, std::string("ENFORCE\0", 8)};
  EXPECT_EQ(Wrong(), "");
  facts_.strictProfile.type = 2;
  EXPECT_EQ(Wrong(), "");
}

TEST_F(RegistryFindingsTest, AStrictProfileThatOnlyReportsIsANote) {
  facts_.strictProfile = {true, 1, "Report"};
  ExpectOnly("note profile: the strict profile reports", "enforce");
}

TEST_F(RegistryFindingsTest, AStrictProfileThatMeansNothingIsAWarning) {
  for (const ValueFacts& setting :
       {ValueFacts{true, 1, "enforced"}, ValueFacts{true, 1, ""}, ValueFacts{true, 4, "enforce"}}) {
    facts_.strictProfile = setting;
    ExpectOnly("warning profile: StrictProfile is none of", "delete it");
  }
}

TEST_F(RegistryFindingsTest, NoDeviceIsANote) {
  facts_.devices.clear();
  ExpectOnly("note device: no device is registered", "");
}

TEST_F(RegistryFindingsTest, ADeviceNeedsItsHardwareId) {
  device_.hardwareId = {};
  ExpectOnly("error device: DEMO1 has no HardwareID", "device's software");
}

TEST_F(RegistryFindingsTest, ADeviceWithoutAPluginIsANote) {
  device_.deinstaller = {};
  ExpectOnly("note device: DEMO1, Deinstaller: not there, so 'deinstall' answers 2",
             "qorlixctl reg set SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID\\DEMO1 Deinstaller");
}

TEST_F(RegistryFindingsTest, APluginWhoseLibraryIsMissingIsAnError) {
  device_.installerKind = ImageKind::Missing;
  ExpectOnly(
      "error device: DEMO1, Installer: sample.dll is not in the system directory: "
      "'install' answers 126",
      "put it there");
}

TEST_F(RegistryFindingsTest, APluginHasToBeA32BitLibraryAndReadable) {
  device_.deinstallerKind = ImageKind::Other;
  ExpectOnly(
      "error device: DEMO1, Deinstaller: sample.dll is no 32-bit library: 'deinstall' "
      "answers 193",
      "32-bit");
  device_.deinstallerKind = ImageKind::Unreadable;
  ExpectOnly("warning device: DEMO1, Deinstaller: sample.dll cannot be read", "icacls");
}

TEST_F(RegistryFindingsTest, APluginNeedsItsCommaAndItsFunction) {
  device_.installer.bytes = "sample.dll";
  ExpectOnly("error device: DEMO1, Installer: \"sample.dll\" has no comma", "LIBRARY,FUNCTION");
  device_.installer.bytes = "sample.dll,";
  ExpectOnly("error device: DEMO1, Installer: \"sample.dll,\" names no function", "FUNCTION");
}

TEST_F(RegistryFindingsTest, APluginMayNotLeadOutOfTheSystemDirectory) {
  for (const char* const text : {"..\\x.dll,F", "../x.dll,F"}) {
    device_.installer.bytes = text;
    ExpectOnly("error device: DEMO1, Installer: \"" + std::string(text) + "\" leads out of",
               "without a path");
  }
}

TEST_F(RegistryFindingsTest, APluginWithAPathIsAWarning) {
  for (const char* const text : {"sub\\x.dll,F", "sub/x.dll,F", "C:x.dll,F"}) {
    device_.installer.bytes = text;
    ExpectOnly("warning device: DEMO1, Installer: \"" + std::string(text) + "\" has a path",
               "without a path");
  }
}

TEST_F(RegistryFindingsTest, ABlankIsPartOfTheName) {
  device_.installer.bytes = "x.dll, F";
  ExpectOnly("warning device: DEMO1, Installer: \"x.dll, F\" has a blank", "LIBRARY,FUNCTION");
}

TEST_F(RegistryFindingsTest, APluginLongerThanTheServerReadsIsAnError) {
  device_.installer.bytes = "x.dll," + std::string(254, 'F');
  EXPECT_EQ(Wrong(), "");
  device_.installer.bytes += 'F';
  for (const ImageKind kind : {ImageKind::Fitting, ImageKind::Missing}) {
    device_.installerKind = kind;
    ExpectOnly("error device: DEMO1, Installer: longer than the 260 bytes", "LIBRARY,FUNCTION");
  }
}

// What lies on the disk does not matter then.
TEST_F(RegistryFindingsTest, APathTooLongToBeMadeIsToldAsTheServerAnswersIt) {
  facts_.systemFolder.path = R"(C:\System)";
  const std::string fits(259 - facts_.systemFolder.path.size() - 1, 'p');
  device_.deinstaller.bytes = fits + ",F";
  EXPECT_EQ(Wrong(), "");
  device_.deinstaller.bytes = fits + "p,F";
  for (const ImageKind kind : {ImageKind::Missing, ImageKind::Fitting}) {
    device_.deinstallerKind = kind;
    ExpectOnly(
        "error device: DEMO1, Deinstaller: the path of its library has 260 bytes, 259 are the "
        "most: 'deinstall' answers 34",
        "LIBRARY,FUNCTION");
  }
}

TEST_F(RegistryFindingsTest, AHardwareIdLongerThanTheServerReadsIsAnError) {
  device_.hardwareId.bytes = std::string(260, 'H');
  EXPECT_EQ(Wrong(), "");
  device_.hardwareId.bytes += 'H';
  ExpectOnly("error device: DEMO1, HardwareID: longer than the 260 bytes", "software anew");
}

TEST(PluginValueTest, ItIsSplitAtItsFirstCommaAndEndsAtItsFirstZeroByte) {
  const PluginValue value = ParsePluginValue(std::string_view("a.dll,F,G\0,H", 12));
  EXPECT_TRUE(value.hasComma);
  EXPECT_EQ(value.library, "a.dll");
  EXPECT_EQ(value.function, "F,G");
  EXPECT_FALSE(ParsePluginValue(std::string_view("a.dll\0,F", 8)).hasComma);
  EXPECT_EQ(ParsePluginValue("").library, "");
}

}  // namespace
}  // namespace doctor
