#include "platform/WallClock.h"

#include <windows.h>

std::int64_t platform::WallClock() {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  ULARGE_INTEGER ticks;
  ticks.LowPart = now.dwLowDateTime;
  ticks.HighPart = now.dwHighDateTime;
  return static_cast<std::int64_t>(ticks.QuadPart);
}

void platform::SleepMilliseconds(std::uint32_t milliseconds) { Sleep(milliseconds); }
