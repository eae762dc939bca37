#include "trace/TraceOutputs.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

namespace zqotrc {
namespace {

constexpr DWORD kDriverLineCode = 2;
constexpr char kEventSource[] = "Zqotrc";
constexpr WORD kEventCategory = 1;

HANDLE g_driver = INVALID_HANDLE_VALUE;

/// Opens a trace file. Every local user may say where that is, and it may be a pipe of his own; who
/// holds its other end learns who we are, and cannot act in our name.
HANDLE OpenTraceFile(const char* name, DWORD access, DWORD sharing, DWORD disposition) {
  constexpr DWORD kFlags = FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
  return CreateFileA(name, access, sharing, /*lpSecurityAttributes=*/nullptr, disposition, kFlags,
                     /*hTemplateFile=*/nullptr);
}

}  // namespace

std::optional<std::uint64_t> AppendFile::Open(const char* name) {
  Close();
  const HANDLE file = OpenTraceFile(name, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS);
  if (file == INVALID_HANDLE_VALUE) return std::nullopt;
  file_ = file;
  return Size();
}

std::optional<std::uint64_t> AppendFile::Size() const {
  LARGE_INTEGER size;
  if (file_ == nullptr || GetFileSizeEx(file_, &size) == FALSE) return std::nullopt;
  return static_cast<std::uint64_t>(size.QuadPart);
}

void AppendFile::Append(std::string_view bytes) {
  DWORD written = 0;
  (void)WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                  /*lpOverlapped=*/nullptr);
}

void AppendFile::Close() {
  if (file_ != nullptr) (void)CloseHandle(file_);
  file_ = nullptr;
}

void RemoveFile(const char* name) { (void)DeleteFileA(name); }

std::optional<std::uint64_t> ModificationTime(const char* name) {
  const HANDLE file =
      OpenTraceFile(name, FILE_READ_ATTRIBUTES,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING);
  if (file == INVALID_HANDLE_VALUE) return std::nullopt;
  FILETIME written;
  const bool known = GetFileTime(file, /*lpCreationTime=*/nullptr, /*lpLastAccessTime=*/nullptr,
                                 &written) != FALSE;
  (void)CloseHandle(file);
  if (!known) return std::nullopt;
  return (static_cast<std::uint64_t>(written.dwHighDateTime) << 32) | written.dwLowDateTime;
}

void SendToDebugger(const char* text) { OutputDebugStringA(text); }

std::uint32_t OpenDriver() {
  if (g_driver != INVALID_HANDLE_VALUE) return ERROR_SUCCESS;
  g_driver = CreateFileA("\\\\.\\ZQONLINX.VXD", /*dwDesiredAccess=*/0, /*dwShareMode=*/0,
                         /*lpSecurityAttributes=*/nullptr, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE,
                         /*hTemplateFile=*/nullptr);
  return g_driver != INVALID_HANDLE_VALUE ? ERROR_SUCCESS : GetLastError();
}

void SendToDriver(std::string_view bytes) {
  if (g_driver == INVALID_HANDLE_VALUE) return;
  DWORD returned = 0;
  // The driver only reads its input; the parameter is not const for the sake of other codes.
  (void)DeviceIoControl(g_driver, kDriverLineCode, const_cast<char*>(bytes.data()),
                        static_cast<DWORD>(bytes.size()), /*lpOutBuffer=*/nullptr,
                        /*nOutBufferSize=*/0, &returned, /*lpOverlapped=*/nullptr);
}

void CloseDriver() {
  if (g_driver != INVALID_HANDLE_VALUE) (void)CloseHandle(g_driver);
  g_driver = INVALID_HANDLE_VALUE;
}

void ReportTraceEvent(std::uint32_t id, std::initializer_list<const char*> texts) {
  const HANDLE log = RegisterEventSourceA(/*lpUNCServerName=*/nullptr, kEventSource);
  if (log == nullptr) return;
  const char* strings[kMaxEventTexts] = {};
  const std::size_t count = std::min(texts.size(), std::size(strings));
  std::copy_n(texts.begin(), count, strings);
  (void)ReportEventA(log, EVENTLOG_ERROR_TYPE, kEventCategory, id, /*lpUserSid=*/nullptr,
                     static_cast<WORD>(count), /*dwDataSize=*/0, strings, /*lpRawData=*/nullptr);
  (void)DeregisterEventSource(log);
}

}  // namespace zqotrc
