#include "bench/HeapCalls.h"

#include <windows.h>

#include <cstdint>
#include <iterator>

#include "bench/Support.h"

namespace bench {
namespace {

constexpr std::uint8_t kBreakpoint = 0xCC;
constexpr DWORD kTrapFlag = 0x100;

/// One watched function: its first byte is a breakpoint while `watched` is set.
struct Entry {
  const char* name;
  std::uint8_t* code = nullptr;
  std::uint8_t original = 0;
};
Entry g_entries[] = {{"RtlAllocateHeap"}, {"RtlReAllocateHeap"}};
Entry* g_stepping = nullptr;
bool g_watching = false;
unsigned g_calls = 0;

void Patch(const Entry& entry, std::uint8_t byte) {
  *static_cast<volatile std::uint8_t*>(entry.code) = byte;
  (void)FlushInstructionCache(GetCurrentProcess(), entry.code, 1);
}

/// At the breakpoint: count, run the instruction that stands there alone, and watch again.
LONG CALLBACK OnException(EXCEPTION_POINTERS* pointers) {
  const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
  CONTEXT& context = *pointers->ContextRecord;
  if (record.ExceptionCode == static_cast<DWORD>(EXCEPTION_BREAKPOINT)) {
    for (Entry& entry : g_entries) {
      if (record.ExceptionAddress != entry.code) continue;
      ++g_calls;
      Patch(entry, entry.original);
      g_stepping = &entry;
      context.Eip = reinterpret_cast<std::uintptr_t>(entry.code);
      context.EFlags |= kTrapFlag;
      return EXCEPTION_CONTINUE_EXECUTION;
    }
  } else if (record.ExceptionCode == static_cast<DWORD>(EXCEPTION_SINGLE_STEP) &&
             g_stepping != nullptr) {
    if (g_watching) Patch(*g_stepping, kBreakpoint);
    g_stepping = nullptr;
    context.EFlags &= ~kTrapFlag;
    return EXCEPTION_CONTINUE_EXECUTION;
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

void PrepareOnce() {
  if (g_entries[0].code != nullptr) return;
  for (Entry& entry : g_entries) {
    entry.code =
        reinterpret_cast<std::uint8_t*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), entry.name));
    DWORD old = 0;
    if (entry.code == nullptr ||
        VirtualProtect(entry.code, 1, PAGE_EXECUTE_READWRITE, &old) == FALSE) {
      DieOfLastError(entry.name);
    }
    entry.original = *entry.code;
  }
  (void)AddVectoredExceptionHandler(/*First=*/1, OnException);
}

}  // namespace

unsigned HeapCallsOf(const std::function<void()>& work) {
  PrepareOnce();
  g_calls = 0;
  g_watching = true;
  for (const Entry& entry : g_entries) Patch(entry, kBreakpoint);
  work();
  g_watching = false;
  for (const Entry& entry : g_entries) Patch(entry, entry.original);
  return g_calls;
}

}  // namespace bench
