#include "platform/MachineSetting.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>

namespace platform {
namespace {

constexpr char kName[] = "MachineSettingTest";

class MachineSettingTest : public testing::Test {
 protected:
  MachineSettingTest() {
    DWORD disposition = 0;
    EXPECT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, kMachineSettingKey, 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, &key_, &disposition),
              ERROR_SUCCESS);
    isOurs_ = disposition == REG_CREATED_NEW_KEY;
  }
  ~MachineSettingTest() override {
    (void)RegDeleteValueA(key_, kName);
    (void)RegCloseKey(key_);
    if (isOurs_) (void)RegDeleteKeyA(HKEY_LOCAL_MACHINE, kMachineSettingKey);
  }

  void Store(DWORD type, const void* data, std::size_t size) {
    ASSERT_EQ(RegSetValueExA(key_, kName, 0, type, static_cast<const BYTE*>(data),
                             static_cast<DWORD>(size)),
              ERROR_SUCCESS);
  }

 private:
  HKEY key_ = nullptr;
  bool isOurs_ = false;
};

TEST_F(MachineSettingTest, ATextIsReadWithItsTerminator) {
  Store(REG_SZ, "enforce", 8);
  char text[8];
  std::memset(text, 'x', sizeof(text));
  EXPECT_TRUE(ReadMachineText(kName, text, sizeof(text)));
  EXPECT_STREQ(text, "enforce");
}

TEST_F(MachineSettingTest, ATextStoredWithoutATerminatorGetsOne) {
  Store(REG_SZ, "enforce", 7);
  char text[8];
  std::memset(text, 'x', sizeof(text));
  EXPECT_TRUE(ReadMachineText(kName, text, sizeof(text)));
  EXPECT_STREQ(text, "enforce");
}

TEST_F(MachineSettingTest, ATextThatDoesNotFitIsNone) {
  Store(REG_SZ, "enforce", 8);
  char text[7] = "abc";
  EXPECT_FALSE(ReadMachineText(kName, text, sizeof(text)));
  EXPECT_STREQ(text, "");
}

TEST_F(MachineSettingTest, WhatIsMissingIsNone) {
  char text[8] = "abc";
  EXPECT_FALSE(ReadMachineText(kName, text, sizeof(text)));
  EXPECT_STREQ(text, "");
  std::uint32_t number = 7;
  EXPECT_FALSE(ReadMachineNumber(kName, number));
  EXPECT_EQ(number, 7u);
}

TEST_F(MachineSettingTest, AnotherTypeIsNone) {
  const std::uint32_t stored = 0x00333231;
  Store(REG_DWORD, &stored, sizeof(stored));
  char text[8] = "abc";
  EXPECT_FALSE(ReadMachineText(kName, text, sizeof(text)));

  Store(REG_SZ, "123", 4);
  std::uint32_t number = 7;
  EXPECT_FALSE(ReadMachineNumber(kName, number));
  EXPECT_EQ(number, 7u);
}

TEST_F(MachineSettingTest, ANumberIsRead) {
  const std::uint32_t stored = 0x80000001;
  Store(REG_DWORD, &stored, sizeof(stored));
  std::uint32_t number = 0;
  EXPECT_TRUE(ReadMachineNumber(kName, number));
  EXPECT_EQ(number, stored);
}

}  // namespace
}  // namespace platform
