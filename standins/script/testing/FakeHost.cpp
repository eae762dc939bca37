#include "standins/script/testing/FakeHost.h"

#include <filesystem>
#include <map>

#include "standins/script/StandIn.h"
#include "standins/script/StandInHost.h"

namespace {

constexpr std::uint32_t kThreadId = 77;

struct State {
  std::map<std::string, std::string> environment;
  std::string libraryFolder = "no such folder";
  std::vector<std::string> debugLines;
  std::uint32_t slept = 0;
  std::uint32_t lastError = 0;
  bool hasMemory = true;
  std::vector<std::uint64_t> memory;
};
State g_state;

}  // namespace

namespace fake_host {

void Reset() { g_state = {}; }
void SetEnvironment(const std::string& name, const std::string& value) {
  g_state.environment[name] = value;
}
void SetLibraryFolder(const std::string& folder) { g_state.libraryFolder = folder; }
void SetProcessMemory(bool available) { g_state.hasMemory = available; }
std::vector<std::string> DebugLines() { return g_state.debugLines; }
std::uint32_t SleptMilliseconds() { return g_state.slept; }

}  // namespace fake_host

namespace standin {

const char kLibraryName[] = "linked";

namespace host {

std::string Environment(const char* name) { return g_state.environment[name]; }
std::string LibraryFolder() { return g_state.libraryFolder; }
bool FileExists(const std::string& path) { return std::filesystem::exists(path); }
bool IsAbsolute(const std::string& path) { return path.starts_with('/'); }
void Debug(const std::string& line) { g_state.debugLines.push_back(line); }
std::uint32_t ThreadId() { return kThreadId; }
// What the stand-in itself calls leaves traces in the last error; so does looking at it here.
std::uint32_t LastError() { return std::exchange(g_state.lastError, 4711); }
void SetLastError(std::uint32_t error) { g_state.lastError = error; }
void Sleep(std::uint32_t milliseconds) { g_state.slept += milliseconds; }
void Raise(Raised raised) { throw fake_host::RaisedException{raised}; }

void* ProcessMemory(const std::string&, std::size_t bytes) {
  if (!g_state.hasMemory) return nullptr;
  if (g_state.memory.empty()) g_state.memory.resize(bytes / sizeof(std::uint64_t) + 1);
  return g_state.memory.data();
}

}  // namespace host
}  // namespace standin
