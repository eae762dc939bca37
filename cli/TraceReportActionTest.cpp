#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "cli/Arguments.h"
#include "cli/Ctl.h"
#include "cli/testing/JsonCheck.h"

namespace cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

class TraceReportActionTest : public testing::Test {
 protected:
  TraceReportActionTest() {
    folder_ =
        fs::path(testing::TempDir()) /
        (std::string("report-") + testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    Put("ZqFILE1.TRC", "RunSrvLoop:  opCode 0x10 \nRunSrvLoop:  Error occured : lResult=0x5 \n");
  }
  ~TraceReportActionTest() override { fs::remove_all(folder_); }

  std::string At(const std::string& name) const { return (folder_ / name).string(); }
  void Put(const std::string& name, const std::string& content) const {
    std::ofstream(At(name), std::ios::binary) << content;
  }
  std::string Content(const std::string& name) const {
    std::ifstream file(At(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  int Run(const std::vector<std::string>& words) {
    output_ = {};
    return RunCtl(words, output_);
  }
  int Make(const std::vector<std::string>& more = {}) {
    std::vector<std::string> words = {"trace", "report", At("ZqFILE1.TRC"), "-o", At("r.html")};
    words.insert(words.end(), more.begin(), more.end());
    return Run(words);
  }

  fs::path folder_;
  Output output_;
};

TEST_F(TraceReportActionTest, ThePageIsWrittenAndItsFiguresAreTold) {
  EXPECT_EQ(Make({"--title", "Monday"}), kExitOk) << output_.err;
  EXPECT_THAT(output_.out, HasSubstr("2 lines, 1 request, 1 error"));
  EXPECT_THAT(Content("r.html"), StartsWith("<!DOCTYPE html>"));
  EXPECT_THAT(Content("r.html"), HasSubstr("\"title\":\"Monday\",\"files\":[\"ZqFILE1.TRC\"]"));
  EXPECT_FALSE(fs::exists(At("r.html.part")));
}

TEST_F(TraceReportActionTest, JsonHasTheFigures) {
  EXPECT_EQ(Make({"--json"}), kExitOk);
  EXPECT_TRUE(JsonCheck::IsValid(output_.out.substr(0, output_.out.size() - 1))) << output_.out;
  EXPECT_THAT(output_.out, HasSubstr("\"lines\":2,\"requests\":1,\"errors\":1,\"ok\":true"));
}

TEST_F(TraceReportActionTest, AnEarlierReportIsReplaced) {
  ASSERT_EQ(Make(), kExitOk);
  const std::string earlier = Content("r.html");
  EXPECT_EQ(Make({"--title", "Another"}), kExitOk);
  EXPECT_NE(Content("r.html"), earlier);
}

TEST_F(TraceReportActionTest, AnotherFileIsReplacedWhenThatIsAskedForOnly) {
  Put("r.html", "<!DOCTYPE html><p>somebody's page");
  EXPECT_EQ(Make(), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("exists and is not a report; --force replaces it"));
  EXPECT_EQ(Content("r.html"), "<!DOCTYPE html><p>somebody's page");
  EXPECT_EQ(Make({"--force"}), kExitOk);
  EXPECT_THAT(Content("r.html"), HasSubstr("ZqFILE1.TRC"));
}

TEST_F(TraceReportActionTest, ATraceIsNeverReplaced) {
  const std::string trace = Content("ZqFILE1.TRC");
  EXPECT_EQ(Run({"trace", "report", At("ZqFILE1.TRC"), "--force", "-o",
                 At("../" + folder_.filename().string() + "/ZqFILE1.TRC")}),
            kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("is one of the traces itself"));
  EXPECT_EQ(Content("ZqFILE1.TRC"), trace);
}

TEST_F(TraceReportActionTest, AFolderIsNoPlaceForAReport) {
  EXPECT_EQ(Run({"trace", "report", At("ZqFILE1.TRC"), "-o", folder_.string()}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("is not a file"));
}

TEST_F(TraceReportActionTest, APlaceThatCannotBeWrittenIsToldAndLeavesNothing) {
  EXPECT_EQ(Run({"trace", "report", At("ZqFILE1.TRC"), "-o", At("missing/r.html")}),
            kExitTransport);
  EXPECT_THAT(output_.err, HasSubstr("the folder of "));
  EXPECT_FALSE(fs::exists(At("missing")));
}

TEST_F(TraceReportActionTest, OfAPairOneFileIsEnough) {
  EXPECT_EQ(Make({At("ZqFILE2.TRC")}), kExitOk);
  EXPECT_THAT(output_.out, HasSubstr("2 lines"));
  EXPECT_THAT(output_.err, HasSubstr("ZqFILE2.TRC; its twin is read alone"));
}

TEST_F(TraceReportActionTest, AMissingTraceIsToldAndNoPageIsWritten) {
  EXPECT_EQ(Make({At("nothing.TRC")}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("nothing.TRC"));
  EXPECT_FALSE(fs::exists(At("r.html")));
}

TEST_F(TraceReportActionTest, TheOptionsAreForThisCommandOnlyAndAPageHasToBeNamed) {
  EXPECT_EQ(Run({"trace", "report", At("ZqFILE1.TRC")}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("trace report needs -o and the file to write"));
  EXPECT_EQ(Run({"trace", "report", At("ZqFILE1.TRC"), "-o"}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("-o needs a value"));
  EXPECT_EQ(Run({"ping", "--output", "x"}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("--output is for trace report only"));
}

TEST_F(TraceReportActionTest, InOtherCommandsTheShortOptionIsAText) {
  Invocation invocation;
  const std::vector<std::string> words = {"reg", "set", "Key", "Name", "-o"};
  EXPECT_EQ(ParseArguments(words, invocation), "");
  EXPECT_EQ(invocation.arguments, std::vector<std::string>({"Key", "Name", "-o"}));
}

}  // namespace
}  // namespace cli
