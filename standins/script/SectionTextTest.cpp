#include "standins/script/SectionText.h"

#include <gtest/gtest.h>

namespace standin {
namespace {

std::string ErrorsOf(std::string_view text) {
  std::vector<ScriptError> errors;
  (void)SplitSections(text, errors);
  std::string all;
  for (const ScriptError& error : errors) {
    all += std::to_string(error.line) + ": " + error.text + '\n';
  }
  return all;
}

std::string ValueOf(const std::string& value) {
  std::vector<ScriptError> errors;
  const auto sections = SplitSections("[log]\nfile = " + value, errors);
  return errors.empty() ? sections.at(0).entries.at(0).value : "error: " + errors[0].text;
}

TEST(SectionTextTest, ASectionHasANameAnArgumentAndItsLines) {
  std::vector<ScriptError> errors;
  const auto sections =
      SplitSections("; a comment\r\n\r\n[answer  EpIsCpInRing ]\r\n call = * \r\n", errors);
  EXPECT_TRUE(errors.empty());
  ASSERT_EQ(sections.size(), 1u);
  EXPECT_EQ(sections[0].name, "answer");
  EXPECT_EQ(sections[0].argument, "EpIsCpInRing");
  EXPECT_EQ(sections[0].line, 3u);
  ASSERT_EQ(sections[0].entries.size(), 1u);
  EXPECT_EQ(sections[0].entries[0].key, "call");
  EXPECT_EQ(sections[0].entries[0].value, "*");
  EXPECT_EQ(sections[0].entries[0].line, 4u);
}

TEST(SectionTextTest, AValueInQuotationMarksKeepsBlanksAndEscapes) {
  EXPECT_EQ(ValueOf(R"("  a \"b\" c\\d \xe4;")"), "  a \"b\" c\\d \xE4;");
  EXPECT_EQ(ValueOf("\"\""), "");
}

TEST(SectionTextTest, ABareValueKeepsBackslashes) {
  EXPECT_EQ(ValueOf(R"(C:\a b\c)"), R"(C:\a b\c)");
}

TEST(SectionTextTest, WhatCannotBeReadIsReportedWithItsLine) {
  EXPECT_EQ(ErrorsOf("[log\n"), "1: the closing bracket is missing\n");
  EXPECT_EQ(ErrorsOf("call = 1\n"), "1: a key before the first section\n");
  EXPECT_EQ(ErrorsOf("[log]\nfile\n"), "2: neither a section nor \"key = value\"\n");
  EXPECT_EQ(ErrorsOf("[log]\nFile = a\n"), "2: a key has small letters, digits and hyphens\n");
  EXPECT_EQ(ErrorsOf("[log]\nfile = a\nfile = b\n"),
            "3: this key has a value already in this section\n");
  EXPECT_EQ(ErrorsOf("[log]\nfile =\n"), "2: the value is missing; an empty text is \"\"\n");
  EXPECT_EQ(ErrorsOf("[log]\nfile = \"a\n"), "2: the closing quotation mark is missing\n");
  EXPECT_EQ(ErrorsOf("[log]\nfile = \"a\" b\n"),
            "2: something stands behind the closing quotation mark\n");
  EXPECT_EQ(ErrorsOf("[log]\nfile = \"\\q\"\n"),
            "2: after a backslash in quotation marks stands \\, \" or x01 to xff\n");
  EXPECT_EQ(ErrorsOf(std::string("[log]\nfile = a\0b\n", 17)), "2: a control character\n");
  EXPECT_EQ(ErrorsOf("\xEF\xBB\xBF[log]\n"), "1: a byte order mark; save the file without one\n");
}

TEST(SectionTextTest, AQuotedTextIsPrintableAndReadsBackAsTheSame) {
  EXPECT_EQ(Quote("a \"b\" \\ \xE4\n"), R"("a \"b\" \\ \xe4\x0a")");
  EXPECT_EQ(ValueOf(Quote("a \"b\" \\ \xE4\n")), "a \"b\" \\ \xE4\n");
}

}  // namespace
}  // namespace standin
