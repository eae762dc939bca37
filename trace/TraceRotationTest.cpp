#include "trace/TraceRotation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/fakes/trace/FakeTrace.h"

namespace {

using FakeTrace::TheMachine;
using testing::ElementsAre;
using zqotrc::ChooseFile;
using zqotrc::FilePair;

constexpr char kPrefix[] = "C:\\Tmp\\t";
constexpr char kFirst[] = "C:\\Tmp\\t1.TRC";
constexpr char kSecond[] = "C:\\Tmp\\t2.TRC";
constexpr std::uint32_t kLimit = 1000;

class TraceRotationTest : public testing::Test {
 protected:
  ~TraceRotationTest() override {
    EXPECT_EQ(TheMachine().openFiles, 0);
    TheMachine() = {};
  }

  void Append(std::string_view line) { pair_.Append(kPrefix, kLimit, line); }
  static void Put(const char* name, std::size_t size, std::uint64_t written = 0) {
    TheMachine().files[name] = {std::string(size, 'o'), written};
  }
  static bool Exists(const char* name) { return TheMachine().files.count(name) != 0; }
  static std::string Content(const char* name) {
    return Exists(name) ? TheMachine().files.at(name).content : "";
  }
  static std::size_t Size(const char* name) { return Content(name).size(); }

  FilePair pair_;
};

TEST(ChooseFileTest, TheFileThatWasWrittenLastGoesOn) {
  EXPECT_EQ(ChooseFile(5, 6), 2);
  EXPECT_EQ(ChooseFile(6, 5), 1);
  EXPECT_EQ(ChooseFile(5, 5), 1);
}

TEST(ChooseFileTest, AFileThatIsAloneGoesOn) {
  EXPECT_EQ(ChooseFile(std::nullopt, 5), 2);
  EXPECT_EQ(ChooseFile(5, std::nullopt), 1);
  EXPECT_EQ(ChooseFile(std::nullopt, std::nullopt), 1);
}

TEST_F(TraceRotationTest, TheChoiceLooksAtBothFiles) {
  Put(kSecond, 1, /*written=*/7);
  pair_.Choose(kPrefix);
  EXPECT_EQ(pair_.current(), 2);
  Put(kFirst, 1, /*written=*/8);
  pair_.Choose(kPrefix);
  EXPECT_EQ(pair_.current(), 1);
}

TEST_F(TraceRotationTest, ALineEndsInTwoCharactersAndSoDoesALineFeedInsideIt) {
  Append("one");
  Append("two\nthree\r\n");
  EXPECT_EQ(Content(kFirst), "one\r\ntwo\r\nthree\r\r\n\r\n");
  EXPECT_FALSE(Exists(kSecond));
}

TEST_F(TraceRotationTest, NoFileStaysOpenBetweenLines) {
  Append("one");
  EXPECT_THAT(TheMachine().fileSteps,
              ElementsAre(std::string("open ") + kFirst, "append", "close"));
  EXPECT_EQ(TheMachine().openFiles, 0);
}

TEST_F(TraceRotationTest, ALineThatJustReachesTheLimitDoesNotSwitch) {
  Put(kFirst, kLimit - 5);
  Append("abc");
  EXPECT_EQ(Size(kFirst), kLimit);
  EXPECT_EQ(pair_.current(), 1);
  EXPECT_FALSE(Exists(kSecond));
}

TEST_F(TraceRotationTest, TheLineThatCrossesTheLimitIsTheLastOfItsFile) {
  Put(kFirst, kLimit - 4);
  Append("abc");
  EXPECT_EQ(Size(kFirst), kLimit + 1);
  EXPECT_EQ(pair_.current(), 2);
  EXPECT_EQ(Size(kSecond), 0u);
  Append("def");
  EXPECT_EQ(Content(kSecond), "def\r\n");
  EXPECT_EQ(Size(kFirst), kLimit + 1);
}

TEST_F(TraceRotationTest, TheOtherFileIsRemovedRightAfterTheSwitchIfItIsAboveTheLimit) {
  Put(kFirst, kLimit);
  Put(kSecond, kLimit + 1);
  Append("abc");
  EXPECT_EQ(pair_.current(), 2);
  EXPECT_FALSE(Exists(kSecond));
}

TEST_F(TraceRotationTest, TheOtherFileStaysAtTheSwitchIfItIsWithinTheLimit) {
  Put(kFirst, kLimit);
  Put(kSecond, kLimit);
  Append("abc");
  EXPECT_EQ(pair_.current(), 2);
  EXPECT_EQ(Size(kSecond), kLimit);
}

TEST_F(TraceRotationTest, ALineThatFindsItsFileFullGoesToTheOtherOne) {
  Put(kFirst, kLimit + 1);
  Put(kSecond, 10);
  Append("abc");
  EXPECT_EQ(Size(kFirst), kLimit + 1);
  EXPECT_EQ(Content(kSecond), std::string(10, 'o') + "abc\r\n");
  EXPECT_EQ(pair_.current(), 2);
}

TEST_F(TraceRotationTest, WithBothFilesFullTheNextLineEmptiesTheOtherOne) {
  Put(kFirst, kLimit + 1);
  Put(kSecond, kLimit + 1);
  Append("abc");
  EXPECT_EQ(Size(kFirst), kLimit + 1);
  EXPECT_EQ(Content(kSecond), "abc\r\n");
  EXPECT_EQ(pair_.current(), 2);
  EXPECT_THAT(TheMachine().fileSteps,
              ElementsAre(std::string("open ") + kFirst, "close", std::string("open ") + kSecond,
                          "close", std::string("remove ") + kSecond, std::string("open ") + kSecond,
                          "append", "close"));
}

TEST_F(TraceRotationTest, ManyLinesAlternateAndNeverGrowFarBeyondTheLimit) {
  for (int line = 0; line < 1000; ++line) {
    Append("line " + std::to_string(line));
    EXPECT_LE(Size(kFirst), kLimit + 10);
    EXPECT_LE(Size(kSecond), kLimit + 10);
  }
  const std::string last = "line 999\r\n";
  const std::string current = Content(pair_.current() == 1 ? kFirst : kSecond);
  const std::string other = Content(pair_.current() == 1 ? kSecond : kFirst);
  EXPECT_TRUE(current.ends_with(last) || (current.empty() && other.ends_with(last)));
}

TEST_F(TraceRotationTest, AFileThatCannotBeOpenedDropsTheLine) {
  TheMachine().unopenable.insert(kFirst);
  Append("abc");
  EXPECT_TRUE(TheMachine().files.empty());
}

TEST_F(TraceRotationTest, AFileThatCannotBeMeasuredDropsTheLine) {
  Put(kFirst, 3);
  TheMachine().unmeasurable.insert(kFirst);
  Append("abc");
  EXPECT_EQ(Size(kFirst), 3u);
}

TEST_F(TraceRotationTest, ASecondFileThatCannotBeOpenedDropsTheLineToo) {
  Put(kFirst, kLimit + 1);
  TheMachine().unopenable.insert(kSecond);
  Append("abc");
  EXPECT_EQ(Size(kFirst), kLimit + 1);
  EXPECT_FALSE(Exists(kSecond));
}

TEST_F(TraceRotationTest, ALineOfTheLargestSizeMadeOfLineFeedsIsWhole) {
  const std::string line(418, '\n');
  Append(line);
  EXPECT_EQ(Size(kFirst), 2u * 418 + 2);
}

}  // namespace
