#include "codec/FieldReader.h"

#include "tests/support/PoolFixture.h"

namespace {

class FieldReaderTest : public PoolFixture {};

TEST_F(FieldReaderTest, FieldsAreTakenInOrder) {
  ReceiveCommand(Wire("0300 02000000 4142 05000000"));
  RequestText<16> text;
  std::uint32_t value = 0;
  FieldReader fields(srv_, kConId, "Test: ");
  fields.Text(text, "<< result = 0x%x Text");
  fields.Long(value, "<< result = 0x%x Value");
  EXPECT_FALSE(fields.Failed());
  EXPECT_EQ(fields.Result(), SRV_OK);
  EXPECT_STREQ(text.get(), "AB");
  EXPECT_EQ(value, 5u);
}

TEST_F(FieldReaderTest, TheFirstFailureIsKeptAndNothingIsTakenBehindIt) {
  ReceiveCommand(Wire("0300 09000000 4142 05000000"));
  RequestText<16> text;
  std::uint32_t value = 77;
  FieldReader fields(srv_, kConId, "Test: ");
  fields.Text(text, "<< result = 0x%x Text");
  fields.Long(value, "<< result = 0x%x Value");
  EXPECT_TRUE(fields.Failed());
  EXPECT_EQ(fields.Result(), BUFFER_OVERFLOW);
  EXPECT_EQ(value, 77u);
  EXPECT_EQ(PipeOf(kConId).CurrentPointer, 6u);
}

TEST_F(FieldReaderTest, AFieldThatWasNotReadIsAnEmptyTextAndAnAbsentOneIsNull) {
  ReceiveCommand(Wire("0300 FFFF0000"));
  RequestText<16> absent, missing;
  FieldReader fields(srv_, kConId, "Test: ");
  fields.Text(absent, "<< result = 0x%x Text");
  fields.Text(missing, "<< result = 0x%x Text");
  EXPECT_EQ(absent.get(), nullptr);
  EXPECT_STREQ(missing.get(), "");
}

TEST_F(FieldReaderTest, ATextTakesWhatFitsItsCapacityWithTheTerminator) {
  RequestText<4> three, four;
  ReceiveCommand(Wire("0300 03000000 414243"));
  FieldReader fields(srv_, kConId, "Test: ");
  fields.Text(three, "<< result = 0x%x Text");
  EXPECT_STREQ(three.get(), "ABC");

  ReceiveCommand(Wire("0300 04000000 41424344"));
  fields.Text(four, "<< result = 0x%x Text");
  EXPECT_EQ(fields.Result(), BUFFER_OVERFLOW);
}

TEST_F(FieldReaderTest, ShortsBytesAndBuffersAreTakenInOrder) {
  ReceiveCommand(Wire("0300 2211 7F 03000000 010203 05000000"));
  std::uint16_t number = 0;
  std::uint8_t byte = 0;
  std::uint8_t buffer[4] = {9, 9, 9, 9};
  std::uint32_t length = 77;
  std::uint32_t value = 0;
  FieldReader fields(srv_, kConId, "Test: ");
  fields.Short(number, "<< result = 0x%x Short");
  fields.Byte(byte, "<< result = 0x%x Byte");
  fields.Buffer(buffer, sizeof(buffer), length, "<< result = 0x%x Buffer");
  fields.Long(value, "<< result = 0x%x Value");
  EXPECT_FALSE(fields.Failed());
  EXPECT_EQ(number, 0x1122u);
  EXPECT_EQ(byte, 0x7Fu);
  EXPECT_EQ(length, 3u);
  EXPECT_EQ(Hex(Bytes(buffer, buffer + 4)), "01020309");
  EXPECT_EQ(value, 5u);
}

TEST_F(FieldReaderTest, BehindAFailureShortsBytesAndBuffersAreLeftAlone) {
  ReceiveCommand(Wire("0300 01"));
  std::uint16_t number = 0x7777;
  std::uint8_t byte = 0x77;
  std::uint8_t buffer[4] = {};
  std::uint32_t length = 77;
  FieldReader fields(srv_, kConId, "Test: ");
  fields.Short(number, "<< result = 0x%x Short");
  fields.Byte(byte, "<< result = 0x%x Byte");
  fields.Buffer(buffer, sizeof(buffer), length, "<< result = 0x%x Buffer");
  EXPECT_EQ(fields.Result(), BUFFER_OVERFLOW);
  EXPECT_EQ(number, 0x7777u);
  EXPECT_EQ(byte, 0x77u);
  EXPECT_EQ(length, 77u);
  EXPECT_EQ(PipeOf(kConId).CurrentPointer, 2u);
}

TEST_F(FieldReaderTest, EveryKindFailsByItself) {
  std::uint8_t byte = 0;
  ReceiveCommand(Wire("0300"));
  FieldReader bytes(srv_, kConId, "Test: ");
  bytes.Byte(byte, "<< result = 0x%x Byte");
  EXPECT_EQ(bytes.Result(), BUFFER_OVERFLOW);

  std::uint8_t buffer[4] = {};
  std::uint32_t length = 0;
  ReceiveCommand(Wire("0300 05000000 0102030405"));
  FieldReader buffers(srv_, kConId, "Test: ");
  buffers.Buffer(buffer, sizeof(buffer), length, "<< result = 0x%x Buffer");
  EXPECT_EQ(buffers.Result(), BUFFER_OVERFLOW);
  EXPECT_EQ(Hex(Bytes(buffer, buffer + 4)), "00000000");
}

TEST_F(FieldReaderTest, AnAbsentBufferHasNoBytes) {
  ReceiveCommand(Wire("0300 FFFF0000 07"));
  std::uint8_t buffer[4] = {};
  std::uint32_t length = 77;
  std::uint8_t byte = 0;
  FieldReader fields(srv_, kConId, "Test: ");
  fields.Buffer(buffer, sizeof(buffer), length, "<< result = 0x%x Buffer");
  fields.Byte(byte, "<< result = 0x%x Byte");
  EXPECT_FALSE(fields.Failed());
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(byte, 7u);
}

TEST_F(FieldReaderTest, ClearLeavesNothingBehindTheText) {
  RequestText<8> text;
  ReceiveCommand(Wire("0300 07000000 41414141414141"));
  FieldReader first(srv_, kConId, "Test: ");
  first.Text(text, "<< result = 0x%x Text");
  text.Clear();
  EXPECT_EQ(Hex(Bytes(text.get(), text.get() + 8)), "0000000000000000");
}

TEST_F(FieldReaderTest, ATraceNamesItsFileWithoutDirectory) {
  constexpr FieldTrace<'s'> kTrace("<< result = 0x%x name=%s");
  EXPECT_STREQ(kTrace.file, "FieldReaderTest.cpp");
  EXPECT_GT(kTrace.line, 0u);
}

}  // namespace
