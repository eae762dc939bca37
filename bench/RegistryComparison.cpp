#include "bench/RegistryComparison.h"

#include <cstdio>
#include <string>
#include <vector>

#include "bench/Comparison.h"
#include "bench/PipeClients.h"
#include "bench/RegistryWork.h"
#include "bench/Support.h"
#include "bench/Workload.h"

namespace bench {
namespace {

constexpr double kGoal = 1.05;

// One command, or several that follow one another and leave the registry as they found it.
struct Task {
  const char* name;
  std::vector<CommandCode> codes;
  std::vector<Workload> workloads;  // the same, as requests
};

double WorkInProcess(const Task& task, unsigned times) {
  static RegistryAnswer answer;
  const double begin = Now();
  for (unsigned i = 0; i < times; ++i) {
    for (const CommandCode code : task.codes) FindRegistryWork(code)(answer);
  }
  return Now() - begin;
}

double RoundTrip(PipeClients& client, const Workload& workload) {
  return client.Burst(workload, /*requests=*/1, Pace::ClosedLoop, /*latencies=*/nullptr);
}

double AskTheProduct(PipeClients& client, const Task& task, unsigned times) {
  const double begin = Now();
  for (unsigned i = 0; i < times; ++i) {
    for (const Workload& workload : task.workloads) (void)RoundTrip(client, workload);
  }
  return Now() - begin;
}

double RoundTripsAndWork(PipeClients& client, const Task& task, unsigned times) {
  static const Workload kBare = NoOperation();
  static RegistryAnswer answer;
  const double begin = Now();
  for (unsigned i = 0; i < times; ++i) {
    for (const CommandCode code : task.codes) {
      (void)RoundTrip(client, kBare);
      FindRegistryWork(code)(answer);
    }
  }
  return Now() - begin;
}

void PrintHead(unsigned rounds) {
  std::printf(
      "| Command, %u rounds | us: product / bare round trip and the work / the work alone | "
      "Product : the work alone, median (quartiles) | "
      "Product : bare round trip and the work, median (quartiles) | "
      "Noise: the last against itself | Goal | |\n"
      "|---|---|---|---|---|---|---|\n",
      rounds);
}

void CompareTask(const Task& task, PipeClients& product, PipeClients& bare, PipeClients& secondBare,
                 unsigned rounds, double burstSeconds) {
  unsigned times = 8;
  while (AskTheProduct(product, task, times) < burstSeconds) times *= 2;

  const auto noted = [&](std::vector<double>& microseconds, double seconds) {
    microseconds.push_back(seconds * 1e6 / times);
    return seconds;
  };
  std::vector<double> productTimes, roadTimes, workTimes;
  const auto work = [&] { return noted(workTimes, WorkInProcess(task, times)); };
  const auto ask = [&] { return noted(productTimes, AskTheProduct(product, task, times)); };
  const Comparison withWork = Compare(rounds, work, work, ask);
  const Comparison withRoad = Compare(
      rounds, [&] { return noted(roadTimes, RoundTripsAndWork(bare, task, times)); },
      [&] { return RoundTripsAndWork(secondBare, task, times); }, ask);

  const auto text = [](const Ratios& ratios) {
    char buffer[64];
    (void)std::snprintf(buffer, sizeof(buffer), "%.3f (%.3f to %.3f)", ratios.Median(),
                        ratios.LowerQuartile(), ratios.UpperQuartile());
    return std::string(buffer);
  };
  std::printf("| %s | %.1f / %.1f / %.1f | %s | %s | %s | %.2f | %s |\n", task.name,
              Quantile(productTimes, 0.5), Quantile(roadTimes, 0.5), Quantile(workTimes, 0.5),
              text(withWork.product).c_str(), text(withRoad.product).c_str(),
              text(withRoad.noise).c_str(), kGoal,
              withRoad.product.Median() <= kGoal ? "met" : "**missed**");
  std::fflush(stdout);
}

}  // namespace

void CompareRegistryWork(const ServerProgram& product, const ServerProgram (&bare)[2],
                         unsigned rounds, double burstSeconds) {
  using enum CommandCode;
  const Task tasks[] = {
      {"Reg_GetValue", {Reg_GetValue}, {GetValue()}},
      {"Reg_SetValue", {Reg_SetValue}, {SetValue()}},
      {"Reg_EnumKey", {Reg_EnumKey}, {EnumKey()}},
      {"Reg_EnumValue", {Reg_EnumValue}, {EnumValue()}},
      {"Reg_CreateKey, then Reg_DelKey", {Reg_CreateKey, Reg_DelKey}, {CreateKey(), DelKey()}},
      {"Reg_SetValue, then Reg_DelValue", {Reg_SetValue, Reg_DelValue}, {SetValue(), DelValue()}},
  };
  const ServerProcess productProcess(product);
  const ServerProcess bareProcess(bare[0]);
  const ServerProcess secondBareProcess(bare[1]);
  PipeClients productClient(productProcess.PipeName(), 1);
  PipeClients bareClient(bareProcess.PipeName(), 1);
  PipeClients secondBareClient(secondBareProcess.PipeName(), 1);
  PrintHead(rounds);
  for (const Task& task : tasks) {
    CompareTask(task, productClient, bareClient, secondBareClient, rounds, burstSeconds);
  }
}

}  // namespace bench
