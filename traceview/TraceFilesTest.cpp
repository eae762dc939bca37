#include "traceview/TraceFiles.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace traceview {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

TraceLine At(Layout layout, std::int64_t microseconds) {
  TraceLine line;
  line.layout = layout;
  line.microseconds = microseconds;
  return line;
}

constexpr std::int64_t kHour = 3600ll * 1000000;

ReadFile File(std::uint64_t written, std::vector<TraceLine> lines) {
  return {{/*exists=*/true, /*size=*/1, written, /*identity=*/1}, std::move(lines)};
}

TEST(IsOlderTest, TheTimeOfTheLastWritingDecides) {
  EXPECT_TRUE(IsOlder(File(1, {}), File(2, {})));
  EXPECT_FALSE(IsOlder(File(2, {}), File(1, {})));
}

TEST(IsOlderTest, AtTheSameTimeTheLinesDecide) {
  const auto early = File(1, {At(Layout::kLong, 1 * kHour), At(Layout::kLong, 2 * kHour)});
  const auto late = File(1, {At(Layout::kUnknown, -1), At(Layout::kLong, 2 * kHour + 1)});
  EXPECT_TRUE(IsOlder(early, late));
  EXPECT_FALSE(IsOlder(late, early));
}

TEST(IsOlderTest, MidnightBetweenTheFilesIsSeen) {
  const auto evening = File(1, {At(Layout::kLong, 23 * kHour), At(Layout::kLong, 24 * kHour - 1)});
  const auto night = File(1, {At(Layout::kLong, 0), At(Layout::kLong, 1 * kHour)});
  EXPECT_TRUE(IsOlder(evening, night));
  EXPECT_FALSE(IsOlder(night, evening));
}

TEST(IsOlderTest, WithoutTimesTheSecondFileIsTheOlder) {
  EXPECT_FALSE(IsOlder(File(1, {At(Layout::kText, -1)}), File(1, {At(Layout::kText, -1)})));
}

TEST(PairOfTest, OnlyNamesOfThePairHaveATwin) {
  EXPECT_THAT(PairOf("C:\\Tmp\\X1.TRC"), ElementsAre("C:\\Tmp\\X1.TRC", "C:\\Tmp\\X2.TRC"));
  EXPECT_THAT(PairOf("x2.trc"), ElementsAre("x1.trc", "x2.trc"));
  EXPECT_THAT(PairOf("x3.trc"), ElementsAre("x3.trc"));
  EXPECT_THAT(PairOf("1.log"), ElementsAre("1.log"));
  EXPECT_THAT(PairOf(""), ElementsAre(""));
}

class TraceFilesTest : public testing::Test {
 protected:
  TraceFilesTest() {
    folder_ = std::filesystem::temp_directory_path() /
              ("qorlix_traceview_" +
               std::to_string(std::chrono::system_clock::now().time_since_epoch().count()));
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
  }
  ~TraceFilesTest() override { std::filesystem::remove_all(folder_); }

  std::string Path(int index) const {
    return (folder_ / ("T" + std::to_string(index) + ".TRC")).string();
  }
  std::vector<std::string> Pair() const { return {Path(1), Path(2)}; }

  void Append(int index, const std::string& text) const {
    std::ofstream(Path(index), std::ios::binary | std::ios::app) << text;
  }
  void Remove(int index) const { std::filesystem::remove(Path(index)); }
  void MakeOlder(int index) const {
    const auto time = std::filesystem::last_write_time(Path(index));
    std::filesystem::last_write_time(Path(index), time - std::chrono::seconds(10));
  }

  std::vector<std::string> Texts(const std::vector<std::string>& paths, bool withTwin) {
    std::vector<TraceLine> lines;
    std::vector<std::string> texts;
    error_.clear();
    notes_.clear();
    if (!ReadTraceFiles(paths, withTwin, lines, error_, &notes_)) return {"failed"};
    for (const TraceLine& line : lines) texts.push_back(line.text);
    return texts;
  }

  std::filesystem::path folder_;
  std::string error_;
  std::vector<std::string> notes_;
};

TEST_F(TraceFilesTest, APairIsReadInTheOrderOfWritingHoweverItIsNamed) {
  Append(1, "F: new \r\nF: newer \r\n");
  Append(2, "F: old \r\nF: cut");
  MakeOlder(2);
  const auto expected = ElementsAre("old", "cut", "new", "newer");
  EXPECT_THAT(Texts({Path(1), Path(2)}, false), expected);
  EXPECT_THAT(Texts({Path(2), Path(1)}, false), expected);
  EXPECT_THAT(Texts({Path(1)}, true), expected);
  EXPECT_THAT(Texts({Path(2)}, true), expected);
  EXPECT_THAT(Texts({Path(2)}, false), ElementsAre("old", "cut"));
}

TEST_F(TraceFilesTest, ATwinThatIsMissingIsNoFailureWhicheverIsNamed) {
  Append(2, "F: only \r\n");
  EXPECT_THAT(Texts({Path(2)}, true), ElementsAre("only"));
  EXPECT_THAT(Texts({Path(1)}, true), ElementsAre("only"));
  EXPECT_THAT(Texts({Path(1)}, false), ElementsAre("failed"));
  EXPECT_THAT(error_, HasSubstr("there is no file"));
  EXPECT_THAT(error_, HasSubstr("T1.TRC"));
}

TEST_F(TraceFilesTest, OfAPairThatIsNamedOneFileIsEnoughAndTheOtherIsNoted) {
  Append(2, "F: only \r\n");
  for (const auto& paths : {Pair(), {Path(2), Path(1)}}) {
    EXPECT_THAT(Texts(paths, false), ElementsAre("only"));
    EXPECT_THAT(notes_, ElementsAre(HasSubstr("T1.TRC; its twin is read alone")));
  }
  EXPECT_THAT(Texts({Path(1)}, true), ElementsAre("only"));
  EXPECT_THAT(notes_, IsEmpty());
  Remove(2);
  EXPECT_THAT(Texts(Pair(), false), ElementsAre("failed"));
}

