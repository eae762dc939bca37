#include "tests/fakes/FakeTraceAccess.h"

#include "traceview/TraceAccess.h"

FakeTraceAccess& TheTraceAccess() {
  static FakeTraceAccess access;
  return access;
}

namespace traceview {
namespace {

constexpr std::uint32_t kNotFound = 2;

}  // namespace

SharedRing::~SharedRing() { section_ = nullptr; }

std::uint32_t SharedRing::Attach() {
  std::vector<std::uint32_t>& words = TheTraceAccess().ring;
  if (words.empty()) return kNotFound;
  section_ = words.data();
  mapped_ = {reinterpret_cast<const std::uint8_t*>(words.data()), words.size() * sizeof(words[0])};
  return 0;
}

std::uint32_t RefreshAllTracers(std::uint32_t& generation) {
  if (!TheTraceAccess().hasGeneration) return kNotFound;
  generation = ++TheTraceAccess().generation;
  return 0;
}

std::vector<std::string> TraceValueNames() { return TheTraceAccess().valueNames; }

std::int64_t LocalTimeOfDay() { return TheTraceAccess().now; }

}  // namespace traceview
