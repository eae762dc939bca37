#include "platform/CrashEvidence.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <tlhelp32.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/Minidump.h"
#include "tests/support/RegistryKeyScratch.h"
#include "tests/support/RunAgain.h"

// A crash takes its process with it, so these tests run this program once more, which then crashes.

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kFolder[] = "QORLIX_CRASH_FOLDER";
constexpr char kKind[] = "QORLIX_CRASH_KIND";

// --- What runs in the process that crashes ---

std::size_t Describe(const platform::Crash& crash, char* text, std::size_t capacity) {
  return static_cast<std::size_t>(std::snprintf(
      text, capacity, "code %08lx thread %lu %s process %lu module %s year %u",
      static_cast<unsigned long>(crash.code), static_cast<unsigned long>(crash.thread),
      crash.isPreparingThread ? "preparing" : "other", static_cast<unsigned long>(crash.process),
      crash.module, crash.year));
}

std::size_t DescribeAndFail(const platform::Crash&, char*, std::size_t) {
  RaiseException(EXCEPTION_ILLEGAL_INSTRUCTION, 0, 0, nullptr);
  return 0;
}

void Fault() {
  volatile int* volatile nowhere = reinterpret_cast<volatile int*>(0x10);
  *nowhere = 1;
}

// Deeper than any stack; the compiler is not to see that it has no end.
int UseStack(int depth) {
  volatile char block[4096];
  block[0] = static_cast<char>(depth);
  return depth < 0 ? 0 : UseStack(depth + 1) + block[0];
}

DWORD WINAPI FaultOnThread(void*) {
  Fault();
  return 0;
}

constexpr char kTooFar[] = "behind the room for a record";
constexpr char kRecord[] = "by which a debugger finds the symbols";

// Libraries whose headers tell of places and sizes that there are not.
void LieInHeaders() {
  constexpr DWORD kEntryAt = 0xF00;
  struct Lie {
    const char* library;
    DWORD debugAt;
    DWORD debugSize;
    DWORD recordSize;
    LONG headersAt;  // 0: where they are
  };
  // The last one tells the truth.
  for (const Lie& lie :
       {Lie{"version.dll", kEntryAt, 0xFFFFFFFF, 0xFFFFFFFF, 0},
        Lie{"lz32.dll", kEntryAt, 0xFFFFFFFF, 2048, 0}, Lie{"mpr.dll", kEntryAt, 28, 0, 0x7FFFFFF0},
        Lie{"wsock32.dll", kEntryAt, 28, 0, -4},
        Lie{"msimg32.dll", 0x7FF00000, 28, sizeof(kRecord), 0},
        Lie{"cabinet.dll", kEntryAt, 28, sizeof(kRecord), 0}}) {
    auto* const base = reinterpret_cast<BYTE*>(LoadLibraryA(lie.library));
    DWORD before = 0;
    if (base == nullptr || VirtualProtect(base, 4096, PAGE_READWRITE, &before) == FALSE) {
      std::exit(57);
    }
    auto* const dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
    auto* const headers = reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    constexpr DWORD kRecordAt = 0x400;
    auto* const entry = reinterpret_cast<IMAGE_DEBUG_DIRECTORY*>(base + kEntryAt);
    entry->Type = IMAGE_DEBUG_TYPE_CODEVIEW;
    entry->SizeOfData = lie.recordSize;
    entry->AddressOfRawData = kRecordAt;
    std::memcpy(base + kRecordAt, kRecord, sizeof(kRecord));
    std::memcpy(base + kRecordAt + 1500, kTooFar, sizeof(kTooFar));
    headers->OptionalHeader.SizeOfImage = 0xFFFFFFFF;
    headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_DEBUG] = {lie.debugAt,
                                                                          lie.debugSize};
    if (lie.headersAt != 0) dos->e_lfanew = lie.headersAt;
  }
}

// Stays at the first, second or third of three places that are 400 bytes apart.
DWORD WINAPI StayAt(void* place) {
  asm volatile(
      "   cmpl $2, %0\n   je 2f\n   jb 1f\n   jmp 3f\n"
      "1: jmp 1b\n   .skip 400, 0x90\n"
      "2: jmp 2b\n   .skip 400, 0x90\n"
      "3: jmp 3b\n" ::"r"(place));
  return 0;
}

// Caught by nobody; a function of its own, so that no handler of the tests' framework is near.
DWORD WINAPI ThrowOnThread(void*) { throw 1; }

