#include <windows.h>

#include <gmock/gmock.h>

#include <optional>

#include "tests/e2e/TraceTest.h"

// Lines in files: names, choice, rotation, bytes.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using trace_setup::FileExists;
using trace_setup::FileName;
using trace_setup::Folder;
using trace_setup::NamesIn;
using trace_setup::ReadFile;
using trace_setup::WriteFile;

constexpr char kDefaultFolder[] = "C:\\Tmp";

// One line for each request, so that files can be foretold to the byte.
TraceParameters OneLineWith(TraceParameters more) {
  more.emplace_back("String", "opCode");
  return AllLinesWith(more);
}

class TraceFileTest : public TraceTest {
 protected:
  TraceFileTest() : madeDefaultFolder_(CreateDirectoryA(kDefaultFolder, nullptr) != FALSE) {}
  ~TraceFileTest() override {
    for (const char* const name : {"QorlixE2E", "ZqFile"}) {
      for (const char* const index : {"1.TRC", "2.TRC"}) {
        (void)DeleteFileA((std::string(kDefaultFolder) + "\\" + name + index).c_str());
      }
    }
    if (madeDefaultFolder_) (void)RemoveDirectoryA(kDefaultFolder);
  }

  // Sends a request that nobody knows, and waits for its answer.
  void Request(std::uint32_t code) {
    ASSERT_TRUE(client_.Send(Long(code).substr(0, 2)));
    ASSERT_TRUE(client_.YieldsNext(Wire("0400 AC210000")));
  }

  static Bytes LineOf(std::uint32_t code) {
    char line[64];
    (void)snprintf(line, sizeof(line), "RunSrvLoop:  opCode 0x%x \r\n", code);
    return line;
  }
  static Bytes LinesOf(std::uint32_t from, std::uint32_t to) {
    Bytes lines;
    for (std::uint32_t code = from; code < to; ++code) lines += LineOf(code);
    return lines;
  }

  // Replaces configuration and files in one step.
  static void ReplaceWithFiles(const TraceParameters& parameters, const std::optional<Bytes>& first,
                               const std::optional<Bytes>& second, int secondIsYoungerBy) {
    trace_setup::Replace({{"Level", "0"}});
    const TraceMutex nobodyWrites;
    trace_setup::ReplaceQuietly(parameters);
    if (first) WriteFile(FileName(1), *first);
    if (second) WriteFile(FileName(2), *second);
    constexpr int kMoment = 1000;
    if (first) trace_setup::SetWritten(FileName(1), kMoment);
    if (second) {
      trace_setup::SetWritten(FileName(2), static_cast<std::uint32_t>(kMoment + secondIsYoungerBy));
    }
    trace_setup::Refresh();
  }

 private:
  bool madeDefaultFolder_;
};

TEST_F(TraceFileTest, ALineEndsInABlankAndTwoCharacters) {
  Configure(OneLineWith({}));
  trace_setup::Replace(OneLineWith({}));
  Request(0x3E8);
  EXPECT_EQ(ReadFile(FileName(1)), "RunSrvLoop:  opCode 0x3e8 \r\n");
}

// Texts of clients are written as they are, and a line feed in a file is two characters, so a
// line begins where a client wants it to.
TEST_F(TraceFileTest, ATextWithLineEndsMakesALineThatTheServerNeverWrote) {
  Configure(AllLinesWith({{"String", "?Read?Param*"}}));
  trace_setup::Replace(AllLinesWith({{"String", "?Read?Param*"}}));
  const Bytes deviceId = "X \nRunSrvLoop:  opCode 0xfd \nY";
  ASSERT_TRUE(client_.Answers(Wire("0500") + Text(deviceId) + Text("de"), Wire("0400 02000000")));
  EXPECT_EQ(ReadFile(FileName(1)), "Install  Read Param SUCCESS: lpszDeviceID=X \r\n" +
                                       LineOf(0xFD) + "Y lpszLanguageExt=de \r\n");
}

