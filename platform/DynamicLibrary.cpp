#include "platform/DynamicLibrary.h"

#include <windows.h>

#include <utility>

namespace platform {

bool DynamicLibrary::Load(const char* name) {
  Free();
  handle_ = LoadLibraryA(name);
  return handle_ != nullptr;
}

EntryPoint DynamicLibrary::Find(const char* name) const {
  return reinterpret_cast<EntryPoint>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

void DynamicLibrary::Free() {
  if (handle_ != nullptr) FreeLibrary(static_cast<HMODULE>(handle_));
  handle_ = nullptr;
}

void* DynamicLibrary::Release() { return std::exchange(handle_, nullptr); }

std::uint32_t LastError() { return GetLastError(); }
void SetLastError(std::uint32_t error) { ::SetLastError(error); }

}  // namespace platform
