#include "standins/boardsvc32/testing/FakeHost.h"

#include <filesystem>
#include <map>

namespace {

constexpr std::uint32_t kThreadId = 77;

struct State {
  std::map<std::string, std::string> environment;
  std::string libraryFolder = "no such folder";
  boardsim::LockState lock = boardsim::LockState::kNone;
  std::vector<std::string> debugLines;
  std::uint32_t slept = 0;
};
State g_state;

}  // namespace

namespace fake_host {

void Reset() { g_state = {}; }
void SetEnvironment(const std::string& name, const std::string& value) {
  g_state.environment[name] = value;
}
void SetLibraryFolder(const std::string& folder) { g_state.libraryFolder = folder; }
void SetLock(boardsim::LockState lock) { g_state.lock = lock; }
std::vector<std::string> DebugLines() { return g_state.debugLines; }
std::uint32_t SleptMilliseconds() { return g_state.slept; }

}  // namespace fake_host

namespace standin::host {

std::string Environment(const char* name) { return g_state.environment[name]; }
std::string LibraryFolder() { return g_state.libraryFolder; }
bool FileExists(const std::string& path) { return std::filesystem::exists(path); }
bool IsAbsolute(const std::string& path) { return path.starts_with('/'); }
void Debug(const std::string& line) { g_state.debugLines.push_back(line); }
std::uint32_t ThreadId() { return kThreadId; }
void Sleep(std::uint32_t milliseconds) { g_state.slept += milliseconds; }
void Raise(Raised raised) { throw fake_host::RaisedException{raised}; }

}  // namespace standin::host

boardsim::LockState boardsim::host::ProbeBoardLock() { return g_state.lock; }