TEST_F(TraceFileTest, TheFileThatWasWrittenLaterGoesOn) {
  struct Case {
    const char* what;
    std::optional<Bytes> first, second;
    int secondIsYoungerBy;
    int chosen;
  };
  const Bytes old = "old\r\n";
  const Case cases[] = {
      {"none", {}, {}, 0, 1},
      {"only the first", old, {}, 0, 1},
      {"only the second", {}, old, 0, 2},
      {"the first is younger", old, old, -60, 1},
      {"of one age", old, old, 0, 1},
      {"the second is younger", old, old, 60, 2},
  };
  for (const Case& one : cases) {
    ReplaceWithFiles(OneLineWith({}), one.first, one.second, one.secondIsYoungerBy);
    Request(0x3E8);
    const auto& before = one.chosen == 1 ? one.first : one.second;
    EXPECT_EQ(ReadFile(FileName(one.chosen)), before.value_or("") + LineOf(0x3E8)) << one.what;
    const auto& other = one.chosen == 1 ? one.second : one.first;
    EXPECT_EQ(ReadFile(FileName(3 - one.chosen)), other.value_or("")) << one.what;
    EXPECT_EQ(FileExists(FileName(3 - one.chosen)), other.has_value()) << one.what;
  }
}

// A line has 28 bytes, so the 36th is the first beyond 1000.
TEST_F(TraceFileTest, FilesTakeTurnsAtTheirLimit) {
  trace_setup::Replace(OneLineWith({{"Byte/File", "1000"}}));
  std::uint32_t code = 0x400;
  for (; code < 0x400 + 35; ++code) Request(code);
  EXPECT_EQ(ReadFile(FileName(1)), LinesOf(0x400, code));
  EXPECT_FALSE(FileExists(FileName(2)));

  Request(code++);
  EXPECT_EQ(ReadFile(FileName(1)).size(), 1008u);
  EXPECT_TRUE(FileExists(FileName(2))) << "the switch comes right behind the line";

  for (; code < 0x400 + 100; ++code) Request(code);
  EXPECT_EQ(ReadFile(FileName(2)), LinesOf(0x400 + 36, 0x400 + 72));
  EXPECT_EQ(ReadFile(FileName(1)), LinesOf(0x400 + 72, 0x400 + 100));
}

TEST_F(TraceFileTest, ALineThatJustReachesTheLimitDoesNotSwitch) {
  ReplaceWithFiles(OneLineWith({{"Byte/File", "1000"}}), Bytes(1000 - 28, 'x'), {}, 0);
  Request(0x3E8);
  EXPECT_EQ(ReadFile(FileName(1)).size(), 1000u);
  EXPECT_FALSE(FileExists(FileName(2)));
}

TEST_F(TraceFileTest, WithBothFilesFullTheNextLineEmptiesTheOtherOne) {
  ReplaceWithFiles(OneLineWith({{"Byte/File", "1000"}}), Bytes(1001, 'x'), Bytes(1001, 'y'), 60);
  Request(0x3E8);
  Request(0x3E9);
  EXPECT_EQ(ReadFile(FileName(1)), LinesOf(0x3E8, 0x3EA));
  EXPECT_EQ(ReadFile(FileName(2)), Bytes(1001, 'y'));
}

TEST_F(TraceFileTest, ALimitThatIsNotAboveZeroKeepsTheOneBefore) {
  for (const char* const limit : {"0", "-5", "much", ""}) {
    Configure(OneLineWith({{"Byte/File", "1000"}}));
    trace_setup::Replace(OneLineWith({{"Byte/File", limit}}));
    for (std::uint32_t code = 0x400; code < 0x400 + 40; ++code) Request(code);
    EXPECT_EQ(ReadFile(FileName(1)), LinesOf(0x400, 0x400 + 36)) << limit;
    EXPECT_EQ(ReadFile(FileName(2)), LinesOf(0x400 + 36, 0x400 + 40)) << limit;
  }
}

