#include "bench/TraceFloor.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "bench/Support.h"

namespace bench {
namespace {

void Put(char*& to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  to += text.size();
}

void PutNumber(char*& to, unsigned value, int digits) {
  for (int place = digits - 1; place >= 0; --place) {
    to[place] = static_cast<char>('0' + value % 10);
    value /= 10;
  }
  to += digits;
}

}  // namespace

FloorGate g_floorGate = {0, 0};

void FloorNeverLine(const char* function, const char* /*format*/, ...) {
  Die("%s is not wanted", function);
}

FloorLine::FloorLine(const char* mutexName)
    : mutex_(CreateMutexExA(/*lpMutexAttributes=*/nullptr, mutexName, /*dwFlags=*/0, SYNCHRONIZE)) {
  if (mutex_ == nullptr) DieOfLastError("CreateMutexExA");
}

FloorLine::~FloorLine() { (void)CloseHandle(mutex_); }

std::size_t FloorLine::Build(const char* function, const char* file, unsigned line,
                             const char* format, std::va_list arguments) {
  constexpr std::size_t kShownText = 256;
  constexpr std::size_t kShownFile = 12;
  const int written = _vsnprintf(text_, sizeof(text_), format, arguments);
  const auto length = static_cast<std::size_t>(written);
  if (written < 0 || length >= sizeof(text_)) Die("the text of the benchmark is too long");

  SYSTEMTIME now;
  GetLocalTime(&now);
  char* at = line_;
  Put(at, "L QORLIXSR P");
  PutNumber(at, GetCurrentProcessId(), 9);
  Put(at, "T");
  PutNumber(at, GetCurrentThreadId(), 9);
  Put(at, " -- SRV  0  0000 ");
  PutNumber(at, now.wHour, 2);
  Put(at, ":");
  PutNumber(at, now.wMinute, 2);
  Put(at, ":");
  PutNumber(at, now.wSecond, 2);
  Put(at, ",");
  PutNumber(at, now.wMilliseconds, 3);
  Put(at, " ");
  Put(at, {file, std::min(std::strlen(file), kShownFile)});
  Put(at, ",");
  PutNumber(at, line, 5);
  Put(at, " ");
  Put(at, function);
  Put(at, " ");
  Put(at, {text_, std::min(length, kShownText)});
  Put(at, "\r\n");
  return static_cast<std::size_t>(at - line_);
}

void FileFloor::Line(const char* function, const char* file, unsigned line, const char* format,
                     ...) {
  Lock();
  std::va_list arguments;
  va_start(arguments, format);
  const std::size_t length = Build(function, file, line, format, arguments);
  va_end(arguments);
  const HANDLE handle =
      CreateFileA(name_, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE,
                  FILE_SHARE_READ | FILE_SHARE_WRITE, /*lpSecurityAttributes=*/nullptr, OPEN_ALWAYS,
                  FILE_ATTRIBUTE_NORMAL, /*hTemplateFile=*/nullptr);
  DWORD written = 0;
  LARGE_INTEGER size;
  if (handle == INVALID_HANDLE_VALUE ||
      WriteFile(handle, line_, static_cast<DWORD>(length), &written, /*lpOverlapped=*/nullptr) ==
          FALSE ||
      GetFileSizeEx(handle, &size) == FALSE) {
    DieOfLastError("writing the floor's file");
  }
  (void)CloseHandle(handle);
  Unlock();
}

RingFloor::RingFloor(std::uint32_t size)
    : FloorLine("Global\\QorlixBenchRing"),
      section_(CreateFileMappingA(INVALID_HANDLE_VALUE, /*lpFileMappingAttributes=*/nullptr,
                                  PAGE_READWRITE, /*dwMaximumSizeHigh=*/0, size,
                                  "Global\\QorlixBenchRingData")),
      data_(static_cast<char*>(MapViewOfFile(section_, FILE_MAP_WRITE, /*dwFileOffsetHigh=*/0,
                                             /*dwFileOffsetLow=*/0, size))),
      size_(size) {
  if (data_ == nullptr) DieOfLastError("mapping the floor's ring");
}

RingFloor::~RingFloor() {
  (void)UnmapViewOfFile(data_);
  (void)CloseHandle(section_);
}

void RingFloor::Line(const char* function, const char* file, unsigned line, const char* format,
                     ...) {
  Lock();
  std::va_list arguments;
  va_start(arguments, format);
  const auto length = static_cast<std::uint32_t>(Build(function, file, line, format, arguments));
  va_end(arguments);
  const std::uint32_t first = std::min(length, size_ - offset_);
  std::memcpy(data_ + offset_, line_, first);
  std::memcpy(data_, line_ + first, length - first);
  offset_ += length;
  if (offset_ > size_) {
    offset_ -= size_;
    ++wraps_;
  }
  Unlock();
}

}  // namespace bench
