#include "cli/Json.h"

#include <gtest/gtest.h>

#include <string>

#include "cli/testing/JsonCheck.h"

namespace cli {
namespace {

std::string TextOf(std::string_view utf8) { return JsonWriter().Text(utf8).Written(); }

TEST(JsonTest, ObjectsArraysAndValuesAreSeparatedByCommas) {
  JsonWriter json;
  json.Open('{').Name("a").Number(1).Name("b").Open('[').Text("x").Bool(true).Close(']');
  json.Name("c").Open('{').Close('}').Name("d").Open('[').Open('{').Close('}').Number(0).Close(']');
  json.Close('}');
  EXPECT_EQ(json.Written(), R"({"a":1,"b":["x",true],"c":{},"d":[{},0]})");
}

TEST(JsonTest, ThousandthsHaveThreeDecimals) {
  EXPECT_EQ(JsonWriter().Thousandths(12034).Written(), "12.034");
  EXPECT_EQ(JsonWriter().Thousandths(7).Written(), "0.007");
}

TEST(JsonTest, QuotesBackslashesAndControlCharactersAreEscaped) {
  EXPECT_EQ(TextOf("a\"b\\c"), R"("a\"b\\c")");
  EXPECT_EQ(TextOf(std::string_view("\0\n\x7F", 3)), "\"\\u0000\\u000a\\u007f\"");
}

TEST(JsonTest, CharactersOutsideAsciiAreEscapedAsUtf16) {
  EXPECT_EQ(TextOf("\xC3\xA4"), "\"\\u00e4\"");
  EXPECT_EQ(TextOf("\xE2\x82\xAC"), "\"\\u20ac\"");
  EXPECT_EQ(TextOf("\xF0\x9F\x98\x80"), "\"\\ud83d\\ude00\"");
}

TEST(JsonTest, WhatIsNoUtf8BecomesOneReplacementForEachByte) {
  EXPECT_EQ(TextOf("\xE4z"), "\"\\ufffdz\"");
  EXPECT_EQ(TextOf("\xC3"), "\"\\ufffd\"");
  EXPECT_EQ(TextOf("\xC0\x80"), "\"\\ufffd\\ufffd\"");             // overlong
  EXPECT_EQ(TextOf("\xED\xA0\x80"), "\"\\ufffd\\ufffd\\ufffd\"");  // half a surrogate pair
  EXPECT_EQ(TextOf("\xF4\x90\x80\x80"), "\"\\ufffd\\ufffd\\ufffd\\ufffd\"");  // beyond Unicode
  EXPECT_EQ(TextOf("\xFF"), "\"\\ufffd\"");
}

TEST(JsonTest, EveryPairOfBytesIsWrittenAsValidJson) {
  for (int first = 0; first < 256; ++first) {
    for (int second = 0; second < 256; ++second) {
      const char bytes[] = {static_cast<char>(first), static_cast<char>(second)};
      ASSERT_TRUE(JsonCheck::IsValid(TextOf({bytes, 2}))) << first << ' ' << second;
    }
  }
}

TEST(JsonTest, TheCheckItselfRefusesWhatIsNoJson) {
  for (const char* const text : {"", "{", "{\"a\"}", "[1,]", "\"\n\"", "\"\\x\"", "01", "{} ", "a",
                                 "\"\xC3\xA4\"", "[1 2]", "{1:2}", "\"\\u12\"", "1."}) {
    EXPECT_FALSE(JsonCheck::IsValid(text)) << text;
  }
  EXPECT_TRUE(JsonCheck::IsValid(R"({"a":[1,2.5,true,"\u00e4"],"b":{}})"));
}

}  // namespace
}  // namespace cli
