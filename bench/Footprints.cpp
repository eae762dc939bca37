#include "bench/Footprints.h"

#include "bench/PipeClients.h"
#include "bench/Workload.h"

namespace bench {
namespace {

constexpr unsigned kClients = 64;
constexpr unsigned kWarmUpRounds = 10;

}  // namespace

LifeOfAServer WatchALife(const ServerProgram& program) {
  const ServerProcess server(program);
  LifeOfAServer life = {};
  life.secondsToFirstAnswer = server.SecondsToFirstAnswer();
  life.started = server.Measure();

  const Workload workloads[] = {NoOperation(), LargeRequest(), GetValue(), EnumKey()};
  constexpr unsigned kKinds = 4;
  PipeClients clients(server.PipeName(), kClients);
  for (const Workload& workload : workloads) {
    (void)clients.Burst(workload, kClients * kWarmUpRounds, Pace::ClosedLoop,
                        /*latencies=*/nullptr);
  }
  life.warm = server.Measure();

  for (const Workload& workload : workloads) {
    (void)clients.Burst(workload, kManyRequests / kKinds, Pace::ClosedLoop, /*latencies=*/nullptr);
  }
  life.afterMany = server.Measure();
  return life;
}

}  // namespace bench