TEST_F(TraceFilesTest, WhatIsNoTraceIsNoted) {
  Append(7, "<html>\r\nsome text\r\n");
  EXPECT_THAT(Texts({Path(7)}, false), SizeIs(2));
  EXPECT_THAT(notes_, ElementsAre(HasSubstr("T7.TRC does not look like a trace")));
  Append(8, "F: one \r\nF: two \r\ngarbage\r\n");
  EXPECT_THAT(Texts({Path(8)}, false), SizeIs(3));
  EXPECT_THAT(notes_, IsEmpty());
}

TEST_F(TraceFilesTest, LinesThatAreCutAreTorn) {
  const auto torn = [](const char* text) {
    std::vector<TraceLine> lines;
    SplitLines(text, /*source=*/0, lines);
    std::string marks;
    for (const TraceLine& line : lines) marks += line.torn ? '1' : '0';
    return marks;
  };
  EXPECT_EQ(torn("F: a \nF: b \n"), "00");
  EXPECT_EQ(torn("F: a \nF: b"), "01");
  EXPECT_EQ(torn("Start\nF: b \nword\n"), "100");
  EXPECT_EQ(torn("Start\nword\n"), "00");
  EXPECT_EQ(torn("F:"), "1");
  EXPECT_EQ(torn(""), "");
}

TEST_F(TraceFilesTest, WithoutAnyFileItFails) {
  EXPECT_THAT(Texts({Path(1)}, true), ElementsAre("failed"));
  EXPECT_THAT(Texts({folder_.string()}, false), ElementsAre("failed"));
}

TEST_F(TraceFilesTest, FilesThatAreNoPairComeAsNamed) {
  Append(7, "F: seven \r\n");
  Append(5, "F: five \r\n");
  EXPECT_THAT(Texts({Path(7), Path(5)}, true), ElementsAre("seven", "five"));
}

using FileFollowerTest = TraceFilesTest;

TEST_F(FileFollowerTest, OnlyWhatIsNewComesAndOnlyWholeLines) {
  Append(1, "a\r\nb");
  FileFollower follower(Pair());
  follower.SkipToEnd();
  EXPECT_THAT(follower.Poll(), IsEmpty());
  Append(1, "c");
  EXPECT_THAT(follower.Poll(), IsEmpty());
  Append(1, "d\r\ne\r\n");
  EXPECT_THAT(follower.Poll(), ElementsAre("bcd", "e"));
  EXPECT_THAT(follower.Poll(), IsEmpty());
}

TEST_F(FileFollowerTest, WithoutSkippingWhatIsThereComesFirstTheOlderFileFirst) {
  Append(2, "old\n");
  Append(1, "new\n");
  MakeOlder(2);
  FileFollower follower(Pair());
  EXPECT_THAT(follower.Poll(), ElementsAre("old", "new"));
}

TEST_F(FileFollowerTest, ARotationIsFollowedInOneLook) {
  Append(1, "a\n");
  FileFollower follower(Pair());
  follower.SkipToEnd();
  Append(1, "b\n");
  Append(2, "c\n");
  EXPECT_THAT(follower.Poll(), ElementsAre("b", "c"));
  Append(2, "d\n");
  Remove(1);
  Append(1, "e\n");
  EXPECT_THAT(follower.Poll(), ElementsAre("d", "e"));
}

TEST_F(FileFollowerTest, TheFileThatIsWrittenAnewComesBehindTheRestOfTheOther) {
  Append(1, "aaa\n");
  Append(2, "b\n");
  MakeOlder(2);
  FileFollower follower(Pair());
  follower.SkipToEnd();
  Remove(2);
  Append(1, "c\n");
  Append(2, "d\n");
  Remove(1);
  Append(1, "e\n");
  // Of the first file only what stands in it by now can be had.
  EXPECT_THAT(follower.Poll(), ElementsAre("d", "e"));
}

TEST_F(FileFollowerTest, AFileThatGrewBeyondItsOldSizeAfterADeletionIsNoticed) {
  Append(1, "first line\n");
  FileFollower follower(Pair());
  follower.SkipToEnd();
  Remove(1);
  Append(1, "other line\nand more\n");
  EXPECT_THAT(follower.Poll(), ElementsAre("other line", "and more"));
}

TEST_F(FileFollowerTest, AHalfLineOfADeletedFileIsNotLost) {
  FileFollower follower(Pair());
  Append(1, "half");
  EXPECT_THAT(follower.Poll(), IsEmpty());
  Remove(1);
  EXPECT_THAT(follower.Poll(), IsEmpty());
  Append(1, "new\n");
  EXPECT_THAT(follower.Poll(), ElementsAre("half", "new"));
}

TEST_F(FileFollowerTest, AFileThatDoesNotExistYetIsWaitedFor) {
  FileFollower follower(Pair());
  follower.SkipToEnd();
  EXPECT_THAT(follower.Poll(), IsEmpty());
  EXPECT_EQ(follower.error(), 0u);
  Append(1, "a\n");
  EXPECT_THAT(follower.Poll(), ElementsAre("a"));
}

TEST_F(FileFollowerTest, AWriterMayDeleteTheFileBetweenTwoLooks) {
  Append(1, "a\n");
  FileFollower follower(Pair());
  EXPECT_THAT(follower.Poll(), ElementsAre("a"));
  EXPECT_TRUE(std::filesystem::remove(Path(1)));
}

}  // namespace
}  // namespace traceview
