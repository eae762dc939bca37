#include "server/CrashReport.h"

#include <gmock/gmock.h>

#include <cstring>
#include <string>

#include "server/RequestLog.h"

namespace {

using platform::Crash;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class CrashReportTest : public testing::Test {
 protected:
  CrashReportTest() {
    request_log::Reset();
    crash_.code = 0xC0000005;
    crash_.address = 0x6A3C1234;
    crash_.parameterCount = 2;
    crash_.parameters[0] = 1;
    crash_.parameters[1] = 0x10;
    crash_.process = 340;
    crash_.thread = 344;
    crash_.isPreparingThread = true;
    std::strcpy(crash_.module, "\\Device\\HarddiskVolume1\\sampledev.dll");
    crash_.offset = 0x1234;
    crash_.year = 2026;
    crash_.month = 1;
    crash_.day = 2;
    crash_.hour = 3;
    crash_.minute = 4;
    crash_.second = 5;
    crash_.millisecond = 6;
  }
  ~CrashReportTest() override { request_log::Reset(); }

  std::string Report() {
    const std::size_t size = ReportCrash(crash_, text_, sizeof(text_));
    EXPECT_EQ(size, std::strlen(text_));
    return {text_, size};
  }

  Crash crash_ = {};
  char text_[platform::kCrashTextSize];
};

TEST_F(CrashReportTest, ItSaysWhatHappenedWhereAndWhen) {
  EXPECT_EQ(Report(), "QorlixSRV " QORLIX_VERSION
                      " ended by an unhandled exception\r\n"
                      "\r\n"
                      "Time:      2026-01-02 03:04:05.006 UTC\r\n"
                      "Process:   340\r\n"
                      "Thread:    344, which serves the requests\r\n"
                      "Exception: 0xc0000005, writing 0x00000010\r\n"
                      "Address:   0x6a3c1234, \\Device\\HarddiskVolume1\\sampledev.dll+0x1234\r\n"
                      "\r\n"
                      "The last 0 requests, oldest first; > is the one that was being served\r\n"
                      "\r\n"
                      "      Number  Command  Connection      Client      Result\r\n");
}

TEST_F(CrashReportTest, OtherExceptionsAndOtherThreadsAreToldAsSuch) {
  crash_.code = 0xE06D7363;
  crash_.isPreparingThread = false;
  crash_.module[0] = '\0';
  const std::string report = Report();
  EXPECT_THAT(report, HasSubstr("Thread:    344, which serves no requests\r\n"));
  EXPECT_THAT(report, HasSubstr("Exception: 0xe06d7363\r\n"));
  EXPECT_THAT(report, HasSubstr("Address:   0x6a3c1234, in no module\r\n"));
}

TEST_F(CrashReportTest, AnAccessViolationTellsTheKindOfAccess) {
  crash_.parameters[0] = 0;
  EXPECT_THAT(Report(), HasSubstr(", reading 0x00000010\r\n"));
  crash_.parameters[0] = 8;
  EXPECT_THAT(Report(), HasSubstr(", executing 0x00000010\r\n"));
  crash_.parameters[0] = 3;
  EXPECT_THAT(Report(), HasSubstr(", accessing 0x00000010\r\n"));
  crash_.parameterCount = 1;
  EXPECT_THAT(Report(), HasSubstr("Exception: 0xc0000005\r\n"));
}

TEST_F(CrashReportTest, RequestsStandInTheirOrderAndTheOneBeingServedIsMarked) {
  request_log::Begin(0x16, 3, 996);
  request_log::End(0);
  request_log::Begin(0x121, 63, 0xFFFFFFFC);
  request_log::End(0x103);
  request_log::Begin(5, 0, 1000);
  const std::string report = Report();
  const std::string rows =
      "      Number  Command  Connection      Client      Result\r\n"
      "           1   0x0016           3         996  0x00000000\r\n"
      "           2   0x0121          63  4294967292  0x00000103\r\n"
      ">          3   0x0005           0        1000           -\r\n";
  EXPECT_THAT(report, HasSubstr("The last 3 requests,"));
  ASSERT_GE(report.size(), rows.size());
  EXPECT_EQ(report.substr(report.size() - rows.size()), rows);
}

TEST_F(CrashReportTest, AllOfTheLongestRequestsFit) {
  std::memset(crash_.module, 'm', sizeof(crash_.module) - 1);
  for (std::uint32_t i = 0; i <= request_log::kRecords; ++i) {
    request_log::Begin(0xFFFF, 63, 0xFFFFFFFF);
    request_log::End(0xFFFFFFFF - i);
  }
  const std::string report = Report();
  EXPECT_LT(report.size(), sizeof(text_) - 1);
  EXPECT_THAT(report, Not(HasSubstr(" 0xffffffff\r\n")));
  EXPECT_THAT(report, HasSubstr(" 0xfffffffe\r\n"));
  EXPECT_THAT(report, testing::EndsWith(" 0xfffffeff\r\n"));
}

TEST_F(CrashReportTest, WhatDoesNotFitIsCut) {
  for (std::size_t capacity = 1; capacity < 400; ++capacity) {
    const std::string whole = Report();
    std::memset(text_, 'x', sizeof(text_));
    const std::size_t size = ReportCrash(crash_, text_, capacity);
    ASSERT_EQ(size, std::min(capacity - 1, whole.size()));
    EXPECT_EQ(text_[size], '\0');
    EXPECT_EQ(text_[capacity], 'x');
    EXPECT_THAT(whole, StartsWith(std::string(text_, size)));
  }
}

}  // namespace
