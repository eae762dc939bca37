#include <windows.h>

#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/e2e/DebugOutput.h"
#include "tests/e2e/Evidence.h"
#include "tests/e2e/PluginTest.h"
#include "tests/support/Minidump.h"
#include "tests/support/RegistryKeyScratch.h"

// What a server leaves behind that a plug-in has brought down.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

constexpr char kId[] = "DEV1";
constexpr DWORD kExitMs = 10000;

// One line of the list of requests.
struct Row {
  bool beingServed;
  std::string number, command, connection, client, result;
};

class CrashEvidenceTest : public OwnServerActionsTest {
 protected:
  // A server that faults ends at once: nobody is asked, and no debugger is called.
  CrashEvidenceTest() : debugger_("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\AeDebug") {
    debugger_.SetText("Auto", "1");
    debugger_.SetText("Debugger", "none");
    errorMode_ = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    evidence::Clear();
    libraries_.Place("sampledev.dll");
    devices_.Add(kId, "sampledev.dll,SampleFault");
  }
  ~CrashEvidenceTest() override { (void)SetErrorMode(errorMode_); }

  // The command that the plug-in does not survive.
  void Crash(std::uint32_t exitCode = STATUS_ACCESS_VIOLATION) {
    ASSERT_TRUE(client_.Send(kInstall.Request(kId)));
    EXPECT_TRUE(client_.IsBroken());
    EXPECT_THAT(server_.ExitCode(kExitMs), Optional(exitCode));
  }

  static std::vector<Row> Rows(const std::string& name = "QorlixSRV-1.txt") {
    std::istringstream text(evidence::File(name));
    std::vector<Row> rows;
    bool inList = false;
    for (std::string line; std::getline(text, line);) {
      if (inList) {
        Row row = {line.front() == '>', "", "", "", "", ""};
        std::istringstream(line.substr(1)) >> row.number >> row.command >> row.connection >>
            row.client >> row.result;
        rows.push_back(row);
      }
      inList = inList || line.find("Number") != std::string::npos;
    }
    return rows;
  }

  Devices devices_;
  RegistryKeyScratch settings_{"SOFTWARE\\Vesmark\\Shared Tools\\MIREL"};

 private:
  RegistryKeyScratch debugger_;
  UINT errorMode_ = 0;
};

TEST_F(CrashEvidenceTest, APluginThatFaultsLeavesADumpOfTheThreadThatCalledIt) {
  Start();
  Crash();
  EXPECT_THAT(evidence::Names(), ElementsAre("QorlixSRV-1.dmp", "QorlixSRV-1.txt"));
  const auto dump = ReadMinidump(evidence::File("QorlixSRV-1.dmp"));
  ASSERT_TRUE(dump);
  EXPECT_EQ(dump->code, static_cast<std::uint32_t>(STATUS_ACCESS_VIOLATION));
  EXPECT_GE(dump->threads, 2u) << "the watch at least";
  EXPECT_GE(dump->modules, 4u);
  EXPECT_TRUE(dump->hasItsStack);

  const std::string text = evidence::File("QorlixSRV-1.txt");
  EXPECT_THAT(text, HasSubstr("Process:   " + std::to_string(server_.Id()) + "\r\n"));
  EXPECT_THAT(text, HasSubstr("Thread:    " + std::to_string(dump->thread) +
                              ", which serves the requests\r\n"));
  EXPECT_THAT(text, HasSubstr("Exception: 0xc0000005, writing 0x00000000\r\n"));
  EXPECT_THAT(text, HasSubstr("sampledev.dll+0x"));
  char address[32];
  (void)wsprintfA(address, "Address:   0x%08x, ", static_cast<unsigned>(dump->address));
  EXPECT_THAT(text, HasSubstr(address));
}