// As the end of the process does: libraries that crash then have no other thread beside them.
void EndOtherThreads() {
  const HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof(entry);
  for (BOOL more = Thread32First(all, &entry); more != FALSE; more = Thread32Next(all, &entry)) {
    if (entry.th32OwnerProcessID != GetCurrentProcessId() ||
        entry.th32ThreadID == GetCurrentThreadId()) {
      continue;
    }
    const HANDLE thread = OpenThread(THREAD_TERMINATE, FALSE, entry.th32ThreadID);
    (void)TerminateThread(thread, 0);
    (void)CloseHandle(thread);
  }
  (void)CloseHandle(all);
}

HANDLE StartThread(LPTHREAD_START_ROUTINE run, void* with = nullptr) {
  return CreateThread(nullptr, 0, run, with, 0, nullptr);
}

LONG WINAPI GoOn(EXCEPTION_POINTERS*) { return EXCEPTION_CONTINUE_EXECUTION; }

LONG WINAPI EndWith77(EXCEPTION_POINTERS*) { ExitProcess(77); }

[[noreturn]] void CrashAs(const std::string& kind) {
  if (kind == "goes on") (void)SetUnhandledExceptionFilter(GoOn);
  if (kind == "ends") (void)SetUnhandledExceptionFilter(EndWith77);
  const auto describe = kind == "describe" ? DescribeAndFail : Describe;
  if (!platform::PrepareCrashEvidence(std::getenv(kFolder), "Crash", describe)) std::exit(56);
  if (kind == "stack") std::exit(UseStack(1));
  if (kind == "foreign" || kind == "goes on") RaiseException(0xE06D7363, 0, 0, nullptr);
  if (kind == "headers") LieInHeaders();
  if (kind == "thrown") (void)WaitForSingleObject(StartThread(ThrowOnThread), INFINITE);
  if (kind == "alone") EndOtherThreads();
  if (kind == "crowd") {
    for (const int place : {2, 1, 3, 2}) {
      (void)CloseHandle(StartThread(StayAt, reinterpret_cast<void*>(place)));
    }
    Sleep(50);  // until they are there
  }
  if (kind == "thread") (void)WaitForSingleObject(StartThread(FaultOnThread), INFINITE);
  if (kind == "two") {
    for (int i = 0; i < 2; ++i) (void)CloseHandle(StartThread(FaultOnThread));
    Sleep(INFINITE);
  }
  if (kind != "goes on") Fault();
  std::exit(55);
}

class CrashWhereAsked : public testing::Environment {
 public:
  void SetUp() override {
    const char* const kind = std::getenv(kKind);
    if (kind != nullptr) CrashAs(kind);
  }
};

[[maybe_unused]] const testing::Environment* const g_environment =
    testing::AddGlobalTestEnvironment(new CrashWhereAsked);

// --- What looks at it ---

class CrashEvidenceTest : public testing::Test {
 protected:
  CrashEvidenceTest() : debugger_("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\AeDebug") {
    debugger_.SetText("Auto", "1");
    debugger_.SetText("Debugger", "none");
    errorMode_ = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    char temporary[MAX_PATH];
    (void)GetTempPathA(sizeof(temporary), temporary);
    folder_ = std::string(temporary) + "qorlix_crash_" + std::to_string(GetCurrentProcessId());
  }
  ~CrashEvidenceTest() override {
    (void)SetErrorMode(errorMode_);
    for (const std::string& name : Names()) (void)DeleteFileA((folder_ + "\\" + name).c_str());
    (void)RemoveDirectoryA(folder_.c_str());
  }

