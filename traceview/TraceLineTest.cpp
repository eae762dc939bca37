#include "traceview/TraceLine.h"

#include <gtest/gtest.h>

#include <string>

#include "trace/TraceRecord.h"

// What the writer of the facility lays out is taken apart again; the bytes of the layouts are
// written out where that says more.

namespace traceview {
namespace {

using zqotrc::TraceFormat;

constexpr std::uint32_t kAllBits = 0xFFFFFFFF;

class TraceLineTest : public testing::Test {
 protected:
  std::string Written(TraceFormat format, const char* function, const char* text) {
    zqotrc::TraceRecord record;
    zqotrc::BuildRecord(record, format, "QORLIXSRV64",
                        {function, level_, "SRV", code_, 0x12, "D:\\src\\Some, File.cpp", 42, text},
                        moment_);
    char line[zqotrc::kLineBufferSize];
    return std::string(zqotrc::FormatLine(line, format, record, moment_));
  }

  std::uint32_t level_ = kAllBits;
  std::uint32_t code_ = 0;
  zqotrc::TraceMoment moment_ = {true, 14, 5, 9, 123, 12345678901, 1000000, 4711, 815};
};

TEST_F(TraceLineTest, TheLongLayoutIsTakenApart) {
  const TraceLine line = ParseTraceLine(Written(TraceFormat::kLong, "Reg_SetValue: ", ">> Start"));
  EXPECT_EQ(line.layout, Layout::kLong);
  EXPECT_EQ(line.traceId, "QORLIXSR");
  EXPECT_EQ(line.process, 4711u);
  EXPECT_EQ(line.thread, 815u);
  EXPECT_EQ(line.level, "--");
  EXPECT_EQ(line.component, "SRV");
  EXPECT_EQ(line.code, "0");
  EXPECT_EQ(line.extra, "0012");
  EXPECT_EQ(line.time, "14:05:09,123");
  EXPECT_EQ(line.microseconds, 50709123000);
  EXPECT_EQ(line.file, "Some, File.c");
  EXPECT_EQ(line.line, 42u);
  EXPECT_EQ(line.function, "Reg_SetValue");
  EXPECT_EQ(line.text, ">> Start");
}

TEST_F(TraceLineTest, ALongLineAsItStandsInAFile) {
  const TraceLine line = ParseTraceLine(
      "L QORLIXSR P000000032T000000036 -- SRV  0  0000 20:21:22,023 Main.cpp,00024 CreateSRV:  "
      ">> Start Pipe Server");
  EXPECT_EQ(line.process, 32u);
  EXPECT_EQ(line.file, "Main.cpp");
  EXPECT_EQ(line.line, 24u);
  EXPECT_EQ(line.function, "CreateSRV");
  EXPECT_EQ(line.text, ">> Start Pipe Server");
}

TEST_F(TraceLineTest, TheShortLayoutHasNoTimeAndNoPlace) {
  const TraceLine line = ParseTraceLine(Written(TraceFormat::kShort, "Reg_DelKey:", "<< Key: a"));
  EXPECT_EQ(line.layout, Layout::kShort);
  EXPECT_EQ(line.function, "Reg_DelKey");
  EXPECT_EQ(line.text, "<< Key: a");
  EXPECT_EQ(line.time, "");
  EXPECT_EQ(line.microseconds, -1);
  EXPECT_EQ(line.process, 0u);
}

TEST_F(TraceLineTest, TheTimeLayoutCountsSeconds) {
  const TraceLine line = ParseTraceLine(Written(TraceFormat::kTime, "Install", "a: b"));
  EXPECT_EQ(line.layout, Layout::kTime);
  EXPECT_EQ(line.time, "12345.678901");
  EXPECT_EQ(line.microseconds, 12345678901);
  EXPECT_EQ(line.function, "Install");
  EXPECT_EQ(line.text, "a: b");
}

TEST_F(TraceLineTest, TheTextLayoutIsFunctionAndText) {
  const TraceLine line = ParseTraceLine(Written(TraceFormat::kText, "Reg_SetValue: ", ">> Start"));
  EXPECT_EQ(line.layout, Layout::kText);
  EXPECT_EQ(line.function, "Reg_SetValue");
  EXPECT_EQ(line.text, ">> Start");
  const TraceLine plain = ParseTraceLine(Written(TraceFormat::kText, "Install", "a: b "));
  EXPECT_EQ(plain.layout, Layout::kText);
  EXPECT_EQ(plain.function, "Install");
  EXPECT_EQ(plain.text, "a: b ");
}

TEST_F(TraceLineTest, EveryFormOfTheCodeColumnIsKnown) {
  const auto parsed = [this](std::uint32_t code) {
    code_ = code;
    return ParseTraceLine(Written(TraceFormat::kLong, "F: ", "t"));
  };
  EXPECT_EQ(parsed(1).code, "1");
  EXPECT_EQ(parsed(kAllBits).code, "-1");
  EXPECT_EQ(parsed(kAllBits).extra, "0012");
  EXPECT_EQ(parsed(0xC0000005).code, "c0000005");
  EXPECT_EQ(parsed(0xC0000005).extra, "");
  level_ = 64;
  EXPECT_EQ(parsed(5).code, "");
  EXPECT_EQ(parsed(5).extra, "");
  EXPECT_EQ(parsed(5).level, "FM");
  EXPECT_EQ(parsed(5).function, "F");
}

TEST_F(TraceLineTest, NegativeNumbersOfProcessAndThreadAreRead) {
  moment_.processId = -5;
  moment_.threadId = 2147483647;
  const TraceLine line = ParseTraceLine(Written(TraceFormat::kLong, "F: ", "t"));
  EXPECT_EQ(line.layout, Layout::kLong);
  EXPECT_EQ(line.process, 0xFFFFFFFBu);
  EXPECT_EQ(line.thread, 2147483647u);
}

TEST_F(TraceLineTest, EmptyFunctionAndTextStayEmpty) {
  for (const TraceFormat format : {TraceFormat::kShort, TraceFormat::kLong, TraceFormat::kTime}) {
    const TraceLine line = ParseTraceLine(Written(format, "", ""));
    EXPECT_NE(line.layout, Layout::kUnknown);
    EXPECT_EQ(line.function, "");
    EXPECT_EQ(line.text, "");
  }
}

TEST_F(TraceLineTest, AnErrorLineIsTheFacilitysOwn) {
  const TraceLine line = ParseTraceLine("E Unable to open VxD, got error code !");
  EXPECT_EQ(line.layout, Layout::kError);
  EXPECT_EQ(line.text, "Unable to open VxD, got error code !");
}

TEST_F(TraceLineTest, WhatHasNoLayoutStaysWhole) {
  for (const char* const raw :
       {"", " ", "word", "two words", "L QORLIXSR P00000003", "  leading blank",
        "L QORLIXSR P000000032T000000036 -- SRV  0  0000 2X:21:22,023 Main.cpp,00024 F:  x"}) {
    const TraceLine line = ParseTraceLine(raw);
    EXPECT_EQ(line.layout, Layout::kUnknown) << raw;
    EXPECT_EQ(line.text, raw);
    EXPECT_EQ(line.function, "");
    EXPECT_EQ(line.process, 0u);
  }
}

TEST_F(TraceLineTest, EveryLevelCodeOfTheWriterHasAName) {
  for (const LevelCodeInfo& known : LevelCodes()) {
    if (known.code == "??") continue;
    EXPECT_EQ(zqotrc::LevelCode(known.bits), known.code);
    EXPECT_EQ(LevelName(known.code), known.name);
  }
  for (unsigned bit = 0; bit < 32; ++bit) {
    const std::string_view code = zqotrc::LevelCode(1u << bit);
    if (code == "??") continue;
    EXPECT_NE(LevelName(code), code);
  }
  EXPECT_EQ(LevelName("FR"), "error");
  EXPECT_EQ(LevelName("zz"), "zz");
}

}  // namespace
}  // namespace traceview
