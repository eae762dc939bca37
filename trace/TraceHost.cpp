#include "trace/TraceHost.h"

#include <windows.h>

#include <ctime>

namespace zqotrc {
namespace {

constexpr char kParameterPath[] = "Software\\VESMARK\\NORVA\\TrcParams";

/// From 1601, where the system's time begins, to 1970, where the C library's does, in seconds.
constexpr std::int64_t kSecondsTo1970 = 11644473600;
constexpr std::int64_t kTicksPerSecond = 10000000;
constexpr std::int64_t kTicksPerMillisecond = 10000;

std::int64_t SystemTicks() {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  return (static_cast<std::int64_t>(now.dwHighDateTime) << 32) | now.dwLowDateTime;
}

static_assert(kParameterTypeText == REG_SZ);

}  // namespace

ParameterKey::ParameterKey() {
  HKEY key = nullptr;
  if (RegOpenKeyA(HKEY_LOCAL_MACHINE, kParameterPath, &key) == ERROR_SUCCESS) key_ = key;
}

ParameterKey::~ParameterKey() {
  if (key_ != nullptr) (void)RegCloseKey(static_cast<HKEY>(key_));
}

bool ParameterKey::Read(const char* name, RawParameter& value) const {
  DWORD type = REG_NONE;
  DWORD bytes = kParameterCapacity;
  const LSTATUS status = RegQueryValueExA(static_cast<HKEY>(key_), name, /*lpReserved=*/nullptr,
                                          &type, reinterpret_cast<BYTE*>(value.data), &bytes);
  const bool isThere = status == ERROR_SUCCESS || status == ERROR_MORE_DATA;
  value.type = type;
  value.bytes = isThere ? bytes : 0;
  const bool isRead = status == ERROR_SUCCESS && bytes <= kParameterCapacity;
  value.data[isRead ? bytes : 0] = '\0';
  return isRead;
}

void TakeMoment(TraceMoment& moment) {
  const std::int64_t ticks = SystemTicks();
  const __time64_t seconds = ticks / kTicksPerSecond - kSecondsTo1970;
  std::tm local;
  moment.hasLocalTime = _localtime64_s(&local, &seconds) == 0;
  moment.hour = local.tm_hour;
  moment.minute = local.tm_min;
  moment.second = local.tm_sec;
  moment.millisecond = static_cast<std::int32_t>(ticks % kTicksPerSecond / kTicksPerMillisecond);

  LARGE_INTEGER counter = {};
  (void)QueryPerformanceCounter(&counter);
  moment.counter = counter.QuadPart;
  moment.processId = static_cast<std::int32_t>(GetCurrentProcessId());
  moment.threadId = static_cast<std::int32_t>(GetCurrentThreadId());
}

std::int64_t CounterFrequency() {
  LARGE_INTEGER frequency = {};
  return QueryPerformanceFrequency(&frequency) != FALSE ? frequency.QuadPart : 0;
}

std::int64_t SecondsNow() { return SystemTicks() / kTicksPerSecond; }

std::uint32_t LastErrorCode() { return GetLastError(); }

void SetLastErrorCode(std::uint32_t code) { SetLastError(code); }

}  // namespace zqotrc
