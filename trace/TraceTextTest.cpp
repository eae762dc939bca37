#include "trace/TraceText.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <string>

namespace {

using zqotrc::CutText;
using zqotrc::FormatCut;

std::string Decimal(std::int32_t value, std::size_t width) {
  char buffer[40];
  return std::string(CutText(buffer).AddDecimal(value, width).view());
}

TEST(CutTextTest, WhatDoesNotFitIsCutAndTheTerminatorStaysInside) {
  char guarded[6] = {'#', '#', '#', '#', '#', '#'};
  CutText text(guarded, /*capacity=*/5);
  text.Add("abc").Add('d').Add("efg").Add('h');
  EXPECT_EQ(text.view(), "abcd");
  EXPECT_STREQ(guarded, "abcd");
  EXPECT_EQ(guarded[5], '#');
}

TEST(CutTextTest, ABufferOfOneByteHoldsTheEmptyText) {
  char buffer[1] = {'x'};
  EXPECT_EQ(CutText(buffer).Add("abc").view(), "");
  EXPECT_EQ(buffer[0], '\0');
}

TEST(CutTextTest, ZeroBytesInATextAreTextToo) {
  char buffer[8];
  EXPECT_EQ(CutText(buffer).Add('\0').Add("G").view().size(), 2u);
}

TEST(CutTextTest, DecimalsAreThoseOfPrintf) {
  for (const std::int32_t value :
       {0, 1, -1, 42, 123456789, 1234567890, std::numeric_limits<std::int32_t>::max(),
        std::numeric_limits<std::int32_t>::min()}) {
    char expected[40];
    (void)std::snprintf(expected, sizeof(expected), "%09d", value);
    EXPECT_EQ(Decimal(value, 9), expected);
    (void)std::snprintf(expected, sizeof(expected), "%d", value);
    EXPECT_EQ(Decimal(value, 1), expected);
  }
}

TEST(CutTextTest, HexadecimalsAreThoseOfPrintf) {
  for (const std::uint32_t value : {0u, 9u, 0xABCu, 0xFFFFFFFFu}) {
    char buffer[40];
    char expected[40];
    (void)std::snprintf(expected, sizeof(expected), "%04x", value);
    EXPECT_EQ(CutText(buffer).AddHex(value, 4).view(), expected);
  }
}

TEST(CutTextTest, RightAlignedTextsAreFilledOrCutToTheirWidth) {
  char buffer[40];
  EXPECT_EQ(CutText(buffer).AddRightAligned("AB", 3).view(), " AB");
  EXPECT_EQ(CutText(buffer).AddRightAligned("ABCDE", 3).view(), "ABC");
  EXPECT_EQ(CutText(buffer).AddRightAligned("", 3).view(), "   ");
}

TEST(FormatCutTest, ATextLongerThanTheBufferIsCut) {
  char guarded[9] = "########";
  EXPECT_EQ(FormatCut(guarded, 8, "%s=%d", "abcdefgh", 5), 7u);
  EXPECT_STREQ(guarded, "abcdefg");
}

TEST(FormatCutTest, ATextThatJustFitsAndOneThatJustDoesNotKeepTheirTerminator) {
  char buffer[5];
  EXPECT_EQ(FormatCut(buffer, sizeof(buffer), "%s", "abcd"), 4u);
  EXPECT_STREQ(buffer, "abcd");
  EXPECT_EQ(FormatCut(buffer, sizeof(buffer), "%s", "abcde"), 4u);
  EXPECT_STREQ(buffer, "abcd");
}

TEST(FormatCutTest, AnAbsentTextIsPrintedAsNull) {
  char buffer[40];
  const char* volatile absent = nullptr;
  (void)FormatCut(buffer, sizeof(buffer), "name=%s.", absent);
  EXPECT_STREQ(buffer, "name=(null).");
}

TEST(FormatCutTest, ClientTextsOfEightKibibytesAreCut) {
  const std::string client(8192, 'x');
  char buffer[1024];
  EXPECT_EQ(FormatCut(buffer, sizeof(buffer), "<< %s", client.c_str()), 1023u);
}

}  // namespace