  // Lets a process crash. \returns its exit code.
  DWORD Crash(const std::string& kind) {
    (void)SetEnvironmentVariableA(kFolder, folder_.c_str());
    (void)SetEnvironmentVariableA(kKind, kind.c_str());
    const RanAgain ran = RunAgain();
    (void)SetEnvironmentVariableA(kKind, nullptr);
    id_ = ran.process;
    threadId_ = ran.thread;
    return ran.exitCode;
  }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    WIN32_FIND_DATAA found;
    const HANDLE search = FindFirstFileA((folder_ + "\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return names;
    do {
      if (found.cFileName[0] != '.') names.push_back(found.cFileName);
    } while (FindNextFileA(search, &found) != FALSE);
    (void)FindClose(search);
    std::sort(names.begin(), names.end());
    return names;
  }

  std::string File(const std::string& name) const {
    std::ifstream stream(folder_ + "\\" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  // As if the file had been written that many hours after an arbitrary moment.
  void SetWritten(const std::string& name, std::uint64_t hours) const {
    const std::uint64_t ticks = 132000000000000000 + hours * 36000000000;
    const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    const HANDLE file = CreateFileA((folder_ + "\\" + name).c_str(), FILE_WRITE_ATTRIBUTES, 0,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(SetFileTime(file, nullptr, nullptr, &time), FALSE) << name;
    (void)CloseHandle(file);
  }

  std::string folder_;
  DWORD id_ = 0;
  DWORD threadId_ = 0;

 private:
  RegistryKeyScratch debugger_;
  UINT errorMode_ = 0;
};

TEST_F(CrashEvidenceTest, AnAccessViolationLeavesATextAndADump) {
  EXPECT_EQ(Crash("fault"), static_cast<DWORD>(STATUS_ACCESS_VIOLATION));
  EXPECT_THAT(Names(), ElementsAre("Crash-1.dmp", "Crash-1.txt"));

  const std::string text = File("Crash-1.txt");
  EXPECT_THAT(text, HasSubstr("code c0000005 thread " + std::to_string(threadId_) +
                              " preparing process " + std::to_string(id_) + " module "));
  EXPECT_THAT(text, HasSubstr("platform_test.exe year 20"));

  const auto dump = ReadMinidump(File("Crash-1.dmp"));
  ASSERT_TRUE(dump);
  EXPECT_EQ(dump->code, static_cast<DWORD>(STATUS_ACCESS_VIOLATION));
  EXPECT_EQ(dump->thread, threadId_);
  EXPECT_GE(dump->modules, 3u);
  EXPECT_TRUE(dump->hasItsStack);
}

TEST_F(CrashEvidenceTest, AStackOverflowDoesToo) {
  EXPECT_EQ(Crash("stack"), static_cast<DWORD>(STATUS_STACK_OVERFLOW));
  EXPECT_THAT(File("Crash-1.txt"), HasSubstr("code c00000fd"));
  const auto dump = ReadMinidump(File("Crash-1.dmp"));
  ASSERT_TRUE(dump);
  EXPECT_EQ(dump->code, static_cast<DWORD>(STATUS_STACK_OVERFLOW));
  EXPECT_TRUE(dump->hasItsStack);
}

TEST_F(CrashEvidenceTest, AForeignExceptionDoesToo) {
  EXPECT_EQ(Crash("foreign"), 0xE06D7363);
  EXPECT_THAT(File("Crash-1.txt"), HasSubstr("code e06d7363"));
  EXPECT_TRUE(ReadMinidump(File("Crash-1.dmp")));
}

TEST_F(CrashEvidenceTest, ACppExceptionThatNobodyCatchesDoesTooAndEndsTheProcessAsEver) {
  constexpr DWORD kAborted = 3;
  EXPECT_EQ(Crash("thrown"), kAborted);
  EXPECT_THAT(File("Crash-1.txt"), HasSubstr("code 20474343"));
  EXPECT_THAT(File("Crash-1.txt"), HasSubstr("platform_test.exe year 20"));
  const auto dump = ReadMinidump(File("Crash-1.dmp"));
  ASSERT_TRUE(dump);
  EXPECT_EQ(dump->code, 0x20474343u);
  EXPECT_NE(dump->thread, threadId_);
  EXPECT_TRUE(dump->hasItsStack);
}

TEST_F(CrashEvidenceTest, HeadersThatLieCostNoMoreThanTheirOwnModule) {
  ASSERT_EQ(Crash("fault"), static_cast<DWORD>(STATUS_ACCESS_VIOLATION));
  ASSERT_EQ(Crash("headers"), static_cast<DWORD>(STATUS_ACCESS_VIOLATION));
  const auto plain = ReadMinidump(File("Crash-1.dmp"));
  const auto dump = ReadMinidump(File("Crash-2.dmp"));
  ASSERT_TRUE(plain);
  ASSERT_TRUE(dump);
  EXPECT_TRUE(dump->hasItsStack);
  EXPECT_GE(dump->modules, plain->modules);
  EXPECT_EQ(File("Crash-2.dmp").find(kTooFar), std::string::npos);
  EXPECT_NE(File("Crash-2.dmp").find(std::string(kRecord, sizeof(kRecord))), std::string::npos);
}

TEST_F(CrashEvidenceTest, NobodyWaitsForAWriterThatIsGone) {
  const ULONGLONG start = GetTickCount64();
  EXPECT_EQ(Crash("alone"), static_cast<DWORD>(STATUS_ACCESS_VIOLATION));
  EXPECT_LT(GetTickCount64() - start, 10000u);
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(CrashEvidenceTest, ACrashOfAnotherThreadIsToldAsSuch) {
  EXPECT_EQ(Crash("thread"), static_cast<DWORD>(STATUS_ACCESS_VIOLATION));
  EXPECT_THAT(File("Crash-1.txt"), HasSubstr(" other process "));
  const auto dump = ReadMinidump(File("Crash-1.dmp"));
  ASSERT_TRUE(dump);
  EXPECT_NE(dump->thread, threadId_);
  EXPECT_EQ(dump->threads, 2u);
}

TEST_F(CrashEvidenceTest, TheNextInstructionsOfAllThreadsAreThereAndNoneTwice) {
  EXPECT_EQ(Crash("crowd"), static_cast<DWORD>(STATUS_ACCESS_VIOLATION));
  const auto dump = ReadMinidump(File("Crash-1.dmp"));
  ASSERT_TRUE(dump);
  EXPECT_GE(dump->threads, 5u);
  EXPECT_EQ(dump->threadsWithCode, dump->threads);
  EXPECT_FALSE(dump->memoryIsThereTwice);
}

TEST_F(CrashEvidenceTest, OfTwoThreadsThatCrashTogetherNoneCutsTheEvidenceShort) {
  EXPECT_EQ(Crash("two"), static_cast<DWORD>(STATUS_ACCESS_VIOLATION));
  EXPECT_THAT(Names(), ElementsAre("Crash-1.dmp", "Crash-1.txt"));
  EXPECT_TRUE(ReadMinidump(File("Crash-1.dmp")));
}

TEST_F(CrashEvidenceTest, ADescriptionThatFailsCostsTheTextAndNotTheDump) {
  EXPECT_EQ(Crash("describe"), static_cast<DWORD>(STATUS_ACCESS_VIOLATION));
  EXPECT_THAT(Names(), ElementsAre("Crash-1.dmp"));
  EXPECT_TRUE(ReadMinidump(File("Crash-1.dmp")));
}

TEST_F(CrashEvidenceTest, WhoeverHandledExceptionsBeforeStillDoes) {
  EXPECT_EQ(Crash("goes on"), 55u);
  EXPECT_EQ(Crash("ends"), 77u);
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(CrashEvidenceTest, TheNinthCrashTakesThePlaceOfTheOldest) {
  for (int i = 1; i <= 8; ++i) {
    ASSERT_EQ(Crash("fault"), static_cast<DWORD>(STATUS_ACCESS_VIOLATION));
    const std::string name = "Crash-" + std::to_string(i);
    ASSERT_TRUE(ReadMinidump(File(name + ".dmp"))) << name;
    // The fifth is the oldest.
    SetWritten(name + ".txt", i == 5 ? 0 : static_cast<std::uint64_t>(i));
    SetWritten(name + ".dmp", i == 5 ? 0 : static_cast<std::uint64_t>(i));
  }
  const std::vector<std::string> before = Names();
  EXPECT_EQ(before.size(), 16u);
  // What is to be replaced has a second name, by which it must stay as it is.
  const std::string other = folder_ + "\\other";
  const bool linked =
      CreateHardLinkA(other.c_str(), (folder_ + "\\Crash-5.txt").c_str(), nullptr) != FALSE;
  const std::string old = File("Crash-5.txt");
  const std::string fourth = File("Crash-4.txt");

  ASSERT_EQ(Crash("foreign"), 0xE06D7363);
  EXPECT_THAT(File("Crash-5.txt"), HasSubstr("code e06d7363"));
  const auto dump = ReadMinidump(File("Crash-5.dmp"));
  ASSERT_TRUE(dump);
  EXPECT_EQ(dump->code, 0xE06D7363);
  EXPECT_EQ(File("Crash-4.txt"), fourth);
  if (linked) {
    EXPECT_EQ(File("other"), old);
    (void)DeleteFileA(other.c_str());
  }
  EXPECT_EQ(Names(), before);
}

TEST_F(CrashEvidenceTest, IntoAFolderThatOthersMayWriteToNothingIsWritten) {
  ASSERT_NE(CreateDirectoryA(folder_.c_str(), nullptr), FALSE);
  const HANDLE probe = CreateFileA((folder_ + "\\probe").c_str(), GENERIC_WRITE, 0, nullptr,
                                   CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  ASSERT_NE(probe, INVALID_HANDLE_VALUE);
  (void)CloseHandle(probe);
  // A descriptor without an access list.
  SECURITY_DESCRIPTOR open;
  ASSERT_NE(InitializeSecurityDescriptor(&open, SECURITY_DESCRIPTOR_REVISION), FALSE);
  ASSERT_NE(SetSecurityDescriptorDacl(&open, TRUE, nullptr, FALSE), FALSE);
  ASSERT_NE(SetFileSecurityA(folder_.c_str(), DACL_SECURITY_INFORMATION, &open), FALSE);
  EXPECT_EQ(Crash("fault"), static_cast<DWORD>(STATUS_ACCESS_VIOLATION));
  EXPECT_THAT(Names(), IsEmpty());
}

}  // namespace
