#include "traceview/FileAccess.h"

#include <windows.h>

#include <cstdio>

#include "platform/WinHandles.h"

namespace traceview {
namespace {

HANDLE OpenShared(const std::string& path, DWORD access) {
  return CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                     /*lpSecurityAttributes=*/nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                     /*hTemplateFile=*/nullptr);
}

constexpr std::uint64_t Join(DWORD high, DWORD low) {
  return (static_cast<std::uint64_t>(high) << 32) | low;
}

}  // namespace

FileState StateOf(const std::string& path) {
  const UniqueFileHandle file(OpenShared(path, FILE_READ_ATTRIBUTES));
  BY_HANDLE_FILE_INFORMATION data;
  if (file.get() == INVALID_HANDLE_VALUE) return {};
  if (GetFileInformationByHandle(file.get(), &data) == FALSE) return {};
  if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return {};
  return {/*exists=*/true, Join(data.nFileSizeHigh, data.nFileSizeLow),
          Join(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime),
          Join(data.nFileIndexHigh, data.nFileIndexLow)};
}

bool FolderExists(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::uint32_t ReadPart(const std::string& path, std::uint64_t offset, std::uint32_t most,
                       std::string& bytes) {
  bytes.clear();
  const UniqueFileHandle file(OpenShared(path, FILE_READ_DATA));
  if (file.get() == INVALID_HANDLE_VALUE) return GetLastError();
  LARGE_INTEGER at;
  at.QuadPart = static_cast<LONGLONG>(offset);
  if (SetFilePointerEx(file.get(), at, nullptr, FILE_BEGIN) == FALSE) return GetLastError();
  bytes.resize(most);
  DWORD read = 0;
  const BOOL ok = ReadFile(file.get(), bytes.data(), most, &read, /*lpOverlapped=*/nullptr);
  const DWORD error = ok != FALSE ? ERROR_SUCCESS : GetLastError();
  bytes.resize(ok != FALSE ? read : 0);
  return error;
}

std::string LocalTime(std::uint64_t written) {
  const FILETIME utc = {static_cast<DWORD>(written), static_cast<DWORD>(written >> 32)};
  SYSTEMTIME universal;
  SYSTEMTIME local;
  if (FileTimeToSystemTime(&utc, &universal) == FALSE ||
      SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) == FALSE) {
    return "?";
  }
  char text[40];
  (void)std::snprintf(text, sizeof(text), "%04u-%02u-%02u %02u:%02u:%02u", local.wYear,
                      local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond);
  return text;
}

}  // namespace traceview
