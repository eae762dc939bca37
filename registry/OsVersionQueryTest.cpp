#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "registry/OsName.h"

// What the platform tells of itself, against what it tells by other ways.

namespace {

TEST(OsVersionQueryTest, TheRecordIsThatOfThePlatform) {
  const OsVersion version = QueryOsVersion();
  EXPECT_EQ(version.platformId, 2u);
  const DWORD packed = GetVersion();
  EXPECT_EQ(version.major, packed & 0xFF);
  EXPECT_EQ(version.minor, packed >> 8 & 0xFF);

  OSVERSIONINFOEXA same = {};
  same.dwOSVersionInfoSize = sizeof(same);
  same.wProductType = version.productType;
  same.wSuiteMask = version.suiteMask;
  const ULONGLONG equal = VerSetConditionMask(VerSetConditionMask(0, VER_PRODUCT_TYPE, VER_EQUAL),
                                              VER_SUITENAME, VER_AND);
  EXPECT_NE(VerifyVersionInfoA(&same, VER_PRODUCT_TYPE | VER_SUITENAME, equal), FALSE);

  BOOL emulated = FALSE;
  (void)IsWow64Process(GetCurrentProcess(), &emulated);
  EXPECT_EQ(version.architecture, emulated != FALSE ? 9 : 0) << "that of the machine, not ours";
  EXPECT_EQ(version.serverR2, GetSystemMetrics(89) != 0);
}

TEST(OsVersionQueryTest, TheTextOfThisSystemIsMadeOfIt) {
  char text[kOsTextSize];
  GetOsName(text);
  char expected[kOsTextSize];
  FormatOsText(QueryOsVersion(), expected);
  EXPECT_STREQ(text, expected);
  EXPECT_EQ(std::string(text).rfind("Microsoft ", 0), 0u);
}

}  // namespace
