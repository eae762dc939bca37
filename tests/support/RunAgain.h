#ifndef TESTS_SUPPORT_RUNAGAIN_H_
#define TESTS_SUPPORT_RUNAGAIN_H_

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

/// How this program ended that was run once more.
struct RanAgain {
  DWORD process;
  DWORD thread;  ///< its first one
  DWORD exitCode;
};

/// Starts this program once more. What it is to do there it finds in its environment, which is that
/// of this process.
inline PROCESS_INFORMATION StartAgain() {
  char program[MAX_PATH];
  (void)GetModuleFileNameA(nullptr, program, sizeof(program));
  std::string line = "\"" + std::string(program) + "\"";
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  if (CreateProcessA(program, line.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr,
                     nullptr, &startup, &started) == FALSE) {
    ADD_FAILURE() << "it does not start: error " << GetLastError();
  }
  return started;
}

/// Waits for the end of what was started, and ends it when it takes too long.
inline RanAgain EndOf(const PROCESS_INFORMATION& started) {
  constexpr DWORD kPatienceMs = 60000;
  if (started.hProcess == nullptr) return {};
  RanAgain ran = {started.dwProcessId, started.dwThreadId, 0};
  EXPECT_EQ(WaitForSingleObject(started.hProcess, kPatienceMs), WAIT_OBJECT_0);
  (void)GetExitCodeProcess(started.hProcess, &ran.exitCode);
  (void)TerminateProcess(started.hProcess, 1);
  (void)CloseHandle(started.hThread);
  (void)CloseHandle(started.hProcess);
  return ran;
}

/// Both, for what takes a process with it.
inline RanAgain RunAgain() { return EndOf(StartAgain()); }

#endif  // TESTS_SUPPORT_RUNAGAIN_H_
