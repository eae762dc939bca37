#include <algorithm>
#include <string>
#include <vector>

#include "board/testing/BoardFixture.h"
#include "tests/fakes/FakeNamedObject.h"

// What holds for every board-control command: how its request is read and what the library sees.

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

using Texts = std::vector<std::optional<std::string>>;

class BoardCommandsTest : public BoardFixture,
                          public testing::WithParamInterface<BoardTestCommand> {};

INSTANTIATE_TEST_SUITE_P(Commands, BoardCommandsTest, testing::ValuesIn(kBoardTestCommands),
                         [](const auto& info) { return std::string(info.param.name); });

class BoardCommandTest : public BoardFixture {
 protected:
  // What the library sees of a request whose lengths are all the same.
  Seen SeenBy(const char* name, std::uint32_t length = 8192) {
    const BoardTestCommand& command = BoardCommandNamed(name);
    (void)ReplyTo(command, std::vector<std::uint32_t>(command.lengths, length));
    return seen_;
  }
};

TEST_P(BoardCommandsTest, CallsItsOperationOnceUnderTheLock) {
  (void)ReplyTo(GetParam());
  EXPECT_EQ(calls_, 1);
  EXPECT_EQ(seen_.operation, GetParam().operation);
  EXPECT_THAT(seen_.lock, ElementsAre("wait 30000"));
  EXPECT_THAT(fake_named_object::Calls(), ElementsAre("wait 30000", "release"));
}

TEST_P(BoardCommandsTest, GoesAheadAndReleasesWhenTheLockWasNotGranted) {
  fake_named_object::AnswerWait(WAIT_TIMEOUT);
  (void)ReplyTo(GetParam());
  EXPECT_EQ(calls_, 1);
  EXPECT_THAT(fake_named_object::Calls(), ElementsAre("wait 30000", "release"));
}

TEST_P(BoardCommandsTest, AnExceptionAnswers8604AndLeavesTheLockFree) {
  raises_ = true;
  result_ = 31;
  answers_ = {{"text", 8161}};
  EXPECT_EQ(ReplyTo(GetParam()), Wire("0400 9C210000"));
  EXPECT_EQ(calls_, 1);
  EXPECT_THAT(fake_named_object::Calls(), ElementsAre("wait 30000", "release"));

  raises_ = false;
  EXPECT_EQ(Hex(ReplyTo(GetParam())).substr(0, 12), "04001F000000");
}

TEST_P(BoardCommandsTest, EveryTruncationIsRefusedBeforeLockAndLibrary) {
  const Bytes whole = Request(GetParam());
  for (std::size_t size = 2; size < whole.size(); ++size) {
    const auto end = whole.begin() + static_cast<std::ptrdiff_t>(size);
    EXPECT_EQ(Handle(GetParam(), Bytes(whole.begin(), end)), BUFFER_OVERFLOW) << size;
    EXPECT_THAT(Reply(), IsEmpty()) << size;
  }
  EXPECT_EQ(calls_, 0);
  EXPECT_THAT(fake_named_object::Calls(), IsEmpty());
}

TEST_P(BoardCommandsTest, WhatFollowsTheLastFieldIsIgnored) {
  EXPECT_EQ(Handle(GetParam(), Request(GetParam()) + Wire("FFFFFFFF 07")), SRV_OK);
  EXPECT_EQ(calls_, 1);
}

TEST_P(BoardCommandsTest, BuffersAreClearWhateverTheStackHeldBefore) {
  for (const char garbage : {'\x5A', '\xA5'}) {
    answers_.assign(GetParam().lengths, {std::string(8192, garbage), std::nullopt});
    result_ = 1;
    (void)ReplyTo(GetParam());
    DirtyTheStack(garbage);
    (void)ReplyTo(GetParam());
    EXPECT_TRUE(seen_.buffersWereClear);
    EXPECT_TRUE(seen_.textsWereClear);
  }
}

TEST_P(BoardCommandsTest, AnAbsentTextIsANullPointerToTheLibrary) {
  const Bytes whole = Request(GetParam());
  for (std::size_t absent = 0; absent < GetParam().texts; ++absent) {
    // A text of one byte is five bytes of the request, and they stand side by side.
    const std::size_t at = GetParam().textsAt + 5 * absent;
    Bytes request(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(at));
    request = request + Wire("FFFF0000") +
              Bytes(whole.begin() + static_cast<std::ptrdiff_t>(at + 5), whole.end());
    EXPECT_EQ(Handle(GetParam(), request), SRV_OK);
    ASSERT_EQ(seen_.texts.size(), GetParam().texts);
    for (std::size_t i = 0; i < GetParam().texts; ++i) {
      EXPECT_EQ(seen_.texts[i].has_value(), i != absent) << i;
    }
  }
}

TEST_P(BoardCommandsTest, LengthsAreBoundedTo8192) {
  if (GetParam().lengths == 0) return;
  struct Row {
    std::uint32_t sent, seen;
  };
  for (const Row row :
       {Row{0, 0}, {1, 1}, {8191, 8191}, {8192, 8192}, {8193, 8192}, {0x7FFFFFFF, 8192}}) {
    (void)ReplyTo(GetParam(), std::vector<std::uint32_t>(GetParam().lengths, row.sent));
    EXPECT_THAT(seen_.lengths, Each(row.seen)) << row.sent;
    EXPECT_EQ(seen_.lengths.size(), GetParam().lengths);
  }
}

