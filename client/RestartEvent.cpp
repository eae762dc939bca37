#include "client/RestartEvent.h"

#include <windows.h>

#include <sddl.h>

#include <cstdio>

namespace client {
namespace {

// Who may set the event besides its creator, whose handle may do everything anyway: the server,
// which runs as an administrator or as the system, and the owner's other programs.
constexpr char kWhoMaySetIt[] = "D:(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;OW)";

// A security descriptor made from its text; without one the event gets the user's default.
class Descriptor {
 public:
  explicit Descriptor(const char* text) {
    if (ConvertStringSecurityDescriptorToSecurityDescriptorA(
            text, SDDL_REVISION_1, &descriptor_, /*SecurityDescriptorSize=*/nullptr) == FALSE) {
      descriptor_ = nullptr;
    }
    attributes_ = {sizeof(attributes_), descriptor_, /*bInheritHandle=*/FALSE};
  }
  ~Descriptor() { (void)LocalFree(descriptor_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  SECURITY_ATTRIBUTES* get() { return descriptor_ == nullptr ? nullptr : &attributes_; }

 private:
  PSECURITY_DESCRIPTOR descriptor_ = nullptr;
  SECURITY_ATTRIBUTES attributes_ = {};
};

}  // namespace

std::uint32_t RestartEvent::Create(const char* name, bool& existed) noexcept {
  Close();
  Descriptor descriptor(kWhoMaySetIt);
  event_ = CreateEventA(descriptor.get(), /*bManualReset=*/TRUE, /*bInitialState=*/FALSE, name);
  const DWORD error = GetLastError();
  existed = event_ != nullptr && error == ERROR_ALREADY_EXISTS;
  if (event_ == nullptr) return error;
  // An earlier restart may have set it.
  if (existed && ResetEvent(event_) == FALSE) return GetLastError();
  return 0;
}

bool RestartEvent::Wait(std::uint32_t timeoutMs) noexcept {
  return event_ != nullptr && WaitForSingleObject(event_, timeoutMs) == WAIT_OBJECT_0;
}

void RestartEvent::Close() noexcept {
  if (event_ != nullptr) (void)CloseHandle(event_);
  event_ = nullptr;
}

bool RestartEvent::Exists(const char* name) noexcept {
  const HANDLE event = OpenEventA(SYNCHRONIZE, /*bInheritHandle=*/FALSE, name);
  // One that may not be opened exists as well.
  if (event == nullptr) return GetLastError() == ERROR_ACCESS_DENIED;
  (void)CloseHandle(event);
  return true;
}

void UnusedEventName(char* name, std::uint32_t capacity) noexcept {
  LARGE_INTEGER ticks = {};
  (void)QueryPerformanceCounter(&ticks);
  (void)std::snprintf(name, capacity, R"(Global\qorlixctl-restart-%lu-%llx)", GetCurrentProcessId(),
                      static_cast<unsigned long long>(ticks.QuadPart));
}

}  // namespace client
