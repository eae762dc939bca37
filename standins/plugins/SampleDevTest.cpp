#include <windows.h>

#include <cstdint>

#include "platform/DynamicLibrary.h"
#include "platform/GuardedCall.h"
#include "standins/script/testing/LibraryFixture.h"
#include "tests/support/RegistrySetup.h"

namespace {

constexpr char kArea[] = "SOFTWARE\\Vesmark\\NORVA";
constexpr char kDevice[] = "SOFTWARE\\Vesmark\\NORVA\\LogDevices\\QorlixSample";
constexpr char kName[] = "SOFTWARE\\Vesmark\\NORVA\\LogNames\\QorlixSample";
constexpr char kId[] = "QorlixSample";

Bytes Text(std::string_view text) {
  Bytes bytes{registry_setup::kSz};
  bytes = bytes + TextBytes(text);
  bytes.push_back(0);
  return bytes;
}

class SampleDevTest : public LibraryFixture {
 protected:
  using InstallFunction = std::uint32_t(ENTRY_CDECL*)(const char*, const char*, const char*,
                                                      std::uint32_t);
  using DeinstallFunction = std::uint32_t(ENTRY_CDECL*)(const char*, const char*, const char*,
                                                        std::uint32_t, const char*);
  SampleDevTest() : LibraryFixture("sampledev.dll") { RemoveKeys(); }
  ~SampleDevTest() override { RemoveKeys(); }

  static void RemoveKeys() {
    registry_setup::DeleteTree(kDevice);
    registry_setup::DeleteTree(kName);
    registry_setup::DeleteTree(std::string(kArea) + "\\LogDevices\\a");
  }
  std::uint32_t Call(const char* name, const char* deviceId = kId) {
    const auto function = Find<InstallFunction>(name);
    return function != nullptr ? function("HW1", deviceId, "ENU", 0) : 0xFFFFFFFF;
  }
  std::uint32_t Install(const char* deviceId = kId) { return Call("SampleInstall", deviceId); }
  std::uint32_t Deinstall(const char* deviceId = kId) {
    const auto function = Find<DeinstallFunction>("SampleDeinstall");
    return function != nullptr ? function("HW1", deviceId, "ENU", 0, "1") : 0xFFFFFFFF;
  }
};

TEST_F(SampleDevTest, InstallingCreatesALogicalDeviceAndALogicalNameThatLeadsToIt) {
  EXPECT_EQ(Install(), 0u);
  EXPECT_EQ(registry_setup::Value(kDevice, "HardwareId"), Text("HW1"));
  EXPECT_EQ(registry_setup::Value(kDevice, "Language"), Text("ENU"));
  EXPECT_EQ(registry_setup::Value(kDevice, "InstalledBy"), Text("sampledev"));
  EXPECT_EQ(registry_setup::Value(kName, "LogDevice"), Text(kId));
  EXPECT_EQ(registry_setup::Value(kName, "InstalledBy"), Text("sampledev"));
}

TEST_F(SampleDevTest, InstallingAgainRewritesTheKeys) {
  ASSERT_EQ(Install(), 0u);
  registry_setup::SetValue(kName, "LogDevice", registry_setup::kSz, TextBytes(""));
  EXPECT_EQ(Install(), 0u);
  EXPECT_EQ(registry_setup::Value(kName, "LogDevice"), Text(kId));
}

TEST_F(SampleDevTest, DeinstallingRemovesTheseKeysAndNoOther) {
  const std::string neighbour = std::string(kDevice) + "2";
  registry_setup::CreateKey(neighbour);
  ASSERT_EQ(Install(), 0u);
  EXPECT_EQ(Deinstall(), 0u);
  EXPECT_FALSE(registry_setup::KeyExists(kDevice));
  EXPECT_FALSE(registry_setup::KeyExists(kName));
  EXPECT_TRUE(registry_setup::KeyExists(neighbour));
  registry_setup::DeleteTree(neighbour);
}

TEST_F(SampleDevTest, WhatWasNeverInstalledIsNotFound) { EXPECT_EQ(Deinstall(), 2u); }

TEST_F(SampleDevTest, HalfAnInstallationIsRemovedAsWell) {
  ASSERT_EQ(Install(), 0u);
  registry_setup::DeleteTree(kName);
  EXPECT_EQ(Deinstall(), 0u);
  EXPECT_FALSE(registry_setup::KeyExists(kDevice));
}

TEST_F(SampleDevTest, SomebodyElsesKeysAreLeftAlone) {
  registry_setup::CreateKey(kName);
  EXPECT_EQ(Install(), 183u);
  EXPECT_FALSE(registry_setup::KeyExists(kDevice)) << "the first half is taken back";
  EXPECT_EQ(Deinstall(), 2u);
  EXPECT_TRUE(registry_setup::KeyExists(kName));
}

TEST_F(SampleDevTest, AnIdThatCannotNameAKeyIsInvalid) {
  const std::string tooLong(256, 'x');
  for (const char* id : {static_cast<const char*>(nullptr), "", "a\\b", tooLong.c_str()}) {
    EXPECT_EQ(Install(id), 87u);
    EXPECT_EQ(Deinstall(id), 87u);
  }
  EXPECT_FALSE(registry_setup::KeyExists(std::string(kArea) + "\\LogDevices\\a"));
}

TEST_F(SampleDevTest, EveryCallIsLoggedWithItsArguments) {
  (void)Install(nullptr);
  (void)Deinstall(nullptr);
  EXPECT_EQ(Log(),
            "SampleInstall hardwareId=\"HW1\" deviceId=(null) languageExt=\"ENU\" zero=0 -> 87\n"
            "SampleDeinstall hardwareId=\"HW1\" deviceId=(null) languageExt=\"ENU\" zero=0 "
            "board=\"1\" -> 87\n");
}

TEST_F(SampleDevTest, TheOthersRefuseTakeTimeAndFault) {
  EXPECT_EQ(Call("SampleRefuse"), 1603u);
  const DWORD before = GetTickCount();
  EXPECT_EQ(Call("SampleSlow"), 0u);
  EXPECT_GE(GetTickCount() - before, 1900u);
  std::uint32_t result = 0;
  const auto fault = Find<InstallFunction>("SampleFault");
  ASSERT_NE(fault, nullptr);
  EXPECT_FALSE(GuardedCall(result, [&] { return fault("HW1", kId, "ENU", 0); }));
}

TEST_F(SampleDevTest, TheScriptGivesThePlugInsResult) {
  Script("[answer SampleInstall]\ncall = *\nresult = 3010\n");
  EXPECT_EQ(Install(), 3010u);
  EXPECT_FALSE(registry_setup::KeyExists(kDevice));
}

TEST_F(SampleDevTest, LongNamesOfExportsAreThere) {
  const std::string longest(106, '_');
  EXPECT_EQ(Call(("SampleNameOf127Letters" + longest.substr(1)).c_str()), 1603u);
  EXPECT_EQ(Call(("SampleNameOf128Letters" + longest).c_str()), 1603u);
}

}  // namespace
