#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <string>

#include "platform/GuardedCall.h"
#include "tests/support/RunAgain.h"

// How far the guard of a call reaches: a stack that overflows step by step raises an exception, one
// that overflows in strides over the guard page has no room left to raise one. Whoever tries it may
// end, so these tests run this program once more.

namespace {

constexpr char kBytes[] = "QORLIX_STRIDE_BYTES";
constexpr char kOffset[] = "QORLIX_STRIDE_OFFSET";
constexpr DWORD kCaught = 41;
constexpr DWORD kReturned = 42;
constexpr DWORD kThreadIsGone = 43;
constexpr DWORD kUnhandled = 44;

// --- What runs in the process that tries it ---

struct Strides {
  std::uintptr_t from;
  std::uintptr_t bytes;
};

// Touches the stack there and so many bytes below, again and again, as frames without a compiler's
// probes do.
std::uint32_t Stride(const Strides& strides) {
  asm volatile(
      "   movl %0, %%esp\n"
      "1: movl $0, (%%esp)\n"
      "   subl %1, %%esp\n"
      "   jmp 1b\n"
      :
      : "r"(strides.from), "r"(strides.bytes)
      : "memory");
  __builtin_unreachable();
}

// From so far above the guard page to the same place of the stack's last page.
Strides OverTheGuardPage(std::uintptr_t offset) {
  MEMORY_BASIC_INFORMATION part = {};
  (void)VirtualQuery(&part, &part, sizeof(part));
  const auto base = reinterpret_cast<std::uintptr_t>(part.AllocationBase);
  std::uintptr_t guardEnd = 0;
  for (std::uintptr_t at = base; at < reinterpret_cast<std::uintptr_t>(&part);) {
    (void)VirtualQuery(reinterpret_cast<void*>(at), &part, sizeof(part));
    at = reinterpret_cast<std::uintptr_t>(part.BaseAddress) + part.RegionSize;
    if ((part.Protect & PAGE_GUARD) != 0) guardEnd = at;
  }
  return {guardEnd + offset, guardEnd - base};
}

std::uintptr_t Asked(const char* name) {
  const char* const text = std::getenv(name);
  return text == nullptr ? 0 : std::strtoul(text, nullptr, 10);
}

DWORD WINAPI StrideGuarded(void*) {
  platform::ReserveStackForGuards();
  const Strides strides =
      Asked(kBytes) == 0
          ? OverTheGuardPage(Asked(kOffset))
          : Strides{reinterpret_cast<std::uintptr_t>(&strides) - 0x400 - Asked(kOffset),
                    Asked(kBytes)};
  std::uint32_t result = 0;
  const bool returned = GuardedCall(result, [&] { return Stride(strides); });
  std::exit(static_cast<int>(returned ? kReturned : kCaught));
}

LONG WINAPI EndAsUnhandled(EXCEPTION_POINTERS*) { ExitProcess(kUnhandled); }

class StrideWhereAsked : public testing::Environment {
 public:
  void SetUp() override {
    if (std::getenv(kOffset) == nullptr) return;
    (void)SetUnhandledExceptionFilter(EndAsUnhandled);
    const HANDLE thread = CreateThread(nullptr, 0, StrideGuarded, nullptr, 0, nullptr);
    (void)WaitForSingleObject(thread, INFINITE);
    std::exit(static_cast<int>(kThreadIsGone));
  }
};

[[maybe_unused]] const testing::Environment* const g_environment =
    testing::AddGlobalTestEnvironment(new StrideWhereAsked);

// --- What looks at it ---

// \returns the exit code of a process that overflows the stack of a guarded call so.
DWORD ExitCodeOf(std::uint32_t bytes, std::uint32_t offset) {
  (void)SetEnvironmentVariableA(kBytes, std::to_string(bytes).c_str());
  (void)SetEnvironmentVariableA(kOffset, std::to_string(offset).c_str());
  const DWORD code = RunAgain().exitCode;
  (void)SetEnvironmentVariableA(kOffset, nullptr);
  return code;
}

constexpr std::uint32_t kOverTheGuardPage = 0;

TEST(StackStrideWinTest, WhatTouchesEveryPageIsCaught) {
  for (const std::uint32_t bytes : {64u, 4096u}) {
    for (const std::uint32_t offset : {0u, 2048u}) {
      EXPECT_EQ(ExitCodeOf(bytes, offset), kCaught) << bytes << ", " << offset;
    }
  }
}

// Without room for an exception there is none: the thread ends, and with the last one the process.
TEST(StackStrideWinTest, WhatStepsOverTheGuardPageIsNeitherCaughtNorTold) {
  if (GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") == nullptr) {
    GTEST_SKIP() << "what becomes of it is this system's affair";
  }
  for (const std::uint32_t offset : {16u, 2048u, 4080u}) {
    const DWORD code = ExitCodeOf(kOverTheGuardPage, offset);
    for (const DWORD word : {kCaught, kReturned, kUnhandled}) EXPECT_NE(code, word) << offset;
  }
}

}  // namespace
