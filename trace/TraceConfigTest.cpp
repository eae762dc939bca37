#include "trace/TraceConfig.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using zqotrc::ParseFormat;
using zqotrc::ParseMask;
using zqotrc::ParseNumber;
using zqotrc::ParseOutput;
using zqotrc::TraceFormat;
using zqotrc::TraceOutput;

std::string Prefix(std::string_view path, std::string_view fileName) {
  char prefix[zqotrc::kPrefixSize];
  zqotrc::BuildFilePrefix(prefix, path, fileName);
  return prefix;
}

TEST(ParseMaskTest, TheBaseIsInTheText) {
  EXPECT_EQ(ParseMask("208"), 208u);
  EXPECT_EQ(ParseMask("0xD0"), 0xD0u);
  EXPECT_EQ(ParseMask("0Xd0"), 0xD0u);
  EXPECT_EQ(ParseMask("010"), 8u);
  EXPECT_EQ(ParseMask("0xFFFFFFFF"), 0xFFFFFFFFu);
}

TEST(ParseMaskTest, BlanksAndSignsMayLeadAndAnythingMayFollow) {
  EXPECT_EQ(ParseMask(" \t+5"), 5u);
  EXPECT_EQ(ParseMask("-1"), 0xFFFFFFFFu);
  EXPECT_EQ(ParseMask("-0x10"), 0xFFFFFFF0u);
  EXPECT_EQ(ParseMask("64 errors"), 64u);
  EXPECT_EQ(ParseMask("089"), 0u);
}

TEST(ParseMaskTest, NoNumberIsZero) {
  EXPECT_EQ(ParseMask(""), 0u);
  EXPECT_EQ(ParseMask("all"), 0u);
  EXPECT_EQ(ParseMask("- 5"), 0u);
  EXPECT_EQ(ParseMask("+-5"), 0u);
  EXPECT_EQ(ParseMask("0x"), 0u);
}

TEST(ParseMaskTest, TooLargeANumberIsAllBits) {
  EXPECT_EQ(ParseMask("4294967295"), 0xFFFFFFFFu);
  EXPECT_EQ(ParseMask("4294967296"), 0xFFFFFFFFu);
  EXPECT_EQ(ParseMask("-4294967296"), 0xFFFFFFFFu);
  EXPECT_EQ(ParseMask("99999999999999999999999999"), 0xFFFFFFFFu);
}

TEST(ParseNumberTest, NumbersAreDecimal) {
  EXPECT_EQ(ParseNumber("1000"), 1000);
  EXPECT_EQ(ParseNumber(" -7x"), -7);
  EXPECT_EQ(ParseNumber("010"), 10);
  EXPECT_EQ(ParseNumber("0x10"), 0);
  EXPECT_EQ(ParseNumber("none"), 0);
}

TEST(ParseNumberTest, ANumberOutOfRangeIsTheNearest) {
  EXPECT_EQ(ParseNumber("2147483647"), INT32_MAX);
  EXPECT_EQ(ParseNumber("2147483648"), INT32_MAX);
  EXPECT_EQ(ParseNumber("-2147483648"), INT32_MIN);
  EXPECT_EQ(ParseNumber("-99999999999999999999"), INT32_MIN);
}

TEST(ParseFormatTest, ThreeWordsInAnyCaseAndEverythingElseIsLong) {
  EXPECT_EQ(ParseFormat("SHORT"), TraceFormat::kShort);
  EXPECT_EQ(ParseFormat("time"), TraceFormat::kTime);
  EXPECT_EQ(ParseFormat("text"), TraceFormat::kText);
  EXPECT_EQ(ParseFormat("LONG"), TraceFormat::kLong);
  EXPECT_EQ(ParseFormat("TEXTS"), TraceFormat::kLong);
  EXPECT_EQ(ParseFormat(""), TraceFormat::kLong);
}

TEST(ParseOutputTest, EightWordsInAnyCaseAndEverythingElseIsFile) {
  EXPECT_EQ(ParseOutput("VXD"), TraceOutput::kDriver);
  EXPECT_EQ(ParseOutput("com1"), TraceOutput::kCom1);
  EXPECT_EQ(ParseOutput("Com2"), TraceOutput::kCom2);
  EXPECT_EQ(ParseOutput("pipe"), TraceOutput::kPipe);
  EXPECT_EQ(ParseOutput("file"), TraceOutput::kFile);
  EXPECT_EQ(ParseOutput("sm"), TraceOutput::kRing);
  EXPECT_EQ(ParseOutput("dbg"), TraceOutput::kDebugger);
  EXPECT_EQ(ParseOutput("zqtraceengine"), TraceOutput::kEngine);
  EXPECT_EQ(ParseOutput("TAPE"), TraceOutput::kFile);
  EXPECT_EQ(ParseOutput(""), TraceOutput::kFile);
}

TEST(ParseOutputTest, TheNumbersAreThoseOfTheTable) {
  const TraceOutput inOrder[] = {TraceOutput::kDriver,   TraceOutput::kCom1,  TraceOutput::kCom2,
                                 TraceOutput::kPipe,     TraceOutput::kFile,  TraceOutput::kRing,
                                 TraceOutput::kDebugger, TraceOutput::kEngine};
  int number = 0;
  for (const TraceOutput output : inOrder) EXPECT_EQ(static_cast<int>(output), number++);
}

TEST(BuildFilePrefixTest, KeptAPathGetsABackslashEvenWhenItEndsInOne) {
  EXPECT_EQ(Prefix("D:\\Log", "run"), "D:\\Log\\run");
  EXPECT_EQ(Prefix("D:\\Log\\", "run"), "D:\\Log\\\\run");
}

TEST(BuildFilePrefixTest, AMissingHalfHasADefault) {
  EXPECT_EQ(Prefix("", "run.log"), "C:\\Tmp\\run");
  EXPECT_EQ(Prefix("D:\\Log", ""), "D:\\Log\\ZqFile");
}

TEST(BuildFilePrefixTest, KeptTheNameEndsAtItsFirstDot) {
  EXPECT_EQ(Prefix("", "run.2024.log"), "C:\\Tmp\\run");
  EXPECT_EQ(Prefix("", ".log"), "C:\\Tmp\\");
}

TEST(BuildFilePrefixTest, TooLongAPrefixIsCutTo260Characters) {
  const std::string path(260, 'p');
  EXPECT_EQ(Prefix(path, "run"), path);
  EXPECT_EQ(Prefix(path.substr(0, 255), "name"), path.substr(0, 255) + "\\name");
  EXPECT_EQ(Prefix(path.substr(0, 255), "names"), path.substr(0, 255) + "\\name");
}

}  // namespace
