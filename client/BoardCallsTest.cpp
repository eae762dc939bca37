#include "client/BoardCalls.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "client/Enumeration.h"
#include "client/testing/ScriptedServer.h"

// Runs natively against a fake of the pipe and on Windows against a real one.

namespace client {
namespace {

class BoardCallsTest : public testing::Test {
 protected:
  BoardCallsTest() : client_(server_.PipeName()), calls_(client_) {
    client_.SetTimeouts(/*connectMs=*/5000, /*exchangeMs=*/5000);
  }

  std::string LastRequest() const {
    const std::vector<std::string> requests = server_.Requests();
    return requests.empty() ? "" : requests.back();
  }

  ScriptedServer server_;
  QorlixClient client_;
  BoardCalls calls_;
};

// A text on the wire, in hex.
std::string Wire(std::uint32_t length) {
  std::uint8_t bytes[4];
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<std::uint8_t>(length >> (8 * i));
  return ToHex(bytes, sizeof(bytes));
}
std::string WireText(std::uint32_t length) {
  const std::string text(length, 'a');
  return Wire(length) + ToHex(text.data(), text.size());
}

constexpr char kMost[] = "00200000";  // 8192

TEST_F(BoardCallsTest, EnumBoardSendsItsFieldsAndTakesTheTextsWithTheirLengths) {
  server_.Answers({"0400 00000000 02000000 4142 03000000 01000000 4D 01000000 00000000 05000000"});
  BoardEntry entry;
  EXPECT_TRUE(calls_.BC_EnumBoard("D", 7, entry).ok());
  EXPECT_EQ(LastRequest(), std::string("C100") + "0100000044" + "07000000" + kMost + kMost + kMost);
  EXPECT_EQ(entry.board.text, "AB");
  EXPECT_EQ(entry.board.length, 3u);
  EXPECT_EQ(entry.boardMap.text, "M");
  EXPECT_EQ(entry.adapter.text, "");
  EXPECT_EQ(entry.adapter.length, 5u);
  EXPECT_TRUE(entry.told);
  EXPECT_FALSE(entry.askedAgain);
}

TEST_F(BoardCallsTest, AFailureOfEnumBoardHasTheMapsLengthLastAndNoneOfTheAdapter) {
  server_.Answers({"0400 EA000000 09000000 00200000 07000000"});
  BoardEntry entry;
  EXPECT_TRUE(calls_.BC_EnumBoard("D", 0, entry).is(kMoreData));
  EXPECT_EQ(entry.board.length, 9u);
  EXPECT_EQ(entry.boardMap.length, 7u);
  EXPECT_EQ(entry.adapter.length, 0u);
}

TEST_F(BoardCallsTest, EnumInstBoardTakesSixTextsAndTheState) {
  server_.Answers(
      {"0400 00000000 01000000 41 01000000 01000000 42 01000000 01000000 43 01000000"
       "01000000 44 01000000 01000000 45 01000000 01000000 46 01000000 09000000"});
  InstBoardEntry entry;
  EXPECT_TRUE(calls_.BC_EnumInstBoard(1, entry).ok());
  EXPECT_EQ(LastRequest(),
            std::string("C00001000000") + kMost + kMost + kMost + kMost + kMost + kMost);
  std::string all;
  for (const NamedText& known : entry.Texts()) all += known.text->text;
  EXPECT_EQ(all, "ABCDEF");
  EXPECT_EQ(entry.value, 9u);
}

TEST_F(BoardCallsTest, TheOtherEnumerationsTakeTheirTextsAndNumbers) {
  server_.Answers({"0400 00000000 01000000 41 01000000 01000000 42 01000000 0A000000"});
  AvailableBoardEntry available;
  EXPECT_TRUE(calls_.BC_EnumAvailableBoard(2, available).ok());
  EXPECT_EQ(LastRequest(), std::string("C20002000000") + kMost + kMost);
  EXPECT_EQ(available.deviceId.text, "B");
  EXPECT_EQ(available.value, 10u);

  server_.Answers({"0400 00000000 01000000 41 01000000 01000000 42 01000000 FE"});
  AdapterEntry adapter;
  EXPECT_TRUE(calls_.BC_EnumAdapters(3, adapter).ok());
  EXPECT_EQ(LastRequest(), std::string("C50003000000") + kMost + kMost);
  EXPECT_EQ(adapter.adapterName.text, "A");
  EXPECT_EQ(adapter.value, 254u);

  server_.Answers(
      {"0400 00000000 01000000 41 01000000 01000000 42 01000000 01000000 43 01000000"
       "01000000 44 01000000"});
  ConfigurationEntry configuration;
  EXPECT_TRUE(calls_.BC_EnumConfiguration(4, {"b", "m", "d", nullptr}, configuration).ok());
  EXPECT_EQ(LastRequest(), std::string("C40004000000") + "0100000062" + "010000006D" +
                               "0100000064" + "FFFF0000" + kMost + kMost + kMost + kMost);
  EXPECT_EQ(configuration.unit.text, "D");
}

TEST_F(BoardCallsTest, MapAndInformationSendTheirSelections) {
  server_.Answers({"0400 00000000 02000000 4D31 02000000"});
  BoardValue value;
  EXPECT_TRUE(calls_.BC_BoardGetMap("d", "a", "h", value).ok());
  EXPECT_EQ(LastRequest(),
            std::string("A300") + "0100000064" + "0100000061" + "0100000068" + kMost);
  EXPECT_EQ(value.content.text, "M1");

  server_.Answers({"0400 00000000 01000000 56 01000000"});
  EXPECT_TRUE(calls_.BC_GetBoardInfo(5, {"b", "m", "d", "i"}, value).ok());
  EXPECT_EQ(LastRequest(), std::string("C300") + "05000000" + "0100000062" + "010000006D" +
                               "0100000064" + "0100000069" + kMost);
  EXPECT_EQ(value.content.text, "V");

  server_.Answers({"0400 00000000 03000000 00FF01"});
  EXPECT_TRUE(calls_.BC_GetBoardInfoEx(5, {"b", "m", "not sent", "i"}, value).ok());
  EXPECT_EQ(LastRequest(),
            std::string("CF00") + "05000000" + "0100000062" + "010000006D" + "0100000069" + kMost);
  EXPECT_EQ(value.content.text, std::string("\0\xFF\x01", 3));
}

TEST_F(BoardCallsTest, AnAnswerThatIsTooLongIsAskedForAgainWithRoomsThatFitTogether) {
  server_.Answers({"0400 9A210000 00200000 05000000 00200000"});
  server_.Answers({"0400 00000000 01000000 41 01000000 00000000 00000000 00000000 00000000"});
  BoardEntry entry;
  EXPECT_TRUE(calls_.BC_EnumBoard("D", 7, entry).ok());
  EXPECT_TRUE(entry.askedAgain);
  EXPECT_EQ(entry.board.text, "A");
  // 6 for the map, and half of what is left for each of the others.
  EXPECT_EQ(LastRequest(), std::string("C100") + "0100000044" + "07000000" + Wire((8128 - 6) / 2) +
                               Wire(6) + Wire((8128 - 6) / 2));
}

TEST_F(BoardCallsTest, WhatDoesNotFitTheSecondTimeEitherKeepsItsFirstCodeAndLengths) {
  server_.Answers({"0400 9A210000 00200000 05000000 00200000"});
  server_.Answers({"0400 EA000000 01000000 00200000 02000000"});
  BoardEntry entry;
  EXPECT_TRUE(calls_.BC_EnumBoard("D", 7, entry).is(BUFFER_OVERFLOW));
  EXPECT_FALSE(entry.askedAgain);
  EXPECT_EQ(entry.board.length, 8192u);
  EXPECT_EQ(entry.boardMap.length, 5u);
  EXPECT_EQ(server_.Requests().size(), 2u);
}

TEST_F(BoardCallsTest, WithoutLengthsTheTextsShareTheRoomEvenly) {
  server_.Answers({"0400 9A210000"});
  server_.Answers({"0400 00000000 01000000 41 01000000 00000000 00000000 01"});
  AdapterEntry entry;
  EXPECT_TRUE(calls_.BC_EnumAdapters(0, entry).ok());
  EXPECT_EQ(LastRequest(), "C50000000000" + Wire(4064) + Wire(4064));
}

TEST_F(BoardCallsTest, AnAnswerThatBreaksOffIsAskedForAgainAndLeavesNoTexts) {
  // The sixth text does not fit behind the others; its length and the error follow.
  const std::string brokenOff = "0400 00000000" + WireText(4000) + Wire(4000) + WireText(4000) +
                                Wire(4000) + WireText(50) + Wire(50) + WireText(50) + Wire(50) +
                                WireText(10) + Wire(10) + Wire(50) + "0400 9A210000";
  server_.Answers({brokenOff});
  server_.Answers({brokenOff});
  InstBoardEntry entry;
  EXPECT_TRUE(calls_.BC_EnumInstBoard(0, entry).is(BUFFER_OVERFLOW));
  EXPECT_EQ(server_.Requests().size(), 2u);
  EXPECT_EQ(entry.board.text, "");
  EXPECT_EQ(entry.board.length, 4000u);
}

TEST_F(BoardCallsTest, AConnectionThatBreaksMeanwhileIsToldAsSuch) {
  server_.Answers({"0400 9A210000"});
  server_.AnswersAndCloses({});
  AdapterEntry entry;
  EXPECT_FALSE(calls_.BC_EnumAdapters(0, entry).fromServer());
  EXPECT_FALSE(entry.told);
}

TEST_F(BoardCallsTest, AnEntryThatDoesNotFitDoesNotEndTheList) {
  for (int i = 0; i < 2; ++i) server_.Answers({"0400 9A210000"});
  server_.Answers({"0400 00000000 01000000 41 01000000 00000000 00000000 01"});
  server_.Answers({"0400 03010000 00000000 00000000"});
  std::vector<std::uint32_t> codes;
  const Result result = ForEachEntry<AdapterEntry>(
      [&](std::uint32_t index, AdapterEntry& entry) {
        return calls_.BC_EnumAdapters(index, entry);
      },
      [&](std::uint32_t, const Result& one, const AdapterEntry&) {
        codes.push_back(one.code());
        return true;
      });
  EXPECT_TRUE(result.ok());
  EXPECT_EQ(codes, (std::vector<std::uint32_t>{8602, 0}));
}

TEST_F(BoardCallsTest, CommandsWithoutAnAnswerReturnTheLibrarysResult) {
  for (int i = 0; i < 5; ++i) server_.Answers({"0400 07000000"});
  EXPECT_TRUE(calls_.BC_Scan().is(7));
  EXPECT_EQ(LastRequest(), "C700");
  EXPECT_TRUE(calls_.BC_CreateAllLogdevices().is(7));
  EXPECT_EQ(LastRequest(), "C900");
  EXPECT_TRUE(calls_.BC_HasUninitializedInstances().is(7));
  EXPECT_EQ(LastRequest(), "5800");
  EXPECT_TRUE(calls_.BC_UpdateLogDevicesForDevice("d", "h").is(7));
  EXPECT_EQ(LastRequest(), "C80001000000640100000068");
  EXPECT_TRUE(calls_.BC_PlausibilitaetBL().is(7));
  EXPECT_EQ(LastRequest(), "2401");
}

TEST_F(BoardCallsTest, RegistrationsSendTheGuidAsItLiesOnTheWire) {
  const Guid guid = {0x11223344, 0x5566, 0x7788, {1, 2, 3, 4, 5, 6, 7, 8}};
  server_.Answers({"0400 00000000"});
  server_.Answers({"0400 00000000"});
  EXPECT_TRUE(calls_.RegisterForDeviceChangeNotifications("d", guid).ok());
  EXPECT_EQ(LastRequest(), "0001010000006444332211665588770102030405060708");
  EXPECT_TRUE(calls_.UnregisterForDeviceChangeNotifications("d", guid).ok());
  EXPECT_EQ(LastRequest(), "0101010000006444332211665588770102030405060708");
}

TEST_F(BoardCallsTest, AChangeIsTakenWithItsTextsAndItsInterfaceClass) {
  server_.Answers({"0400 00000000 02 04000000 41004200 04000000 44332211665588770102030405060708"});
  DeviceChange change;
  EXPECT_TRUE(calls_.GetDeviceChange("d", change).ok());
  EXPECT_EQ(LastRequest(), "02010100000064");
  EXPECT_EQ(change.kind, 2u);
  EXPECT_EQ(change.text, std::string("A\0B\0", 4));
  EXPECT_EQ(change.length, 4u);
  EXPECT_EQ(ToHex(change.interfaceClass.data(), change.interfaceClass.size()),
            "44332211665588770102030405060708");

  server_.Answers({"0400 9A210000 E11F0000 10000000"});
  EXPECT_TRUE(calls_.GetDeviceChange("d", change).is(BUFFER_OVERFLOW));
  EXPECT_EQ(change.length, 8161u);
  EXPECT_TRUE(change.interfaceClass.empty());
}

TEST_F(BoardCallsTest, AStateIsTwoNumbers) {
  server_.Answers({"0400 00000000 0A200018 16000000"});
  DeviceState state;
  EXPECT_TRUE(calls_.GetDeviceStateEx("h", 3, state).ok());
  EXPECT_EQ(LastRequest(), "2201010000006803000000");
  EXPECT_EQ(state.status, 0x1800200Au);
  EXPECT_EQ(state.problem, 22u);
}

TEST_F(BoardCallsTest, BoardInformationSendsAllItsFieldsAsBuffers) {
  server_.Answers(
      {"0400 00000000 02000000 A1A2 04000000 05000000 03000000 B1B2B3 06000000 07000000"});
  const std::uint8_t data[] = {0xDD};
  Information told;
  EXPECT_TRUE(calls_
                  .GetBoardInformation({.data1 = data,
                                        .data2 = {},
                                        .values = {1, 2, 3},
                                        .area1Size = 2,
                                        .area2Size = 3,
                                        .last = 9},
                                       told)
                  .ok());
  EXPECT_EQ(LastRequest(),
            "BF00"
            "01000000DD"
            "0400000001000000"
            "0400000002000000"
            "0400000003000000"
            "00000000"
            "0400000002000000"
            "0400000003000000"
            "0400000009000000");
  EXPECT_EQ(ToHex(told.area1.data(), told.area1.size()), "A1A2");
  EXPECT_EQ(told.value, 5u);
  EXPECT_EQ(ToHex(told.area2.data(), told.area2.size()), "B1B2B3");
  EXPECT_EQ(told.result1, 6u);
  EXPECT_EQ(told.result2, 7u);
}

TEST_F(BoardCallsTest, ARequestThatDoesNotFitIsNotSent) {
  const std::string tooLong(8190, 'd');
  BoardEntry entry;
  EXPECT_EQ(calls_.BC_EnumBoard(tooLong.c_str(), 0, entry).origin(), Origin::Request);
  EXPECT_EQ(server_.Connections(), 0);
}

TEST(FitRoomsTest, NoRoomIsWastedAndNoneIsGivenTwice) {
  const std::uint32_t lengths[] = {8192, 10, 0, 3000, 0xFFFFFFFF, 1};
  std::uint32_t rooms[6] = {};
  FitRooms(lengths, rooms);
  EXPECT_EQ(rooms[1], 11u);
  EXPECT_EQ(rooms[5], 2u);
  std::uint32_t sum = 0;
  for (const std::uint32_t room : rooms) sum += room;
  EXPECT_EQ(sum, kBoardAnswerLimit);
}

}  // namespace
}  // namespace client
