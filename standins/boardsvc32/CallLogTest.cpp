#include "standins/boardsvc32/CallLog.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>

namespace boardsim {
namespace {

TEST(CallLogTest, ALineHasWhatCameInTheResultAndWhatWentOut) {
  EXPECT_EQ(FormatCall({.sequence = 7,
                        .operation = Operation::kBoardGetMap,
                        .result = 0,
                        .lock = LockState::kHeld,
                        .thread = 292},
                       "deviceId=\"A\" boardMap[8192]", "boardMap=1"),
            "7 BRDX_BoardGetMapBL deviceId=\"A\" boardMap[8192] -> 0 boardMap=1 lock=held "
            "thread=292");
}

TEST(CallLogTest, AFaultIsNamedByItsLine) {
  EXPECT_EQ(FormatCall({.sequence = 1,
                        .operation = Operation::kScan,
                        .result = 5,
                        .lock = LockState::kFree,
                        .thread = 3,
                        .faultLine = 12},
                       "", ""),
            "1 BRDX_ScanBL -> 5 lock=free thread=3 fault=12");
}

TEST(CallLogTest, AnExceptionStandsInPlaceOfTheResult) {
  EXPECT_EQ(FormatCall({.sequence = 2,
                        .operation = Operation::kScan,
                        .raised = Raised::kCxx,
                        .lock = LockState::kNone,
                        .thread = 3,
                        .faultLine = 4},
                       "", "room=8192"),
            "2 BRDX_ScanBL -> raise cxx lock=none thread=3 fault=4");
}

TEST(CallLogTest, LinesAreAddedAndCanBeReadWhileTheFileGrows) {
  constexpr char kFile[] = "call_log_test.log";
  (void)std::remove(kFile);
  ASSERT_TRUE(AppendLine(kFile, "one"));
  std::ifstream reader(kFile, std::ios::binary);
  ASSERT_TRUE(AppendLine(kFile, "two"));
  std::stringstream text;
  text << reader.rdbuf();
  EXPECT_EQ(text.str(), "one\ntwo\n");
  reader.close();
  (void)std::remove(kFile);
}

TEST(CallLogTest, AFileThatCannotBeWrittenIsReported) {
  EXPECT_FALSE(AppendLine("no/such/folder/file.log", "line"));
}

}  // namespace
}  // namespace boardsim
