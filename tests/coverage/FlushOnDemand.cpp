// Linked into programs of a build that counts lines, so that what a process has counted does not go
// with it: the server when a test is about to end it by force, and whoever crashes.

#include "tests/coverage/FlushOnDemand.h"

#include <windows.h>

#include <cstdlib>
#include <exception>

extern "C" void __gcov_dump(void);

// The slot by which this program calls SetUnhandledExceptionFilter.
extern "C" LPTOP_LEVEL_EXCEPTION_FILTER(WINAPI* g_setFilter)(LPTOP_LEVEL_EXCEPTION_FILTER) __asm__(
    "__imp__SetUnhandledExceptionFilter@4");

namespace {

LPTOP_LEVEL_EXCEPTION_FILTER g_filter = nullptr;
LPTOP_LEVEL_EXCEPTION_FILTER(WINAPI* g_setReally)(LPTOP_LEVEL_EXCEPTION_FILTER) = nullptr;

LONG WINAPI FilterAndDump(EXCEPTION_POINTERS* pointers) {
  const LONG answer = g_filter(pointers);
  if (answer != EXCEPTION_CONTINUE_EXECUTION) __gcov_dump();
  return answer;
}

LPTOP_LEVEL_EXCEPTION_FILTER WINAPI SetFilter(LPTOP_LEVEL_EXCEPTION_FILTER filter) {
  const LPTOP_LEVEL_EXCEPTION_FILTER before = g_filter;
  g_filter = filter;
  (void)g_setReally(FilterAndDump);
  return before;
}

[[noreturn]] void DumpAndAbort() {
  __gcov_dump();
  std::abort();
}

struct Flusher {
  Flusher() {
#ifdef QORLIX_COVERAGE_ASKED
    ask_ = Event(coverage::kAskPrefix);
    done_ = Event(coverage::kDonePrefix);
    thread_ = CreateThread(nullptr, 0, &Run, this, 0, nullptr);
#endif
    DWORD before = 0;
    (void)VirtualProtect(&g_setFilter, sizeof(g_setFilter), PAGE_READWRITE, &before);
    g_setReally = g_setFilter;
    g_setFilter = SetFilter;
    (void)std::set_terminate(DumpAndAbort);
  }

  static HANDLE Event(const char* prefix) {
    char name[64];
    coverage::EventName(prefix, GetCurrentProcessId(), name);
    return CreateEventA(nullptr, /*bManualReset=*/TRUE, /*bInitialState=*/FALSE, name);
  }

  static DWORD WINAPI Run(void* self) {
    auto* const flusher = static_cast<Flusher*>(self);
    WaitForSingleObject(flusher->ask_, INFINITE);
    __gcov_dump();
    SetEvent(flusher->done_);
    return 0;
  }

  HANDLE ask_ = nullptr;
  HANDLE done_ = nullptr;
  HANDLE thread_ = nullptr;
};

const Flusher g_flusher;

}  // namespace
