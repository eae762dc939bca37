#include "client/ServerProcess.h"

#include <windows.h>

#include <cwchar>
#include <iterator>

#include "client/Deadline.h"

namespace client {
namespace {

constexpr wchar_t kServerFile[] = L"QorlixSRV.exe";
constexpr std::uint32_t kPathLimit = 32768;  // of the platform, in UTF-16 units
constexpr DWORD kPollMs = 20;

struct OwnedHandle {
  HANDLE handle = nullptr;
  OwnedHandle() = default;
  explicit OwnedHandle(HANDLE owned) : handle(owned) {}
  OwnedHandle(const OwnedHandle&) = delete;
  OwnedHandle& operator=(const OwnedHandle&) = delete;
  ~OwnedHandle() {
    if (handle != nullptr) (void)CloseHandle(handle);
  }
};

// Long paths do not belong on the stack; these functions run once in a program's life.
struct Paths {
  wchar_t given[kPathLimit];
  wchar_t program[kPathLimit];
  wchar_t folder[kPathLimit];
  wchar_t commandLine[kPathLimit + 2];
};
Paths paths;

// Fills `paths` from the UTF-8 path of the program. \returns 0 or an error code.
std::uint32_t PreparePaths(const char* program) {
  if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, program, /*cbMultiByte=*/-1, paths.given,
                          kPathLimit) == 0) {
    return GetLastError();
  }
  wchar_t* file = nullptr;
  const DWORD length = GetFullPathNameW(paths.given, kPathLimit, paths.program, &file);
  if (length == 0) return GetLastError();
  if (length >= kPathLimit) return ERROR_FILENAME_EXCED_RANGE;
  if (file == nullptr) return ERROR_FILE_NOT_FOUND;
  // Asked for first, because a missing folder would be reported as a wrong current directory.
  if (GetFileAttributesW(paths.program) == INVALID_FILE_ATTRIBUTES) return GetLastError();

  const auto folderLength = static_cast<std::size_t>(file - paths.program);
  std::wmemcpy(paths.folder, paths.program, folderLength);
  paths.folder[folderLength] = L'\0';
  // A path holds no quotation mark, so the pair around it is all the quoting that it needs.
  paths.commandLine[0] = L'"';
  std::wmemcpy(paths.commandLine + 1, paths.program, length);
  paths.commandLine[length + 1] = L'"';
  paths.commandLine[length + 2] = L'\0';
  return 0;
}

StartReport NotStarted(std::uint32_t code) { return {StartOutcome::NotStarted, code, 0}; }

}  // namespace

ServerProcess::~ServerProcess() {
  if (process_ != nullptr) (void)CloseHandle(process_);
}

StartReport ServerProcess::Start(const char* program, std::uint32_t timeoutMs,
                                 const char* eventName) noexcept {
  const std::uint32_t unusable = PreparePaths(program);
  if (unusable != 0) return NotStarted(unusable);

  const OwnedHandle ready(CreateEventA(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                                       /*bInitialState=*/FALSE, eventName));
  if (ready.handle == nullptr) return NotStarted(GetLastError());
  // A server that runs already keeps the event of its own start, which is still set.
  (void)ResetEvent(ready.handle);

  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION information = {};
  // Detached: it outlives this program's console, and a pipe behind our output is not held open.
  if (CreateProcessW(paths.program, paths.commandLine, /*lpProcessAttributes=*/nullptr,
                     /*lpThreadAttributes=*/nullptr, /*bInheritHandles=*/FALSE, DETACHED_PROCESS,
                     /*lpEnvironment=*/nullptr, paths.folder, &startup, &information) == FALSE) {
    return NotStarted(GetLastError());
  }
  if (process_ != nullptr) (void)CloseHandle(process_);
  process_ = information.hProcess;
  const OwnedHandle thread(information.hThread);

  const HANDLE either[] = {ready.handle, process_};
  switch (WaitForMultipleObjects(2, either, /*bWaitAll=*/FALSE, timeoutMs)) {
    case WAIT_OBJECT_0:
      return {StartOutcome::Ready, 0, information.dwProcessId};
    case WAIT_OBJECT_0 + 1:
      return {StartOutcome::EndedFirst, WaitForEnd(), information.dwProcessId};
    default:
      return {StartOutcome::TimedOut, WAIT_TIMEOUT, information.dwProcessId};
  }
}

std::uint32_t ServerProcess::WaitForEnd() noexcept {
  DWORD exitCode = MAXDWORD;
  if (process_ == nullptr) return exitCode;
  (void)WaitForSingleObject(process_, INFINITE);
  (void)GetExitCodeProcess(process_, &exitCode);
  return exitCode;
}

bool ServerProgramBesideThis(char* path, std::uint32_t capacity) noexcept {
  const DWORD length = GetModuleFileNameW(/*hModule=*/nullptr, paths.program, kPathLimit);
  if (length == 0 || length >= kPathLimit) return false;
  const wchar_t* const separator = std::wcsrchr(paths.program, L'\\');
  const auto folderLength =
      separator == nullptr ? 0 : static_cast<std::size_t>(separator - paths.program) + 1;
  if (folderLength + std::size(kServerFile) > kPathLimit) return false;
  std::wmemcpy(paths.program + folderLength, kServerFile, std::size(kServerFile));
  return WideCharToMultiByte(CP_UTF8, /*dwFlags=*/0, paths.program, /*cchWideChar=*/-1, path,
                             static_cast<int>(capacity), /*lpDefaultChar=*/nullptr,
                             /*lpUsedDefaultChar=*/nullptr) != 0;
}

bool WaitUntilNoServer(std::uint32_t timeoutMs, const char* mutexName) noexcept {
  const Deadline deadline(timeoutMs);
  for (;;) {
    // Only its existence tells; it is not closed for us, so it cannot be waited for.
    const OwnedHandle mutex(OpenMutexA(SYNCHRONIZE, /*bInheritHandle=*/FALSE, mutexName));
    if (mutex.handle == nullptr && GetLastError() == ERROR_FILE_NOT_FOUND) return true;
    if (deadline.LeftMs() == 0) return false;
    Sleep(kPollMs);
  }
}

}  // namespace client
