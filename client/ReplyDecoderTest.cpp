#include "client/ReplyDecoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "client/testing/ScriptedServer.h"

namespace client {
namespace {

ReplyLayout ExamineExact(Bytes request, Bytes received) {
  // A copy of exactly that size, so that the address sanitizer sees every byte too many.
  const std::unique_ptr<std::uint8_t[]> exact(new std::uint8_t[received.size()]);
  std::copy(received.begin(), received.end(), exact.get());
  return ExamineReply(request, {exact.get(), received.size()});
}

ReplyLayout Examine(const std::string& request, const std::string& received) {
  return ExamineExact(FromHex(request), FromHex(received));
}

// Every beginning of the reply must be incomplete, and the whole one complete.
void ExpectWhole(const std::string& request, const std::string& reply) {
  const std::vector<std::uint8_t> asked = FromHex(request);
  const std::vector<std::uint8_t> bytes = FromHex(reply);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    ASSERT_EQ(ExamineExact(asked, Bytes(bytes).first(size)).state, ReplyState::Incomplete)
        << size << " bytes of " << reply;
  }
  const ReplyLayout layout = ExamineExact(asked, bytes);
  EXPECT_EQ(layout.state, ReplyState::Complete) << reply;
  EXPECT_EQ(layout.size, bytes.size());
}

constexpr char kNoOperation[] = "1000";
constexpr char kGetValue[] = "1600 01000000 41 01000000 42";
constexpr char kEnumKey[] = "1500 01000000 41 00000000";
constexpr char kEnumValue[] = "1700 01000000 41 00000000";

TEST(ReplyDecoderTest, AReplyOfOneLongIsWholeWithSixBytes) {
  ExpectWhole(kNoOperation, "0400 00000000");
  EXPECT_EQ(Examine(kNoOperation, "0400 05000000").result, 5u);
}

TEST(ReplyDecoderTest, FurtherFieldsBelongToTheReplyWhenTheCommandSaysSo) {
  ExpectWhole(kGetValue, "0400 00000000 03000000 414243 03000000");
  ExpectWhole(kEnumKey, "0400 00000000 01000000 41 01000000");
  ExpectWhole(kEnumValue, "0400 00000000 01000000 41 01000000 00000000 02000000");
}

TEST(ReplyDecoderTest, AFailureCarriesTheLengthsAlone) {
  ExpectWhole(kGetValue, "0400 EA000000 E8030000");
  ExpectWhole(kEnumKey, "0400 03010000 E01F0000");
  ExpectWhole(kEnumValue, "0400 9A210000 01000000 E01F0000");
}

TEST(ReplyDecoderTest, WhatTheLoopAnswersStandsAlone) {
  ExpectWhole(kGetValue, "0400 AC210000");
  ExpectWhole(kGetValue, "0400 9C210000");
  // 8602 for a field that cannot be read comes from the loop; behind readable fields it has
  // lengths.
  ExpectWhole("1700 01000000 41 0000", "0400 9A210000");
  ExpectWhole("1600 FEFFFFFF 41", "0400 9A210000");
}

TEST(ReplyDecoderTest, AnUnknownCommandIsAnsweredOnce) {
  ExpectWhole("0400", "0400 AC210000");
  ExpectWhole("FFFF 010203", "0400 AC210000");
}

TEST(ReplyDecoderTest, ARequestOfOneByteIsAnsweredTwice) {
  ExpectWhole("10", "0400 AC210000 0400 AC210000 0400 9A210000");
  const ReplyLayout layout = Examine("10", "0400 AC210000 0400 AC210000 0400 9A210000");
  EXPECT_EQ(layout.result, 8620u);
  ASSERT_EQ(layout.parts, 3u);
  EXPECT_EQ(layout.part[1].offset, 6u);
  EXPECT_EQ(layout.part[2].offset, 12u);
  EXPECT_EQ(layout.part[2].result, 8602u);
}

TEST(ReplyDecoderTest, AStopWithoutItsConfirmationIsAnsweredTwice) {
  ExpectWhole("FD00 FD00", "0400 05000000 0400 05000000 0400 9A210000");
  ExpectWhole("FD00 00000000", "0400 E7040000");
}

TEST(ReplyDecoderTest, AFailingAddIpAddressIsAnsweredTwiceAndASuccessfulOneOnce) {
  const std::string request = "0C00 01020304 00FFFFFF 02000000";
  ExpectWhole(request, "0400 00000000 07000000 08000000");
  ExpectWhole(request,
              "0400 9B210000 00000000 00000000"
              "0400 9B210000 00000000 00000000 0400 9B210000");
  // Its fields are always there, also when a request field could not be read.
  ExpectWhole("0C00 0102",
              "0400 9A210000 00000000 00000000"
              "0400 9A210000 00000000 00000000 0400 9A210000");
  ExpectWhole(request, "0400 AC210000");
}

TEST(ReplyDecoderTest, ThePanelsReplyOfZeroMayBeFollowedByASecondOne) {
  const ReplyLayout once = Examine("1100", "0400 00000000");
  EXPECT_EQ(once.state, ReplyState::MayGrow);
  EXPECT_EQ(once.size, 6u);
  EXPECT_EQ(Examine("1100", "0400 00000000 04").state, ReplyState::Incomplete);
  EXPECT_EQ(Examine("1100", "0400 00000000 0400 00000000").state, ReplyState::Incomplete);
  const ReplyLayout twice = Examine("1100", "0400 00000000 0400 00000000 0400 00000000");
  EXPECT_EQ(twice.state, ReplyState::Complete);
  EXPECT_EQ(twice.parts, 3u);
}

TEST(ReplyDecoderTest, ADriverResultOtherThanZeroIsAlwaysAnsweredTwice) {
  const std::string request = "0F00 01000000 41 01000000 42 00000000 01000000";
  ExpectWhole(request, "0400 1F000000 0400 1F000000 0400 1F000000");
  EXPECT_EQ(Examine(request, "0400 00000000").state, ReplyState::MayGrow);
  // The request could not be read, so the handler sent nothing.
  ExpectWhole("0F00 01000000", "0400 9A210000");
}

TEST(ReplyDecoderTest, ASecondReplyThatDoesNotRepeatTheFirstIsMalformed) {
  EXPECT_EQ(Examine("10", "0400 AC210000 0400 AB").state, ReplyState::Malformed);
  EXPECT_EQ(Examine("10", "0400 AC210000 0400 AC210000 0500").state, ReplyState::Malformed);
}

TEST(ReplyDecoderTest, AnotherMarkIsNoReply) {
  EXPECT_EQ(Examine(kNoOperation, "05").state, ReplyState::Malformed);
  EXPECT_EQ(Examine(kNoOperation, "0401").state, ReplyState::Malformed);
  EXPECT_EQ(Examine(kNoOperation, "0304 00000000").state, ReplyState::Malformed);
}

TEST(ReplyDecoderTest, TestFunctionSucceedsWith999) {
  ExpectWhole("F000 02000000 4142", "0400 E7030000 02000000 4142");
  ExpectWhole("F000 02000000 41", "0400 9A210000");
}

TEST(ReplyDecoderTest, EveryKindOfFieldIsUnderstood) {
  ExpectWhole("0201 01000000 41",
              "0400 00000000 07 02000000 4142 02000000 00112233445566778899AABBCCDDEEFF");
  ExpectWhole("CF00 01000000 00000000 00000000 00000000 10000000", "0400 00000000 03000000 010203");
}

TEST(ReplyDecoderTest, ABrokenOffReplyEndsWithTheLoopsAnswer) {
  // The second text was announced with 8000 bytes, for which the reply had no room.
  const std::string text = ToHex(std::string(500, 'x').data(), 500);
  const std::string begun = "0400 00000000 F4010000" + text + "F4010000 401F0000";
  ExpectWhole(kEnumValue, begun + "0400 9A210000");
  const ReplyLayout layout = Examine(kEnumValue, begun + "0400 9A210000");
  EXPECT_TRUE(layout.brokenOff);
  EXPECT_EQ(layout.result, 8602u);
  EXPECT_EQ(layout.parts, 2u);
  EXPECT_EQ(Examine(kEnumValue, begun + "0400 00000000").state, ReplyState::Malformed);
  EXPECT_EQ(Examine(kEnumValue, begun + "6161").state, ReplyState::Malformed);
}

TEST(ReplyDecoderTest, LyingLengthsLeadNowhere) {
  for (const char* const length : {"FFFFFFFF", "00000080", "FFFF0000"}) {
    const std::string reply = std::string("0400 00000000") + length + "414243444546";
    EXPECT_EQ(Examine(kGetValue, reply).state, ReplyState::Malformed) << length;
  }
}

TEST(ReplyDecoderTest, AReplyThatOutgrowsTheLimitIsMalformed) {
  const std::string text = ToHex(std::string(8182, 'x').data(), 8182);
  ExpectWhole("F000 00000000", "0400 E7030000 F61F0000" + text);
  // The text fits, the length behind it does not.
  EXPECT_EQ(Examine(kGetValue, "0400 00000000 F61F0000" + text).state, ReplyState::Malformed);
}

TEST(ReplyDecoderTest, WhatFollowsTheReplyIsNotLookedAt) {
  const ReplyLayout layout = Examine(kNoOperation, "0400 00000000 FFFFFFFF");
  EXPECT_EQ(layout.state, ReplyState::Complete);
  EXPECT_EQ(layout.size, 6u);
}

TEST(ReplyReaderTest, TakesFieldsInOrderAndFailsForGoodBehindTheLast) {
  const std::vector<std::uint8_t> reply = FromHex("0400 00000000 02000000 4142 07000000");
  ReplyReader fields(reply);
  EXPECT_EQ(fields.Text(), "AB");
  EXPECT_EQ(fields.Long(), 7u);
  EXPECT_FALSE(fields.Failed());
  EXPECT_EQ(fields.Long(), 0u);
  EXPECT_TRUE(fields.Failed());
  EXPECT_EQ(fields.Text(), "");
}

TEST(ReplyReaderTest, AReplyWithoutAHeadHasNoFields) {
  ReplyReader fields{Bytes()};
  EXPECT_EQ(fields.Text(), "");
  EXPECT_TRUE(fields.Failed());
}

}  // namespace
}  // namespace client