TEST_F(CrashEvidenceTest, TheTextNamesTheRequestsBeforeInTheirOrderWithTheirResults) {
  devices_.Add("DEV2", "sampledev.dll,SampleRefuse");
  ASSERT_TRUE(server_.Start());
  ASSERT_TRUE(client_.Connect());
  WireClient other;
  ASSERT_TRUE(other.Connect());
  EXPECT_TRUE(client_.Send(Wire("1000")));
  EXPECT_TRUE(client_.YieldsNext(Wire("0400 00000000")));
  EXPECT_TRUE(other.Send(Wire("EFBE")));
  EXPECT_TRUE(other.YieldsNext(Wire("0400 AC210000")));
  EXPECT_TRUE(client_.Send(kInstall.Request("DEV2")));
  EXPECT_TRUE(client_.YieldsNext(Answer(1603)));
  Crash();

  const std::string ourselves = std::to_string(GetCurrentProcessId());
  const std::vector<Row> rows = Rows();
  ASSERT_THAT(rows, SizeIs(4));
  const char* const commands[] = {"0x0010", "0xbeef", "0x0005", "0x0005"};
  const char* const results[] = {"0x00000000", "0x000021ac", "0x00000643", "-"};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].number, std::to_string(i + 1));
    EXPECT_EQ(rows[i].command, commands[i]);
    EXPECT_EQ(rows[i].result, results[i]);
    EXPECT_EQ(rows[i].client, ourselves);
    EXPECT_EQ(rows[i].beingServed, i == 3);
  }
  EXPECT_EQ(rows[3].connection, rows[0].connection);
  EXPECT_EQ(rows[2].connection, rows[0].connection);
  EXPECT_NE(rows[1].connection, rows[0].connection);
}

TEST_F(CrashEvidenceTest, OfManyRequestsTheLast256AreThere) {
  Start();
  for (int i = 0; i < 300; ++i) ASSERT_TRUE(client_.IsServed());
  Crash();
  const std::vector<Row> rows = Rows();
  ASSERT_THAT(rows, SizeIs(256));
  // One came first of all, when the server started.
  EXPECT_EQ(rows.front().number, "47");
  EXPECT_EQ(rows.back().number, "302");
  EXPECT_TRUE(rows.back().beingServed);
  EXPECT_FALSE(rows[254].beingServed);
}

TEST_F(CrashEvidenceTest, OtherExceptionsLeaveTheSame) {
  devices_.Add(kId, "sampledev.dll,SampleRefuse");
  libraries_.Answer("SampleRefuse", "raise = stack-overflow");
  Start();
  Crash(STATUS_STACK_OVERFLOW);
  const auto dump = ReadMinidump(evidence::File("QorlixSRV-1.dmp"));
  ASSERT_TRUE(dump);
  EXPECT_EQ(dump->code, static_cast<std::uint32_t>(STATUS_STACK_OVERFLOW));
  EXPECT_THAT(Rows(), SizeIs(2));
}

TEST_F(CrashEvidenceTest, EveryCrashHasItsOwn) {
  for (const char* const name : {"QorlixSRV-1", "QorlixSRV-2"}) {
    Start();
    Crash();
    server_.Kill();
    EXPECT_THAT(evidence::File(std::string(name) + ".txt"),
                HasSubstr("Process:   " + std::to_string(server_.Id()) + "\r\n"));
  }
  EXPECT_THAT(evidence::Names(), SizeIs(4));
}

TEST_F(CrashEvidenceTest, WhereItIsNotWantedThereIsNone) {
  settings_.SetRaw("CrashEvidence", REG_DWORD, Wire("00000000"));
  Start();
  Crash();
  EXPECT_EQ(GetFileAttributesA(evidence::Folder().c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(CrashEvidenceTest, ServersThatDoNotCrashMakeNoFolder) {
  Start();
  ServerProcess second;
  ASSERT_TRUE(second.StartWithoutEvent());
  EXPECT_THAT(second.ExitCode(kExitMs), Optional(static_cast<std::uint32_t>(ERROR_ALREADY_EXISTS)));
  ASSERT_TRUE(client_.Send(Wire("FD00 FD000000")));
  EXPECT_THAT(server_.ExitCode(kExitMs), Optional(1u));
  EXPECT_EQ(GetFileAttributesA(evidence::Folder().c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(CrashEvidenceTest, IntoAFolderThatOthersMayWriteToNothingIsWrittenAndTheDebuggerIsTold) {
  ASSERT_NE(CreateDirectoryA(evidence::Folder().c_str(), nullptr), FALSE);
  SECURITY_DESCRIPTOR open;
  ASSERT_NE(InitializeSecurityDescriptor(&open, SECURITY_DESCRIPTOR_REVISION), FALSE);
  ASSERT_NE(SetSecurityDescriptorDacl(&open, TRUE, nullptr, FALSE), FALSE);
  ASSERT_NE(SetFileSecurityA(evidence::Folder().c_str(), DACL_SECURITY_INFORMATION, &open), FALSE);
  const DebugOutput output;
  Start();
  Crash();
  EXPECT_THAT(output.Await(server_.Id(), "no crash evidence"),
              ElementsAre("QorlixSRV: no crash evidence: " + evidence::Folder() +
                          ": others than administrators may write to it\n"));
  EXPECT_THAT(evidence::Names(), IsEmpty());
}

}  // namespace
}  // namespace e2e
