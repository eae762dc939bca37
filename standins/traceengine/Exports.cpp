// Writes every call, one line each, to the file that ZQTRACEENGINE_LOG names. What the calls answer
// is in ZQTRACEENGINE_OPEN and ZQTRACEENGINE_WRITE: a number, or "raise" for an exception.

#include <windows.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr DWORD kHandle = 0x4711;

[[gnu::format(printf, 1, 2)]] void Log(const char* format, ...) {
  const char* const name = std::getenv("ZQTRACEENGINE_LOG");
  std::FILE* const file = name != nullptr ? std::fopen(name, "ab") : nullptr;
  if (file == nullptr) return;
  std::va_list arguments;
  va_start(arguments, format);
  (void)std::vfprintf(file, format, arguments);
  va_end(arguments);
  (void)std::fputc('\n', file);
  (void)std::fclose(file);
}

DWORD Answer(const char* variable) {
  const char* const text = std::getenv(variable);
  if (text == nullptr) return 0;
  if (std::strcmp(text, "raise") == 0) RaiseException(0xE06D7363, 0, 0, nullptr);
  return std::strtoul(text, nullptr, 0);
}

}  // namespace

extern "C" {

DWORD WINAPI TraceOpenA(const char* metaFile, const char* settingsFile, const char* folder,
                        DWORD zero, const char* version, DWORD* handle) {
  Log("open %s|%s|%s|%lu|%s", metaFile, settingsFile, folder, zero, version);
  *handle = kHandle;
  return Answer("ZQTRACEENGINE_OPEN");
}

DWORD WINAPI TraceWrite(DWORD handle, DWORD first, DWORD second, DWORD third, const BYTE* record,
                        DWORD length) {
  Log("write %lx %lu %lu %lu %02x%02x%02x%02x %.*s", handle, first, second, third, record[0],
      record[1], record[2], record[3], static_cast<int>(length) - 4,
      reinterpret_cast<const char*>(record) + 4);
  return Answer("ZQTRACEENGINE_WRITE");
}

DWORD WINAPI TraceCommand(DWORD command, const wchar_t* text) {
  Log("command %lu %ls", command, text);
  return 0;
}

DWORD WINAPI TraceClose(DWORD handle) {
  Log("close %lx", handle);
  return 0;
}

}  // extern "C"
