#include "cli/TextEncoding.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace cli {
namespace {

TEST(TextEncodingTest, AsciiIsTheSameOnBothSides) {
  std::string bytes;
  EXPECT_TRUE(AnsiFromUtf8("SOFTWARE\\Vesmark", bytes));
  EXPECT_EQ(bytes, "SOFTWARE\\Vesmark");
  EXPECT_EQ(Utf8FromAnsi("SOFTWARE\\Vesmark"), "SOFTWARE\\Vesmark");
  EXPECT_TRUE(AnsiFromUtf8("", bytes));
  EXPECT_EQ(bytes, "");
  EXPECT_EQ(Utf8FromAnsi(""), "");
}

TEST(TextEncodingTest, AWesternCodePageHasUmlautsAndLacksCyrillic) {
  if (GetACP() != 1252) GTEST_SKIP() << "needs the code page 1252";
  std::string bytes;
  EXPECT_TRUE(AnsiFromUtf8("l\xC3\xA4uft", bytes));
  EXPECT_EQ(bytes,
            "l\xE4"
            "uft");
  EXPECT_EQ(Utf8FromAnsi(bytes), "l\xC3\xA4uft");
  EXPECT_EQ(Utf8FromAnsi("\x80"), "\xE2\x82\xAC");
  EXPECT_FALSE(AnsiFromUtf8("\xD0\x9F", bytes));
  // Looks like an A, and the code page would make one of it.
  EXPECT_FALSE(AnsiFromUtf8("\xC4\x80", bytes));
}

TEST(TextEncodingTest, BrokenUtf8IsRefused) {
  std::string bytes;
  EXPECT_FALSE(AnsiFromUtf8("\xFF", bytes));
  EXPECT_FALSE(AnsiFromUtf8("a\xC3", bytes));
}

TEST(TextEncodingTest, EveryByteBecomesValidUtf8) {
  for (int byte = 1; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    const std::string text = Utf8FromAnsi({&c, 1});
    EXPECT_NE(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                  static_cast<int>(text.size()), nullptr, 0),
              0)
        << byte;
  }
}

}  // namespace
}  // namespace cli
