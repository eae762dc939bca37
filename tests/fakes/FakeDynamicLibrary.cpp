#include "tests/fakes/FakeDynamicLibrary.h"

#include <mutex>
#include <optional>
#include <utility>

#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/NotOurs.h"

namespace {

struct State {
  std::map<std::string, fake_dynamic_library::Exports> libraries;
  std::map<std::string, std::uint32_t> refused;
  std::function<void(const std::string&)> onLoad;
  std::vector<std::string> calls;
  std::optional<std::uint32_t> errorAfterFind;
  int loaded = 0;
};

// Workers load libraries, too.
std::recursive_mutex g_mutex;
State g_state;
thread_local std::uint32_t g_lastError = 0;

// Nobody may take what unloading leaves for the error of an earlier step.
constexpr std::uint32_t kErrorAfterFree = 1114;

using Lock = std::lock_guard<std::recursive_mutex>;

std::pair<const std::string, fake_dynamic_library::Exports>* LibraryAt(void* handle) {
  return static_cast<std::pair<const std::string, fake_dynamic_library::Exports>*>(handle);
}

}  // namespace

namespace fake_dynamic_library {

void Reset() {
  const Lock lock(g_mutex);
  g_state = {};
  g_lastError = 0;
}

void Add(const std::string& name, Exports exports) {
  const Lock lock(g_mutex);
  g_state.libraries[name] = std::move(exports);
}

void RefuseLoad(const std::string& name, std::uint32_t error) {
  const Lock lock(g_mutex);
  g_state.refused[name] = error;
}

void OnLoad(std::function<void(const std::string&)> hook) {
  const Lock lock(g_mutex);
  g_state.onLoad = std::move(hook);
}

std::vector<std::string> Calls() {
  const Lock lock(g_mutex);
  return g_state.calls;
}

int StillLoaded() {
  const Lock lock(g_mutex);
  return g_state.loaded;
}

void LastErrorAfterFind(std::uint32_t error) {
  const Lock lock(g_mutex);
  g_state.errorAfterFind = error;
}

}  // namespace fake_dynamic_library

namespace platform {

bool DynamicLibrary::Load(const char* name) {
  const NotOurs notOurs;
  const Lock lock(g_mutex);
  Free();
  g_state.calls.push_back(std::string("load ") + name);
  if (g_state.onLoad) g_state.onLoad(name);
  if (const std::uint32_t code = fault_plan::CodeFor("platform::DynamicLibrary::Load", name)) {
    g_lastError = code;
    return false;
  }
  const auto refused = g_state.refused.find(name);
  if (refused != g_state.refused.end()) {
    g_lastError = refused->second;
    return false;
  }
  const auto found = g_state.libraries.find(name);
  if (found == g_state.libraries.end()) {
    g_lastError = 126;
    return false;
  }
  ++g_state.loaded;
  handle_ = &*found;
  return true;
}

EntryPoint DynamicLibrary::Find(const char* name) const {
  const NotOurs notOurs;
  const Lock lock(g_mutex);
  g_state.calls.push_back(std::string("find ") + name);
  if (const std::uint32_t code = fault_plan::CodeFor("platform::DynamicLibrary::Find", name)) {
    g_lastError = code;
    return nullptr;
  }
  const auto& exports = LibraryAt(handle_)->second;
  const auto found = exports.find(name);
  if (found == exports.end()) {
    g_lastError = 127;
    return nullptr;
  }
  if (g_state.errorAfterFind) g_lastError = *g_state.errorAfterFind;
  return found->second;
}

void DynamicLibrary::Free() {
  if (handle_ == nullptr) return;
  const NotOurs notOurs;
  const Lock lock(g_mutex);
  g_state.calls.push_back("free " + LibraryAt(handle_)->first);
  --g_state.loaded;
  handle_ = nullptr;
  g_lastError = kErrorAfterFree;
}

void* DynamicLibrary::Release() { return std::exchange(handle_, nullptr); }

std::uint32_t LastError() { return g_lastError; }
void SetLastError(std::uint32_t error) { g_lastError = error; }

}  // namespace platform
