#include "cli/Hex.h"

#include <gtest/gtest.h>

namespace cli {
namespace {

TEST(HexTest, GroupsAndArgumentsAreOneSequenceOfBytes) {
  std::vector<std::uint8_t> bytes;
  EXPECT_EQ(AppendHex("1000 aB\tCd ", bytes), "");
  EXPECT_EQ(AppendHex("ef", bytes), "");
  EXPECT_EQ(bytes, (std::vector<std::uint8_t>{0x10, 0x00, 0xAB, 0xCD, 0xEF}));
}

TEST(HexTest, AnArgumentOfBlanksAddsNothing) {
  std::vector<std::uint8_t> bytes;
  EXPECT_EQ(AppendHex("", bytes), "");
  EXPECT_EQ(AppendHex("  ", bytes), "");
  EXPECT_TRUE(bytes.empty());
}

TEST(HexTest, HalfAByteAndOtherCharactersAreNamed) {
  std::vector<std::uint8_t> bytes;
  EXPECT_NE(AppendHex("10 123", bytes).find("'123'"), std::string::npos);
  EXPECT_NE(AppendHex("0x10", bytes).find("'x'"), std::string::npos);
  EXPECT_NE(AppendHex("1G", bytes).find("'G'"), std::string::npos);
}

TEST(HexTest, TheLastByteWithinTheLimitIsTaken) {
  std::vector<std::uint8_t> bytes(kRawLimit - 1);
  EXPECT_EQ(AppendHex("11", bytes), "");
  EXPECT_NE(AppendHex("22", bytes), "");
  EXPECT_EQ(bytes.size(), kRawLimit);
}

TEST(HexTest, BytesAreShownAsDigitsAndInLinesOfSixteen) {
  std::vector<std::uint8_t> bytes(17, 0x0A);
  bytes[16] = 0xFF;
  EXPECT_EQ(HexDigits(std::span(bytes).last(2)), "0aff");
  EXPECT_EQ(HexDump(bytes, 0x20),
            "  0020  0a 0a 0a 0a 0a 0a 0a 0a 0a 0a 0a 0a 0a 0a 0a 0a\n"
            "  0030  ff\n");
  EXPECT_EQ(HexDump({}, 0), "");
}

}  // namespace
}  // namespace cli
