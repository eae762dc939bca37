#include "doctor/Findings.h"

#include "doctor/testing/FindingsFixture.h"

// The pipe, the trace and the event log: one thing that is wrong, one finding.

namespace doctor {
namespace {

class FindingsTest : public FindingsFixture {
 protected:
  // Sets a value of the trace configuration, as it would have been read.
  void Stored(std::string_view name, const std::string& text) {
    const auto index =
        static_cast<std::size_t>(traceview::FindSetting(name) - traceview::Settings().data());
    facts_.trace.configuration.stored[index] = {true, true, text, 1, false};
  }
  void Traces() {
    facts_.trace.configuration.config.level = 1;
    facts_.trace.configuration.config.programMask = 16 | 128;
    Stored("Level", "1");
    Stored("zqserver_level", "144");
  }
};

TEST_F(FindingsTest, NothingIsWrongWithAHealthyComputer) {
  EXPECT_EQ(Wrong(), "");
  EXPECT_GT(Examine(facts_).size(), 15u);
}

TEST_F(FindingsTest, NoPipeIsNoServer) {
  facts_.pipe.error = 2;
  ExpectOnly("warning pipe: there is no pipe \\\\.\\pipe\\P: no server is running",
             "-> 'qorlixctl start'");
}

TEST_F(FindingsTest, ABusyPipeServesNobodyElse) {
  facts_.pipe.error = 231;
  ExpectOnly("error pipe: all instances of", "close clients");
}

TEST_F(FindingsTest, APipeThatDoesNotAdmitIsAnotherProgramsPerhaps) {
  facts_.pipe.error = 5;
  ExpectOnly("error pipe: \\\\.\\pipe\\P does not admit you", "stop the other program");
}

TEST_F(FindingsTest, AnyOtherErrorOfThePipeIsToldByItsCode) {
  facts_.pipe.error = 53;
  ExpectOnly("error pipe: \\\\.\\pipe\\P cannot be opened: code 53", "net helpmsg 53");
}

TEST_F(FindingsTest, APipeOfAnotherProgramIsAnError) {
  facts_.pipe.program = R"(C:\Stack\NotQorlixSRV.exe)";
  ExpectOnly(
      "error pipe: \\\\.\\pipe\\P belongs to process 996, C:\\Stack\\NotQorlixSRV.exe, which",
      "end that program");
}

TEST_F(FindingsTest, AProgramThatCannotBeSeenIsANote) {
  facts_.pipe.program.clear();
  ExpectOnly("note pipe: \\\\.\\pipe\\P is there, but whose it is cannot be seen", "elevated");
}

TEST_F(FindingsTest, APipeOfAnotherSizeIsAnotherPrograms) {
  facts_.pipe.limit = 255;
  ExpectOnly("error pipe: the pipe was made for 255 instances", "end that program");
}

TEST_F(FindingsTest, MissingInstancesAreAWarning) {
  facts_.pipe.instances = 63;
  ExpectOnly("warning pipe: only 63 of 64 instances exist", "run doctor again");
}

TEST_F(FindingsTest, InstancesThatCannotBeSeenAreANote) {
  facts_.pipe.instances = 0;
  ExpectOnly("note pipe: how many instances", "");
}

TEST_F(FindingsTest, APipeOfAnotherUserIsAnErrorOfItsOwn) {
  facts_.pipe.answer = 1307;
  ExpectOnly("error pipe: \\\\.\\pipe\\P belongs to another user", "find out who started");
}

TEST_F(FindingsTest, AServerThatDoesNotAnswerIsAnError) {
  facts_.pipe.answer = 258;
  ExpectOnly("error pipe: the server does not answer as it should: code 258", "message box");
}

TEST_F(FindingsTest, AServerWithoutRightsIsAnErrorAndAnUnknownOneANote) {
  facts_.pipe.elevation = PipeFacts::Elevation::No;
  ExpectOnly("error pipe: the server has no administrator's rights", "'qorlixctl stop'");
  facts_.pipe.elevation = PipeFacts::Elevation::Unknown;
  ExpectOnly("note pipe: whether the server has administrator's rights cannot be seen", "elevated");
}

TEST_F(FindingsTest, ATraceThatWritesIsDescribed) {
  Traces();
  EXPECT_EQ(Wrong(), "");
  Findings findings;
  ExamineTrace(facts_.trace, findings);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_THAT(findings[0].text, testing::StartsWith("lines are written (error, result), "));
}

TEST_F(FindingsTest, PitfallsMatterOnlyWhileLinesAreWritten) {
  Stored("Format", "Tall");
  ExpectOnly("note trace: Format \"Tall\" is none that is known", "trace show");
  Traces();
  ExpectOnly("warning trace: Format \"Tall\" is none that is known", "trace show");
}

TEST_F(FindingsTest, AMissingFolderMattersOnlyWhileLinesAreWritten) {
  facts_.trace.folderIsMissing = true;
  EXPECT_EQ(Wrong(), "");
  Traces();
  ExpectOnly("warning trace: the folder of the trace files does not exist", "create it");
}

TEST_F(FindingsTest, SourcesThatCannotExplainTheirEventsAreNotes) {
  facts_.sources[0].isRegistered = false;
  ExpectOnly("note event log: the source \"MIREL RegistryOperation\" is not registered",
             "Application\\MIREL RegistryOperation\" /v EventMessageFile /t REG_EXPAND_SZ /d "
             "\"C:\\Stack\\QORLIXSRV.EXE\"");
  facts_ = HealthyFacts();
  facts_.sources[1] = {"Zqotrc", true, "", false};
  ExpectOnly("note event log: the source \"Zqotrc\" is registered without a message file",
             "Application\\Zqotrc\"");
  facts_.sources[1].messageFile = "C:\\gone.dll";
  ExpectOnly(
      "note event log: the source \"Zqotrc\" has a message file that is missing, C:\\gone.dll",
      "reg add");
}

}  // namespace
}  // namespace doctor
