#include "traceview/TraceAccess.h"

#include <windows.h>

#include <atomic>

#include "platform/UniqueHandle.h"
#include "platform/WinHandles.h"
#include "traceview/TraceSettings.h"

namespace traceview {
namespace {

constexpr char kRingName[] = "Global\\ZqSDD_Trace";
constexpr char kGenerationName[] = "Global\\ZqTRACE_SECTION";

struct ViewTraits {
  using Type = void*;
  static Type None() { return nullptr; }
  static void Close(Type view) { (void)UnmapViewOfFile(view); }
};
using UniqueView = UniqueHandle<ViewTraits>;

/// How many bytes from the start of a view can be read; 0 for memory that is only reserved.
std::size_t ReadableBytes(const void* view) {
  MEMORY_BASIC_INFORMATION memory;
  if (VirtualQuery(view, &memory, sizeof(memory)) != sizeof(memory)) return 0;
  const bool readable = memory.Protect == PAGE_READONLY || memory.Protect == PAGE_READWRITE;
  return memory.State == MEM_COMMIT && readable ? memory.RegionSize : 0;
}

}  // namespace

SharedRing::~SharedRing() {
  if (!mapped_.empty()) (void)UnmapViewOfFile(mapped_.data());
  if (section_ != nullptr) (void)CloseHandle(section_);
}

std::uint32_t SharedRing::Attach() {
  UniqueKernelHandle section(OpenFileMappingA(FILE_MAP_READ, /*bInheritHandle=*/FALSE, kRingName));
  if (!section) return GetLastError();
  // 0 bytes are all of them.
  UniqueView view(MapViewOfFile(section.get(), FILE_MAP_READ, /*dwFileOffsetHigh=*/0,
                                /*dwFileOffsetLow=*/0, /*dwNumberOfBytesToMap=*/0));
  if (!view) return GetLastError();
  const std::size_t bytes = ReadableBytes(view.get());
  if (bytes == 0) return ERROR_INVALID_ADDRESS;
  mapped_ = {static_cast<const std::uint8_t*>(view.get()), bytes};
  (void)view.release();          // the object closes both at its end
  section_ = section.release();  // as above
  return ERROR_SUCCESS;
}

std::uint32_t RefreshAllTracers(std::uint32_t& generation) {
  using Counter = std::atomic<std::uint32_t>;
  static_assert(Counter::is_always_lock_free && sizeof(Counter) == sizeof(std::uint32_t));
  const UniqueKernelHandle section(
      OpenFileMappingA(FILE_MAP_WRITE, /*bInheritHandle=*/FALSE, kGenerationName));
  if (!section) return GetLastError();
  const UniqueView view(MapViewOfFile(section.get(), FILE_MAP_WRITE, /*dwFileOffsetHigh=*/0,
                                      /*dwFileOffsetLow=*/0, sizeof(Counter)));
  if (!view) return GetLastError();
  if (ReadableBytes(view.get()) < sizeof(Counter)) return ERROR_INVALID_ADDRESS;
  generation = ++*static_cast<Counter*>(view.get());
  return ERROR_SUCCESS;
}

std::vector<std::string> TraceValueNames() {
  std::vector<std::string> names;
  HKEY key = nullptr;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, kTraceKey, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) {
    return names;
  }
  constexpr DWORD kLongestName = 16384;
  std::vector<char> name(kLongestName);
  for (DWORD index = 0;; ++index) {
    DWORD length = kLongestName;
    const LSTATUS status = RegEnumValueA(key, index, name.data(), &length, /*lpReserved=*/nullptr,
                                         /*lpType=*/nullptr, /*lpData=*/nullptr,
                                         /*lpcbData=*/nullptr);
    if (status != ERROR_SUCCESS) break;
    names.emplace_back(name.data(), length);
  }
  (void)RegCloseKey(key);
  return names;
}

std::int64_t LocalTimeOfDay() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return (((now.wHour * 60ll + now.wMinute) * 60 + now.wSecond) * 1000 + now.wMilliseconds) * 1000;
}

}  // namespace traceview
