#include <windows.h>

#include <gtest/gtest.h>
#include <sddl.h>

#include <string>

#include "tests/support/BrokenFunction.h"
#include "timer/ElapsedTimer.h"

// The real mutex and the real clock, seen from this process and from another one.

namespace {

constexpr char kName[] = "Global\\SetOpenTCPConnections";

// What another process finds, which is also its exit code.
enum Sight : DWORD { kAbsent = 100, kThere, kOwned };

// The other process: this program again, for this test alone.
TEST(ElapsedTimerWinTest, DISABLED_Onlooker) {
  const HANDLE mutex = OpenMutexA(SYNCHRONIZE, /*bInheritHandle=*/FALSE, kName);
  if (mutex == nullptr) ExitProcess(kAbsent);
  ExitProcess(WaitForSingleObject(mutex, 0) == WAIT_OBJECT_0 ? kThere : kOwned);
}

DWORD AnotherProcessSees() {
  char program[MAX_PATH] = "";
  (void)GetModuleFileNameA(nullptr, program, sizeof(program));
  std::string line = std::string("\"") + program +
                     "\" --gtest_also_run_disabled_tests --gtest_filter=*DISABLED_Onlooker";
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  if (CreateProcessA(program, line.data(), nullptr, nullptr, /*bInheritHandles=*/FALSE,
                     DETACHED_PROCESS, nullptr, nullptr, &startup, &process) == FALSE) {
    return GetLastError();
  }
  DWORD code = 0;
  (void)WaitForSingleObject(process.hProcess, 20000);
  (void)GetExitCodeProcess(process.hProcess, &code);
  (void)CloseHandle(process.hThread);
  (void)CloseHandle(process.hProcess);
  return code;
}

bool IsAdvertised() {
  const HANDLE mutex = OpenMutexA(SYNCHRONIZE, /*bInheritHandle=*/FALSE, kName);
  if (mutex != nullptr) CloseHandle(mutex);
  return mutex != nullptr;
}

bool BecomesSilent() {
  for (int i = 0; i < 100 && IsAdvertised(); ++i) Sleep(50);
  return !IsAdvertised();
}

TEST(ElapsedTimerWinTest, TheMutexIsThereUntilTheLimitHasPassed) {
  CElapsedTimer timer(nullptr);
  EXPECT_EQ(AnotherProcessSees(), kAbsent);
  EXPECT_EQ(timer.start(2), 0);
  EXPECT_EQ(AnotherProcessSees(), kThere) << "and nobody owns it";
  EXPECT_TRUE(BecomesSilent());
  EXPECT_EQ(AnotherProcessSees(), kAbsent);
  EXPECT_EQ(timer.stop(), -1);
}

TEST(ElapsedTimerWinTest, TheMutexGoesWithTheLastStop) {
  CElapsedTimer timer(nullptr);
  EXPECT_EQ(timer.start(1000), 0);
  EXPECT_EQ(timer.start(1000), 0);
  EXPECT_EQ(timer.stop(), 0);
  EXPECT_EQ(AnotherProcessSees(), kThere);
  EXPECT_EQ(timer.stop(), 0);
  EXPECT_TRUE(BecomesSilent());
  EXPECT_EQ(AnotherProcessSees(), kAbsent);
}

TEST(ElapsedTimerWinTest, DestructionWhileRunningTakesTheMutexAway) {
  {
    CElapsedTimer timer(nullptr);
    EXPECT_EQ(timer.start(1000), 0);
    EXPECT_EQ(AnotherProcessSees(), kThere);
  }
  EXPECT_FALSE(IsAdvertised());
  EXPECT_EQ(AnotherProcessSees(), kAbsent);
}

TEST(ElapsedTimerWinTest, TheMutexHasTheAccessListThatItWasGiven) {
  SECURITY_ATTRIBUTES onlyWait = {sizeof(onlyWait), nullptr, FALSE};
  ASSERT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
                "D:(A;;0x100000;;;WD)", SDDL_REVISION_1, &onlyWait.lpSecurityDescriptor, nullptr),
            FALSE);
  {
    CElapsedTimer timer(&onlyWait);
    EXPECT_EQ(timer.start(1000), 0);
    EXPECT_TRUE(IsAdvertised());
    EXPECT_EQ(OpenMutexA(MUTEX_ALL_ACCESS, /*bInheritHandle=*/FALSE, kName), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  }
  (void)LocalFree(onlyWait.lpSecurityDescriptor);
}

TEST(ElapsedTimerWinTest, WithoutAThreadItDoesNotStartAndTakesTheMutexAway) {
  CElapsedTimer timer(nullptr);
  {
    const BrokenFunction broken("msvcrt.dll", "_beginthreadex", 0, 0);
    EXPECT_EQ(timer.start(0), -1);
    EXPECT_FALSE(IsAdvertised());
    EXPECT_EQ(timer.stop(), -1);
  }
  EXPECT_EQ(timer.start(0), 0) << "the next start finds a thread";
  EXPECT_TRUE(IsAdvertised());
}

}  // namespace
