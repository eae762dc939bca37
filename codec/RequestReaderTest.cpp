#include <cstring>
#include <string>

#include "tests/support/PoolFixture.h"

namespace {

class RequestReaderTest : public PoolFixture {
 protected:
  std::uint32_t Cursor() const { return PipeOf(kConId).CurrentPointer; }
  SrvResult ReadText(std::uint32_t capacity = sizeof(buffer_)) {
    text_ = buffer_;
    return srv_.ReadString(kConId, text_, capacity);
  }

  char buffer_[9000] = "untouched";
  char* text_ = buffer_;
};

TEST_F(RequestReaderTest, FixedSizesAreTakenInLittleEndianOrderOneAfterAnother) {
  Receive("0102 11 04030201 0807060504030201");
  std::uint16_t code = 0;
  std::uint8_t byte = 0;
  std::uint32_t value = 0;
  std::uint64_t wide = 0;
  EXPECT_EQ(srv_.ReadShort(kConId, code), SRV_OK);
  EXPECT_EQ(srv_.ReadByte(kConId, byte), SRV_OK);
  EXPECT_EQ(srv_.ReadLong(kConId, value), SRV_OK);
  EXPECT_EQ(srv_.ReadLongLong(kConId, wide), SRV_OK);
  EXPECT_EQ(code, 0x0201);
  EXPECT_EQ(byte, 0x11);
  EXPECT_EQ(value, 0x01020304u);
  EXPECT_EQ(wide, 0x0102030405060708u);
  EXPECT_EQ(Cursor(), 15u);
}

TEST_F(RequestReaderTest, AFixedSizeThatIsNotLeftFailsAndLeavesCursorAndValue) {
  Receive("01");
  std::uint16_t code = 77;
  EXPECT_EQ(srv_.ReadShort(kConId, code), BUFFER_OVERFLOW);
  EXPECT_EQ(code, 77);
  EXPECT_EQ(Cursor(), 0u);

  std::uint8_t byte = 0;
  EXPECT_EQ(srv_.ReadByte(kConId, byte), SRV_OK);
  EXPECT_EQ(srv_.ReadByte(kConId, byte), BUFFER_OVERFLOW);
  EXPECT_EQ(Cursor(), 1u);
}

TEST_F(RequestReaderTest, EveryTooShortRestFailsForEveryWidth) {
  std::uint32_t value = 0;
  std::uint64_t wide = 0;
  for (std::size_t size = 0; size < 8; ++size) {
    Receive(Bytes(size, 0x55));
    EXPECT_EQ(srv_.ReadLongLong(kConId, wide), BUFFER_OVERFLOW) << size;
    EXPECT_EQ(srv_.ReadLong(kConId, value), size < 4 ? BUFFER_OVERFLOW : SRV_OK) << size;
  }
}

TEST_F(RequestReaderTest, ATextIsCopiedAndTerminated) {
  Receive("0300 03000000 414243 99");
  PipeOf(kConId).CurrentPointer = 2;
  EXPECT_EQ(ReadText(), SRV_OK);
  EXPECT_STREQ(text_, "ABC");
  EXPECT_EQ(Cursor(), 9u);
}

TEST_F(RequestReaderTest, AnEmptyTextIsEmptyAndNotAbsent) {
  Receive("00000000");
  EXPECT_EQ(ReadText(), SRV_OK);
  EXPECT_STREQ(text_, "");
  EXPECT_EQ(Cursor(), 4u);
}

TEST_F(RequestReaderTest, AnAbsentTextIsNullAndTakesItsLengthOnly) {
  Receive("FFFF0000 4142");
  EXPECT_EQ(ReadText(), SRV_OK);
  EXPECT_EQ(text_, nullptr);
  EXPECT_EQ(Cursor(), 4u);
}

TEST_F(RequestReaderTest, LengthsAboveWhatIsLeftFailBehindTheLength) {
  for (const char* length : {"03000000", "FEFF0000", "00000100", "00000080", "FEFFFFFF", "FFFFFFFF",
                             "FCFFFFFF", "FAFFFFFF"}) {
    Receive(Wire(length) + Wire("4141"));
    EXPECT_EQ(ReadText(), BUFFER_OVERFLOW) << length;
    EXPECT_STREQ(buffer_, "untouched") << length;
    EXPECT_EQ(Cursor(), 4u) << length;
  }
}

TEST_F(RequestReaderTest, ALengthThatIsCutShortFailsInFrontOfIt) {
  Receive("030000");
  EXPECT_EQ(ReadText(), BUFFER_OVERFLOW);
  EXPECT_EQ(Cursor(), 0u);
}

TEST_F(RequestReaderTest, AZeroByteInATextIsCopiedAndCutsWhatTheCallerSees) {
  Receive("05000000 4142004344");
  EXPECT_EQ(ReadText(), SRV_OK);
  EXPECT_STREQ(text_, "AB");
  EXPECT_EQ(std::memcmp(buffer_, "AB\0CD\0", 6), 0);
}

TEST_F(RequestReaderTest, ATextThatDoesNotFitItsBufferWithTheTerminatorFails) {
  Receive("04000000 41424344");
  EXPECT_EQ(ReadText(/*capacity=*/5), SRV_OK);
  EXPECT_EQ(buffer_[4], '\0');

  Receive("04000000 41424344");
  std::memset(buffer_, 'x', 8);
  EXPECT_EQ(ReadText(/*capacity=*/4), BUFFER_OVERFLOW);
  EXPECT_EQ(buffer_[0], 'x');
  EXPECT_EQ(Cursor(), 4u);
}

TEST_F(RequestReaderTest, TheLongestTextOfARequestIsRead) {
  Receive(Wire("0300 FA1F0000") + Bytes(8186, 'z'));
  PipeOf(kConId).CurrentPointer = 2;
  EXPECT_EQ(ReadText(), SRV_OK);
  EXPECT_EQ(std::strlen(text_), 8186u);
}

TEST_F(RequestReaderTest, MultiStringReportsItsLengthAndTerminates) {
  Receive("06000000 414200434400");
  std::uint32_t length = 99;
  EXPECT_EQ(srv_.ReadMultiString(kConId, text_, sizeof(buffer_), length), SRV_OK);
  EXPECT_EQ(length, 6u);
  EXPECT_EQ(std::memcmp(buffer_, "AB\0CD\0\0", 7), 0);
}

TEST_F(RequestReaderTest, AnAbsentMultiStringIsNullWithLengthZero) {
  Receive("FFFF0000");
  std::uint32_t length = 99;
  EXPECT_EQ(srv_.ReadMultiString(kConId, text_, sizeof(buffer_), length), SRV_OK);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(text_, nullptr);
}

TEST_F(RequestReaderTest, AMultiStringThatFailsLeavesItsLength) {
  Receive("06000000 4142");
  std::uint32_t length = 99;
  EXPECT_EQ(srv_.ReadMultiString(kConId, text_, sizeof(buffer_), length), BUFFER_OVERFLOW);
  EXPECT_EQ(length, 99u);
  Receive("0600");
  EXPECT_EQ(srv_.ReadMultiString(kConId, text_, sizeof(buffer_), length), BUFFER_OVERFLOW);
}

TEST_F(RequestReaderTest, ABufferIsCopiedWithoutATerminator) {
  Receive("03000000 010203");
  std::uint8_t data[4] = {9, 9, 9, 9};
  std::uint32_t length = 0;
  EXPECT_EQ(srv_.ReadBuffer(kConId, data, 3, length), SRV_OK);
  EXPECT_EQ(length, 3u);
  EXPECT_EQ(data[2], 3);
  EXPECT_EQ(data[3], 9);
}

TEST_F(RequestReaderTest, EmptyAndAbsentBuffersBothReportLengthZero) {
  std::uint8_t data[1] = {9};
  for (const char* request : {"00000000", "FFFF0000"}) {
    Receive(request);
    std::uint32_t length = 99;
    EXPECT_EQ(srv_.ReadBuffer(kConId, data, sizeof(data), length), SRV_OK);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(data[0], 9);
    EXPECT_EQ(Cursor(), 4u);
  }
}

TEST_F(RequestReaderTest, ABufferThatIsNotLeftOrDoesNotFitFails) {
  std::uint8_t data[2] = {9, 9};
  std::uint32_t length = 99;
  for (const char* request : {"03000000 0102", "03000000 010203", "FFFFFFFF 01", "0300"}) {
    Receive(request);
    EXPECT_EQ(srv_.ReadBuffer(kConId, data, sizeof(data), length), BUFFER_OVERFLOW) << request;
    EXPECT_EQ(data[0], 9);
    EXPECT_EQ(length, 99u);
  }
}

}  // namespace
