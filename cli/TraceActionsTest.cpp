#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli/Ctl.h"
#include "cli/testing/JsonCheck.h"
#include "client/testing/ScriptedServer.h"

// The trace commands as command lines, on files and the scripted server, natively and on Windows.

namespace cli {
namespace {

using testing::HasSubstr;
using testing::Not;
using Words = std::vector<std::string>;

constexpr char kStart[] =
    "L QORLIXSR P000000032T000000036 -- SRV  0  0000 20:21:22,023 Registry.cpp,00024 "
    "Reg_SetValue:  >> Start\r\n";
constexpr char kEnd[] =
    "L QORLIXSR P000000032T000000036 FR SRV c0000005 20:21:22,033 Registry.cpp,00031 "
    "Reg_SetValue:  << Reg_SetValue result = 0x5\r\n";
constexpr char kRead[] =
    "L QORLIXSR P000000032T000000036 FM SRV          20:21:22,025 Reader.cpp,00007 "
    "ReadString:  \x1b[2Jtext\r\n";

class TraceActionsTest : public testing::Test {
 protected:
  TraceActionsTest() {
    folder_ = std::filesystem::temp_directory_path() /
              ("qorlix_trace_actions_" +
               std::to_string(std::chrono::system_clock::now().time_since_epoch().count()));
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
  }
  ~TraceActionsTest() override { std::filesystem::remove_all(folder_); }

  std::string Path(const std::string& name) const { return (folder_ / name).string(); }
  std::string File(const std::string& name, const std::string& content) const {
    std::ofstream(folder_ / name, std::ios::binary) << content;
    return Path(name);
  }
  int Run(Words words) {
    words.insert(words.begin(), {"--pipe", server_.PipeName(), "--timeout", "5"});
    output_ = {};
    return RunCtl(words, output_);
  }
  void ExpectJson() const {
    ASSERT_FALSE(output_.out.empty());
    EXPECT_TRUE(JsonCheck::IsValid(output_.out.substr(0, output_.out.size() - 1))) << output_.out;
    EXPECT_EQ(output_.err, "");
  }

