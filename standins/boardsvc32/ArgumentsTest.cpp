#include "standins/boardsvc32/Arguments.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>

#include "standins/boardsvc32/ResultCode.h"

namespace boardsim {
namespace {

// Buffers that lie in the heap and are no larger than they say: a byte too much is reported.
class ArgumentsTest : public testing::Test {
 protected:
  std::unique_ptr<char[]> NewRoom(std::uint32_t size) {
    auto room = std::make_unique<char[]>(size);
    std::fill_n(room.get(), size, '?');
    return room;
  }

  std::uint32_t Deliver(char* buffer, std::uint32_t& length, const Answer& answer,
                        const Fault* fault = nullptr) {
    return Arguments().Room("room", buffer, &length).Deliver(answer, fault);
  }
};

TEST_F(ArgumentsTest, LengthsCountWithoutTerminator) {
  const auto room = NewRoom(5);
  std::uint32_t length = 5;
  EXPECT_EQ(Deliver(room.get(), length, {.texts = {"abc"}}), 0u);
  EXPECT_EQ(length, 3u);
  EXPECT_EQ(std::string(room.get(), 5), std::string("abc\0?", 5));
}

TEST_F(ArgumentsTest, ATextAsLongAsTheCapacityFitsWithoutTerminator) {
  const auto room = NewRoom(3);
  std::uint32_t length = 3;
  EXPECT_EQ(Deliver(room.get(), length, {.texts = {"abc"}}), 0u);
  EXPECT_EQ(length, 3u);
  EXPECT_EQ(std::string(room.get(), 3), "abc");
}

TEST_F(ArgumentsTest, TooSmallACapacityAnswers234WithAllLengthsAndWritesNothing) {
  const auto small = NewRoom(2);
  const auto large = NewRoom(8);
  std::uint32_t cbSmall = 2;
  std::uint32_t cbLarge = 8;
  std::uint32_t number = 9;
  std::uint8_t byte = 9;
  EXPECT_EQ(Arguments()
                .Room("large", large.get(), &cbLarge)
                .Room("small", small.get(), &cbSmall)
                .NumberOut("number", &number)
                .ByteOut("byte", &byte)
                .Deliver({.texts = {"abcd", "efg"}, .numbers = {1, 2}}, nullptr),
            kMoreData);
  EXPECT_EQ(cbLarge, 4u);
  EXPECT_EQ(cbSmall, 3u);
  EXPECT_EQ(std::string(large.get(), 8), "????????");
  EXPECT_EQ(std::string(small.get(), 2), "??");
  EXPECT_EQ(number, 0u);
  EXPECT_EQ(byte, 0u);
}

TEST_F(ArgumentsTest, ACapacityOf0TakesAnEmptyTextOnly) {
  const auto room = NewRoom(1);
  std::uint32_t length = 0;
  EXPECT_EQ(Deliver(room.get(), length, {.texts = {""}}), 0u);
  EXPECT_EQ(Deliver(room.get(), length, {.texts = {"a"}}), kMoreData);
  EXPECT_EQ(room[0], '?');
}

TEST_F(ArgumentsTest, AFailureSetsLengthsAndNumbersTo0) {
  const auto room = NewRoom(4);
  std::uint32_t length = 4;
  std::uint32_t number = 9;
  BRDX_GUID guid{1, 2, 3, {4}};
  EXPECT_EQ(Arguments()
                .Room("room", room.get(), &length)
                .NumberOut("number", &number)
                .GuidOut("guid", &guid)
                .Deliver({.result = 31, .texts = {"abc"}, .numbers = {7}, .guid = guid}, nullptr),
            31u);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(number, 0u);
  EXPECT_EQ(guid.Data1, 0u);
  EXPECT_EQ(std::string(room.get(), 4), "????");
}

TEST_F(ArgumentsTest, NumbersGoToTheirPlacesInOrder) {
  std::uint32_t number = 0;
  std::uint8_t byte = 0;
  EXPECT_EQ(Arguments()
                .ByteOut("byte", &byte)
                .Number("in", 3)
                .NumberOut("number", &number)
                .Deliver({.numbers = {0x1FF, 2}}, nullptr),
            0u);
  EXPECT_EQ(byte, 0xFFu);
  EXPECT_EQ(number, 2u);
}

TEST_F(ArgumentsTest, WhatTheCallerDoesNotLendIsNotTouched) {
  std::uint32_t length = 4;
  EXPECT_EQ(Arguments()
                .Room("no buffer", nullptr, &length)
                .Room("no length", nullptr, nullptr)
                .NumberOut("number", nullptr)
                .ByteOut("byte", nullptr)
                .GuidOut("guid", nullptr)
                .Deliver({.numbers = {1, 2}}, nullptr),
            0u);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(Deliver(nullptr, length, {.texts = {"a"}}), kMoreData);
  EXPECT_EQ(length, 1u);
}

TEST_F(ArgumentsTest, ACapacityAboveAllBuffersIsNotBelieved) {
  const auto room = NewRoom(kMostBytes);
  std::uint32_t length = 0xFFFFFFFF;
  EXPECT_EQ(Deliver(room.get(), length, {.texts = {std::string(kMostBytes, 'a')}}), 0u);
  EXPECT_EQ(length, kMostBytes);
  length = 0xFFFFFFFF;
  EXPECT_EQ(Deliver(room.get(), length, {.texts = {std::string(kMostBytes + 1, 'a')}}), kMoreData);
  EXPECT_EQ(length, kMostBytes + 1);

  const Fault fault{.fill = Fill::kCapacity};
  length = 0xFFFFFFFF;
  EXPECT_EQ(Deliver(room.get(), length, {}, &fault), 0u);
  EXPECT_EQ(length, 0xFFFFFFFFu);
}

TEST_F(ArgumentsTest, UnterminatedKeepsTheAnswerAndLeavesNoZeroBehindIt) {
  const auto room = NewRoom(6);
  std::uint32_t length = 6;
  const Fault fault{.fill = Fill::kUnterminated};
  EXPECT_EQ(Deliver(room.get(), length, {.texts = {"abc"}}, &fault), 0u);
  EXPECT_EQ(length, 3u);
  EXPECT_EQ(std::string(room.get(), 6), "abcxxx");
}

TEST_F(ArgumentsTest, CapacityFillsTheRoomToItsLastByte) {
  const auto room = NewRoom(6);
  std::uint32_t length = 6;
  const Fault fault{.fill = Fill::kCapacity};
  EXPECT_EQ(Deliver(room.get(), length, {.texts = {"abc"}}, &fault), 0u);
  EXPECT_EQ(length, 6u);
  EXPECT_EQ(std::string(room.get(), 6), "xxxxxx");
}

TEST_F(ArgumentsTest, LengthsAreReportedWhateverWasWritten) {
  const auto first = NewRoom(4);
  const auto second = NewRoom(4);
  std::uint32_t cbFirst = 4;
  std::uint32_t cbSecond = 4;
  const Fault fault{.lengths = {std::nullopt, 0x80000000}};
  EXPECT_EQ(Arguments()
                .Room("first", first.get(), &cbFirst)
                .Room("second", second.get(), &cbSecond)
                .Deliver({.texts = {"ab", "c"}}, &fault),
            0u);
  EXPECT_EQ(cbFirst, 2u);
  EXPECT_EQ(cbSecond, 0x80000000u);
  EXPECT_STREQ(second.get(), "c");
}

TEST_F(ArgumentsTest, InAndOutNameEverything) {
  std::array<char, 4> room{};
  std::uint32_t length = 4;
  std::uint32_t number = 0;
  std::uint8_t byte = 0;
  BRDX_GUID guid{};
  const BRDX_GUID given{0x01234567, 0x89AB, 0xCDEF, {1, 2, 3, 4, 5, 6, 7, 8}};
  const std::array<std::uint8_t, 2> bytes{0, 0xFE};
  const Arguments arguments = Arguments()
                                  .Text("text", "a\"b\n")
                                  .Text("absent", nullptr)
                                  .Number("number", 0xFFFFFFFF)
                                  .Guid("class", given)
                                  .Bytes("data", bytes.data(), 2)
                                  .Bytes("none", nullptr, 2)
                                  .Room("room", room.data(), &length)
                                  .Room("nowhere", nullptr, nullptr)
                                  .NumberOut("state", &number)
                                  .ByteOut("kind", &byte)
                                  .GuidOut("guid", &guid);
  EXPECT_EQ(arguments.In(),
            "text=\"a\\\"b\\x0a\" absent=(null) number=4294967295 "
            "class={01234567-89ab-cdef-0102-030405060708} data=00fe none=(null) room[4] "
            "nowhere[(null)]");
  EXPECT_EQ(arguments.Deliver({.texts = {"abc"}, .numbers = {5, 6}, .guid = given}, nullptr), 0u);
  EXPECT_EQ(arguments.Out(), "room=3 state=5 kind=6 guid={01234567-89ab-cdef-0102-030405060708}");
}

}  // namespace
}  // namespace boardsim