TEST_F(TraceFileTest, PathAndNameMakeThePrefix) {
  struct Case {
    std::optional<std::string> path, name;
    std::string expected;
  };
  const std::string folder = Folder();
  const Case cases[] = {
      {folder, "run", folder + "\\run"},
      {folder, "run.log", folder + "\\run"},
      {folder, "run.log.old", folder + "\\run"},
      {folder, ".log", folder + "\\"},
      {folder + "\\", "run", folder + "\\run"},  // kept: a doubled backslash, which does no harm
      {folder, {}, folder + "\\ZqFile"},
      {folder, "", folder + "\\ZqFile"},
      {{}, "QorlixE2E.log", std::string(kDefaultFolder) + "\\QorlixE2E"},
      {"", "QorlixE2E", std::string(kDefaultFolder) + "\\QorlixE2E"},
  };
  for (const Case& one : cases) {
    TraceParameters parameters = {{"Level", "1"},
                                  {"zqserver_level", "64"},
                                  {"Output", "FILE"},
                                  {"Format", "TEXT"},
                                  {"String", "opCode"}};
    if (one.path) parameters.emplace_back("Path", *one.path);
    if (one.name) parameters.emplace_back("FileName", *one.name);
    trace_setup::Replace(parameters);
    const std::string expected = one.expected + "1.TRC";
    (void)DeleteFileA(expected.c_str());
    Request(0x3E8);
    EXPECT_EQ(ReadFile(expected), LineOf(0x3E8)) << expected;
  }
}

TEST_F(TraceFileTest, WithoutPathAndNameThePrefixStaysAsItWas) {
  Configure(AllLinesWith());
  trace_setup::Replace(
      {{"Level", "1"}, {"zqserver_level", "64"}, {"Format", "TEXT"}, {"String", "opCode"}});
  Request(0x3E8);
  EXPECT_EQ(ReadFile(FileName(1)), LineOf(0x3E8));
}

TEST_F(TraceFileTest, AnOutputThatIsUnknownOrAbsentIsTheFile) {
  for (const char* const output : {"FILE", "file", "PRINTER", "", "COM3", "DBG "}) {
    trace_setup::Replace(OneLineWith({{"Output", output}}));
    Request(0x3E8);
    EXPECT_EQ(ReadFile(FileName(1)), LineOf(0x3E8)) << output;
  }
  TraceParameters absent = OneLineWith({});
  std::erase_if(absent, [](const auto& one) { return one.first == "Output"; });
  trace_setup::Replace(absent);
  Request(0x3E8);
  EXPECT_EQ(ReadFile(FileName(1)), LineOf(0x3E8));
}

// The error lines of two of them go where their other lines go, which is nowhere.
TEST_F(TraceFileTest, SilentOutputsWriteNothingAndTheServerGoesOn) {
  for (const char* const output : {"PIPE", "pipe", "COM1", "com2", "VXD", "vxd"}) {
    trace_setup::Replace(AllLinesWith({{"Output", output}}));
    for (std::uint32_t code = 0x400; code < 0x410; ++code) Request(code);
    EXPECT_THAT(NamesIn(Folder()), IsEmpty()) << output;
  }
  trace_setup::Replace(OneLineWith({}));
  Request(0x3E8);
  EXPECT_EQ(ReadFile(FileName(1)), LineOf(0x3E8));
}

