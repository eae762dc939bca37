#include "trace/TraceShared.h"

#include <mutex>

#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/trace/FakeTrace.h"

std::atomic<std::uint32_t>& FakeTrace::Generation() {
  // Not part of the machine, which can be put back: call sites may look at it at any time.
  static std::atomic<std::uint32_t> counter = 0;
  return counter;
}

namespace zqotrc {

using FakeTrace::Machine;
using FakeTrace::TheMachine;

namespace {

std::recursive_mutex& ProcessMutex() {
  static auto* const mutex = new std::recursive_mutex;
  return *mutex;
}

}  // namespace

void EnterProcessLock() { ProcessMutex().lock(); }
void LeaveProcessLock() { ProcessMutex().unlock(); }

std::uint32_t CreateTraceMutex(SECURITY_ATTRIBUTES* security) {
  if (const std::uint32_t code = fault_plan::CodeFor("zqotrc::CreateTraceMutex")) return code;
  TheMachine().mutexSecurity = security;
  TheMachine().hasMutex = TheMachine().mutexError == 0;
  return TheMachine().mutexError;
}

bool HasTraceMutex() { return TheMachine().hasMutex; }

std::uint32_t WaitForTraceMutex(std::uint32_t milliseconds) {
  Machine& machine = TheMachine();
  machine.waits.push_back(milliseconds);
  std::uint32_t result = fault_plan::CodeFor("zqotrc::WaitForTraceMutex");
  if (result == WAIT_OBJECT_0 && !machine.waitResults.empty()) {
    result = machine.waitResults.front();
    machine.waitResults.pop_front();
  }
  if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) ++machine.mutexHolds;
  return result;
}

void ReleaseTraceMutex() { --TheMachine().mutexHolds; }

void CloseTraceMutex() { TheMachine().hasMutex = false; }

std::atomic<std::uint32_t>* OpenGeneration(std::uint32_t& error) {
  error = fault_plan::CodeFor("zqotrc::OpenGeneration");
  if (error == 0) error = TheMachine().generationError;
  return error == 0 ? &FakeTrace::Generation() : nullptr;
}

void CloseGeneration() {}

OpenedSection OpenSection(const char* name, SECURITY_ATTRIBUTES*, std::uint32_t bytes) {
  Machine& machine = TheMachine();
  if (machine.sectionsFail || fault_plan::Fails("zqotrc::OpenSection")) return {nullptr, false};
  const bool existed = machine.sections.count(name) != 0;
  Machine::Section& section = machine.sections[name];
  if (!existed) section.words.resize((bytes + 3) / 4);
  ++machine.openSections;
  return {&section, existed};
}

void CloseSection(Section) { --TheMachine().openSections; }

void* MapSection(Section section, std::uint32_t bytes) {
  if (fault_plan::Fails("zqotrc::MapSection")) return nullptr;
  auto& memory = *static_cast<Machine::Section*>(section);
  if (!memory.committed || bytes > memory.words.size() * sizeof(memory.words[0])) return nullptr;
  ++TheMachine().views;
  return memory.words.data();
}

void UnmapSection(void*) { --TheMachine().views; }

}  // namespace zqotrc