TEST_P(BoardCommandsTest, LengthsWithTheirTopBitSetAreBoundedExceptByGetBoardInfoEx) {
  const bool isSigned = std::string(GetParam().name) == "GetBoardInfoEx";
  for (const std::uint32_t sent : {0x80000000u, 0xFFFFFFFFu}) {
    (void)ReplyTo(GetParam(), std::vector<std::uint32_t>(GetParam().lengths, sent));
    EXPECT_THAT(seen_.lengths, Each(isSigned ? sent : 8192));
    EXPECT_TRUE(seen_.buffersWereClear);
  }
}

TEST_P(BoardCommandsTest, EveryLengthIsBoundedByItself) {
  std::vector<std::uint32_t> sent, seen;
  for (std::uint32_t i = 0; i < GetParam().lengths; ++i) {
    sent.push_back(i % 2 == 0 ? 10 + i : 9000 + i);
    seen.push_back(i % 2 == 0 ? 10 + i : 8192);
  }
  (void)ReplyTo(GetParam(), sent);
  EXPECT_EQ(seen_.lengths, seen);
}

TEST_F(BoardCommandTest, TextsAndNumbersReachTheLibraryInTheirOrder) {
  const std::uint32_t number = 0x44332211;
  EXPECT_EQ(SeenBy("EnumBoard").texts, (Texts{"D"}));
  EXPECT_THAT(seen_.numbers, ElementsAre(number, 0u));
  EXPECT_THAT(SeenBy("EnumInstBoard").numbers, ElementsAre(number));
  EXPECT_THAT(SeenBy("EnumAvailableBoard").numbers, ElementsAre(number));
  EXPECT_THAT(SeenBy("EnumAdapters").numbers, ElementsAre(number));
  EXPECT_EQ(SeenBy("EnumConfiguration").texts, (Texts{"B", "M", "D", "I"}));
  EXPECT_THAT(seen_.numbers, ElementsAre(number));
  EXPECT_EQ(SeenBy("BoardGetMap").texts, (Texts{"D", "A", "H"}));
  EXPECT_EQ(SeenBy("GetBoardInfo").texts, (Texts{"B", "M", "D", "I"}));
  EXPECT_THAT(seen_.numbers, ElementsAre(number));
  EXPECT_EQ(SeenBy("GetBoardInfoEx").texts, (Texts{"B", "M", "I"}));
  EXPECT_THAT(seen_.numbers, ElementsAre(number));
  EXPECT_EQ(SeenBy("UpdateLogDevicesForDevice").texts, (Texts{"D", "H"}));
}

TEST_F(BoardCommandTest, TheLongestTextThatARequestHoldsReachesTheLibraryWhole) {
  const BoardTestCommand& command = BoardCommandNamed("UpdateLogDevicesForDevice");
  const std::string text(8192 - 2 - 4 - 4, 'x');
  EXPECT_EQ(Handle(command, Wire("C800") + TextField(text) + Wire("00000000")), SRV_OK);
  EXPECT_EQ(seen_.texts, (Texts{text, ""}));
}

TEST_F(BoardCommandTest, ATextLongerThanTheRequestIsRefused) {
  const BoardTestCommand& command = BoardCommandNamed("UpdateLogDevicesForDevice");
  for (const char* length : {"FF1F0000", "00200000", "01200000", "FEFF0000", "FFFFFFFF"}) {
    EXPECT_EQ(Handle(command, Wire("C800") + Wire(length) + Bytes(8192 - 6, 'x')), BUFFER_OVERFLOW)
        << length;
    EXPECT_THAT(Reply(), IsEmpty());
  }
  EXPECT_EQ(calls_, 0);
}

TEST_F(BoardCommandTest, ALaterFieldThatCannotBeReadWinsOverAnEarlierAbsentText) {
  const BoardTestCommand& command = BoardCommandNamed("UpdateLogDevicesForDevice");
  EXPECT_EQ(Handle(command, Wire("C800 FFFF0000 05000000")), BUFFER_OVERFLOW);
  EXPECT_EQ(calls_, 0);
}

TEST_F(BoardCommandTest, ATextEndsForTheLibraryAtItsFirstZeroByte) {
  const BoardTestCommand& command = BoardCommandNamed("UpdateLogDevicesForDevice");
  EXPECT_EQ(Handle(command, Wire("C800 03000000 610062 00000000")), SRV_OK);
  EXPECT_EQ(seen_.texts, (Texts{"a", ""}));
}

// Kept: compared as a signed number, the length passes the bound.
TEST_F(BoardCommandTest,
       GetBoardInfoExLendsMoreThan8192BytesToALibraryThatTakesTheLengthAtItsWord) {
  answers_ = {{std::string(65536, 'x'), 8160}};
  EXPECT_EQ(ReplyTo(BoardCommandNamed("GetBoardInfoEx"), {0xFFFFFFFF}),
            Wire("0400 00000000 E01F0000") + Bytes(8160, 'x'));
  answers_ = {{"ab", 4}};
  EXPECT_EQ(ReplyTo(BoardCommandNamed("GetBoardInfoEx"), {0x80000000}),
            Wire("0400 00000000 04000000 61620000"));
}

}  // namespace
