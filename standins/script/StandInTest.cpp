#include "standins/script/StandIn.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "standins/script/testing/FakeHost.h"

namespace standin {
namespace {

class StandInTest : public testing::Test {
 protected:
  StandInTest() {
    fake_host::Reset();
    const std::string name =
        std::string("qorlix_") + testing::UnitTest::GetInstance()->current_test_info()->name();
    folder_ = std::filesystem::path(testing::TempDir()) / name;
    std::filesystem::create_directories(folder_);
    fake_host::SetLibraryFolder(folder_.string());
  }
  ~StandInTest() override { std::filesystem::remove_all(folder_); }

  std::string PathOf(const char* name) const { return (folder_ / name).string(); }
  void Write(const char* name, const std::string& text) const {
    std::ofstream(PathOf(name)) << text;
  }
  void Script(const std::string& text) const {
    Write("linked.ini", "[log]\nfile = calls.log\n" + text);
  }
  std::string Read(const char* name) const {
    std::stringstream text;
    text << std::ifstream(PathOf(name)).rdbuf();
    return text.str();
  }
  std::string Log() const { return Read("calls.log"); }

  std::uint32_t Restart(const char* name) {
    return Serve(Export::kSilentRestart, Arguments().Text("logDevName", name), [this] {
      ++worked_;
      return 5u;
    });
  }
  std::uint32_t Add(std::uint32_t* context, std::uint32_t* instance) {
    return Serve(
        Export::kAddIpAddress,
        Arguments().Number("address", 9).Out("nteContext", context).Out("nteInstance", instance),
        [=] {
          if (context != nullptr) *context = 1;
          if (instance != nullptr) *instance = 2;
          return 0u;
        });
  }

  int worked_ = 0;

