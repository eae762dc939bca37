#include <algorithm>
#include <iterator>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include "board/testing/BoardFixture.h"

// The three answers of every board-control command, byte by byte.

namespace {

using Lengths = std::vector<std::uint32_t>;

// The library writes "a", "bb", "ccc" and so on, and reports lengths that are not theirs, so that
// each stands for itself: 0x11, 0x12, 0x13 ... when it succeeds, 0x101, 0x102 ... when it fails.
struct AnswerCase {
  const char* name;
  const char* success;
  const char* failure;  ///< with the result 31
};

const AnswerCase kAnswers[] = {
    {"EnumBoard",
     "0400 00000000 01000000 61 11000000 02000000 6262 12000000 03000000 636363 13000000",
     "0400 1F000000 01010000 00200000 02010000"},
    {"EnumInstBoard",
     "0400 00000000 01000000 61 11000000 02000000 6262 12000000 03000000 636363 13000000"
     "04000000 64646464 14000000 05000000 6565656565 15000000 06000000 666666666666 16000000"
     "0DF0FECA",
     "0400 1F000000 01010000 02010000 03010000 06010000"},
    {"EnumAvailableBoard", "0400 00000000 01000000 61 11000000 02000000 6262 12000000 0DF0FECA",
     "0400 1F000000 01010000 02010000"},
    {"EnumAdapters", "0400 00000000 01000000 61 11000000 02000000 6262 12000000 A5",
     "0400 1F000000 01010000 02010000"},
    {"EnumConfiguration",
     "0400 00000000 01000000 61 11000000 02000000 6262 12000000 03000000 636363 13000000"
     "04000000 64646464 14000000",
     "0400 1F000000 01010000 02010000 03010000 04010000"},
    {"BoardGetMap", "0400 00000000 01000000 61 11000000", "0400 1F000000 01010000"},
    {"GetBoardInfo", "0400 00000000 01000000 61 11000000", "0400 1F000000 01010000"},
    // As many bytes as the library reports: what it did not write is 0.
    {"GetBoardInfoEx", "0400 00000000 11000000 6100000000000000000000000000000000",
     "0400 1F000000 01010000"},
    {"Scan", "0400 00000000", "0400 1F000000"},
    {"CreateAllLogdevices", "0400 00000000", "0400 1F000000"},
    {"HasUninitializedInstances", "0400 00000000", "0400 1F000000"},
    {"UpdateLogDevicesForDevice", "0400 00000000", "0400 1F000000"},
};

// An answer whose lengths add up to 8161, and one whose 32-bit sum would be 0.
struct TooLongCase {
  const char* name;
  Lengths lengths;
  const char* reply;
};

const TooLongCase kTooLong[] = {
    {"EnumBoard", {8158, 1, 2}, "0400 9A210000 DE1F0000 01000000 02000000"},
    {"EnumBoard", {0x80000000, 0x7FFFFFFF, 1}, "0400 9A210000 00000080 FFFFFF7F 01000000"},
    {"EnumInstBoard",
     {8146, 1, 2, 3, 4, 5},
     "0400 9A210000 D21F0000 01000000 02000000 03000000 04000000 05000000"},
    {"EnumInstBoard",
     {0xFFFFFFFF, 1, 0, 0, 0, 0},
     "0400 9A210000 FFFFFFFF 01000000 00000000 00000000 00000000 00000000"},
    {"EnumInstBoard",
     {0, 0, 0, 0, 0x80000000, 0x80000000},
     "0400 9A210000 00000000 00000000 00000000 00000000 00000080 00000080"},
    {"EnumAvailableBoard", {8160, 1}, "0400 9A210000 E01F0000 01000000"},
    {"EnumAvailableBoard", {0x80000000, 0x80000000}, "0400 9A210000 00000080 00000080"},
    // Kept: without its lengths.
    {"EnumAdapters", {1, 8160}, "0400 9A210000"},
    {"EnumAdapters", {1, 0xFFFFFFFF}, "0400 9A210000"},
    {"EnumConfiguration", {8155, 1, 2, 3}, "0400 9A210000 DB1F0000 01000000 02000000 03000000"},
    {"EnumConfiguration",
     {0x40000000, 0x40000000, 0x40000000, 0x40000000},
     "0400 9A210000 00000040 00000040 00000040 00000040"},
    {"BoardGetMap", {8161}, "0400 9A210000 E11F0000"},
    {"BoardGetMap", {0xFFFFFFFF}, "0400 9A210000 FFFFFFFF"},
    {"GetBoardInfo", {8161}, "0400 9A210000 E11F0000"},
    {"GetBoardInfo", {0xFFFFFFFF}, "0400 9A210000 FFFFFFFF"},
    {"GetBoardInfoEx", {8161}, "0400 9A210000 E11F0000"},
    {"GetBoardInfoEx", {0xFFFFFFFF}, "0400 9A210000 FFFFFFFF"},
};

class BoardAnswerTest : public BoardFixture {
 protected:
  // The library writes one letter per buffer and reports these lengths.
  void Report(const Lengths& lengths) {
    answers_.clear();
    for (const std::uint32_t length : lengths) {
      answers_.push_back(
          {std::string(answers_.size() + 1, static_cast<char>('a' + answers_.size())), length});
    }
  }
};

class BoardAnswerCaseTest : public BoardAnswerTest,
                            public testing::WithParamInterface<AnswerCase> {};
INSTANTIATE_TEST_SUITE_P(Commands, BoardAnswerCaseTest, testing::ValuesIn(kAnswers),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(BoardAnswerCaseTest, SuccessCarriesTextsAndReportedLengths) {
  value_ = 0xCAFEF00D;
  byte_ = 0xA5;
  Report({0x11, 0x12, 0x13, 0x14, 0x15, 0x16});
  EXPECT_EQ(ReplyTo(BoardCommandNamed(GetParam().name)), Wire(GetParam().success));
}

TEST_P(BoardAnswerCaseTest, AFailureCarriesTheResultUnchangedAndItsLengths) {
  Report({0x101, 0x102, 0x103, 0x104, 0x105, 0x106});
  result_ = 31;
  EXPECT_EQ(ReplyTo(BoardCommandNamed(GetParam().name)), Wire(GetParam().failure));
  result_ = 0xFFFFFFFF;
  EXPECT_EQ(Hex(ReplyTo(BoardCommandNamed(GetParam().name))).substr(0, 12), "0400FFFFFFFF");
  result_ = BUFFER_OVERFLOW;
  EXPECT_EQ(Hex(ReplyTo(BoardCommandNamed(GetParam().name))).substr(0, 12), "04009A210000");
}

TEST_P(BoardAnswerCaseTest, AFailureIsNotMeasured) {
  Report({0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF});
  result_ = 31;
  EXPECT_EQ(Hex(ReplyTo(BoardCommandNamed(GetParam().name))).substr(0, 12), "04001F000000");
  EXPECT_EQ(Reply().size(), Wire(GetParam().failure).size());
}

class BoardTooLongTest : public BoardAnswerTest, public testing::WithParamInterface<TooLongCase> {};
INSTANTIATE_TEST_SUITE_P(Commands, BoardTooLongTest, testing::ValuesIn(kTooLong),
                         [](const auto& info) {
                           return std::string(info.param.name) + std::to_string(info.index);
                         });

TEST_P(BoardTooLongTest, AnAnswerThatDoesNotFitIsToldWithItsLengths) {
  Report(GetParam().lengths);
  EXPECT_EQ(ReplyTo(BoardCommandNamed(GetParam().name)), Wire(GetParam().reply));
}

// The longest answer that fits: one byte less than the shortest that does not.
std::uint64_t SumOf(const Lengths& lengths) {
  return std::accumulate(lengths.begin(), lengths.end(), std::uint64_t{0});
}

std::vector<TooLongCase> JustTooLong() {
  std::vector<TooLongCase> cases;
  std::copy_if(std::begin(kTooLong), std::end(kTooLong), std::back_inserter(cases),
               [](const TooLongCase& one) { return SumOf(one.lengths) == 8161; });
  return cases;
}

class BoardJustTooLongTest : public BoardTooLongTest {};
INSTANTIATE_TEST_SUITE_P(Commands, BoardJustTooLongTest, testing::ValuesIn(JustTooLong()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(BoardJustTooLongTest, OneByteLessIsAnswered) {
  Lengths lengths = GetParam().lengths;
  --*std::max_element(lengths.begin(), lengths.end());
  Report(lengths);
  EXPECT_EQ(Hex(ReplyTo(BoardCommandNamed(GetParam().name))).substr(0, 12), "040000000000");
}

// Every command that measures its answer is among them.
TEST(BoardJustTooLongCasesTest, EveryCommandHasItsLimitTried) {
  std::set<std::string> all, tried;
  for (const TooLongCase& one : kTooLong) all.insert(one.name);
  for (const TooLongCase& one : JustTooLong()) tried.insert(one.name);
  EXPECT_EQ(tried, all);
}

TEST_F(BoardAnswerTest, EnumBoardWhoseLengthsAddUpTo8160IsAnsweredInFull) {
  answers_ = {{std::string(8158, 'a'), 8158}, {"b", 1}, {"c", 1}};
  EXPECT_EQ(ReplyTo(BoardCommandNamed("EnumBoard")),
            Wire("0400 00000000 DE1F0000") + Bytes(8158, 'a') + Wire("DE1F0000") +
                Wire("01000000 62 01000000 01000000 63 01000000"));
}

TEST_F(BoardAnswerTest, ALoneTextOf8160BytesIsAnsweredInFull) {
  answers_ = {{std::string(8160, 'a'), 8160}};
  const Bytes expected = Wire("0400 00000000 E01F0000") + Bytes(8160, 'a') + Wire("E01F0000");
  EXPECT_EQ(ReplyTo(BoardCommandNamed("BoardGetMap")), expected);
  EXPECT_EQ(ReplyTo(BoardCommandNamed("GetBoardInfo")), expected);
  EXPECT_EQ(ReplyTo(BoardCommandNamed("GetBoardInfoEx")),
            Wire("0400 00000000 E01F0000") + Bytes(8160, 'a'));
}

TEST_F(BoardAnswerTest, ATextIsCutAtItsFirstZeroByteAndABufferIsNot) {
  answers_ = {{std::string("a\0b", 3), 3}};
  EXPECT_EQ(ReplyTo(BoardCommandNamed("BoardGetMap")), Wire("0400 00000000 01000000 61 03000000"));
  EXPECT_EQ(ReplyTo(BoardCommandNamed("GetBoardInfo")), Wire("0400 00000000 01000000 61 03000000"));
  EXPECT_EQ(ReplyTo(BoardCommandNamed("GetBoardInfoEx")), Wire("0400 00000000 03000000 610062"));
}

TEST_F(BoardAnswerTest, ALibraryThatFillsNothingInIsAnsweredWithEmptyTextsAndTheClientsLengths) {
  EXPECT_EQ(ReplyTo(BoardCommandNamed("EnumBoard"), {1, 0, 3}),
            Wire("0400 00000000 00000000 01000000 00000000 00000000 00000000 03000000"));
  EXPECT_EQ(ReplyTo(BoardCommandNamed("GetBoardInfoEx"), {3}),
            Wire("0400 00000000 03000000 000000"));
}

TEST_F(BoardAnswerTest, ALibraryThatFillsNothingInLeavesTheExtraValuesZero) {
  value_ = 0;
  EXPECT_EQ(ReplyTo(BoardCommandNamed("EnumAvailableBoard"), {0, 0}),
            Wire("0400 00000000 00000000 00000000 00000000 00000000 00000000"));
}

TEST_F(BoardAnswerTest, NothingOfAnEarlierRequestIsInAReply) {
  const char* const kFilled[] = {"GetBoardInfoEx", "EnumInstBoard", "BoardGetMap"};
  for (const char garbage : {'\x5A', '\xA5'}) {
    for (const char* name : kFilled) {
      answers_.assign(6, {std::string(8192, garbage), 8192});
      (void)ReplyTo(BoardCommandNamed(name));
    }
    answers_.clear();
    DirtyTheStack(garbage);
    EXPECT_EQ(ReplyTo(BoardCommandNamed("GetBoardInfoEx"), {8160}),
              Wire("0400 00000000 E01F0000") + Bytes(8160, 0));
    DirtyTheStack(garbage);
    EXPECT_EQ(ReplyTo(BoardCommandNamed("BoardGetMap"), {8160}),
              Wire("0400 00000000 00000000 E01F0000"));
    // The same for the buffer that is lent to a length without a bound.
    answers_ = {{std::string(8192, garbage), 1}};
    (void)ReplyTo(BoardCommandNamed("GetBoardInfoEx"), {0xFFFFFFFF});
    answers_ = {{"", 8160}};
    EXPECT_EQ(ReplyTo(BoardCommandNamed("GetBoardInfoEx"), {0xFFFFFFFF}),
              Wire("0400 00000000 E01F0000") + Bytes(8160, 0));
  }
}

}  // namespace
