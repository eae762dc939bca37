#include "client/CommandInfo.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "client/testing/ScriptedServer.h"

namespace client {
namespace {

bool Readable(const std::string& hex) {
  const std::vector<std::uint8_t> request = FromHex(hex);
  const CommandInfo* const command = CommandOf(request);
  return command != nullptr && IsReadable(*command, request);
}

std::string LongText(std::uint32_t length) {
  std::uint8_t prefix[4];
  for (int i = 0; i < 4; ++i) prefix[i] = static_cast<std::uint8_t>(length >> (8 * i));
  return ToHex(prefix, sizeof(prefix)) + ToHex(std::string(length, 'a').data(), length);
}

TEST(CommandInfoTest, ThereAre39CommandsAndEachIsFoundByItsCode) {
  EXPECT_EQ(Commands().size(), 39u);
  for (const CommandInfo& command : Commands()) {
    EXPECT_EQ(FindCommand(static_cast<std::uint32_t>(command.code)), &command) << command.name;
  }
}

TEST(CommandInfoTest, CodesWithoutACommandAreNotFound) {
  for (const std::uint32_t code : {0u, 4u, 254u, 291u, 293u, 65535u, 0x10001u}) {
    EXPECT_EQ(FindCommand(code), nullptr) << code;
  }
}

TEST(CommandInfoTest, ACommandIsFoundByItsNameInAnyCase) {
  for (const CommandInfo& command : Commands()) {
    EXPECT_EQ(FindCommandByName(command.name), &command) << command.name;
  }
  ASSERT_NE(FindCommandByName("reg_setVALUE"), nullptr);
  EXPECT_EQ(FindCommandByName("reg_setVALUE")->code, CommandCode::Reg_SetValue);
  for (const char* const name : {"", "Reg_Set", "Reg_SetValueBas", "Reg_SetValues"}) {
    EXPECT_EQ(FindCommandByName(name), nullptr) << name;
  }
}

TEST(CommandInfoTest, TheSmallestRequestIsReadableAndNoByteMayBeMissing) {
  EXPECT_EQ(SmallestRequest(*FindCommandByName("GetDeviceStateEx")),
            FromHex("2201 00000000 00000000"));
  EXPECT_EQ(SmallestRequest(*FindCommandByName("RegisterForDeviceChangeNotifications")).size(),
            2u + 4u + 16u);
  for (const CommandInfo& command : Commands()) {
    const std::vector<std::uint8_t> request = SmallestRequest(command);
    EXPECT_EQ(CommandOf(request), &command) << command.name;
    EXPECT_TRUE(IsReadable(command, request)) << command.name;
    if (request.size() == 2) continue;
    EXPECT_FALSE(IsReadable(command, Bytes(request).first(request.size() - 1))) << command.name;
  }
}

TEST(CommandInfoTest, ARequestTooShortForACodeHasNoCommand) {
  EXPECT_EQ(CommandOf({}), nullptr);
  EXPECT_EQ(CommandOf(FromHex("10")), nullptr);
  EXPECT_EQ(CommandOf(FromHex("1000"))->code, CommandCode::NoOperation);
}

TEST(CommandInfoTest, EveryTruncationOfARequestIsUnreadable) {
  const std::string whole = "0300 02000000 4142 01000000 43 03000000 444546";
  const std::vector<std::uint8_t> request = FromHex(whole);
  const CommandInfo* const command = CommandOf(request);
  ASSERT_NE(command, nullptr);
  for (std::size_t size = 2; size < request.size(); ++size) {
    EXPECT_FALSE(IsReadable(*command, Bytes(request).first(size))) << size;
  }
  EXPECT_TRUE(IsReadable(*command, request));
}

TEST(CommandInfoTest, BytesBehindTheLastFieldDoNotMatter) {
  EXPECT_TRUE(Readable("1000 FFFFFFFF"));
  EXPECT_TRUE(Readable("FD00 FD000000 00"));
}

TEST(CommandInfoTest, AbsentTextsAreReadableAndWrongLengthsAreNot) {
  EXPECT_TRUE(Readable("0100 FFFF0000"));
  EXPECT_FALSE(Readable("0100 FEFF0000 41"));
  EXPECT_FALSE(Readable("0100 FFFFFFFF 41"));
  EXPECT_FALSE(Readable("0100 00000080"));
}

TEST(CommandInfoTest, ATextNeedsRoomForItsTerminatorInTheServersBuffer) {
  EXPECT_TRUE(Readable("0100" + LongText(8159)));
  EXPECT_FALSE(Readable("0100" + LongText(8160)));
  EXPECT_TRUE(Readable("F000" + LongText(259)));
  EXPECT_FALSE(Readable("F000" + LongText(260)));
}

TEST(CommandInfoTest, WhatLiesBehindTheServersBufferIsNotRead) {
  // The request ends at byte 8168, and at byte 8198 of the 8192 that the server reads at once.
  EXPECT_TRUE(Readable("1C00 02000080" + LongText(4000) + LongText(4000) + LongText(150)));
  EXPECT_FALSE(Readable("1C00 02000080" + LongText(4000) + LongText(4000) + LongText(180)));
}

}  // namespace
}  // namespace client
