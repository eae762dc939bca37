#include "bench/Support.h"

#include <windows.h>

#include <cstdarg>
#include <cstdio>

namespace bench {

void Die(const char* format, ...) {
  std::fflush(stdout);
  std::fputs("bench: ", stderr);
  va_list arguments;
  va_start(arguments, format);
  (void)std::vfprintf(stderr, format, arguments);
  va_end(arguments);
  std::fputs("\n", stderr);
  std::fflush(stderr);
  ExitProcess(2);
}

void DieOfLastError(const char* what) {
  const DWORD error = GetLastError();
  Die("%s failed with error %lu", what, error);
}

double Now() {
  static const double period = [] {
    LARGE_INTEGER frequency;
    (void)QueryPerformanceFrequency(&frequency);
    return 1.0 / static_cast<double>(frequency.QuadPart);
  }();
  LARGE_INTEGER ticks;
  (void)QueryPerformanceCounter(&ticks);
  return static_cast<double>(ticks.QuadPart) * period;
}

}  // namespace bench
