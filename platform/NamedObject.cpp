#include "platform/NamedObject.h"

#include <windows.h>

namespace platform {

HANDLE CreateNamedMutex(const char* name) {
  return CreateMutexA(/*lpMutexAttributes=*/nullptr, /*bInitialOwner=*/FALSE, name);
}

std::uint32_t WaitForMutex(HANDLE mutex, std::uint32_t milliseconds) {
  return WaitForSingleObject(mutex, milliseconds);
}

void ReleaseNamedMutex(HANDLE mutex) { (void)ReleaseMutex(mutex); }

bool SetEventIfItExists(const char* name) {
  const HANDLE event = OpenEventA(EVENT_ALL_ACCESS, /*bInheritHandle=*/FALSE, name);
  if (event == nullptr) return false;
  (void)SetEvent(event);
  return true;
}

HANDLE CreateMarkerMutex(SECURITY_ATTRIBUTES* security, const char* name, std::uint32_t& error) {
  const HANDLE mutex = CreateMutexExA(security, name, /*dwFlags=*/0, SYNCHRONIZE);
  error = mutex != nullptr ? ERROR_SUCCESS : GetLastError();
  return mutex;
}

void CloseNamedObject(HANDLE handle) {
  if (handle != nullptr) (void)CloseHandle(handle);
}

std::uint32_t SignalEvent(const char* name) {
  const HANDLE event = OpenEventA(EVENT_MODIFY_STATE, /*bInheritHandle=*/FALSE, name);
  if (event == nullptr) return GetLastError();
  const std::uint32_t result = SetEvent(event) != FALSE ? ERROR_SUCCESS : GetLastError();
  (void)CloseHandle(event);
  return result;
}

}  // namespace platform
