#include <windows.h>

#include <array>

#include "standins/script/LibraryHost.h"

namespace standin::host {

namespace {

constexpr DWORD kMostEnvironment = 32767;

// Some address inside this library, to ask which file it came from.
const char kInside = 0;

}  // namespace

std::string Environment(const char* name) {
  std::string value(kMostEnvironment, '\0');
  const DWORD length = GetEnvironmentVariableA(name, value.data(), kMostEnvironment);
  value.resize(length < kMostEnvironment ? length : 0);
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

std::uint32_t ThreadId() { return GetCurrentThreadId(); }

void Sleep(std::uint32_t milliseconds) { ::Sleep(milliseconds); }

void Raise(Raised raised) { RaiseNow(raised); }

}  // namespace standin::host