  std::filesystem::path folder_;
  client::ScriptedServer server_;
  Output output_;
};

TEST_F(TraceActionsTest, DumpShowsTheColumnsOfALineAligned) {
  const std::string file = File("A.TRC", std::string(kStart) + kEnd);
  EXPECT_EQ(Run({"trace", "dump", file}), kExitOk);
  EXPECT_EQ(output_.out,
            "20:21:22,023 P32    T36    -- all      SRV 0 0000   Registry.cpp:24   "
            "Reg_SetValue             >> Start\n"
            "20:21:22,033 P32    T36    FR error    SRV c0000005 Registry.cpp:31   "
            "Reg_SetValue             << Reg_SetValue result = 0x5\n");
}

TEST_F(TraceActionsTest, LinesOfOtherLayoutsAndOfNoneAreAllShown) {
  const std::string file = File("A.TRC",
                                "Reg_DelKey: >> Start \r\n"
                                "S QORLIXSR -- SRV  0  0000 Install text\r\n"
                                "T QORLIXSR FM SRV          12345.678901 Install text\r\n"
                                "E complaint\r\n"
                                "what is this");
  EXPECT_EQ(Run({"trace", "dump", file}), kExitOk);
  EXPECT_EQ(output_.out,
            "Reg_DelKey               >> Start\n"
            "-- all      SRV 0 0000   Install                  text\n"
            "12345.678901 FM progress SRV          Install                  text\n"
            "E complaint\n"
            "what is this  [torn]\n");
}

TEST_F(TraceActionsTest, ControlCharactersDoNotReachTheTerminal) {
  EXPECT_EQ(Run({"trace", "dump", File("A.TRC", kRead)}), kExitOk);
  EXPECT_THAT(output_.out, HasSubstr("\\x1b[2Jtext"));
}

TEST_F(TraceActionsTest, ColoursComeOnlyOnATerminalOrWhenAsked) {
  const std::string file = File("A.TRC", std::string(kStart) + kEnd);
  EXPECT_EQ(Run({"trace", "dump", file, "--color", "always"}), kExitOk);
  EXPECT_THAT(output_.out, HasSubstr("\n\x1b[31m20:21:22,033"));
  EXPECT_EQ(Run({"trace", "dump", file}), kExitOk);
  EXPECT_THAT(output_.out, Not(HasSubstr("\x1b")));
  output_ = {};
  output_.terminal = true;
  const Words words = {"trace", "dump", file};
  EXPECT_EQ(RunCtl(words, output_), kExitOk);
  EXPECT_THAT(output_.out, HasSubstr("\x1b[31m"));
  output_ = {};
  output_.terminal = true;
  const Words never = {"trace", "dump", file, "--color=never"};
  EXPECT_EQ(RunCtl(never, output_), kExitOk);
  EXPECT_THAT(output_.out, Not(HasSubstr("\x1b")));
}

TEST_F(TraceActionsTest, QueriesTakeLinesOut) {
  const std::string file = File("A.TRC", std::string(kStart) + kRead + kEnd);
  EXPECT_EQ(Run({"trace", "dump", file, "--function", "reg_*"}), kExitOk);
  EXPECT_THAT(output_.out, Not(HasSubstr("ReadString")));
  EXPECT_EQ(Run({"trace", "dump", file, "--text", "<< *0x5"}), kExitOk);
  EXPECT_THAT(output_.out, Not(HasSubstr(">> Start")));
  EXPECT_THAT(output_.out, HasSubstr("result = 0x5"));
  EXPECT_EQ(Run({"trace", "dump", file, "--level", "progress"}), kExitOk);
  EXPECT_THAT(output_.out, HasSubstr("ReadString"));
  EXPECT_THAT(output_.out, Not(HasSubstr("FR error")));
  EXPECT_EQ(Run({"trace", "dump", file, "--since", "20:21:22,025"}), kExitOk);
  EXPECT_THAT(output_.out, Not(HasSubstr(">> Start")));
  EXPECT_THAT(output_.out, HasSubstr("result = 0x5"));
}

TEST_F(TraceActionsTest, AnAnswerInJsonHoldsEveryColumn) {
  const std::string file = File("A.TRC", std::string(kEnd) + kRead);
  EXPECT_EQ(Run({"trace", "dump", file, "--json"}), kExitOk);
  ExpectJson();
  EXPECT_THAT(
      output_.out,
      HasSubstr("{\"layout\":\"long\",\"time\":\"20:21:22,033\",\"microseconds\":73282033000,"
                "\"traceId\":\"QORLIXSR\",\"process\":32,\"thread\":36,\"level\":\"FR\","
                "\"levelName\":\"error\",\"component\":\"SRV\",\"code\":\"c0000005\","
                "\"file\":\"Registry.cpp\",\"line\":31,\"function\":\"Reg_SetValue\","
                "\"text\":\"<< Reg_SetValue result = 0x5\"}"));
  EXPECT_EQ(Run({"trace", "stats", file, "--json"}), kExitOk);
  ExpectJson();
}

TEST_F(TraceActionsTest, StatsCountAndTimeTheFunctions) {
  const std::string file = File("A.TRC", std::string(kStart) + kRead + kEnd);
  EXPECT_EQ(Run({"trace", "stats", file}), kExitOk);
  EXPECT_THAT(output_.out,
              HasSubstr("Reg_SetValue                     2         1         1         0    "
                        "10.000    10.000    10.000    10.000\n"));
  EXPECT_THAT(output_.out, HasSubstr("\n3 lines\n"));
}

TEST_F(TraceActionsTest, WhatIsAskedForWronglyIsSaidAndNothingElse) {
  const std::string file = File("A.TRC", "Install text \r\n");
  EXPECT_EQ(Run({"trace", "dump", Path("missing.TRC")}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("there is no file"));
  EXPECT_EQ(Run({"trace", "dump", file, "--since", "10:00"}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("no time of day"));
  EXPECT_EQ(Run({"trace", "dump", file, "--since", "soon"}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("'soon'"));
  EXPECT_EQ(Run({"trace", "dump", file, "--level", "loud"}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("'loud'"));
  EXPECT_EQ(Run({"trace", "dump", file, "--ring"}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("exclude each other"));
  EXPECT_EQ(Run({"trace", "follow", file, file}), kExitUsage);
  EXPECT_EQ(output_.out, "");
}

TEST_F(TraceActionsTest, WhatIsOddAboutATraceIsNotedBesideItsLines) {
  const std::string file = File("A.TRC", std::string(kStart) + kStart);
  EXPECT_EQ(Run({"trace", "dump", file, "--function", "Nothing"}), kExitOk);
  EXPECT_EQ(output_.out, "");
  EXPECT_EQ(output_.err, "note: 0 of 2 lines pass\n");
  EXPECT_EQ(Run({"trace", "stats", file, "--level", "error"}), kExitOk);
  EXPECT_THAT(output_.err, HasSubstr("note: every line is of all levels (--)"));
  EXPECT_EQ(Run({"trace", "dump", file, "--level", "error", "--json"}), kExitOk);
  ExpectJson();
  EXPECT_THAT(output_.out, HasSubstr("\"notes\":[\"every line is of all levels"));
  EXPECT_EQ(Run({"trace", "dump", file}), kExitOk);
  EXPECT_EQ(output_.err, "");
  EXPECT_EQ(Run({"trace", "dump", File("Empty.TRC", "")}), kExitOk);
  EXPECT_THAT(output_.err, HasSubstr("the trace has no lines"));
}

TEST_F(TraceActionsTest, WhatIsNoTraceIsCalledSoAndItsNamesStayReadable) {
  const std::string file = File(
      "A.TRC", "<html>\n<body class=x>\n" + std::string(400, '\x01') + " x \nplain\n</body>\n");
  EXPECT_EQ(Run({"trace", "stats", file}), kExitOk);
  EXPECT_THAT(output_.err, HasSubstr("A.TRC does not look like a trace"));
  EXPECT_THAT(output_.out, Not(HasSubstr("\x01")));
  EXPECT_THAT(output_.out, Not(HasSubstr(std::string(80, '1'))));
  for (std::size_t at = 0; at < output_.out.size();) {
    const std::size_t end = output_.out.find('\n', at);
    EXPECT_LT(end - at, 170u);
    at = end + 1;
  }
}

TEST_F(TraceActionsTest, PartsOfLinesAreMarked) {
  const std::string file =
      File("A.TRC", std::string(kStart).substr(20) + kStart + std::string(kEnd).substr(0, 40));
  EXPECT_EQ(Run({"trace", "dump", file}), kExitOk);
  EXPECT_THAT(output_.out, HasSubstr(">> Start  [torn]\n20:21"));
  EXPECT_TRUE(output_.out.ends_with("  [torn]\n"));
  EXPECT_EQ(Run({"trace", "dump", file, "--json"}), kExitOk);
  ExpectJson();
  EXPECT_THAT(output_.out, HasSubstr("\"torn\":true"));
}

TEST_F(TraceActionsTest, WhoFollowsIsToldWhatIsAwaitedAndWhetherItCanCome) {
  const std::string file = File("A1.TRC", kStart);
  EXPECT_EQ(Run({"trace", "follow", file, "--for", "0.01"}), kExitOk);
  EXPECT_THAT(output_.err, HasSubstr("note: waiting for lines of " + file + " and "));
  EXPECT_THAT(output_.err, Not(HasSubstr("trace show")));
  EXPECT_EQ(Run({"trace", "follow", Path("B1.TRC"), "--for", "0.01"}), kExitOk);
  EXPECT_THAT(output_.err, HasSubstr("there is no such file yet"));
  EXPECT_THAT(output_.err, HasSubstr("'qorlixctl trace show'"));
  EXPECT_EQ(Run({"trace", "follow", Path("none/B1.TRC"), "--for", "0.01"}), kExitOk);
  EXPECT_THAT(output_.err, HasSubstr("does not exist, so nothing can come"));
}

TEST_F(TraceActionsTest, SetPathWarnsAtOnceOfAFolderThatIsMissing) {
  for (const bool missing : {true, false}) {
    server_.Answers({"0400 00000000"});
    server_.Answers({"0400 00000000"});
    EXPECT_EQ(Run({"trace", "set", "Path", missing ? Path("none") : folder_.string()}), kExitOk);
    EXPECT_EQ(output_.out.find("does not exist, and nobody creates it") != std::string::npos,
              missing)
        << output_.out;
  }
}

TEST_F(TraceActionsTest, FollowWithSinceBeginsWithWhatIsThere) {
  const std::string file = File("A1.TRC", std::string(kStart) + kEnd);
  (void)File("A2.TRC", "");
  EXPECT_EQ(Run({"trace", "follow", file, "--for", "0.05"}), kExitOk);
  EXPECT_EQ(output_.out, "");
  EXPECT_EQ(Run({"trace", "follow", file, "--for", "0.05", "--since", "20:21:22,030"}), kExitOk);
  EXPECT_THAT(output_.out, HasSubstr("result = 0x5"));
  EXPECT_THAT(output_.out, Not(HasSubstr(">> Start")));
  EXPECT_EQ(Run({"trace", "follow", file, "--for", "0.05", "--since", "23h", "--json"}), kExitOk);
}

TEST_F(TraceActionsTest, SetCreatesTheKeyAndWritesTheValue) {
  server_.Answers({"0400 00000000"});
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"trace", "set", "format", "TIME"}), kExitOk);
  const Words requests = server_.Requests();
  ASSERT_EQ(requests.size(), 2u);
  // SOFTWARE\Vesmark\NORVA\TrcParams
  const std::string key =
      "20000000534F4654574152455C5665736D61726B5C4E4F5256415C547263506172616D73";
  EXPECT_EQ(requests[0], "0200" + key);
  EXPECT_EQ(requests[1], "0300" + key + "06000000466F726D61740400000054494D45");
  EXPECT_THAT(output_.out, HasSubstr("set Format to \"TIME\"\n"));
  EXPECT_THAT(output_.out, HasSubstr("trace refresh"));
}

TEST_F(TraceActionsTest, SetTellsWhatTheServerAnswered) {
  server_.Answers({"0400 05000000"});
  EXPECT_EQ(Run({"trace", "set", "Level", "all", "--json"}), kExitServer);
  ExpectJson();
  EXPECT_EQ(server_.Requests().size(), 1u);
}

TEST_F(TraceActionsTest, SetRefusesWhatWouldNotTakeEffectAndSendsNothing) {
  for (const Words& words : {Words{"Levels", "1"}, Words{"Level", "on"}, Words{"Output", "RING"},
                             Words{"Byte/File", "0"}, Words{"Path", std::string(260, 'x')},
                             Words{"Path", "\xF0\x9F\x98\x80"}}) {
    EXPECT_EQ(Run({"trace", "set", words[0], words[1]}), kExitUsage) << words[0];
    EXPECT_NE(output_.err, "");
  }
  EXPECT_EQ(server_.Connections(), 0);
}

}  // namespace
}  // namespace cli