 private:
  std::filesystem::path folder_;
};

TEST_F(StandInTest, WithoutAScriptTheLibraryDoesItsOwnWork) {
  EXPECT_EQ(Restart("CP_L2_1:"), 5u);
  EXPECT_EQ(worked_, 1);
  EXPECT_TRUE(fake_host::DebugLines().empty());
}

TEST_F(StandInTest, AScriptedResultTakesThePlaceOfTheWork) {
  Script("[answer DllEntryFktSilent]\ncall = 2\nresult = 10006\n");
  EXPECT_EQ(Restart("a"), 5u);
  EXPECT_EQ(Restart("b"), 10006u);
  EXPECT_EQ(Restart("c"), 5u);
  EXPECT_EQ(worked_, 2);
}

TEST_F(StandInTest, EveryCallIsOneLineOfTheLog) {
  Script("[answer DllEntryFktSilent]\ncall = 2\nresult = 10006\n");
  (void)Restart("a \"b\"");
  (void)Restart(nullptr);
  EXPECT_EQ(Log(),
            "1 DllEntryFktSilent logDevName=\"a \\\"b\\\"\" -> 5 thread=77\n"
            "2 DllEntryFktSilent logDevName=(null) -> 10006 thread=77 answer=3\n");
}

TEST_F(StandInTest, OutputWordsAreTheLibrarysUnlessTheScriptNamesThem) {
  Script("[answer IE_AddIPAddressEx]\ncall = 2\nnte-instance = 44\n");
  std::uint32_t context = 0;
  std::uint32_t instance = 0;
  EXPECT_EQ(Add(&context, &instance), 0u);
  EXPECT_EQ(instance, 2u);
  EXPECT_EQ(Add(&context, &instance), 0u);
  EXPECT_EQ(context, 1u);
  EXPECT_EQ(instance, 44u);
  EXPECT_EQ(Log(),
            "1 IE_AddIPAddressEx address=9 -> 0 nteContext=1 nteInstance=2 thread=77\n"
            "2 IE_AddIPAddressEx address=9 -> 0 nteContext=1 nteInstance=44 thread=77 answer=3\n");
}

TEST_F(StandInTest, AnAbsentOutputWordIsLeftAlone) {
  Script("[answer IE_AddIPAddressEx]\ncall = *\nnte-context = 3\nnte-instance = 44\n");
  std::uint32_t instance = 0;
  EXPECT_EQ(Add(nullptr, &instance), 0u);
  EXPECT_EQ(instance, 44u);
  EXPECT_EQ(Log(),
            "1 IE_AddIPAddressEx address=9 nteContext=(null) -> 0 nteInstance=44 thread=77 "
            "answer=3\n");
}

TEST_F(StandInTest, AnExceptionIsLoggedAndThenRaised) {
  Script("[answer DllEntryFktSilent]\ncall = *\nraise = divide-by-zero\n");
  try {
    (void)Restart("a");
    ADD_FAILURE() << "nothing was raised";
  } catch (const fake_host::RaisedException& exception) {
    EXPECT_EQ(exception.raised, Raised::kDivideByZero);
  }
  EXPECT_EQ(worked_, 0);
  EXPECT_EQ(Log(),
            "1 DllEntryFktSilent logDevName=\"a\" -> raise divide-by-zero thread=77 answer=3\n");
}

TEST_F(StandInTest, ADelayComesBeforeTheAnswer) {
  Script("[answer DllEntryFktSilent]\ncall = 1\ndelay = 1500\n");
  EXPECT_EQ(Restart("a"), 5u);
  EXPECT_EQ(fake_host::SleptMilliseconds(), 1500u);
}

TEST_F(StandInTest, TheLastErrorIsTheCallersUnlessTheScriptNamesOne) {
  Script("[answer DllEntryFktSilent]\ncall = 2\nlast-error = 1234\n");
  host::SetLastError(55);
  (void)Restart("a");
  EXPECT_EQ(host::LastError(), 55u);
  (void)Restart("a");
  EXPECT_EQ(host::LastError(), 1234u);
}

TEST_F(StandInTest, AnExportHasItsUsualExceptionUnlessTheScriptSpeaksOfTheCall) {
  Script("[answer SampleFault]\ncall = 2\nresult = 6\n");
  const auto fault = [] { return Serve(Export::kSampleFault, {}, [] { return 0u; }); };
  EXPECT_THROW((void)fault(), fake_host::RaisedException);
  EXPECT_EQ(fault(), 6u);
  EXPECT_THROW((void)fault(), fake_host::RaisedException);
}

TEST_F(StandInTest, AnExportHasItsUsualDelayUnlessTheScriptSpeaksOfTheCall) {
  Script("[answer SampleSlow]\ncall = 2\n");
  const auto slow = [] { return Serve(Export::kSampleSlow, {}, [] { return 0u; }); };
  (void)slow();
  EXPECT_EQ(fake_host::SleptMilliseconds(), 2000u);
  (void)slow();
  EXPECT_EQ(fake_host::SleptMilliseconds(), 2000u);
}

TEST_F(StandInTest, AScriptWithAnErrorAnswers13AndSaysWhere) {
  Script("[answer DllEntryFktSilent]\ncall = 0\n");
  EXPECT_EQ(Restart("a"), 13u);
  EXPECT_EQ(worked_, 0);
  const std::string error =
      "linked: error " + PathOf("linked.ini") + ":4: calls are * or 3 or 3-5, counted from 1";
  EXPECT_EQ(Log(), error + "\n1 DllEntryFktSilent logDevName=\"a\" -> 13 thread=77\n");
  EXPECT_EQ(fake_host::DebugLines(), std::vector<std::string>{error});
}

TEST_F(StandInTest, AScriptWithAnErrorRaisesNothing) {
  Script("[answer DllEntryFktSilent]\ncall = 0\n");
  EXPECT_EQ(Serve(Export::kSampleFault, {}, [] { return 0u; }), 13u);
}

TEST_F(StandInTest, TheScriptIsReadAtEveryCallAndTheCountGoesOn) {
  (void)Restart("a");
  Script("[answer DllEntryFktSilent]\ncall = 2\nresult = 7\n");
  EXPECT_EQ(Restart("b"), 7u);
}

TEST_F(StandInTest, TheVariableNamesAnotherScript) {
  Script("[answer DllEntryFktSilent]\ncall = *\nresult = 1\n");
  Write("other.ini", "[answer DllEntryFktSilent]\ncall = *\nresult = 2\n");
  fake_host::SetEnvironment("QORLIX_STANDIN_SCRIPT", PathOf("other.ini"));
  EXPECT_EQ(Restart("a"), 2u);
  EXPECT_EQ(Log(), "");
}

TEST_F(StandInTest, ANamedScriptThatIsMissingIsAnError) {
  fake_host::SetEnvironment("QORLIX_STANDIN_SCRIPT", PathOf("other.ini"));
  EXPECT_EQ(Restart("a"), 13u);
}

TEST_F(StandInTest, TheVariableNamesALogWithoutAnyScript) {
  fake_host::SetEnvironment("QORLIX_STANDIN_LOG", PathOf("named.log"));
  (void)Restart("a");
  EXPECT_EQ(Read("named.log"), "1 DllEntryFktSilent logDevName=\"a\" -> 5 thread=77\n");
}

TEST_F(StandInTest, ALogThatCannotBeWrittenIsToldToTheDebugger) {
  fake_host::SetEnvironment("QORLIX_STANDIN_LOG", PathOf("no such folder/calls.log"));
  EXPECT_EQ(Restart("a"), 5u);
  EXPECT_EQ(fake_host::DebugLines(),
            std::vector<std::string>{"linked: error " + PathOf("no such folder/calls.log") +
                                     ":0: the log cannot be written"});
}

TEST_F(StandInTest, WithoutMemoryTheAnswerIs14) {
  fake_host::SetProcessMemory(false);
  EXPECT_EQ(Restart("a"), 14u);
  EXPECT_EQ(worked_, 0);
}

TEST_F(StandInTest, NoCxxExceptionLeavesAnExport) {
  EXPECT_EQ(Serve(Export::kSilentRestart, {}, []() -> std::uint32_t { throw 5; }), 1359u);
}

}  // namespace
}  // namespace standin
