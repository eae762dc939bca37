#include <windows.h>

#include <gtest/gtest.h>
#include <shlobj.h>

#include <cstdlib>
#include <string>

#include "trace/TraceWinFixture.h"

namespace {

constexpr char kChild[] = "TraceChild.DISABLED_WritesTwoLinesToTheEngine";

/// What the event log was told: the system under test shows it on the error stream.
std::string ErrorStream() {
  const char* const file = std::getenv("QORLIX_STDERR_FILE");
  return file != nullptr ? ReadWholeFile(std::string("Z:") + file) : "";
}

/// The library stays in the process that has loaded it, so every test has a process of its own.
class TraceEngineWinTest : public TraceWinFixture {
 protected:
  TraceEngineWinTest() : log_(folder() + "\\engine.log"), errorsBefore_(ErrorStream().size()) {
    SetText("Output", "ZqTRACEENGINE");
    SetText("Format", "TEXT");
    char common[MAX_PATH];
    (void)SHGetSpecialFolderPathA(nullptr, common, CSIDL_PROGRAM_FILES_COMMON, FALSE);
    common_ = common;
    library_ = common_;
    for (const char* part : {"Vesmark", "Automation", "TraceEngine", "bin"}) {
      library_ += std::string("\\") + part;
      (void)CreateDirectoryA(library_.c_str(), nullptr);
    }
    library_ += "\\ZqTraceEngineX.dll";
    (void)SetEnvironmentVariableA("ZQTRACEENGINE_LOG", log_.c_str());
  }
  ~TraceEngineWinTest() override {
    for (const char* name : {"ZQTRACEENGINE_LOG", "ZQTRACEENGINE_OPEN", "ZQTRACEENGINE_WRITE"}) {
      (void)SetEnvironmentVariableA(name, nullptr);
    }
    (void)DeleteFileA(log_.c_str());
    std::string path = library_;
    (void)DeleteFileA(path.c_str());
    for (int level = 0; level < 4; ++level) {
      path.resize(path.rfind('\\'));
      (void)RemoveDirectoryA(path.c_str());
    }
  }

  /// Puts a library that lies beside this program where the engine is looked for.
  void Install(const char* name) const {
    char program[MAX_PATH];
    (void)GetModuleFileNameA(nullptr, program, sizeof(program));
    std::string source = program;
    source.resize(source.rfind('\\') + 1);
    ASSERT_TRUE(CopyFileA((source + name).c_str(), library_.c_str(), FALSE));
  }

  static void Answer(const char* variable, const char* text) {
    (void)SetEnvironmentVariableA(variable, text);
  }

  std::string Calls() const { return ReadWholeFile(log_); }
  std::string Reports() const { return ErrorStream().substr(errorsBefore_); }
  const std::string& library() const { return library_; }
  std::string OpenCall() const {
    return "open Zqsdd_TraceMetaInfo.xml|Zqsdd_TraceSettings.xml|" + common_ +
           "\\mirel\\meta\\trace\\Settings\\|0|1.0.0.0\n";
  }

 private:
  std::string log_;
  std::size_t errorsBefore_;
  std::string common_;
  std::string library_;
};

TEST(TraceChild, DISABLED_WritesTwoLinesToTheEngine) {
  zqotrc::Initialise(/*security=*/nullptr, "zqserver_level");
  ZQ_TRACE(TRC_PROGRESS, "f", "one");
  ZQ_TRACE(TRC_PROGRESS, "f", "two");
  zqotrc::RefreshAll();
  zqotrc::ShutDown();
}

TEST(TraceChild, DISABLED_KeepsTheEngineBehindItsShutDown) {
  zqotrc::Initialise(/*security=*/nullptr, "zqserver_level");
  ZQ_TRACE(TRC_PROGRESS, "f", "text");
  zqotrc::ShutDown();
  EXPECT_NE(GetModuleHandleA("ZqTraceEngineX.dll"), nullptr);
}

TEST_F(TraceEngineWinTest, LinesGoToTheEngine) {
  Install("ZqTraceEngineX.dll");
  EXPECT_TRUE(ChildProcess(kChild).Passed());
  EXPECT_EQ(Calls(), OpenCall() +
                         "write 4711 0 0 1 00470600 f one \n"
                         "write 4711 0 0 1 00470600 f two \n"
                         "command 2 Zqsdd_TraceWriterFile\n"
                         "close 4711\n");
  EXPECT_EQ(Reports(), "");
}

TEST_F(TraceEngineWinTest, AMissingLibraryIsReported) {
  EXPECT_TRUE(ChildProcess(kChild).Passed());
  if (std::getenv("QORLIX_STDERR_FILE") == nullptr) GTEST_SKIP() << "run it by tools/wine-run.sh";
  EXPECT_NE(Reports().find("ZqTraceEngineX.dll"), std::string::npos) << Reports();
}

TEST_F(TraceEngineWinTest, MissingExportsAreReportedAndNothingIsCalled) {
  Install("ZqTraceEngineXIncomplete.dll");
  EXPECT_TRUE(ChildProcess(kChild).Passed());
  EXPECT_EQ(Calls(), "");
  if (std::getenv("QORLIX_STDERR_FILE") == nullptr) GTEST_SKIP() << "run it by tools/wine-run.sh";
  const std::string reports = Reports();
  EXPECT_NE(reports.find("TraceWrite"), std::string::npos) << reports;
  EXPECT_NE(reports.find("TraceCommand"), std::string::npos) << reports;
  EXPECT_EQ(reports.find("TraceClose"), std::string::npos) << reports;
}

TEST_F(TraceEngineWinTest, KeptTheLibraryStaysLoadedWhateverBecomesOfIt) {
  for (const char* name : {"ZqTraceEngineX.dll", "ZqTraceEngineXIncomplete.dll"}) {
    Install(name);
    EXPECT_TRUE(ChildProcess("TraceChild.DISABLED_KeepsTheEngineBehindItsShutDown").Passed())
        << name;
  }
}

TEST_F(TraceEngineWinTest, AnEngineThatDoesNotOpenIsTriedAtEveryLineAndReportedOnce) {
  Install("ZqTraceEngineX.dll");
  Answer("ZQTRACEENGINE_OPEN", "5");
  EXPECT_TRUE(ChildProcess(kChild).Passed());
  EXPECT_EQ(Calls(), OpenCall() + OpenCall() + "command 2 Zqsdd_TraceWriterFile\n");
  if (std::getenv("QORLIX_STDERR_FILE") == nullptr) GTEST_SKIP() << "run it by tools/wine-run.sh";
  const std::string reports = Reports();
  const std::size_t first = reports.find("TraceOpenA");
  EXPECT_NE(first, std::string::npos) << reports;
  EXPECT_NE(reports.find("f one"), std::string::npos) << reports;
  EXPECT_EQ(reports.find("TraceOpenA", first + 1), std::string::npos) << reports;
}

TEST_F(TraceEngineWinTest, AWriteThatRaisesIsAFailedWrite) {
  Install("ZqTraceEngineX.dll");
  Answer("ZQTRACEENGINE_WRITE", "raise");
  EXPECT_TRUE(ChildProcess(kChild).Passed());
  EXPECT_NE(Calls().find("f two"), std::string::npos);
  if (std::getenv("QORLIX_STDERR_FILE") == nullptr) GTEST_SKIP() << "run it by tools/wine-run.sh";
  EXPECT_NE(Reports().find("TraceWrite"), std::string::npos) << Reports();
}

}  // namespace
