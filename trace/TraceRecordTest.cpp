#include "trace/TraceRecord.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

using zqotrc::BuildRecord;
using zqotrc::FormatLine;
using zqotrc::TraceCall;
using zqotrc::TraceFormat;
using zqotrc::TraceMoment;
using zqotrc::TraceRecord;

constexpr char kTraceId[] = "QORLIXSRV64";
constexpr std::uint32_t kAllBits = 0xFFFFFFFF;

class TraceRecordTest : public testing::Test {
 protected:
  std::string LineOf(TraceFormat format) {
    BuildRecord(record_, format, kTraceId, call_, moment_);
    char line[zqotrc::kLineBufferSize];
    return std::string(FormatLine(line, format, record_, moment_));
  }

  std::string CodeAndExtra(std::uint32_t level, std::uint32_t code, std::uint16_t extra) {
    call_.level = level;
    call_.code = code;
    call_.extra = extra;
    BuildRecord(record_, TraceFormat::kShort, kTraceId, call_, moment_);
    return std::string(record_.code) + "|" + record_.extra;
  }

  TraceCall call_ = {"Install: ", kAllBits, "SRV", 0, 0, "c:\\src\\actions\\Setup.cpp", 42, "text"};
  TraceMoment moment_ = {/*hasLocalTime=*/true, 7,       5,    9,  42,
                         1234567890123,         1000000, 4711, 815};
  TraceRecord record_ = {};
};

TEST_F(TraceRecordTest, TheShortLayout) {
  EXPECT_EQ(LineOf(TraceFormat::kShort), "S QORLIXSR -- SRV  0  0000 Install:  text");
}

TEST_F(TraceRecordTest, TheLongLayout) {
  EXPECT_EQ(LineOf(TraceFormat::kLong),
            "L QORLIXSR P000004711T000000815 -- SRV  0  0000 07:05:09,042 Setup.cpp,00042 "
            "Install:  text");
}

TEST_F(TraceRecordTest, TheTimeLayoutShowsTheLastTwelveCharactersOfTheSeconds) {
  EXPECT_EQ(LineOf(TraceFormat::kTime), "T QORLIXSR -- SRV  0  0000 34567.890123 Install:  text");
  EXPECT_STREQ(record_.seconds, "00000000000001234567.890123");
}

TEST_F(TraceRecordTest, TheTextLayoutEndsInABlank) {
  EXPECT_EQ(LineOf(TraceFormat::kText), "Install:  text ");
}

TEST_F(TraceRecordTest, TheTextLayoutLeavesTheLetterAsItWas) {
  (void)LineOf(TraceFormat::kShort);
  (void)LineOf(TraceFormat::kText);
  EXPECT_STREQ(record_.letter, "S");
}

TEST_F(TraceRecordTest, EveryLayoutIsWhatPrintfMakesOfItsColumns) {
  char expected[zqotrc::kLineBufferSize];
  const std::string shortLine = LineOf(TraceFormat::kShort);
  const TraceRecord& r = record_;
  (void)std::snprintf(expected, sizeof(expected), "%s %s %s %s %s%s %s %s", r.letter, r.traceId,
                      r.level, r.component, r.code, r.extra, r.function, r.text);
  EXPECT_EQ(shortLine, expected);

  const std::string longLine = LineOf(TraceFormat::kLong);
  (void)std::snprintf(expected, sizeof(expected), "%s %s P%09dT%09d %s %s %s%s %s %s,%s %s %s",
                      r.letter, r.traceId, moment_.processId, moment_.threadId, r.level,
                      r.component, r.code, r.extra, r.source.time, r.source.file, r.source.line,
                      r.function, r.text);
  EXPECT_EQ(longLine, expected);

  const std::string timeLine = LineOf(TraceFormat::kTime);
  (void)std::snprintf(expected, sizeof(expected), "%s %s %s %s %s%s %s %s %s", r.letter, r.traceId,
                      r.level, r.component, r.code, r.extra, r.seconds + 27 - 12, r.function,
                      r.text);
  EXPECT_EQ(timeLine, expected);
}

TEST_F(TraceRecordTest, ATextOf300CharactersShowsItsFirst256) {
  const std::string text = std::string(256, 'a') + std::string(44, 'b');
  call_.text = text.c_str();
  EXPECT_EQ(LineOf(TraceFormat::kText), "Install:  " + std::string(256, 'a') + " ");
}

TEST_F(TraceRecordTest, LongNamesAreCutToTheirColumns) {
  const std::string function(70, 'f');
  call_.function = function.c_str();
  call_.component = "LONG";
  call_.file = "c:\\x\\QorlixSRVPipe.cpp";
  call_.line = 123456;
  EXPECT_EQ(LineOf(TraceFormat::kLong),
            "L QORLIXSR P000004711T000000815 -- LON  0  0000 07:05:09,042 QorlixSRVPip,12345 " +
                std::string(64, 'f') + " text");
}

