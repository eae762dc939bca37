#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <string>

#include "platform/GuardedCall.h"

// How far the guard of a call reaches: a stack that overflows step by step raises an exception, one
// that overflows in strides over the guard page has no room left to raise one. The process that
// tries it may end, so these tests run this program once more.

namespace {

constexpr char kStride[] = "QORLIX_STACK_STRIDE";
constexpr DWORD kCaught = 41;
constexpr DWORD kReturned = 42;
constexpr DWORD kThreadIsGone = 43;
constexpr DWORD kUnhandled = 44;
constexpr DWORD kPatienceMs = 60000;

// Frames of so many bytes without a compiler's probes, one below the other without end; the last
// bytes of each are touched.
std::uint32_t Stride(DWORD bytes) {
  asm volatile(
      "1: subl %0, %%esp\n"
      "   movl $0, (%%esp)\n"
      "   jmp 1b\n"
      :
      : "r"(bytes)
      : "memory");
  __builtin_unreachable();
}

DWORD WINAPI StrideGuarded(void* bytes) {
  platform::ReserveStackForGuards();
  std::uint32_t result = 0;
  const bool returned = GuardedCall(
      result, [=] { return Stride(static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(bytes))); });
  std::exit(static_cast<int>(returned ? kReturned : kCaught));
}

LONG WINAPI EndAsUnhandled(EXCEPTION_POINTERS*) { ExitProcess(kUnhandled); }

class StrideWhereAsked : public testing::Environment {
 public:
  void SetUp() override {
    const char* const bytes = std::getenv(kStride);
    if (bytes == nullptr) return;
    (void)SetUnhandledExceptionFilter(EndAsUnhandled);
    void* const parameter = reinterpret_cast<void*>(std::strtoul(bytes, nullptr, 10));
    const HANDLE thread = CreateThread(nullptr, 0, StrideGuarded, parameter, 0, nullptr);
    (void)WaitForSingleObject(thread, INFINITE);
    std::exit(static_cast<int>(kThreadIsGone));
  }
};

[[maybe_unused]] const testing::Environment* const g_environment =
    testing::AddGlobalTestEnvironment(new StrideWhereAsked);

// The exit code of a process that overflows the stack of a guarded call so.
DWORD ExitCodeOf(std::uint32_t bytes) {
  char program[MAX_PATH];
  (void)GetModuleFileNameA(nullptr, program, sizeof(program));
  std::string line = "\"" + std::string(program) + "\"";
  (void)SetEnvironmentVariableA(kStride, std::to_string(bytes).c_str());
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  const BOOL created = CreateProcessA(program, line.data(), nullptr, nullptr, FALSE,
                                      DETACHED_PROCESS, nullptr, nullptr, &startup, &started);
  (void)SetEnvironmentVariableA(kStride, nullptr);
  EXPECT_NE(created, FALSE);
  DWORD code = 0;
  EXPECT_EQ(WaitForSingleObject(started.hProcess, kPatienceMs), WAIT_OBJECT_0);
  (void)GetExitCodeProcess(started.hProcess, &code);
  (void)TerminateProcess(started.hProcess, 1);
  (void)CloseHandle(started.hThread);
  (void)CloseHandle(started.hProcess);
  return code;
}

TEST(StackStrideWinTest, WhatTouchesEveryPageIsCaught) {
  for (const std::uint32_t bytes : {64u, 1024u, 4096u}) EXPECT_EQ(ExitCodeOf(bytes), kCaught);
}

TEST(StackStrideWinTest, WhatStepsOverTheGuardPageEndsTheProcessWithoutAWord) {
  if (GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") == nullptr) {
    GTEST_SKIP() << "what becomes of it is this system's affair";
  }
  for (const std::uint32_t bytes : {20'000u, 65'536u, 262'144u}) {
    const DWORD code = ExitCodeOf(bytes);
    for (const DWORD word : {kCaught, kReturned, kThreadIsGone, kUnhandled, STILL_ACTIVE}) {
      EXPECT_NE(code, word) << bytes;
    }
  }
}

}  // namespace
