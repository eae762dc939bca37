#ifndef TESTS_HOSTILE_SOAKMIX_H_
#define TESTS_HOSTILE_SOAKMIX_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/e2e/Wire.h"
#include "tests/e2e/WireClient.h"
#include "tests/hostile/Surroundings.h"

namespace hostile {

/// A request of a working day, and what it has to come to.
struct Step {
  e2e::Bytes request;
  std::uint32_t result = 0;
  /// Is awaited before the request goes out, and reset.
  const e2e::restart::NamedEvent* event = nullptr;
};

/// A client that goes through its steps again and again. Every reply must be one by the grammar,
/// with the step's result.
class SoakClient {
 public:
  /// \param leavesAfter so many requests, and comes again; 0 for one that stays
  SoakClient(std::vector<Step> steps, unsigned leavesAfter)
      : steps_(std::move(steps)), leavesAfter_(leavesAfter) {}

  testing::AssertionResult Ask();
  testing::AssertionResult Take();

  std::uint64_t Connections() const { return connections_; }
  /// Restarts that have come to their end.
  std::uint64_t Restarts() const { return restarts_; }

 private:
  const Step& Current() const { return steps_[static_cast<std::size_t>(asked_ % steps_.size())]; }

  std::vector<Step> steps_;
  unsigned leavesAfter_;
  e2e::WireClient client_;
  std::uint64_t asked_ = 0;
  std::uint64_t connections_ = 0;
  std::uint64_t restarts_ = 0;
};

/// The clients of the mix. Whatever the server is known to keep is not among what they ask for:
/// restarts whose result nobody fetches, and plug-ins, for each of which it keeps handles.
std::vector<std::unique_ptr<SoakClient>> SoakMix(const Surroundings& surroundings);

}  // namespace hostile

#endif  // TESTS_HOSTILE_SOAKMIX_H_
