#include <windows.h>

#include "platform/DynamicLibrary.h"
#include "platform/SystemPath.h"

std::uint32_t platform::SystemDirectory(PathBuffer& path) {
  return GetSystemDirectoryA(path, sizeof(path));
}

bool platform::FullPath(const char* path, PathBuffer& full) {
  const DWORD length = GetFullPathNameA(path, sizeof(full), full, /*lpFilePart=*/nullptr);
  if (length != 0 && length < sizeof(full)) return true;
  full[0] = '\0';
  return false;
}

// The shell's library is large and rarely needed, so it is loaded when it is, from its own place,
// and stays: loading it again costs more than keeping it.
bool platform::SpecialFolder(int number, PathBuffer& path) {
  using Folder = BOOL(WINAPI*)(HWND, LPSTR, int, BOOL);
  path[0] = '\0';
  static Folder folder = nullptr;
  if (folder == nullptr) {
    PathBuffer shell;
    if (!IsSystemDirectory(SystemDirectory(shell)) || AppendToPath(shell, "\\shell32.dll") != 0) {
      return false;
    }
    DynamicLibrary library;
    if (!library.Load(shell)) return false;
    folder = reinterpret_cast<Folder>(library.Find("SHGetSpecialFolderPathA"));
    if (folder == nullptr) return false;
    (void)library.Release();
  }
  PathBuffer found = {};
  if (folder(nullptr, found, number, /*fCreate=*/FALSE) == FALSE) return false;
  return AppendToPath(path, found) == 0;
}
