// Compares the product with the yardstick server over their pipes, and prints the results as
// Markdown. bench/run.sh is the one command that starts it with everything it needs.
//
//   pipeload.exe --server EXE --yardstick EXE [--quick]
//   pipeload.exe --server EXE --yardstick EXE --registry [--quick]
//   pipeload.exe --server EXE --yardstick EXE --count ROUNDTRIPS
//   pipeload.exe --server EXE --tracing [--quick]
//   pipeload.exe --self --yardstick EXE
//
// The second compares the registry commands with the same registry calls in this process, the
// fourth the product with itself under different trace configurations. The last puts one more
// yardstick in the product's place: what it prints is what the method makes of two equal servers.
//
// Everything, the servers included, is meant to run on one processor: then the time of a burst is
// the work of all sides added up, and not the luck of a scheduler with two processors.

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "bench/Comparison.h"
#include "bench/Footprints.h"
#include "bench/PipeClients.h"
#include "bench/RegistryComparison.h"
#include "bench/RequestCounting.h"
#include "bench/ServerProcess.h"
#include "bench/Support.h"
#include "bench/TracedLoad.h"
#include "bench/Workload.h"

namespace bench {
namespace {

struct Plan {
  double burstSeconds;
  unsigned rounds;
  unsigned starts;         // rounds of the comparison of start-up times
  double fairnessSeconds;  // per server
  double guestSeconds;     // per place of the occasional client
};
constexpr Plan kFull = {0.040, 18, 8, 2.0, 0.20};
constexpr Plan kQuick = {0.010, 3, 2, 0.5, 0.10};

constexpr unsigned kBusyClients = 16;
constexpr double kGuestPeriod = 0.005;

struct Programs {
  ServerProgram product;
  ServerProgram yardstick[2];
  ServerProgram registryYardstick[2];
  ServerProgram laterYardstick[2];
};

// The three that a comparison needs, running.
struct Servers {
  explicit Servers(const ServerProgram& first, const ServerProgram& second,
                   const ServerProgram& theProduct)
      : yardstick(first), secondYardstick(second), product(theProduct) {}
  ServerProcess yardstick;
  ServerProcess secondYardstick;
  ServerProcess product;
};

double Microseconds(double seconds) { return seconds * 1e6; }

const char* Verdict(bool met) { return met ? "met" : "**missed**"; }

// --- Times ---

void PrintTimeHead() {
  std::printf(
      "| Load | Clients | Product : yardstick, median (quartiles) | Noise: yardstick : yardstick | "
      "Goal | p50 us, product / yardstick | p99 us, product / yardstick | |\n"
      "|---|---|---|---|---|---|---|---|\n");
}

void PrintTimeRow(const char* name, unsigned clients, const Comparison& comparison, double goal,
                  const Latencies& product, const Latencies& yardstick) {
  std::printf(
      "| %s | %u | %.3f (%.3f to %.3f) | %.3f (%.3f to %.3f) | %.2f | %.1f / %.1f | "
      "%.1f / %.1f | %s |\n",
      name, clients, comparison.product.Median(), comparison.product.LowerQuartile(),
      comparison.product.UpperQuartile(), comparison.noise.Median(),
      comparison.noise.LowerQuartile(), comparison.noise.UpperQuartile(), goal,
      Microseconds(Quantile(product, 0.5)), Microseconds(Quantile(yardstick, 0.5)),
      Microseconds(Quantile(product, 0.99)), Microseconds(Quantile(yardstick, 0.99)),
      Verdict(comparison.product.Median() <= goal));
  std::fflush(stdout);
}

// Round trips that make a burst long enough, a multiple of the connections.
unsigned BurstSize(PipeClients& clients, const Workload& workload, Pace pace, double seconds) {
  unsigned size = clients.Count() * 8;
  for (;;) {
    const double taken = clients.Burst(workload, size, pace, /*latencies=*/nullptr);
    if (taken >= seconds) return size;
    size *= 2;
  }
}

void CompareLoad(const Plan& plan, const Servers& servers, const Workload& workload,
                 const char* name, unsigned clients, Pace pace, double goal) {
  PipeClients yardstick(servers.yardstick.PipeName(), clients);
  PipeClients second(servers.secondYardstick.PipeName(), clients);
  PipeClients product(servers.product.PipeName(), clients);
  const unsigned size = BurstSize(yardstick, workload, pace, plan.burstSeconds);

  Latencies yardstickTimes, productTimes;
  const Comparison comparison = Compare(
      plan.rounds, [&] { return yardstick.Burst(workload, size, pace, &yardstickTimes); },
      [&] { return second.Burst(workload, size, pace, /*latencies=*/nullptr); },
      [&] { return product.Burst(workload, size, pace, &productTimes); });
  PrintTimeRow(name, clients, comparison, goal, productTimes, yardstickTimes);
}

double Storm(const ServerProcess& server, const Workload& workload, unsigned connects,
             Latencies& latencies) {
  const double begin = Now();
  for (unsigned i = 0; i < connects; ++i) latencies.push_back(OneShot(server.PipeName(), workload));
  return Now() - begin;
}

void CompareStorms(const Plan& plan, const Servers& servers, double goal) {
  const Workload workload = NoOperation();
  Latencies yardstickTimes, productTimes, ignored;
  unsigned connects = 16;
  while (Storm(servers.yardstick, workload, connects, ignored) < plan.burstSeconds) connects *= 2;
  const Comparison comparison = Compare(
      plan.rounds, [&] { return Storm(servers.yardstick, workload, connects, yardstickTimes); },
      [&] { return Storm(servers.secondYardstick, workload, connects, ignored); },
      [&] { return Storm(servers.product, workload, connects, productTimes); });
  PrintTimeRow("connect, one request, close", 1, comparison, goal, productTimes, yardstickTimes);
}

// --- Fairness ---

double FastestToSlowest(const ServerProcess& server, double seconds) {
  PipeClients clients(server.PipeName(), 64);
  const std::vector<unsigned> served = clients.Saturate(NoOperation(), seconds);
  const auto [slowest, fastest] = std::minmax_element(served.begin(), served.end());
  if (*slowest == 0) return std::numeric_limits<double>::infinity();
  return static_cast<double>(*fastest) / static_cast<double>(*slowest);
}

// The occasional client takes every place in turn: which instance of the pool serves a connection
// is the system's choice, and the worst one is wanted.
Latencies GuestLatencies(const ServerProcess& server, double seconds) {
  PipeClients clients(server.PipeName(), kBusyClients + 1);
  Latencies all, busy;
  for (unsigned place = 0; place <= kBusyClients; ++place) {
    const Latencies some =
        clients.BesideBusyOnes(NoOperation(), place, seconds, kGuestPeriod, busy);
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

void CompareFairness(const Plan& plan, const Servers& servers) {
  const double product = FastestToSlowest(servers.product, plan.fairnessSeconds);
  const double yardstick = FastestToSlowest(servers.yardstick, plan.fairnessSeconds);
  constexpr double kGoal = 1.25;
  std::printf("\n| Fairness | Product | Yardstick | Goal | |\n|---|---|---|---|---|\n");
  std::printf("| fastest to slowest of 64 clients in %.1f s | %.3f | %.3f | %.2f | %s |\n",
              plan.fairnessSeconds, product, yardstick, kGoal, Verdict(product <= kGoal));

  const Latencies guestOfProduct = GuestLatencies(servers.product, plan.guestSeconds);
  const Latencies guestOfYardstick = GuestLatencies(servers.yardstick, plan.guestSeconds);
  constexpr double kStarved = 0.025;  // many turns of all the others
  std::printf("| occasional client beside %u busy ones, median us | %.0f | %.0f | | |\n",
              kBusyClients, Microseconds(Quantile(guestOfProduct, 0.5)),
              Microseconds(Quantile(guestOfYardstick, 0.5)));
  std::printf("| the same, p99 us | %.0f | %.0f | | |\n",
              Microseconds(Quantile(guestOfProduct, 0.99)),
              Microseconds(Quantile(guestOfYardstick, 0.99)));
  std::printf("| the same, longest of %u waits, us | %.0f | %.0f | %.0f | %s |\n",
              static_cast<unsigned>(guestOfProduct.size()),
              Microseconds(Quantile(guestOfProduct, 1)),
              Microseconds(Quantile(guestOfYardstick, 1)), Microseconds(kStarved),
              Verdict(Quantile(guestOfProduct, 1) <= kStarved));
  std::fflush(stdout);
}

// --- Start-up and memory ---

void CompareStarts(const Plan& plan, const Programs& programs) {
  std::vector<double> productTimes, yardstickTimes;
  const auto start = [](const ServerProgram& program, std::vector<double>* times) {
    const ServerProcess server(program);
    if (times != nullptr) times->push_back(server.SecondsToFirstAnswer());
    return server.SecondsToFirstAnswer();
  };
  const Comparison comparison = Compare(
      plan.starts, [&] { return start(programs.yardstick[0], &yardstickTimes); },
      [&] { return start(programs.yardstick[1], /*times=*/nullptr); },
      [&] { return start(programs.product, &productTimes); });

  constexpr double kGoal = 1.50;
  std::printf(
      "\n| Start-up | Product : yardstick, median (quartiles) | Noise | Goal | "
      "Product ms | Yardstick ms | |\n|---|---|---|---|---|---|---|\n");
  std::printf(
      "| process creation to first answer | %.3f (%.3f to %.3f) | %.3f | %.2f | %.1f | "
      "%.1f | %s |\n",
      comparison.product.Median(), comparison.product.LowerQuartile(),
      comparison.product.UpperQuartile(), comparison.noise.Median(), kGoal,
      Quantile(productTimes, 0.5) * 1e3, Quantile(yardstickTimes, 0.5) * 1e3,
      Verdict(comparison.product.Median() <= kGoal));
  std::fflush(stdout);
}

unsigned Kilobytes(std::size_t bytes) { return static_cast<unsigned>(bytes / 1024); }

void PrintMemoryRow(const char* name, std::size_t product, std::size_t yardstick, double goal) {
  const double ratio = static_cast<double>(product) / static_cast<double>(yardstick);
  std::printf("| %s | %u | %u | %.3f |", name, Kilobytes(product), Kilobytes(yardstick), ratio);
  if (goal > 0) {
    std::printf(" %.2f | %s |\n", goal, Verdict(ratio <= goal));
  } else {
    std::printf(" | |\n");
  }
}

void CompareMemory(const Programs& programs) {
  const LifeOfAServer product = WatchALife(programs.product);
  const LifeOfAServer yardstick = WatchALife(programs.registryYardstick[0]);
  std::printf(
      "\n| Memory, KiB | Product | Yardstick | Ratio | Goal | |\n|---|---|---|---|---|---|\n");
  PrintMemoryRow("peak, library pages included", product.afterMany.peakWorkingSet,
                 yardstick.afterMany.peakWorkingSet, /*goal=*/1.15);
  PrintMemoryRow("own committed memory, behind the first answer", product.started.committed,
                 yardstick.started.committed, /*goal=*/0);
  PrintMemoryRow("the same, after 64 clients with every kind of request", product.warm.committed,
                 yardstick.warm.committed, /*goal=*/0);

  const auto growth = [](std::size_t before, std::size_t after) {
    return static_cast<long>(after / 1024) - static_cast<long>(before / 1024);
  };
  const auto resident = [&](const LifeOfAServer& life) {
    return growth(life.warm.workingSet, life.afterMany.workingSet);
  };
  const auto committed = [&](const LifeOfAServer& life) {
    return growth(life.warm.committed, life.afterMany.committed);
  };
  const auto handles = [](const LifeOfAServer& life) {
    return static_cast<long>(life.afterMany.handles) - static_cast<long>(life.warm.handles);
  };
  std::printf("| growth of resident memory over %u requests | %ld | %ld | | 0 | %s |\n",
              kManyRequests, resident(product), resident(yardstick),
              Verdict(resident(product) <= 0));
  std::printf("| growth of committed memory over the same | %ld | %ld | | 0 | %s |\n",
              committed(product), committed(yardstick), Verdict(committed(product) <= 0));
  std::printf("| handles, and their growth over the same | %u, %ld | %u, %ld | | 0 | %s |\n",
              product.afterMany.handles, handles(product), yardstick.afterMany.handles,
              handles(yardstick), Verdict(handles(product) <= 0));
  std::fflush(stdout);
}

// --- The whole ---

void CompareAll(const Plan& plan, const Programs& programs) {
  PrintTimeHead();
  {
    const Servers servers(programs.yardstick[0], programs.yardstick[1], programs.product);
    for (const unsigned clients : {1U, 8U, 64U}) {
      CompareLoad(plan, servers, NoOperation(), "NoOperation", clients, Pace::ClosedLoop, 1.05);
    }
    for (const unsigned clients : {1U, 8U}) {
      CompareLoad(plan, servers, LargeRequest(), "8192-byte request", clients, Pace::ClosedLoop,
                  1.05);
    }
    CompareStorms(plan, servers, 1.10);
    for (const unsigned clients : {1U, 8U}) {
      CompareLoad(plan, servers, NoOperation(), "pipelined NoOperation", clients, Pace::Pipelined,
                  1.10);
    }
  }
  {
    const Servers servers(programs.registryYardstick[0], programs.registryYardstick[1],
                          programs.product);
    for (const Workload& workload : {GetValue(), SetValue(), EnumKey()}) {
      for (const unsigned clients : {1U, 8U, 64U}) {
        CompareLoad(plan, servers, workload, workload.name, clients, Pace::ClosedLoop, 1.05);
      }
    }
  }
  {
    const Servers servers(programs.laterYardstick[0], programs.laterYardstick[1], programs.product);
    for (const unsigned clients : {8U, 64U}) {
      CompareLoad(plan, servers, NoOperation(), "NoOperation, yardstick reads a turn later",
                  clients, Pace::ClosedLoop, 1.05);
    }
    CompareLoad(plan, servers, GetValue(), "Reg_GetValue, yardstick reads a turn later", 64,
                Pace::ClosedLoop, 1.05);
  }
  {
    const Servers servers(programs.yardstick[0], programs.yardstick[1], programs.product);
    CompareFairness(plan, servers);
  }
  CompareStarts(plan, programs);
  CompareMemory(programs);
}

struct Options {
  std::string server;
  std::string yardstick;
  bool quick = false;
  bool self = false;
  bool tracing = false;
  bool registry = false;
  unsigned countedRoundTrips = 0;
};

Options Parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    const bool hasValue = i + 1 < argc;
    if (name == "--quick") {
      options.quick = true;
    } else if (name == "--self") {
      options.self = true;
    } else if (name == "--tracing") {
      options.tracing = true;
    } else if (name == "--registry") {
      options.registry = true;
    } else if (name == "--server" && hasValue) {
      options.server = argv[++i];
    } else if (name == "--yardstick" && hasValue) {
      options.yardstick = argv[++i];
    } else if (name == "--count" && hasValue) {
      options.countedRoundTrips = static_cast<unsigned>(std::strtoul(argv[++i], nullptr, 10));
    } else {
      Die("unknown option, or one without its value: %s", argv[i]);
    }
  }
  if (options.server.empty() != options.self || options.yardstick.empty() != options.tracing) {
    Die("--server and --yardstick name the two programs");
  }
  return options;
}

ServerProgram Product(const Options& options) {
  return {"product", "\"" + options.server + "\"", "\\\\.\\pipe\\QorlixSRVPIPE32"};
}

ServerProgram Yardstick(const Options& options, const char* pipe, const char* extra,
                        const char* label = "yardstick") {
  return {label, "\"" + options.yardstick + "\" " + pipe + extra,
          std::string("\\\\.\\pipe\\") + pipe};
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  using namespace bench;
  const Options options = Parse(argc, argv);
  const Programs programs = {
      options.self ? Yardstick(options, "QorlixYardstick5", " registry", "product")
                   : Product(options),
      {Yardstick(options, "QorlixYardstick1", ""), Yardstick(options, "QorlixYardstick2", "")},
      {Yardstick(options, "QorlixYardstick3", " registry"),
       Yardstick(options, "QorlixYardstick4", " registry")},
      {Yardstick(options, "QorlixYardstick6", " registry later", "later"),
       Yardstick(options, "QorlixYardstick7", " registry later", "later")}};
  const Plan& plan = options.quick ? kQuick : kFull;
  const RegistryFixture fixture;
  if (options.tracing) {
    CompareTracing(programs.product, plan.rounds, plan.burstSeconds);
  } else if (options.registry) {
    CompareRegistryWork(programs.product, programs.yardstick, plan.rounds, plan.burstSeconds);
  } else if (options.countedRoundTrips > 0) {
    CountRequests(programs.registryYardstick[0], options.countedRoundTrips);
    CountRequests(programs.laterYardstick[0], options.countedRoundTrips);
    CountRequests(programs.product, options.countedRoundTrips);
  } else {
    CompareAll(plan, programs);
  }
  return 0;
}
