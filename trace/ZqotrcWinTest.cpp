#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <regex>
#include <sstream>
#include <thread>

#include "trace/TraceHost.h"
#include "trace/TraceWinFixture.h"

namespace {

constexpr char kGeneration[] = "Global\\ZqTRACE_SECTION";
constexpr char kMutex[] = "Global\\ZqTRACE_MUTEX";

class ZqotrcWinTest : public TraceWinFixture {};

bool SectionExists(const char* name) {
  const HANDLE section = OpenFileMappingA(FILE_MAP_WRITE, FALSE, name);
  if (section != nullptr) (void)CloseHandle(section);
  return section != nullptr;
}

bool MutexExists() {
  const HANDLE mutex = OpenMutexA(SYNCHRONIZE, FALSE, kMutex);
  if (mutex != nullptr) (void)CloseHandle(mutex);
  return mutex != nullptr;
}

// --- Registry ---

TEST_F(ZqotrcWinTest, WithoutTheKeyTracingIsOff) {
  RemoveKey();
  Initialise();
  EXPECT_FALSE(zqotrc::Wanted(0xFFFFFFFF));
}

TEST_F(ZqotrcWinTest, ANumericLevelLeavesTracingOff) {
  SetRaw("Level", REG_DWORD, std::string("\xFF\x00\x00\x00", 4));
  Initialise();
  EXPECT_FALSE(zqotrc::Wanted(0xFFFFFFFF));
}

TEST_F(ZqotrcWinTest, TheMaskOfTheProgramIsRead) {
  SetText("zqserver_level", "0x50");
  Initialise();
  EXPECT_TRUE(zqotrc::Wanted(TRC_ERROR));
  EXPECT_FALSE(zqotrc::Wanted(TRC_RESULT));
  EXPECT_EQ(zqotrc::ReadMask("zqserver_level"), 0x50u);
  EXPECT_EQ(zqotrc::ReadMask("zqmissing_level"), 0u);
}

TEST_F(ZqotrcWinTest, AValueCarriesTypeLengthAndBytes) {
  SetText("exact", std::string(259, 'x'));
  SetText("long", std::string(260, 'x'));
  SetRaw("number", REG_DWORD, std::string("\x01\x02\x03\x04", 4));
  SetRaw("none", REG_SZ, "");
  const zqotrc::ParameterKey key;
  ASSERT_TRUE(key.IsOpen());

  zqotrc::RawParameter value;
  ASSERT_TRUE(key.Read("exact", value));
  EXPECT_EQ(value.type, static_cast<DWORD>(REG_SZ));
  EXPECT_EQ(value.bytes, 260u);
  EXPECT_EQ(std::string(value.data), std::string(259, 'x'));
  EXPECT_FALSE(key.Read("long", value));
  EXPECT_EQ(value.bytes, 261u);
  EXPECT_STREQ(value.data, "");
  ASSERT_TRUE(key.Read("number", value));
  EXPECT_EQ(value.type, static_cast<DWORD>(REG_DWORD));
  EXPECT_EQ(value.bytes, 4u);
  EXPECT_FALSE(key.Read("missing", value));
  EXPECT_EQ(value.bytes, 0u);
  EXPECT_TRUE(!key.Read("none", value) || value.bytes <= 1);
}

// --- Files ---

TEST_F(ZqotrcWinTest, ALineOfTheLongLayoutStandsInTheFile) {
  ConfigureFiles();
  SetText("Format", "LONG");
  Initialise();
  SYSTEMTIME before;
  GetLocalTime(&before);
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< result = 0x%x", 5u);
  const std::string line = Content(1);

  std::smatch parts;
  ASSERT_TRUE(std::regex_match(
      line, parts,
      std::regex("L QORLIXSR P(\\d{9})T(\\d{9}) -- SRV  0  0000 (\\d\\d):(\\d\\d):(\\d\\d),\\d{3} "
                 "ZqotrcWinTes,\\d{5} Fct:  << result = 0x5\r\n")))
      << line;
  EXPECT_EQ(std::stoul(parts[1]), GetCurrentProcessId());
  EXPECT_EQ(std::stoul(parts[2]), GetCurrentThreadId());
  const long seconds = (std::stol(parts[3]) * 60 + std::stol(parts[4])) * 60 + std::stol(parts[5]);
  const long since = seconds - ((before.wHour * 60L + before.wMinute) * 60 + before.wSecond);
  EXPECT_LE((since + 86400) % 86400, 2);
}

TEST_F(ZqotrcWinTest, TheTimeLayoutShowsTheSecondsOfThePerformanceCounter) {
  ConfigureFiles();
  SetText("Format", "TIME");
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  LARGE_INTEGER counter;
  LARGE_INTEGER frequency;
  (void)QueryPerformanceCounter(&counter);
  (void)QueryPerformanceFrequency(&frequency);
  std::smatch parts;
  const std::string line = Content(1);
  ASSERT_TRUE(std::regex_match(
      line, parts, std::regex("T QORLIXSR -- SRV  0  0000 (\\d{5}\\.\\d{6}) Fct:  text\r\n")))
      << line;
  const double now = static_cast<double>(counter.QuadPart / frequency.QuadPart % 100000);
  EXPECT_NEAR(std::stod(parts[1]), now, 2);
}

TEST_F(ZqotrcWinTest, TextsAreCutAndAbsentOnesNamed) {
  ConfigureFiles();
  Initialise();
  const std::string client(8192, 'c');
  const char* volatile absent = nullptr;
  ZQ_TRACE(TRC_PROGRESS, kFct, "%s", client.c_str());
  ZQ_TRACE(TRC_PROGRESS, kFct, "%s", static_cast<const char*>(absent));
  EXPECT_EQ(Content(1), "Fct:  " + client.substr(0, 256) + " \r\nFct:  (null) \r\n");
}

TEST_F(ZqotrcWinTest, ALineFeedInATextIsALineEndInTheFile) {
  ConfigureFiles();
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "%s", "a\nb");
  EXPECT_EQ(Content(1), "Fct:  a\r\nb \r\n");
}

