#include "platform/AsciiCase.h"

#include <gtest/gtest.h>

namespace {

using platform::EqualsIgnoringCase;
using platform::StartsWithIgnoringCase;

TEST(AsciiCaseTest, OnlyTheCaseOfLettersMayDiffer) {
  EXPECT_TRUE(EqualsIgnoringCase("ZqTraceEngine", "ZQTRACEENGINE"));
  EXPECT_FALSE(EqualsIgnoringCase("TEXT", "TEX"));
  EXPECT_FALSE(EqualsIgnoringCase("@", "`"));
  EXPECT_FALSE(EqualsIgnoringCase("[", "{"));
}

TEST(AsciiCaseTest, BytesBeyondAsciiHaveNoCase) {
  for (int byte = 0x80; byte <= 0xFF; ++byte) {
    EXPECT_EQ(platform::UpperCase(static_cast<char>(byte)), static_cast<char>(byte));
  }
  EXPECT_FALSE(EqualsIgnoringCase("Ger\xE4t", "Ger\xC4t"));
  EXPECT_TRUE(EqualsIgnoringCase("ger\xE4T", "GER\xE4t"));
}

TEST(AsciiCaseTest, ATextStartsWithWhatItIsNotShorterThan) {
  EXPECT_TRUE(StartsWithIgnoringCase("software\\mine", "SOFTWARE"));
  EXPECT_TRUE(StartsWithIgnoringCase("software", "SOFTWARE"));
  EXPECT_TRUE(StartsWithIgnoringCase("", ""));
  EXPECT_FALSE(StartsWithIgnoringCase("softwar", "SOFTWARE"));
  EXPECT_FALSE(StartsWithIgnoringCase("", "SOFTWARE"));
  EXPECT_FALSE(StartsWithIgnoringCase("xsoftware", "SOFTWARE"));
}

}  // namespace
