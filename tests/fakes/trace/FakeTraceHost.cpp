#include <algorithm>
#include <cerrno>

#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "trace/TraceHost.h"

namespace zqotrc {

using FakeTrace::TheMachine;

namespace {
thread_local std::uint32_t g_lastError = 0;
}  // namespace

ParameterKey::ParameterKey() {
  if (fault_plan::Fails("zqotrc::ParameterKey::ParameterKey")) return;
  if (TheMachine().keyExists) key_ = &TheMachine().parameters;
}

ParameterKey::~ParameterKey() { key_ = nullptr; }

bool ParameterKey::Read(const char* name, RawParameter& value) const {
  const auto& parameters = *static_cast<const std::map<std::string, FakeTrace::Parameter>*>(key_);
  const auto found = parameters.find(name);
  value = {};
  if (fault_plan::Fails("zqotrc::ParameterKey::Read", name)) return false;
  if (found == parameters.end()) return false;
  const std::string& data = found->second.data;
  value.type = found->second.type;
  value.bytes = static_cast<std::uint32_t>(data.size());
  if (data.size() > kParameterCapacity) return false;
  *std::copy(data.begin(), data.end(), value.data) = '\0';
  return true;
}

void TakeMoment(TraceMoment& moment) {
  moment = TheMachine().moment;
  // Any call of the platform may leave something there.
  g_lastError = 1;
  errno = EIO;
}

std::int64_t CounterFrequency() {
  return fault_plan::Fails("zqotrc::CounterFrequency") ? 0 : TheMachine().frequency;
}

std::int64_t SecondsNow() { return TheMachine().seconds; }

std::uint32_t LastErrorCode() { return g_lastError; }

void SetLastErrorCode(std::uint32_t code) { g_lastError = code; }

}  // namespace zqotrc
