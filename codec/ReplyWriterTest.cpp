#include <string>

#include "tests/support/PoolFixture.h"

namespace {

class ReplyWriterTest : public PoolFixture {
 protected:
  ReplyWriterTest() { PipeOf(kConId).cbToWrite = 0; }
  std::uint32_t Built() const { return PipeOf(kConId).cbToWrite; }
  // Leaves room for `left` more bytes.
  void LeaveRoom(std::uint32_t left) { PipeOf(kConId).cbToWrite = kPipeBufferSize - left; }
};

TEST_F(ReplyWriterTest, AppendersWriteLittleEndianWithoutPadding) {
  EXPECT_EQ(srv_.AddByte(kConId, 0x11), SRV_OK);
  EXPECT_EQ(srv_.AddShort(kConId, 0x2233), SRV_OK);
  EXPECT_EQ(srv_.AddLong(kConId, 0x44556677), SRV_OK);
  EXPECT_EQ(srv_.AddLongLong(kConId, 0x0102030405060708), SRV_OK);
  EXPECT_EQ(Reply(), Wire("11 3322 77665544 0807060504030201"));
}

TEST_F(ReplyWriterTest, AFixedAppendThatDoesNotFitAppendsNothing) {
  LeaveRoom(7);
  EXPECT_EQ(srv_.AddLongLong(kConId, 1), BUFFER_OVERFLOW);
  EXPECT_EQ(Built(), kPipeBufferSize - 7);
  EXPECT_EQ(srv_.AddLong(kConId, 1), SRV_OK);
  EXPECT_EQ(srv_.AddLong(kConId, 1), BUFFER_OVERFLOW);
  EXPECT_EQ(srv_.AddShort(kConId, 1), SRV_OK);
  EXPECT_EQ(srv_.AddShort(kConId, 1), BUFFER_OVERFLOW);
  EXPECT_EQ(srv_.AddByte(kConId, 1), SRV_OK);
  EXPECT_EQ(srv_.AddByte(kConId, 1), BUFFER_OVERFLOW);
  EXPECT_EQ(Built(), kPipeBufferSize);
}

TEST_F(ReplyWriterTest, ATextIsItsLengthAndItsBytes) {
  EXPECT_EQ(srv_.AddString(kConId, "ab"), SRV_OK);
  EXPECT_EQ(srv_.AddString(kConId, ""), SRV_OK);
  EXPECT_EQ(Reply(), Wire("02000000 6162 00000000"));
}

TEST_F(ReplyWriterTest, ATextThatFillsTheBufferToTheLastByteFits) {
  LeaveRoom(4 + 3);
  EXPECT_EQ(srv_.AddString(kConId, "abc"), SRV_OK);
  EXPECT_EQ(Built(), kPipeBufferSize);
}

TEST_F(ReplyWriterTest, OnOverflowTheLengthStaysAndTheBytesDoNot) {
  LeaveRoom(4 + 2);
  EXPECT_EQ(srv_.AddString(kConId, "abc"), BUFFER_OVERFLOW);
  EXPECT_EQ(Built(), kPipeBufferSize - 2);

  LeaveRoom(4 + 2);
  EXPECT_EQ(srv_.AddString(kConId, "abc", 3), BUFFER_OVERFLOW);
  EXPECT_EQ(Built(), kPipeBufferSize - 2);

  LeaveRoom(4 + 2);
  EXPECT_EQ(srv_.AddBuffer(kConId, "abc", 3), BUFFER_OVERFLOW);
  EXPECT_EQ(Built(), kPipeBufferSize - 2);
}

TEST_F(ReplyWriterTest, ALengthThatDoesNotFitAppendsNothing) {
  LeaveRoom(3);
  EXPECT_EQ(srv_.AddString(kConId, "a"), BUFFER_OVERFLOW);
  EXPECT_EQ(srv_.AddString(kConId, "a", 1), BUFFER_OVERFLOW);
  EXPECT_EQ(srv_.AddBuffer(kConId, "a", 1), BUFFER_OVERFLOW);
  EXPECT_EQ(Built(), kPipeBufferSize - 3);
}

TEST_F(ReplyWriterTest, ASizeNearTwoToThe32IsRefused) {
  EXPECT_EQ(srv_.AddBuffer(kConId, "a", 0xFFFFFFFF), BUFFER_OVERFLOW);
  EXPECT_EQ(srv_.AddString(kConId, "a", 0xFFFFFFF0), BUFFER_OVERFLOW);
}

TEST_F(ReplyWriterTest, TheSpecialTextKeepsItsZeroBytes) {
  EXPECT_EQ(srv_.AddString(kConId, "a\0b\0", 4), SRV_OK);
  EXPECT_EQ(Reply(), Wire("04000000 61006200"));
}

TEST_F(ReplyWriterTest, SendOfOneLong) {
  EXPECT_EQ(srv_.Send(kConId, 0x21AC), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 AC210000"));
}

TEST_F(ReplyWriterTest, SendOfTwoLongs) {
  EXPECT_EQ(srv_.Send(kConId, 1, 2u), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 01000000 02000000"));
}

TEST_F(ReplyWriterTest, SendOfThreeLongs) {
  EXPECT_EQ(srv_.Send(kConId, 1, 2u, 3u), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 01000000 02000000 03000000"));
}

TEST_F(ReplyWriterTest, SendOfFourLongs) {
  EXPECT_EQ(srv_.Send(kConId, 1, 2u, 3u, 4u), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 01000000 02000000 03000000 04000000"));
}

TEST_F(ReplyWriterTest, SendOfFiveLongs) {
  EXPECT_EQ(srv_.Send(kConId, 1, 2u, 3u, 4u, 5u), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 01000000 02000000 03000000 04000000 05000000"));
}

TEST_F(ReplyWriterTest, SendOfSevenLongs) {
  EXPECT_EQ(srv_.Send(kConId, 1, 2, 3, 4, 5, 6, 7), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 01000000 02000000 03000000 04000000 05000000 06000000 07000000"));
}

TEST_F(ReplyWriterTest, SendOfAText) {
  EXPECT_EQ(srv_.Send(kConId, 999, "Hi"), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 E7030000 02000000 4869"));
}

TEST_F(ReplyWriterTest, SendOfATextAndALong) {
  EXPECT_EQ(srv_.Send(kConId, 0, "Hi", 7), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 00000000 02000000 4869 07000000"));
}

TEST_F(ReplyWriterTest, SendOfTwoTextsWithTheirLongs) {
  EXPECT_EQ(srv_.Send(kConId, 0, "Hi", 7, "", 8), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 00000000 02000000 4869 07000000 00000000 08000000"));
}

TEST_F(ReplyWriterTest, MultiByteStringRepeatsItsLengthBehindTheBytes) {
  EXPECT_EQ(srv_.SendMultiByteString(kConId, 0, "a\0b\0", 4), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 00000000 04000000 61006200 04000000"));
}

TEST_F(ReplyWriterTest, SendBufferIsResultLengthAndBytes) {
  EXPECT_EQ(srv_.SendBuffer(kConId, 5, "\1\2", 2), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 05000000 02000000 0102"));
}

TEST_F(ReplyWriterTest, SendBufferOfNothingSendsAZeroLengthOnly) {
  EXPECT_EQ(srv_.SendBuffer(kConId, 0, nullptr, 0), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 00000000 00000000"));
}

TEST_F(ReplyWriterTest, TheLongestTextOfASendHas8182Bytes) {
  EXPECT_EQ(srv_.Send(kConId, 0, std::string(8182, 'x').c_str()), SRV_OK);
  EXPECT_EQ(Built(), kPipeBufferSize);

  PipeOf(kConId).cbToWrite = 0;
  EXPECT_EQ(srv_.Send(kConId, 0, std::string(8183, 'x').c_str()), BUFFER_OVERFLOW);
}

TEST_F(ReplyWriterTest, ASecondSendAppendsToTheFirst) {
  EXPECT_EQ(srv_.Send(kConId, 1), SRV_OK);
  EXPECT_EQ(srv_.Send(kConId, 2), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 01000000 0400 02000000"));
}

TEST_F(ReplyWriterTest, ASendStopsAtTheFirstFieldThatDoesNotFit) {
  LeaveRoom(2 + 4 + 4);
  EXPECT_EQ(srv_.Send(kConId, 1, 2u, 3u), BUFFER_OVERFLOW);
  EXPECT_EQ(Built(), kPipeBufferSize);
  EXPECT_EQ(srv_.SendBuffer(kConId, 0, "a", 1), BUFFER_OVERFLOW);
  EXPECT_EQ(srv_.SendMultiByteString(kConId, 0, "a", 1), BUFFER_OVERFLOW);
  EXPECT_EQ(srv_.Send(kConId, 0), BUFFER_OVERFLOW);
}

}  // namespace