TEST_F(ZqotrcWinTest, FilesAlternateAtTheirLimit) {
  ConfigureFiles();
  SetText("Byte/File", "1000");
  Initialise();
  for (int line = 0; line < 200; ++line) {
    ZQ_TRACE(TRC_PROGRESS, kFct, "line %04d", line);
    EXPECT_LE(Content(1).size(), 1020u);
    EXPECT_LE(Content(2).size(), 1020u);
  }
  const std::string all = Content(1) + Content(2);
  EXPECT_NE(all.find("line 0199"), std::string::npos);
  EXPECT_EQ(all.find("line 0000"), std::string::npos);
}

TEST_F(ZqotrcWinTest, WithBothFilesFullTheNextLineEmptiesTheOtherOne) {
  ConfigureFiles();
  Initialise();
  for (int line = 0; line < 60; ++line) ZQ_TRACE(TRC_PROGRESS, kFct, "%020d", line);
  (void)CopyFileA(FileName(1).c_str(), FileName(2).c_str(), FALSE);
  SetText("Byte/File", "1000");
  Initialise();
  const std::string first = Content(1);
  ASSERT_GT(first.size(), 1000u);
  ZQ_TRACE(TRC_PROGRESS, kFct, "next");
  const bool isFirst = Content(1) == "Fct:  next \r\n";
  EXPECT_EQ(Content(isFirst ? 1 : 2), "Fct:  next \r\n");
  EXPECT_EQ(Content(isFirst ? 2 : 1), first);
}

TEST_F(ZqotrcWinTest, TheFileThatWasWrittenLastGoesOn) {
  ConfigureFiles();
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "old");
  (void)CopyFileA(FileName(1).c_str(), FileName(2).c_str(), FALSE);
  Sleep(50);
  const HANDLE second = CreateFileA(FileName(2).c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
  DWORD written;
  (void)WriteFile(second, "x", 1, &written, nullptr);
  (void)CloseHandle(second);

  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "new");
  EXPECT_EQ(Content(1), "Fct:  old \r\n");
  EXPECT_EQ(Content(2), "Fct:  old \r\nxFct:  new \r\n");
}

TEST_F(ZqotrcWinTest, NoFileIsHeldOpenBetweenLines) {
  ConfigureFiles();
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_TRUE(DeleteFileA(FileName(1).c_str()));
  ZQ_TRACE(TRC_PROGRESS, kFct, "again");
  EXPECT_EQ(Content(1), "Fct:  again \r\n");
}

TEST_F(ZqotrcWinTest, WhereNoFileCanBeMadeLinesAreDropped) {
  ConfigureFiles();
  for (const std::string& path :
       {std::string("C:\\no\\such\\folder"), std::string("?:|<>"), std::string(259, 'p')}) {
    SetText("Path", path);
    Initialise();
    ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  }
  EXPECT_EQ(Content(1), "");
}

TEST_F(ZqotrcWinTest, ErrnoAndTheLastErrorStayAsTheyWere) {
  ConfigureFiles();
  SetText("Path", "C:\\no\\such\\folder");
  Initialise();
  errno = EDOM;
  SetLastError(1234);
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_EQ(GetLastError(), 1234u);
  EXPECT_EQ(errno, EDOM);
}

