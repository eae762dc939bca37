#include "tests/fakes/FakeNamedObject.h"

#include <mutex>
#include <set>
#include <utility>

#include "platform/NamedObject.h"
#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/NotOurs.h"

namespace {

struct State {
  std::vector<std::string> calls;
  std::set<std::string> events;
  std::function<void()> onSignal;
  std::uint32_t waitResult = WAIT_OBJECT_0;
  bool mutexes = true;
} g_state;

std::mutex g_eventMutex;  // workers set events, too

int g_mutex = 0;

}  // namespace

namespace fake_named_object {

void Reset() {
  const std::lock_guard<std::mutex> lock(g_eventMutex);
  g_state = {};
}
std::vector<std::string> Calls() {
  const std::lock_guard<std::mutex> lock(g_eventMutex);
  return g_state.calls;
}
void AnswerWait(std::uint32_t result) { g_state.waitResult = result; }
void RefuseMutexes() { g_state.mutexes = false; }
void OfferEvent(const std::string& name) {
  const std::lock_guard<std::mutex> lock(g_eventMutex);
  g_state.events.insert(name);
}

void OnSignal(std::function<void()> hook) { g_state.onSignal = std::move(hook); }

}  // namespace fake_named_object

HANDLE platform::CreateNamedMutex(const char* name) {
  const NotOurs notOurs;
  if (fault_plan::Fails("platform::CreateNamedMutex")) return nullptr;
  g_state.calls.push_back(std::string("create ") + name);
  return g_state.mutexes ? &g_mutex : nullptr;
}

std::uint32_t platform::WaitForMutex(HANDLE, std::uint32_t milliseconds) {
  const NotOurs notOurs;
  g_state.calls.push_back("wait " + std::to_string(milliseconds));
  if (const std::uint32_t code = fault_plan::CodeFor("platform::WaitForMutex")) return code;
  return g_state.waitResult;
}

void platform::ReleaseNamedMutex(HANDLE) {
  const NotOurs notOurs;
  g_state.calls.emplace_back("release");
}

bool platform::SetEventIfItExists(const char* name) {
  const NotOurs notOurs;
  g_state.calls.push_back(std::string("set ") + name);
  if (fault_plan::Fails("platform::SetEventIfItExists")) return false;
  return g_state.events.count(name) != 0;
}

std::uint32_t platform::SignalEvent(const char* name) {
  const NotOurs notOurs;
  if (g_state.onSignal) g_state.onSignal();
  if (const std::uint32_t code = fault_plan::CodeFor("platform::SignalEvent")) return code;
  const std::lock_guard<std::mutex> lock(g_eventMutex);
  g_state.calls.push_back(std::string("signal ") + name);
  return g_state.events.count(name) != 0 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

HANDLE platform::CreateMarkerMutex(SECURITY_ATTRIBUTES*, const char* name, std::uint32_t& error) {
  const NotOurs notOurs;
  const std::lock_guard<std::mutex> lock(g_eventMutex);
  error = fault_plan::CodeFor("platform::CreateMarkerMutex");
  if (error != ERROR_SUCCESS) return nullptr;
  error = g_state.mutexes ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
  if (!g_state.mutexes) return nullptr;
  g_state.calls.push_back(std::string("marker ") + name);
  return &g_mutex;
}

void platform::CloseNamedObject(HANDLE handle) {
  const NotOurs notOurs;
  const std::lock_guard<std::mutex> lock(g_eventMutex);
  if (handle != nullptr) g_state.calls.emplace_back("close");
}
