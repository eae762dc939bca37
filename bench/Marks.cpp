#include "bench/Marks.h"

#include <windows.h>

#include <cstdarg>
#include <cstdio>

#include "bench/Support.h"

namespace bench {
namespace {

// A server may still be busy behind its last reply, with the next read for instance; what it does
// there belongs to the burst.
constexpr DWORD kSettleMs = 50;

}  // namespace

void Mark(const char* format, ...) {
  char text[200];
  std::va_list arguments;
  va_start(arguments, format);
  (void)std::vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  Sleep(kSettleMs);
  const HANDLE event = OpenEventA(SYNCHRONIZE, /*bInheritHandle=*/FALSE, text);
  if (event != nullptr) Die("an event has the name of a mark");
}

void EndMark() { Mark("bench-mark;end;"); }

}  // namespace bench
