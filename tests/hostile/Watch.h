#ifndef TESTS_HOSTILE_WATCH_H_
#define TESTS_HOSTILE_WATCH_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/e2e/ServerProcess.h"
#include "tests/e2e/WireClient.h"

/// What is looked at while a server is attacked or kept busy.
namespace hostile {

/// What a server holds.
struct Footprint {
  std::uint32_t handles;
  std::uint32_t threads;
  std::size_t privateBytes;
};
Footprint Measure(const e2e::ServerProcess& server);

/// Seconds from the write of each request to its reply, of a client that behaves.
class Waits {
 public:
  void Add(double seconds) { seconds_.push_back(seconds); }
  void Sort();
  std::size_t Count() const { return seconds_.size(); }
  /// Of the sorted ones; 0 when there are none.
  double Quantile(double share) const;

 private:
  std::vector<double> seconds_;
};

/// Has the client ask for nothing and wait for the answer, every other millisecond.
///
/// \returns false when it was not answered.
bool Watch(e2e::WireClient& client, double seconds, Waits& waits);

/// How many instances serve at the same time, the one of this client included: all that can be
/// connected ask before anybody listens.
unsigned ServingInstances(e2e::WireClient& client);

}  // namespace hostile

#endif  // TESTS_HOSTILE_WATCH_H_
