#include <windows.h>

#include <array>

#include "standins/boardsvc32/SimulatorHost.h"

namespace boardsim::host {

namespace {

constexpr char kBoardLock[] = "QorlixSrv_BC_Lock_Mutex";

DWORD WINAPI Probe(void* raw) {
  auto& state = *static_cast<LockState*>(raw);
  const HANDLE mutex = OpenMutexA(SYNCHRONIZE, FALSE, kBoardLock);
  if (mutex == nullptr) return 0;
  switch (WaitForSingleObject(mutex, 0)) {
    case WAIT_OBJECT_0:
    case WAIT_ABANDONED:
      ReleaseMutex(mutex);
      state = LockState::kFree;
      break;
    case WAIT_TIMEOUT:
      state = LockState::kHeld;
      break;
    default:
      break;
  }
  CloseHandle(mutex);
  return 0;
}

// Some address inside this library, to ask which file it came from.
const char kInside = 0;

}  // namespace

std::string Environment(const char* name) {
  std::string value(32767, '\0');
  const DWORD length = GetEnvironmentVariableA(name, value.data(), 32767);
  value.resize(length < 32767 ? length : 0);
  return value;
}

std::string LibraryFolder() {
  HMODULE library = nullptr;
  std::array<char, 4 * MAX_PATH> path{};
  if (!GetModuleHandleExA(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          &kInside, &library) ||
      GetModuleFileNameA(library, path.data(), path.size() - 1) >= path.size() - 1) {
    return ".";
  }
  const std::string file = path.data();
  return file.substr(0, file.find_last_of('\\'));
}

bool FileExists(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsAbsolute(const std::string& path) {
  return path.starts_with('\\') || path.starts_with('/') || (path.size() > 1 && path[1] == ':');
}

void Debug(const std::string& line) { OutputDebugStringA((line + '\n').c_str()); }

LockState ProbeBoardLock() {
  LockState state = LockState::kNone;
  const HANDLE thread = CreateThread(nullptr, 0, Probe, &state, 0, nullptr);
  if (thread == nullptr) return state;
  (void)WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  return state;
}

std::uint32_t ThreadId() { return GetCurrentThreadId(); }

void Sleep(std::uint32_t milliseconds) { ::Sleep(milliseconds); }

void Raise(Raised raised) { standin::RaiseNow(raised); }

}  // namespace boardsim::host
