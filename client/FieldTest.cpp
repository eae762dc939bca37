#include "client/Field.h"

#include <gtest/gtest.h>

#include <vector>

#include "client/testing/ScriptedServer.h"

namespace client {
namespace {

struct Taken {
  FieldStatus status;
  std::uint32_t cursor;
  FieldValue value;
};

Taken Take(FieldKind kind, const std::vector<std::uint8_t>& message, bool mayBeAbsent = false,
           std::uint32_t limit = kMessageLimit) {
  Taken taken{FieldStatus::Taken, 0, {}};
  taken.status = TakeField(kind, message, limit, mayBeAbsent, taken.cursor, taken.value);
  return taken;
}

TEST(FieldListTest, YieldsKindAndNameOfEachField) {
  FieldList fields("text key; long index; guid id");
  Field field;
  ASSERT_TRUE(fields.Next(field));
  EXPECT_EQ(field.kind, FieldKind::Text);
  EXPECT_EQ(field.name, "key");
  ASSERT_TRUE(fields.Next(field));
  EXPECT_EQ(field.kind, FieldKind::Long);
  EXPECT_EQ(field.name, "index");
  ASSERT_TRUE(fields.Next(field));
  EXPECT_EQ(field.kind, FieldKind::Guid);
  EXPECT_FALSE(fields.Next(field));
  EXPECT_TRUE(fields.AtEnd());
}

TEST(FieldListTest, AMisspeltDescriptionIsNoList) {
  EXPECT_TRUE(IsFieldList(""));
  EXPECT_TRUE(IsFieldList("byte kind; buffer data"));
  EXPECT_FALSE(IsFieldList("txt key"));
  EXPECT_FALSE(IsFieldList("text"));
  EXPECT_FALSE(IsFieldList("text key, long index"));
  EXPECT_FALSE(IsFieldList("text key; "));
}

TEST(FieldTest, NumbersAreLittleEndianAndMoveTheCursorBehindThem) {
  const Taken byte = Take(FieldKind::Byte, FromHex("FE"));
  EXPECT_EQ(byte.value.number, 0xFEu);
  EXPECT_EQ(byte.cursor, 1u);
  EXPECT_EQ(Take(FieldKind::Short, FromHex("0281")).value.number, 0x8102u);
  const Taken number = Take(FieldKind::Long, FromHex("01020384 FF"));
  EXPECT_EQ(number.value.number, 0x84030201u);
  EXPECT_EQ(number.cursor, 4u);
}

TEST(FieldTest, ANumberThatIsNotWholeIsCutShortAndMovesNothing) {
  for (const FieldKind kind : {FieldKind::Short, FieldKind::Long, FieldKind::Guid}) {
    const Taken taken = Take(kind, FromHex("01"));
    EXPECT_EQ(taken.status, FieldStatus::CutShort);
    EXPECT_EQ(taken.cursor, 0u);
  }
  EXPECT_EQ(Take(FieldKind::Byte, {}).status, FieldStatus::CutShort);
}

TEST(FieldTest, ATextIsItsLengthAndThatManyBytes) {
  const std::vector<std::uint8_t> message = FromHex("03000000 414243 44");
  const Taken taken = Take(FieldKind::Text, message);
  EXPECT_EQ(taken.status, FieldStatus::Taken);
  EXPECT_EQ(ToHex(taken.value.bytes.data(), taken.value.bytes.size()), "414243");
  EXPECT_EQ(taken.cursor, 7u);
}

TEST(FieldTest, ATextWithoutAllItsBytesIsCutShortInFrontOfItsLength) {
  const std::vector<std::uint8_t> message = FromHex("03000000 4142");
  const Taken taken = Take(FieldKind::Text, message);
  EXPECT_EQ(taken.status, FieldStatus::CutShort);
  EXPECT_EQ(taken.cursor, 0u);
}

TEST(FieldTest, ALengthBeyondTheLimitIsTooLongHoweverLargeItIs) {
  for (const char* const length : {"FD1F0000", "00000080", "FFFFFFFF", "FEFFFFFF"}) {
    const Taken taken = Take(FieldKind::Buffer, FromHex(length));
    EXPECT_EQ(taken.status, FieldStatus::TooLong) << length;
    EXPECT_EQ(taken.cursor, 4u);
  }
  EXPECT_EQ(Take(FieldKind::Buffer, FromHex("FC1F0000")).status, FieldStatus::CutShort);
}

TEST(FieldTest, TheLength65535MeansAbsentOnlyWhereItMay) {
  const Taken request = Take(FieldKind::Text, FromHex("FFFF0000 41"), /*mayBeAbsent=*/true);
  EXPECT_EQ(request.status, FieldStatus::Taken);
  EXPECT_TRUE(request.value.absent);
  EXPECT_EQ(request.cursor, 4u);
  EXPECT_EQ(Take(FieldKind::Text, FromHex("FFFF0000 41")).status, FieldStatus::TooLong);
}

TEST(FieldTest, AGuidIsItsSixteenBytes) {
  const std::vector<std::uint8_t> message = FromHex("00112233445566778899AABBCCDDEEFF 01");
  const Taken taken = Take(FieldKind::Guid, message);
  EXPECT_EQ(taken.value.bytes.size(), 16u);
  EXPECT_EQ(taken.cursor, 16u);
}

}  // namespace
}  // namespace client
