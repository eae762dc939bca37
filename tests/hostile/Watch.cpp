#include "tests/hostile/Watch.h"

#include <windows.h>

#include <algorithm>

#include "bench/Support.h"
#include "tests/e2e/Clients.h"

namespace hostile {

using e2e::Wire;
using e2e::WireClient;

Footprint Measure(const e2e::ServerProcess& server) {
  return {server.HandleCount(), server.ThreadCount(), server.PrivateBytes()};
}

void Waits::Sort() { std::sort(seconds_.begin(), seconds_.end()); }

double Waits::Quantile(double share) const {
  if (seconds_.empty()) return 0;
  const auto last = static_cast<double>(seconds_.size() - 1);
  return seconds_[static_cast<std::size_t>(share * last + 0.5)];
}

bool Watch(WireClient& client, double seconds, Waits& waits) {
  constexpr std::uint32_t kGivenUpMs = 10000;
  const double end = bench::Now() + seconds;
  for (double begin = bench::Now(); begin < end; begin = bench::Now()) {
    if (!client.IsServed(kGivenUpMs)) return false;
    waits.Add(bench::Now() - begin);
    Sleep(1);
  }
  waits.Sort();
  return true;
}

unsigned ServingInstances(WireClient& client) {
  std::vector<WireClient> others;
  while (others.size() < e2e::kInstances - 1) {
    WireClient other;
    if (!other.Connect()) break;
    others.push_back(std::move(other));
  }
  std::vector<WireClient*> asking = {&client};
  for (WireClient& other : others) asking.push_back(&other);
  std::erase_if(asking, [](WireClient* one) { return !one->Send(Wire("1000")); });
  return static_cast<unsigned>(std::count_if(asking.begin(), asking.end(), [](WireClient* one) {
    return one->YieldsNext(Wire("0400 00000000"));
  }));
}

}  // namespace hostile