TEST_F(TraceFileTest, AFileThatCannotBeOpenedCostsItsLinesOnly) {
  ReplaceWithFiles(OneLineWith({}), "", {}, 0);
  const HANDLE alone = CreateFileA(FileName(1).c_str(), GENERIC_READ, /*dwShareMode=*/0, nullptr,
                                   OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(alone, INVALID_HANDLE_VALUE);
  Request(0x3E8);
  (void)CloseHandle(alone);
  Request(0x3E9);
  EXPECT_EQ(ReadFile(FileName(1)), LineOf(0x3E9));
  EXPECT_FALSE(FileExists(FileName(2)));
}

TEST_F(TraceFileTest, WhereThereIsNoFolderLinesAreDropped) {
  trace_setup::Replace(AllLinesWith({{"Path", Folder() + "\\none"}}));
  Request(0x3E8);
  Request(0x3E9);
  EXPECT_THAT(NamesIn(Folder()), IsEmpty());
}

// --- Servers of their own ---

class TraceFileStartTest : public OwnServerTraceTest {};

TEST_F(TraceFileStartTest, WithoutPathAndNameAFreshServerHasItsOwnPrefix) {
  const bool made = CreateDirectoryA(kDefaultFolder, nullptr) != FALSE;
  const std::string file = std::string(kDefaultFolder) + "\\ZqFILE1.TRC";
  (void)DeleteFileA(file.c_str());
  trace_setup::ReplaceQuietly({{"Level", "1"}, {"zqserver_level", "64"}, {"Format", "TEXT"}});
  ASSERT_TRUE(server_.Start());
  server_.Kill();
  EXPECT_THAT(NamesIn(kDefaultFolder), testing::Contains("ZqFILE1.TRC"));
  EXPECT_THAT(ReadFile(file), testing::StartsWith("CreateSRV:  >> Start Pipe Server \r\n"));
  EXPECT_NE(DeleteFileA(file.c_str()), FALSE);
  if (made) (void)RemoveDirectoryA(kDefaultFolder);
}

// The first line crosses the limit, so the second one is in the other file.
TEST_F(TraceFileStartTest, WithoutALimitAboveZeroAFreshServerHasItsOwn) {
  constexpr std::size_t kLimit = 2097152;
  constexpr char kFirst[] = "CreateSRV:  >> Start Pipe Server \r\n";
  TraceParameters absent = AllLinesWith();
  std::erase_if(absent, [](const auto& one) { return one.first == "Byte/File"; });
  for (const TraceParameters& parameters :
       {absent, AllLinesWith({{"Byte/File", "0"}}), AllLinesWith({{"Byte/File", "-5"}})}) {
    trace_setup::Replace(parameters);
    WriteFile(FileName(1), Bytes(kLimit, 'x'));
    ASSERT_TRUE(server_.Start());
    server_.Kill();
    EXPECT_EQ(ReadFile(FileName(1)).substr(kLimit), kFirst);
    EXPECT_THAT(ReadFile(FileName(2)), testing::StartsWith("CreateSRV:  namedMutex "));
  }
}

TEST_F(TraceFileStartTest, DebuggerOutputIsTheLineWithALineFeed) {
  trace_setup::ReplaceQuietly(AllLinesWith({{"Output", "dbg"}}));
  const std::vector<std::string> texts = ServerProcess::DebuggerOutputOfAStart();
  ASSERT_GT(texts.size(), 5u);
  EXPECT_TRUE(LinesAre(
      {texts.begin() + 1, texts.begin() + 6},
      {"CreateSRV:  >> Start Pipe Server \n", "CreateSRV:  namedMutex erfolgreich angelegt! \n",
       "StartSRV:  >> StartSRV \n", "StartSRV:  CreateEvent hEvent=0x{:x} \n",
       "StartSRV:  Call ConnectToNewClient for Connection(0) Pipe=0x{:x} \n"}));
  EXPECT_THAT(NamesIn(Folder()), IsEmpty());
}

TEST_F(TraceFileStartTest, TracingThatIsOffOrNotConfiguredWritesNothing) {
  const std::vector<TraceParameters> silent = {
      {}, AllLinesWith({{"Level", "0"}}), AllLinesWith({{"zqserver_level", "0"}})};
  for (const TraceParameters& parameters : silent) {
    trace_setup::ReplaceQuietly(parameters);
    ASSERT_TRUE(server_.Start());
    WireClient client;
    ASSERT_TRUE(client.Connect());
    EXPECT_TRUE(client.IsServed());
    client.Close();
    server_.Kill();
    EXPECT_THAT(NamesIn(Folder()), IsEmpty());
  }
}

}  // namespace
}  // namespace e2e
