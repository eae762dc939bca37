#include <windows.h>

#include <array>
#include <cstdio>

#include "standins/script/StandInHost.h"

namespace standin::host {

namespace {

// A mapping that bears the process's number. The load that makes it leaves its handle open, so that
// the next load finds it; every load takes its own view away with it.
//
// Locked by the system's own lock: those of the language's library may leave handles open when the
// library is freed.
class Mapping {
 public:
  constexpr Mapping() = default;
  ~Mapping() {
    if (view_ != nullptr) UnmapViewOfFile(view_);
  }
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;

  void* View(const std::string& name, std::size_t bytes) {
    AcquireSRWLockExclusive(&lock_);
    if (view_ == nullptr) Map(name, bytes);
    void* const view = view_;
    ReleaseSRWLockExclusive(&lock_);
    return view;
  }

 private:
  void Map(const std::string& name, std::size_t bytes) {
    std::array<char, MAX_PATH> whole{};
    (void)std::snprintf(whole.data(), whole.size(), "Local\\QorlixStandIn.%s.%lu", name.c_str(),
                        GetCurrentProcessId());
    const HANDLE mapping = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                              static_cast<DWORD>(bytes), whole.data());
    if (mapping == nullptr) return;
    const bool existed = GetLastError() == ERROR_ALREADY_EXISTS;
    view_ = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, bytes);
    if (existed) CloseHandle(mapping);
  }

  SRWLOCK lock_ = SRWLOCK_INIT;
  void* view_ = nullptr;
};

Mapping g_mapping;

}  // namespace

std::uint32_t LastError() { return GetLastError(); }
void SetLastError(std::uint32_t error) { ::SetLastError(error); }

void* ProcessMemory(const std::string& name, std::size_t bytes) {
  return g_mapping.View(name, bytes);
}

}  // namespace standin::host
