#include <windows.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/support/RegistryKeyScratch.h"

// The tests here change the machine's trace configuration. Whoever has one keeps it.

namespace {

constexpr char kKey[] = "Software\\QorlixTraceKeyWinTest";

std::optional<std::string> Text(const std::string& subkey, const char* name) {
  char text[100] = "";
  DWORD size = sizeof(text);
  const std::string path = std::string(kKey) + subkey;
  const LSTATUS status = RegGetValueA(HKEY_LOCAL_MACHINE, path.c_str(), name, RRF_RT_REG_SZ,
                                      /*pdwType=*/nullptr, text, &size);
  if (status != ERROR_SUCCESS) return std::nullopt;
  return text;
}

bool Exists() {
  HKEY key = nullptr;
  if (RegOpenKeyA(HKEY_LOCAL_MACHINE, kKey, &key) != ERROR_SUCCESS) return false;
  (void)RegCloseKey(key);
  return true;
}

class TraceKeyWinTest : public testing::Test {
 protected:
  ~TraceKeyWinTest() override { (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, kKey); }

  static void SetText(const std::string& subkey, const char* name, const std::string& text) {
    const std::string path = std::string(kKey) + subkey;
    (void)RegSetKeyValueA(HKEY_LOCAL_MACHINE, path.c_str(), name, REG_SZ, text.c_str(),
                          static_cast<DWORD>(text.size() + 1));
  }
};

TEST_F(TraceKeyWinTest, WhatWasThereIsThereAgain) {
  SetText("", "Level", "64");
  SetText("\\sub", "v", "text");
  {
    const RegistryKeyScratch scratch(kKey);
    EXPECT_FALSE(Exists());
    scratch.SetText("Level", "0");
    scratch.SetText("Format", "TEXT");
  }
  EXPECT_EQ(Text("", "Level"), "64");
  EXPECT_EQ(Text("\\sub", "v"), "text");
  EXPECT_EQ(Text("", "Format"), std::nullopt);
}

TEST_F(TraceKeyWinTest, AKeyThatWasNotThereIsGoneAgain) {
  {
    const RegistryKeyScratch scratch(kKey);
    scratch.SetText("Level", "0");
    EXPECT_TRUE(Exists());
  }
  EXPECT_FALSE(Exists());
}

TEST_F(TraceKeyWinTest, WhatAnEndedProgramLeftAsideComesBack) {
  SetText(" put aside by a test\\original", "Level", "64");
  SetText("", "Level", "1");
  { const RegistryKeyScratch next(kKey); }
  EXPECT_EQ(Text("", "Level"), "64");
}

}  // namespace
