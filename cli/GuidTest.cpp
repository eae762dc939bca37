#include "cli/Guid.h"

#include <gtest/gtest.h>

namespace cli {
namespace {

constexpr char kText[] = "{11223344-5566-7788-0102-030405060708}";

TEST(GuidTest, NumbersAreWrittenHighestDigitFirstAndBytesInTheirOrder) {
  client::Guid guid;
  ASSERT_TRUE(ParseGuid(kText, guid));
  EXPECT_EQ(guid.data1, 0x11223344u);
  EXPECT_EQ(guid.data2, 0x5566u);
  EXPECT_EQ(guid.data3, 0x7788u);
  EXPECT_EQ(guid.data4, (std::array<std::uint8_t, 8>{1, 2, 3, 4, 5, 6, 7, 8}));
  const std::uint8_t wire[] = {0x44, 0x33, 0x22, 0x11, 0x66, 0x55, 0x88, 0x77,
                               1,    2,    3,    4,    5,    6,    7,    8};
  EXPECT_EQ(GuidText(wire), kText);
}

TEST(GuidTest, BracesAreOptionalAndLettersOfEitherCase) {
  client::Guid guid;
  EXPECT_TRUE(ParseGuid("abcdefAB-5566-7788-0102-030405060708", guid));
  EXPECT_EQ(guid.data1, 0xABCDEFABu);
}

TEST(GuidTest, AnythingElseIsRefused) {
  client::Guid guid;
  for (const char* const text :
       {"", "{}", "{", "11223344-5566-7788-0102-030405060708}",
        "{11223344-5566-7788-0102-030405060708", "1122334455667788010203040506070809ab",
        "11223344-5566-7788-0102-03040506070", "11223344-5566-7788-0102-0304050607089",
        "1122334g-5566-7788-0102-030405060708", "1122 344-5566-7788-0102-030405060708",
        "11223344-5566-7788-010 -03040506070a", "11223344-5566-77880-102-030405060708"}) {
    EXPECT_FALSE(ParseGuid(text, guid)) << text;
  }
}

}  // namespace
}  // namespace cli
