#include "bench/TracedLoad.h"

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <cstdio>

#include "bench/Comparison.h"
#include "bench/PipeClients.h"
#include "bench/Support.h"
#include "bench/Workload.h"
#include "tests/support/RegistryKeyScratch.h"

namespace bench {
namespace {

constexpr double kGoal = 1.05;

/// Memory that the running server shares.
class SharedWords {
 public:
  explicit SharedWords(const char* name)
      : section_(OpenFileMappingA(FILE_MAP_WRITE, /*bInheritHandle=*/FALSE, name)),
        words_(static_cast<std::uint32_t*>(
            MapViewOfFile(section_, FILE_MAP_WRITE, /*dwFileOffsetHigh=*/0, /*dwFileOffsetLow=*/0,
                          /*dwNumberOfBytesToMap=*/0))) {
    if (words_ == nullptr) DieOfLastError(name);
  }
  ~SharedWords() {
    (void)UnmapViewOfFile(words_);
    (void)CloseHandle(section_);
  }
  SharedWords(const SharedWords&) = delete;
  SharedWords& operator=(const SharedWords&) = delete;

  std::atomic_ref<std::uint32_t> First() const { return std::atomic_ref(words_[0]); }

 private:
  HANDLE section_;
  std::uint32_t* words_;
};

struct Tracing {
  const char* level;
  const char* mask;
  bool writesLines;
};
constexpr Tracing kOff = {"0", "0xFFFFFFFF", false};
constexpr Tracing kNothingWanted = {"0xFFFFFFFF", "0", false};
constexpr Tracing kEverything = {"0xFFFFFFFF", "0xFFFFFFFF", true};

void Set(const RegistryKeyScratch& key, const Tracing& tracing) {
  key.SetText("Level", tracing.level);
  key.SetText("zqserver_level", tracing.mask);
}

/// The server that is switched over, and its clients.
class TracedServer {
 public:
  TracedServer(const ServerProgram& product, const RegistryKeyScratch& key, unsigned clients)
      : key_(key), server_(product), clients_(server_.PipeName(), clients) {}

  void ChooseSize(double seconds) {
    size_ = clients_.Count() * 8;
    while (Burst(kOff) < seconds) size_ *= 2;
  }

  double Burst(const Tracing& tracing) {
    Set(key_, tracing);
    ++generation_.First();
    // The first line behind the change takes it up, and may be written itself: outside of the time.
    (void)clients_.Burst(workload_, clients_.Count() * 2, Pace::ClosedLoop, /*latencies=*/nullptr);
    const std::uint32_t filledBefore = ring_.First();
    const double seconds =
        clients_.Burst(workload_, size_, Pace::ClosedLoop, /*latencies=*/nullptr);
    if ((ring_.First() != filledBefore) != tracing.writesLines) {
      Die("with level %s and mask %s the ring was%s filled", tracing.level, tracing.mask,
          tracing.writesLines ? " not" : "");
    }
    return seconds;
  }

 private:
  const RegistryKeyScratch& key_;
  ServerProcess server_;
  PipeClients clients_;
  SharedWords generation_{"Global\\ZqTRACE_SECTION"};
  SharedWords ring_{"Global\\ZqSDD_Trace"};
  Workload workload_ = NoOperation();
  unsigned size_ = 0;
};

void PrintRow(const char* what, unsigned clients, const Comparison& comparison, double goal) {
  std::printf("| %s | %u | %.3f (%.3f to %.3f) | %.3f (%.3f to %.3f) |", what, clients,
              comparison.product.Median(), comparison.product.LowerQuartile(),
              comparison.product.UpperQuartile(), comparison.noise.Median(),
              comparison.noise.LowerQuartile(), comparison.noise.UpperQuartile());
  if (goal > 0) {
    std::printf(" %.2f | %s |\n", goal, comparison.product.Median() <= goal ? "met" : "**missed**");
  } else {
    std::printf(" | |\n");
  }
  std::fflush(stdout);
}

}  // namespace

void CompareTracing(const ServerProgram& product, unsigned rounds, double burstSeconds) {
  const RegistryKeyScratch key(kTraceKey);
  key.SetText("Output", "SM");
  std::printf(
      "| NoOperation, %u rounds | Clients | Against tracing off, median (quartiles) | "
      "Noise: off : off | Goal | |\n|---|---|---|---|---|---|\n",
      rounds);
  for (const unsigned clients : {1U, 8U}) {
    Set(key, kOff);
    TracedServer server(product, key, clients);
    server.ChooseSize(burstSeconds);
    const auto off = [&] { return server.Burst(kOff); };
    const Comparison nothing =
        Compare(rounds, off, off, [&] { return server.Burst(kNothingWanted); });
    const Comparison everything =
        Compare(rounds / 4 + 1, off, off, [&] { return server.Burst(kEverything); });
    PrintRow("level set, nothing wanted", clients, nothing, kGoal);
    PrintRow("every line into the ring", clients, everything, /*goal=*/0);
  }
}

}  // namespace bench
