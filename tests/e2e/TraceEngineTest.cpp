#include <windows.h>

#include <gmock/gmock.h>
#include <shlobj.h>

#include "tests/e2e/EventLogTail.h"
#include "tests/e2e/TraceTest.h"

// Lines in the trace engine, which is a library at its place among the common program files.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;

constexpr DWORD kExitMs = 10000;

class TraceEngineTest : public OwnServerTraceTest {
 protected:
  TraceEngineTest() {
    char common[MAX_PATH] = "";
    (void)SHGetSpecialFolderPathA(nullptr, common, CSIDL_PROGRAM_FILES_COMMON, FALSE);
    common_ = common;
    library_ = common_;
    for (const char* const part : {"Vesmark", "Automation", "TraceEngine", "bin"}) {
      library_ += std::string("\\") + part;
      (void)CreateDirectoryA(library_.c_str(), nullptr);
    }
    library_ += "\\ZqTraceEngineX.dll";
    // The calls are noted where the lines would be, had they gone to a file.
    calls_ = trace_setup::Folder() + "\\engine.log";
    Answer("ZQTRACEENGINE_LOG", calls_.c_str());
    trace_setup::ReplaceQuietly(AllLinesWith({{"Output", "zqtraceengine"}, {"String", "opCode"}}));
  }
  ~TraceEngineTest() override {
    client_.Close();
    server_.Kill();
    for (const char* const name :
         {"ZQTRACEENGINE_LOG", "ZQTRACEENGINE_OPEN", "ZQTRACEENGINE_WRITE"}) {
      Answer(name, nullptr);
    }
    std::string path = library_;
    (void)DeleteFileA(path.c_str());
    for (int level = 0; level < 4; ++level) {
      path.resize(path.rfind('\\'));
      (void)RemoveDirectoryA(path.c_str());
    }
  }

  static void Answer(const char* variable, const char* text) {
    (void)SetEnvironmentVariableA(variable, text);
  }

  // Puts a library that lies beside this program where the engine is looked for.
  void Install(const std::string& name) const {
    const std::string server = ServerProcess::Path();
    const std::string source = server.substr(0, server.rfind('\\') + 1) + name;
    ASSERT_NE(CopyFileA(source.c_str(), library_.c_str(), FALSE), FALSE) << source;
  }

  void Start() {
    ASSERT_TRUE(server_.Start());
    ASSERT_TRUE(client_.Connect());
  }

  void Request(std::uint32_t code) {
    ASSERT_TRUE(client_.Send(Long(code).substr(0, 2)));
    ASSERT_TRUE(client_.YieldsNext(Wire("0400 AC210000")));
  }

  std::string Calls() const { return trace_setup::ReadFile(calls_); }
  std::string OpenCall() const {
    return "open Zqsdd_TraceMetaInfo.xml|Zqsdd_TraceSettings.xml|" + common_ +
           "\\mirel\\meta\\trace\\Settings\\|0|1.0.0.0\n";
  }
  // A record: two fixed bytes, the length of the line, and the line of 26 characters.
  static std::string WriteCall(const std::string& code) {
    return "write 4711 0 0 1 00471a00 RunSrvLoop:  opCode " + code + " \n";
  }
  const std::string& Library() const { return library_; }

  EventLogTail log_;
  WireClient client_;

 private:
  std::string common_, library_, calls_;
};

TEST_F(TraceEngineTest, LinesAreRecordsOfTheEngineFromTheFirstLineToTheEnd) {
  Install("ZqTraceEngineX.dll");
  Start();
  EXPECT_EQ(Calls(), "");
  Request(0x400);
  Request(0x401);
  trace_setup::Refresh();
  Request(0x402);
  ASSERT_TRUE(client_.Send(Wire("FD00 FD000000")));
  ASSERT_THAT(server_.ExitCode(kExitMs), Optional(1u));
  EXPECT_EQ(Calls(), OpenCall() + WriteCall("0x400") + WriteCall("0x401") + WriteCall("0x402") +
                         "write 4711 0 0 1 00471900 RunSrvLoop:  opCode 0xfd \n"
                         "close 4711\n");
  EXPECT_THAT(log_.Texts(), IsEmpty());
}

TEST_F(TraceEngineTest, AMissingLibraryIsReportedWithItsPath) {
  Start();
  Request(0x400);
  EXPECT_EQ(Calls(), "");
  if (!EventLogTail::IsVisible()) GTEST_SKIP() << "run it by tools/wine-run.sh";
  EXPECT_THAT(log_.Texts(), ElementsAre(Library()));
}

TEST_F(TraceEngineTest, EveryMissingExportIsReportedAndNothingIsCalled) {
  Install("ZqTraceEngineXIncomplete.dll");
  Start();
  Request(0x400);
  EXPECT_EQ(Calls(), "");
  if (!EventLogTail::IsVisible()) GTEST_SKIP() << "run it by tools/wine-run.sh";
  EXPECT_THAT(log_.Texts(), ElementsAre("TraceWrite", "TraceCommand"));
}

TEST_F(TraceEngineTest, AnEngineThatDoesNotOpenIsTriedAtEveryLineAndReportedOnce) {
  Install("ZqTraceEngineX.dll");
  Answer("ZQTRACEENGINE_OPEN", "5");
  Start();
  Request(0x400);
  Request(0x401);
  EXPECT_EQ(Calls(), OpenCall() + OpenCall());
  if (!EventLogTail::IsVisible()) GTEST_SKIP() << "run it by tools/wine-run.sh";
  EXPECT_THAT(log_.Texts(), ElementsAre("TraceOpenA", "RunSrvLoop:  opCode 0x400 "));
}

TEST_F(TraceEngineTest, AFailingWriteIsReportedOnceAndKeepsTheHandle) {
  Install("ZqTraceEngineX.dll");
  Answer("ZQTRACEENGINE_WRITE", "7");
  Start();
  Request(0x400);
  Request(0x401);
  EXPECT_EQ(Calls(), OpenCall() + WriteCall("0x400") + WriteCall("0x401"));
  if (!EventLogTail::IsVisible()) GTEST_SKIP() << "run it by tools/wine-run.sh";
  EXPECT_THAT(log_.Texts(), ElementsAre("TraceWrite", "RunSrvLoop:  opCode 0x400 "));
}

TEST_F(TraceEngineTest, AnEngineThatRaisesCostsItsLinesOnly) {
  Install("ZqTraceEngineX.dll");
  Answer("ZQTRACEENGINE_WRITE", "raise");
  Start();
  Request(0x400);
  Request(0x401);
  EXPECT_TRUE(client_.IsServed());
  EXPECT_THAT(Calls(), HasSubstr(WriteCall("0x401")));
}

}  // namespace
}  // namespace e2e
