#include "tests/e2e/ServerLog.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <sstream>

namespace e2e {
namespace {

constexpr char kServerLogVariable[] = "QORLIX_SERVER_LOG";
constexpr char kErrorStreamVariable[] = "QORLIX_STDERR_FILE";
constexpr char kChannelsVariable[] = "WINEDEBUG";
constexpr DWORD kSettleMs = 3;

std::ifstream Open(const char* variable) {
  const char* const path = std::getenv(variable);
  if (path == nullptr) return {};
  return std::ifstream("Z:" + std::string(path), std::ios::binary);
}

std::size_t Size(std::ifstream& file) {
  file.seekg(0, std::ios::end);
  return static_cast<std::size_t>(file.tellg());
}

// What is in the file behind `start`.
std::string Read(const char* variable, std::size_t start) {
  std::ifstream file = Open(variable);
  file.seekg(static_cast<std::streamoff>(start));
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string ThreadPrefix(std::uint32_t thread) {
  char text[16];
  (void)std::snprintf(text, sizeof(text), "%04x:", static_cast<unsigned>(thread));
  return text;
}

bool IsRequestName(const std::string& word) {
  return word.size() > 1 && word.back() == '(' &&
         std::all_of(word.begin(), word.end() - 1,
                     [](char c) { return c == '_' || (c >= 'a' && c <= 'z'); });
}

}  // namespace

bool ServerLog::IsVisible() { return std::getenv(kServerLogVariable) != nullptr; }

ServerLog::ServerLog() {
  std::ifstream log = Open(kServerLogVariable);
  start_ = Size(log);
  static unsigned number = 0;
  name_ = "qorlix-mark-" + std::to_string(++number) + ";";
  Mark();
}

// The name of an event that does not exist: the log shows what was asked for.
void ServerLog::Mark() {
  Sleep(kSettleMs);
  const HANDLE event = OpenEventA(SYNCHRONIZE, /*bInheritHandle=*/FALSE, name_.c_str());
  if (event != nullptr) std::abort();
}

// A request is logged as "thread: name( ...", its answer as "thread: name() = ...".
std::vector<ServerLog::Requests> ServerLog::Of(std::uint32_t thread) const {
  const std::string prefix = ThreadPrefix(thread);
  std::vector<Requests> stretches;
  Requests current;
  bool inside = false;
  std::istringstream log(Read(kServerLogVariable, start_));
  for (std::string line; std::getline(log, line);) {
    if (line.find("open_event( ") != std::string::npos && line.find(name_) != std::string::npos) {
      if (inside) stretches.push_back(current);
      current.clear();
      inside = true;
    } else if (line.compare(0, prefix.size(), prefix) == 0) {
      std::istringstream words(line.substr(prefix.size()));
      std::string name;
      if (words >> name && IsRequestName(name)) current.push_back(name.substr(0, name.size() - 1));
    }
  }
  return stretches;
}

HeapTrace::Shown::Shown() {
  const char* const before = std::getenv(kChannelsVariable);
  if (before != nullptr) before_ = before;
  SetEnvironmentVariableA(kChannelsVariable, (before_ + ",+heap").c_str());
}

HeapTrace::Shown::~Shown() { SetEnvironmentVariableA(kChannelsVariable, before_.c_str()); }

HeapTrace::HeapTrace() : stream_(Open(kErrorStreamVariable)) { Mark(); }

void HeapTrace::Mark() { marks_.push_back(Size(stream_)); }

std::vector<std::size_t> HeapTrace::CallsOf(std::uint32_t thread) const {
  const std::string prefix = ThreadPrefix(thread) + "trace:heap:";
  std::vector<std::size_t> counts(marks_.size() - 1);
  std::istringstream stream(Read(kErrorStreamVariable, marks_.front()));
  std::size_t at = marks_.front();
  std::size_t stretch = 0;
  for (std::string line; std::getline(stream, line); at += line.size() + 1) {
    while (stretch < counts.size() && at >= marks_[stretch + 1]) ++stretch;
    if (stretch == counts.size()) break;
    if (line.compare(0, prefix.size(), prefix) != 0) continue;
    const std::string call = line.substr(prefix.size());
    if (call.starts_with("RtlAllocateHeap ") || call.starts_with("RtlReAllocateHeap ")) {
      ++counts[stretch];
    }
  }
  return counts;
}

}  // namespace e2e
