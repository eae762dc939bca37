#include "bench/RequestCounting.h"

#include <windows.h>

#include "bench/Marks.h"
#include "bench/PipeClients.h"
#include "bench/Workload.h"

namespace bench {
namespace {

constexpr unsigned kConnections[] = {1, 8, 64};
constexpr unsigned kMost = 64;
constexpr unsigned kWarmUp = 256;
constexpr DWORD kIdleMs = 3000;

// One series of marks: server, workload, connections, the server's thread and what begins.
class Series {
 public:
  Series(const ServerProcess& server, const char* label, const char* workload, unsigned connections)
      : label_(label),
        workload_(workload),
        connections_(connections),
        serverThread_(server.ThreadId()) {}

  void Begin(const char* what) const {
    Mark("bench-mark;%s;%s;%u;%04lx;%s;", label_, workload_, connections_, serverThread_, what);
  }
  static void End() { EndMark(); }

 private:
  const char* label_;
  const char* workload_;
  unsigned connections_;
  DWORD serverThread_;
};

}  // namespace

void CountRequests(const ServerProgram& program, unsigned roundTrips) {
  const ServerProcess server(program);
  for (const unsigned connections : kConnections) {
    PipeClients clients(server.PipeName(), connections);
    const Workload workloads[] = {NoOperation(), GetValue(), SetValue(), EnumKey()};
    for (const Workload& workload : workloads) {
      const Series series(server, program.label, workload.name, connections);
      const auto burst = [&](unsigned size) {
        (void)clients.Burst(workload, size, Pace::ClosedLoop, /*latencies=*/nullptr);
      };
      burst(kWarmUp);
      series.Begin("once");
      burst(roundTrips);
      Series::End();
      series.Begin("twice");
      burst(2 * roundTrips);
      Series::End();
    }
    if (connections != kMost) continue;
    const Series idle(server, program.label, "idle", connections);
    idle.Begin("idle");
    Sleep(kIdleMs);
    Series::End();
  }
}

}  // namespace bench