TEST_F(TraceRecordTest, ShortNamesAreRightAligned) {
  call_.component = "B";
  BuildRecord(record_, TraceFormat::kShort, "AB", call_, moment_);
  EXPECT_STREQ(record_.component, "  B");
  EXPECT_STREQ(record_.traceId, "      AB");
}

TEST_F(TraceRecordTest, AFileWithoutADirectoryIsItsOwnName) {
  call_.file = "Main.cpp";
  (void)LineOf(TraceFormat::kLong);
  EXPECT_STREQ(record_.source.file, "Main.cpp");
  call_.file = "c:\\src\\";
  (void)LineOf(TraceFormat::kLong);
  EXPECT_STREQ(record_.source.file, "");
}

TEST_F(TraceRecordTest, ALocalTimeThatCannotBeFormedIsZero) {
  moment_.hasLocalTime = false;
  (void)LineOf(TraceFormat::kLong);
  EXPECT_STREQ(record_.source.time, "00:00:00,000");
}

TEST_F(TraceRecordTest, AWildClockStaysInItsColumn) {
  moment_.hour = moment_.minute = moment_.second = moment_.millisecond = -2147483647;
  (void)LineOf(TraceFormat::kLong);
  EXPECT_LE(std::strlen(record_.source.time), 12u);
  moment_.counter = INT64_MIN;
  moment_.frequency = 1;
  (void)LineOf(TraceFormat::kTime);
  EXPECT_LE(std::strlen(record_.seconds), 27u);
}

TEST_F(TraceRecordTest, ALevelWithoutErrorBitsHasBlanksForCodeAndExtra) {
  EXPECT_EQ(CodeAndExtra(64, 5, 7), "  |      ");
  EXPECT_EQ(CodeAndExtra(0, 5, 7), "  |      ");
  EXPECT_EQ(CodeAndExtra(0xFFFFFF7B, 5, 7), "  |      ");
}

TEST_F(TraceRecordTest, ACodeThatIsNoneOfTheThreePlainOnesStandsAloneInHexadecimal) {
  EXPECT_EQ(CodeAndExtra(128, 5, 7), "00000005|");
  EXPECT_EQ(CodeAndExtra(4, 0xDEADBEEF, 7), "deadbeef|");
  EXPECT_EQ(CodeAndExtra(kAllBits, 2, 7), "00000002|");
}

TEST_F(TraceRecordTest, APlainCodeStandsBesideTheExtraValue) {
  EXPECT_EQ(CodeAndExtra(128, 0, 7), " 0|  0007");
  EXPECT_EQ(CodeAndExtra(128, 1, 0xFFFF), " 1|  ffff");
  EXPECT_EQ(CodeAndExtra(128, kAllBits, 0xAB), "-1|  00ab");
}

TEST_F(TraceRecordTest, EveryKnownLevelHasItsCode) {
  const struct {
    std::uint32_t level;
    const char* code;
  } known[] = {{0, "##"},          {1, "PA"},          {2, "PX"},          {4, "PE"},
               {8, "FA"},          {16, "FR"},         {32, "FW"},         {64, "FM"},
               {128, "FE"},        {0x01000000, "L7"}, {0x10000000, "AI"}, {0x20000000, "L2"},
               {0x40000000, "L4"}, {kAllBits, "--"}};
  for (const auto& row : known) EXPECT_EQ(zqotrc::LevelCode(row.level), row.code) << row.level;
}

TEST_F(TraceRecordTest, AnyOtherLevelIsUnknown) {
  for (const std::uint32_t level : {3u, 5u, 256u, 0x02000000u, 0x80000000u, 0xFFFFFFFEu}) {
    EXPECT_EQ(zqotrc::LevelCode(level), "??") << level;
  }
}

TEST_F(TraceRecordTest, TheLongestLineOfEveryLayoutIsWhole) {
  const std::string longest(1000, 'x');
  call_ = {longest.c_str(), kAllBits,        longest.c_str(), 5,
           0xFFFF,          longest.c_str(), 0xFFFFFFFF,      longest.c_str()};
  moment_.processId = moment_.threadId = INT32_MIN;
  for (const TraceFormat format :
       {TraceFormat::kShort, TraceFormat::kLong, TraceFormat::kTime, TraceFormat::kText}) {
    const std::string line = LineOf(format);
    EXPECT_LT(line.size(), zqotrc::kLineBufferSize);
    const std::size_t text = line.rfind(std::string(256, 'x'));
    EXPECT_EQ(text + 256 + (format == TraceFormat::kText ? 1 : 0), line.size());
  }
}

}  // namespace
