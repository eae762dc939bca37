#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "registry/RegistryOperation.h"
#include "registry/StrictRegistry.h"

// That no name which the registry takes for a protected one is spelled otherwise than the strict
// profile knows: over the real registry and the real canonicaliser.

namespace {

using strict_profile::Threat;

constexpr char kScratch[] = "SOFTWARE\\Vesmark\\NORVA\\StrictTest";

class StrictRegistryWinTest : public testing::Test {
 protected:
  ~StrictRegistryWinTest() override { (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, kScratch); }
};

TEST_F(StrictRegistryWinTest, NoLetterOutsideAsciiIsAnotherCaseOfOneInside) {
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyA(HKEY_LOCAL_MACHINE, kScratch, &key), ERROR_SUCCESS);
  for (wchar_t letter = L'A'; letter <= L'Z'; ++letter) {
    const wchar_t name[] = {letter, L'\0'};
    ASSERT_EQ(RegSetValueExW(key, name, 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
  }
  ASSERT_EQ(RegQueryValueExW(key, L"i", nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
  int others = 0;
  for (wchar_t letter = 0x80; letter < 0xD800; ++letter) {
    const wchar_t name[] = {letter, L'\0'};
    if (RegQueryValueExW(key, name, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS) {
      ADD_FAILURE() << "U+" << std::hex << static_cast<unsigned>(letter);
      ++others;
    }
  }
  (void)RegCloseKey(key);
  EXPECT_EQ(others, 0);
}

// Whatever the spelling: if it reaches the key, it is judged as the key.
TEST_F(StrictRegistryWinTest, SpellingsThatTheRegistryTakesForTheKeyAreJudgedAsIt) {
  const std::string root = "SOFTWARE\\Vesmark\\NORVA";
  const std::string key = root + "\\StrictTest\\TrcParams";
  ASSERT_EQ(RegCreateKeyBL(key.c_str()), 0u);
  ASSERT_EQ(RegSetValueBL(key.c_str(), "mark", "x"), 0u);
  int reached = 0;
  for (const std::string& tail :
       {std::string("TrcParams"), std::string("\\TrcParams"), std::string("\\\\TrcParams"),
        std::string("TrcParams\\"), std::string("TrcParams\\\\"), std::string("TRCPARAMS"),
        std::string("TrcParams."), std::string("TrcParams\\."), std::string(".\\TrcParams"),
        std::string("x\\..\\TrcParams"), std::string("TrcParams "), std::string("TrcParams/"),
        std::string("TrcParams\\x\\.."), std::string("...\\TrcParams"),
        std::string("TrcParams\\..."), std::string("TrcParams..")}) {
    // Reached one key deeper, so that the machine's own configuration is left alone.
    const bool reaches = RegSetValueBL((root + "\\StrictTest\\" + tail).c_str(), "mark", "y") == 0;
    if (!reaches) continue;
    ++reached;
    EXPECT_EQ(ThreatOf({RegistryChange::CreateKey, (root + "\\" + tail).c_str()}), Threat::TraceKey)
        << tail;
  }
  EXPECT_GE(reached, 8);
}

TEST_F(StrictRegistryWinTest, ANestedTreeBelowADeviceIsSeen) {
  const std::string device = "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID\\StrictTest";
  EXPECT_EQ(ThreatOf({RegistryChange::DeleteKey, device.c_str()}), std::nullopt);
  ASSERT_EQ(RegCreateKeyBL((device + "\\" + device).c_str()), 0u);
  EXPECT_EQ(ThreatOf({RegistryChange::DeleteKey, device.c_str()}), Threat::DeviceTree);
  EXPECT_EQ(RegDelKeyBL(device.c_str()), 0u);
  EXPECT_EQ(ThreatOf({RegistryChange::DeleteKey, device.c_str()}), std::nullopt);
  (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, device.c_str());
}

}  // namespace