TEST_F(ZqotrcWinTest, LinesOfSeveralThreadsComeWhole) {
  ConfigureFiles();
  Initialise();
  std::vector<std::thread> threads;
  for (const char letter : {'a', 'b', 'c'}) {
    threads.emplace_back([letter] {
      for (int line = 0; line < 50; ++line) {
        ZQ_TRACE(TRC_PROGRESS, "f", "%s", std::string(200, letter).c_str());
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::istringstream lines(Content(1));
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_EQ(line, "f " + std::string(200, line[2]) + " \r");
  }
  EXPECT_EQ(count, 150);
}

// --- Other outputs ---

TEST_F(ZqotrcWinTest, OutputsThatAreNotThereTakeNothingAndDoNoHarm) {
  ConfigureFiles();
  for (const char* output : {"VXD", "COM1", "COM2", "PIPE"}) {
    SetText("Output", output);
    Initialise();
    SetLastError(1234);
    ZQ_TRACE(TRC_PROGRESS, kFct, "text");
    EXPECT_EQ(GetLastError(), 1234u);
  }
  EXPECT_EQ(Content(1), "");
}

// --- Shared between processes ---

TEST(TraceChild, DISABLED_RefreshesAll) {
  zqotrc::Initialise(/*security=*/nullptr, /*programMaskName=*/nullptr);
  zqotrc::RefreshAll();
  zqotrc::ShutDown();
}

TEST_F(ZqotrcWinTest, AnotherProcessesRefreshIsTakenUpByTheNextLine) {
  ConfigureFiles();
  SetText("Level", "0");
  Initialise();
  SetText("Level", "1");
  EXPECT_FALSE(zqotrc::Wanted(TRC_ERROR));
  EXPECT_TRUE(ChildProcess("TraceChild.DISABLED_RefreshesAll").Passed());
  EXPECT_TRUE(zqotrc::Wanted(TRC_ERROR));
  ZQ_TRACE(TRC_ERROR, kFct, "text");
  EXPECT_EQ(Content(1), "Fct:  text \r\n");
}

TEST(TraceChild, DISABLED_WritesLines) {
  zqotrc::Initialise(/*security=*/nullptr, "zqserver_level");
  for (int line = 0; line < 100; ++line) {
    ZQ_TRACE(TRC_PROGRESS, "child", "%s", std::string(100, 'c').c_str());
  }
  zqotrc::ShutDown();
}

TEST_F(ZqotrcWinTest, LinesOfTwoProcessesComeWholeAcrossRotation) {
  ConfigureFiles();
  SetText("Byte/File", "200000");
  Initialise();
  ChildProcess child("TraceChild.DISABLED_WritesLines");
  for (int line = 0; line < 100; ++line) {
    ZQ_TRACE(TRC_PROGRESS, "parent", "%s", std::string(100, 'p').c_str());
  }
  EXPECT_TRUE(child.Passed());
  std::istringstream lines(Content(1));
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_TRUE(line == "parent " + std::string(100, 'p') + " \r" ||
                line == "child " + std::string(100, 'c') + " \r")
        << line;
  }
  EXPECT_EQ(count, 200);
}

TEST_F(ZqotrcWinTest, ShutDownGivesAllNamesBack) {
  SetText("Output", "SM");
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_TRUE(SectionExists(kGeneration));
  EXPECT_TRUE(SectionExists("Global\\ZqSDD_Trace"));
  EXPECT_TRUE(MutexExists());
  zqotrc::ShutDown();
  EXPECT_FALSE(SectionExists(kGeneration));
  EXPECT_FALSE(SectionExists("Global\\ZqSDD_Trace"));
  EXPECT_FALSE(MutexExists());
}

TEST_F(ZqotrcWinTest, ALineAfterShutDownIsStillWritten) {
  ConfigureFiles();
  Initialise();
  zqotrc::ShutDown();
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< ClosePipes");
  EXPECT_EQ(Content(1), "Fct:  << ClosePipes \r\n");
}

TEST_F(ZqotrcWinTest, AHostageMutexCostsItsFullWaitOnce) {
  ConfigureFiles();
  Initialise();
  const HANDLE mutex = CreateMutexA(nullptr, FALSE, kMutex);
  const HANDLE release = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  const HANDLE taken = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  std::thread taker([&] {
    (void)WaitForSingleObject(mutex, INFINITE);
    (void)SetEvent(taken);
    (void)WaitForSingleObject(release, INFINITE);
    (void)ReleaseMutex(mutex);
  });
  (void)WaitForSingleObject(taken, INFINITE);

  const DWORD begin = GetTickCount();
  ZQ_TRACE(TRC_PROGRESS, kFct, "first");
  const DWORD afterFirst = GetTickCount();
  for (int line = 0; line < 20; ++line) ZQ_TRACE(TRC_PROGRESS, kFct, "more");
  const DWORD afterAll = GetTickCount();
  EXPECT_GE(afterFirst - begin, 9900u);
  EXPECT_LT(afterFirst - begin, 12000u);
  EXPECT_LT(afterAll - afterFirst, 1000u);

  (void)SetEvent(release);
  taker.join();
  ZQ_TRACE(TRC_PROGRESS, kFct, "free");
  const std::string content = Content(1);
  EXPECT_EQ(std::count(content.begin(), content.end(), '\n'), 22);
  for (const HANDLE handle : {mutex, release, taken}) (void)CloseHandle(handle);
}

}  // namespace
