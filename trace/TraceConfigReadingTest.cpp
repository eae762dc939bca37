#include <gtest/gtest.h>

#include <string>

#include "tests/fakes/trace/FakeTrace.h"
#include "trace/TraceConfig.h"

namespace {

using FakeTrace::SetText;
using FakeTrace::TheMachine;
using zqotrc::MatchMode;
using zqotrc::ReadTraceConfig;
using zqotrc::TraceConfig;
using zqotrc::TraceFormat;
using zqotrc::TraceOutput;

constexpr char kMask[] = "zqserver_level";
constexpr std::uint32_t kDword = 4;
constexpr std::uint32_t kExpandText = 2;

class TraceConfigReadingTest : public testing::Test {
 protected:
  ~TraceConfigReadingTest() override { TheMachine() = {}; }
  void Read() { ReadTraceConfig(config_, kMask); }

  /// A first reading that takes something else than the default everywhere.
  void EveryValueOnce() {
    SetText("Level", "0xF0");
    SetText(kMask, "0320");
    SetText("Consult", "30");
    SetText("Format", "Short");
    SetText("FctName", "Install*");
    SetText("Module", "SRV");
    SetText("String", ">>");
    SetText("TraceId", "QORLIX*");
    SetText("sm_size", "5000");
    SetText("Output", "SM");
    Read();
    SetText("Output", "FILE");
    SetText("Byte/File", "1000");
    SetText("Path", "D:\\Log");
    SetText("FileName", "run.log");
    Read();
  }

  static void Remove(const char* name) { TheMachine().parameters.erase(name); }

