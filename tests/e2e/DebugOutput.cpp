#include "tests/e2e/DebugOutput.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>

namespace e2e {
namespace {

constexpr DWORD kSize = 4096;
constexpr DWORD kPollMs = 20;
constexpr DWORD kPatienceMs = 10000;

}  // namespace

// The names are the system's: whoever makes them is sent what no debugger takes.
DebugOutput::DebugOutput()
    : section_(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kSize,
                                  "DBWIN_BUFFER")),
      view_(section_ != nullptr ? MapViewOfFile(section_, FILE_MAP_READ, 0, 0, kSize) : nullptr),
      free_(CreateEventA(nullptr, FALSE, TRUE, "DBWIN_BUFFER_READY")),
      filled_(CreateEventA(nullptr, FALSE, FALSE, "DBWIN_DATA_READY")) {
  EXPECT_NE(view_, nullptr);
  if (view_ != nullptr) thread_ = std::thread([this] { Collect(); });
}

DebugOutput::~DebugOutput() {
  stop_ = true;
  if (thread_.joinable()) thread_.join();
  if (view_ != nullptr) (void)UnmapViewOfFile(view_);
  for (void* const handle : {section_, free_, filled_}) (void)CloseHandle(handle);
}

void DebugOutput::Collect() {
  while (!stop_) {
    if (WaitForSingleObject(filled_, kPollMs) != WAIT_OBJECT_0) continue;
    Text text = {};
    std::memcpy(&text.process, view_, sizeof(text.process));
    const char* const bytes = static_cast<const char*>(view_) + sizeof(text.process);
    text.text.assign(bytes, strnlen(bytes, kSize - sizeof(text.process)));
    {
      const std::lock_guard lock(mutex_);
      texts_.push_back(text);
    }
    (void)SetEvent(free_);
  }
}

std::vector<std::string> DebugOutput::TextsOf(std::uint32_t process,
                                              const std::string& part) const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> found;
  for (const Text& text : texts_) {
    if (text.process == process && text.text.find(part) != std::string::npos) {
      found.push_back(text.text);
    }
  }
  return found;
}

std::vector<std::string> DebugOutput::Await(std::uint32_t process, const std::string& part) const {
  const ULONGLONG end = GetTickCount64() + kPatienceMs;
  while (TextsOf(process, part).empty() && GetTickCount64() < end) Sleep(kPollMs);
  return TextsOf(process, part);
}

}  // namespace e2e
