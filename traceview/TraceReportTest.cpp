#include "traceview/TraceReport.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace traceview {
namespace {

using testing::HasSubstr;
using testing::Not;

class TraceReportTest : public testing::Test {
 protected:
  void Add(const std::string& raw) { lines_.push_back(ParseTraceLine(raw)); }
  std::string Page() { return BuildTraceReport({lines_, files_, title_, toUtf8_}, &figures_); }
  // What stands between the tags of the data.
  std::string Data() {
    const std::string page = Page();
    const std::string open = "<script type=\"application/json\" id=\"data\">";
    const std::size_t begin = page.find(open) + open.size();
    return page.substr(begin, page.find("</script>", begin) - begin);
  }

  std::vector<TraceLine> lines_;
  std::vector<std::string> files_ = {"ZqFILE1.TRC"};
  std::string title_;
  std::string (*toUtf8_)(std::string_view) = nullptr;
  ReportFigures figures_;
};

std::size_t CountOf(const std::string& text, const std::string& word) {
  std::size_t count = 0;
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
    ++count;
  }
  return count;
}

TEST_F(TraceReportTest, TextsOfATraceStandInThePageAsDataOnly) {
  const std::string plain = Page();
  Add("Reg_SetValue:  </script><script>alert(1)</script><!-- ");
  title_ = "</title><img src=x>";
  files_ = {"</script>.TRC"};
  const std::string page = Page();
  for (const char* word : {"<script", "</script", "<img", "<!--", "</title"}) {
    EXPECT_EQ(CountOf(page, word), CountOf(plain, word)) << word;
  }
  EXPECT_THAT(Data(), HasSubstr("\\u003c/script\\u003e\\u003cscript\\u003ealert(1)"));
}

TEST_F(TraceReportTest, ThePageMayRunItsOwnScriptAndStyleOnlyAndFetchNothing) {
  const std::string page = Page();
  EXPECT_THAT(page, HasSubstr("content=\"default-src 'none'; script-src 'sha256-"));
  EXPECT_THAT(page, HasSubstr("style-src 'sha256-"));
  EXPECT_THAT(page, Not(HasSubstr("unsafe")));
  EXPECT_THAT(page, Not(HasSubstr(" src=")));
  EXPECT_THAT(page, Not(HasSubstr("http:")));
  EXPECT_THAT(page, Not(HasSubstr("https:")));
  EXPECT_THAT(page, Not(HasSubstr("url(")));
  EXPECT_EQ(CountOf(page, "@SCRIPT"), 0u);
  EXPECT_EQ(CountOf(page, "@STYLE"), 0u);
}

TEST_F(TraceReportTest, EqualTextsAreThereOnce) {
  for (int i = 0; i < 50; ++i) Add("Reg_SetValue:  quite a long text that comes again and again ");
  EXPECT_EQ(CountOf(Page(), "comes again and again"), 1u);
  EXPECT_EQ(CountOf(Page(), "Reg_SetValue"), 1u);
}

TEST_F(TraceReportTest, CommandsThatOccurHaveTheirNames) {
  Add("RunSrvLoop:  opCode 0x16 ");
  Add("RunSrvLoop:  while - WaitForMultipleObjects ");
  Add("RunSrvLoop:  opCode 0xffff ");
  EXPECT_THAT(Data(), HasSubstr(R"("commands":[22,"Reg_GetValue"])"));
  EXPECT_EQ(figures_.lines, 3u);
  EXPECT_EQ(figures_.requests, 2u);
}

TEST_F(TraceReportTest, FiguresCountTheErrorLines) {
  Add("E Unable to open VxD, got error code !");
  Add("Reg_SetValue:  << result = 0x5 Key ");
  (void)Page();
  EXPECT_EQ(figures_.errors, 1u);
}

TEST_F(TraceReportTest, AllBytesGoThroughTheConversion) {
  Add("Setup:  l\xE4uft ");
  toUtf8_ = [](std::string_view bytes) {
    std::string text;
    for (const char c : bytes) text += c == '\xE4' ? std::string("\xC3\xA4") : std::string(1, c);
    return text;
  };
  EXPECT_THAT(Data(), HasSubstr("l\xC3\xA4uft"));
  EXPECT_THAT(Data(), Not(HasSubstr("l\xE4uft")));
}

TEST_F(TraceReportTest, AnEmptyTraceMakesAPageToo) {
  EXPECT_THAT(Data(), HasSubstr(R"("place":[],"text":[],"time":[])"));
}

TEST_F(TraceReportTest, ATimeThatCannotBeReadIsKeptAsWritten) {
  Add("T QORLIXSR -- SRV          no time here StartSRV:  >> StartSRV");
  ASSERT_EQ(lines_[0].layout, Layout::kTime);
  EXPECT_THAT(Data(), HasSubstr("\"no time here\""));
}

TEST_F(TraceReportTest, TheSameInputMakesTheSamePage) {
  for (int i = 0; i < 20; ++i) Add("F" + std::to_string(i) + ":  text " + std::to_string(i) + ' ');
  EXPECT_EQ(Page(), Page());
}

TEST_F(TraceReportTest, APageIsKnownByItsBeginning) {
  EXPECT_TRUE(IsTraceReport(std::string_view(Page()).substr(0, kReportHeadSize)));
  EXPECT_FALSE(IsTraceReport("<!DOCTYPE html>\n<html lang=\"en\">"));
  EXPECT_FALSE(IsTraceReport("L QORLIXSR content=\"qorlixctl trace report\""));
  EXPECT_FALSE(IsTraceReport(""));
}

}  // namespace
}  // namespace traceview