  TraceConfig config_;
};

TEST_F(TraceConfigReadingTest, WithoutTheKeyEverythingHasItsDefault) {
  TheMachine().keyExists = false;
  SetText("Level", "255");
  Read();
  EXPECT_EQ(config_.level, 0u);
  EXPECT_EQ(config_.programMask, 0u);
  EXPECT_EQ(config_.consult, 0);
  EXPECT_EQ(config_.format, TraceFormat::kLong);
  EXPECT_EQ(config_.output, TraceOutput::kFile);
  EXPECT_EQ(config_.fileLimit, 2097152u);
  EXPECT_EQ(config_.ringSize, 2000000u);
  EXPECT_STREQ(config_.filePrefix, "C:\\TMP\\ZqFILE");
  EXPECT_EQ(config_.function.size() + config_.module.size() + config_.text.size() +
                config_.traceId.size(),
            0u);
}

TEST_F(TraceConfigReadingTest, AnEmptyKeyIsLikeNone) {
  Read();
  EXPECT_EQ(config_.level, 0u);
  EXPECT_STREQ(config_.filePrefix, "C:\\TMP\\ZqFILE");
}

TEST_F(TraceConfigReadingTest, EveryValueIsTaken) {
  SetText("Level", "0xF0");
  SetText(kMask, "0320");
  SetText("Consult", "30");
  SetText("Format", "Short");
  SetText("FctName", "Install* Reg_*");
  SetText("Module", "SRV");
  SetText("String", ">>");
  SetText("TraceId", "QORLIX*");
  SetText("Output", "File");
  SetText("Byte/File", "1000");
  SetText("Path", "D:\\Log");
  SetText("FileName", "run.log");
  Read();
  EXPECT_EQ(config_.level, 0xF0u);
  EXPECT_EQ(config_.programMask, 208u);
  EXPECT_EQ(config_.consult, 30);
  EXPECT_EQ(config_.format, TraceFormat::kShort);
  EXPECT_EQ(config_.function.size(), 2u);
  EXPECT_TRUE(config_.module.Passes("srv", MatchMode::kWhole));
  EXPECT_FALSE(config_.text.Passes("<< x", MatchMode::kLeadingPart));
  EXPECT_FALSE(config_.traceId.Passes("OTHER", MatchMode::kWhole));
  EXPECT_EQ(config_.output, TraceOutput::kFile);
  EXPECT_EQ(config_.fileLimit, 1000u);
  EXPECT_STREQ(config_.filePrefix, "D:\\Log\\run");
}

TEST_F(TraceConfigReadingTest, ANumericLevelIsIgnored) {
  TheMachine().parameters["Level"] = {kDword, std::string("\xFF\x00\x00\x00", 4)};
  SetText(kMask, "255");
  Read();
  EXPECT_EQ(config_.level, 0u);
  EXPECT_EQ(config_.programMask, 0u);
}

TEST_F(TraceConfigReadingTest, OnlyPlainTextsCount) {
  TheMachine().parameters["Level"] = {kExpandText, std::string("255\0", 4)};
  TheMachine().parameters["Format"] = {3, std::string("TEXT\0", 5)};
  Read();
  EXPECT_EQ(config_.level, 0u);
  EXPECT_EQ(config_.format, TraceFormat::kLong);
}

TEST_F(TraceConfigReadingTest, AValueWithoutAByteIsNone) {
  TheMachine().parameters["Level"] = {1, ""};
  SetText(kMask, "255");
  Read();
  EXPECT_EQ(config_.programMask, 0u);
}

TEST_F(TraceConfigReadingTest, AnEmptyTextIsPresent) {
  SetText("Level", "");
  SetText(kMask, "255");
  SetText("FctName", "");
  Read();
  EXPECT_EQ(config_.level, 0u);
  EXPECT_EQ(config_.programMask, 255u);
  EXPECT_EQ(config_.function.size(), 0u);
}

TEST_F(TraceConfigReadingTest, TheProgramMaskIsReadOnlyBesideALevel) {
  SetText(kMask, "255");
  Read();
  EXPECT_EQ(config_.programMask, 0u);
}

TEST_F(TraceConfigReadingTest, AProgramWithoutAMaskNameHasNoMask) {
  SetText("Level", "255");
  SetText(kMask, "255");
  ReadTraceConfig(config_, /*programMaskName=*/nullptr);
  EXPECT_EQ(config_.level, 255u);
  EXPECT_EQ(config_.programMask, 0u);
}

TEST_F(TraceConfigReadingTest, WhatIsGoneAtTheNextReadingHasItsDefaultAgain) {
  EveryValueOnce();
  SetText("Output", "DBG");
  Read();
  TheMachine().parameters.clear();
  SetText("Level", "1");
  Read();
  EXPECT_EQ(config_.consult, 0);
  EXPECT_EQ(config_.format, TraceFormat::kLong);
  EXPECT_EQ(config_.output, TraceOutput::kFile);
  EXPECT_EQ(config_.function.size(), 0u);
  EXPECT_EQ(config_.module.size(), 0u);
  EXPECT_EQ(config_.text.size(), 0u);
  EXPECT_EQ(config_.traceId.size(), 0u);
}

TEST_F(TraceConfigReadingTest, MaskPrefixAndSizesKeepAnEarlierValue) {
  EveryValueOnce();
  TheMachine().parameters.clear();
  SetText("Level", "1");
  Read();
  EXPECT_EQ(config_.programMask, 208u);
  EXPECT_EQ(config_.fileLimit, 1000u);
  EXPECT_EQ(config_.ringSize, 5000u);
  EXPECT_STREQ(config_.filePrefix, "D:\\Log\\run");
}

TEST_F(TraceConfigReadingTest, WithoutTheKeyMaskPrefixAndSizesKeepAnEarlierValueToo) {
  EveryValueOnce();
  TheMachine().keyExists = false;
  Read();
  EXPECT_EQ(config_.level, 0u);
  EXPECT_EQ(config_.programMask, 208u);
  EXPECT_STREQ(config_.filePrefix, "D:\\Log\\run");
}

TEST_F(TraceConfigReadingTest, ASizeThatIsNotAboveZeroKeepsTheDefault) {
  for (const char* size : {"0", "-5", "many", ""}) {
    SetText("Byte/File", size);
    SetText("sm_size", size);
    Read();
    EXPECT_EQ(config_.fileLimit, 2097152u) << size;
    SetText("Output", "SM");
    Read();
    EXPECT_EQ(config_.ringSize, 2000000u) << size;
    Remove("Output");
  }
}

TEST_F(TraceConfigReadingTest, FileValuesCountWhereverTheOutputIsFile) {
  SetText("Byte/File", "1000");
  SetText("FileName", "run");
  Read();
  EXPECT_EQ(config_.fileLimit, 1000u);
  EXPECT_STREQ(config_.filePrefix, "C:\\Tmp\\run");

  config_ = {};
  SetText("Output", "unknown");
  Read();
  EXPECT_EQ(config_.fileLimit, 1000u);
}

TEST_F(TraceConfigReadingTest, FileValuesDoNotCountForOtherOutputs) {
  SetText("Byte/File", "1000");
  SetText("FileName", "run");
  SetText("sm_size", "5000");
  SetText("Output", "DBG");
  Read();
  EXPECT_EQ(config_.fileLimit, 2097152u);
  EXPECT_EQ(config_.ringSize, 2000000u);
  EXPECT_STREQ(config_.filePrefix, "C:\\TMP\\ZqFILE");
}

TEST_F(TraceConfigReadingTest, EmptyPathAndNameLeaveThePrefix) {
  SetText("Path", "");
  SetText("FileName", "");
  Read();
  EXPECT_STREQ(config_.filePrefix, "C:\\TMP\\ZqFILE");
}

TEST_F(TraceConfigReadingTest, AValueOf260BytesWithoutATerminatorIsTakenWhole) {
  TheMachine().parameters["FileName"] = {1, std::string(260, 'n')};
  TheMachine().parameters["FctName"] = {1, std::string(260, 'f')};
  Read();
  EXPECT_EQ(std::string(config_.filePrefix), "C:\\Tmp\\" + std::string(253, 'n'));
  ASSERT_EQ(config_.function.size(), 1u);
  EXPECT_EQ(config_.function[0], std::string(255, 'F'));
}

TEST_F(TraceConfigReadingTest, ALongerValueIsNone) {
  TheMachine().parameters["FileName"] = {1, std::string(261, 'n')};
  Read();
  EXPECT_STREQ(config_.filePrefix, "C:\\TMP\\ZqFILE");
}

TEST_F(TraceConfigReadingTest, OneMaskCanBeReadByItsName) {
  SetText("other_level", "0x30");
  TheMachine().parameters["numeric"] = {kDword, std::string("\x01\x00\x00\x00", 4)};
  EXPECT_EQ(zqotrc::ReadMaskParameter("other_level"), 0x30u);
  EXPECT_EQ(zqotrc::ReadMaskParameter("numeric"), 0u);
  EXPECT_EQ(zqotrc::ReadMaskParameter("missing"), 0u);
  TheMachine().keyExists = false;
  EXPECT_EQ(zqotrc::ReadMaskParameter("other_level"), 0u);
}

}  // namespace
