// Attacks the real server in every way of Attacks.h, one after another, while one client behaves,
// and prints what became of that one and of the server. tools/hostile.sh starts it.
//
//   hostile_suite.exe [--seconds N] [--processes N] [--markdown] [--only PART-OF-A-NAME]

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/Support.h"
#include "tests/e2e/Clients.h"
#include "tests/e2e/RegistryScratch.h"
#include "tests/hostile/Attacks.h"
#include "tests/hostile/Crowd.h"
#include "tests/hostile/ScratchKey.h"
#include "tests/hostile/TextTable.h"
#include "tests/hostile/Watch.h"

namespace hostile {
namespace {

using e2e::Bytes;
using e2e::ServerProcess;
using e2e::WireClient;

static_assert(kAttackers + 1 == e2e::kInstances);
constexpr double kFactor = 10;                  // of the honest client's p99
constexpr std::size_t kNoiseBytes = 64 * 1024;  // of private memory, which comes in pages
constexpr double kWarmUpSeconds = 0.3;

std::string Number(double value, int digits) {
  char text[32];
  (void)std::snprintf(text, sizeof(text), "%.*f", digits, value);
  return text;
}

std::string Microseconds(const Waits& waits) {
  return Number(waits.Quantile(0.5) * 1e6, 0) + " / " + Number(waits.Quantile(0.99) * 1e6, 0) +
         " / " + Number(waits.Quantile(1) * 1e6, 0);
}

std::string Change(std::size_t before, std::size_t after) {
  return std::to_string(before) + " > " + std::to_string(after);
}

struct Options {
  double seconds = 3;
  unsigned processes = 1;
  bool markdown = false;
  std::string only;
};

// Everything of one row, and whether the server passed.
class Trial {
 public:
  Trial(const ServerProcess& server, WireClient& honest) : server_(server), honest_(honest) {}

  bool Run(std::size_t kind, const Options& options, TextTable& table) {
    const Footprint before = Measure(server_);
    Waits idle, attacked;
    bool answered = Watch(honest_, options.seconds, idle);
    Crowd crowd(kind, options.processes);
    answered = answered && Watch(honest_, options.seconds, attacked);
    crowd.End();

    const unsigned serving = ServingInstances(honest_);
    const bool handles = static_cast<bool>(server_.ComesBackToHandleCount(before.handles));
    const bool threads = static_cast<bool>(server_.ComesBackToThreadCount(before.threads));
    const Footprint after = Measure(server_);
    const double factor =
        answered ? attacked.Quantile(0.99) / std::max(idle.Quantile(0.99), 1e-6) : 0;
    const bool memory = after.privateBytes <= before.privateBytes + kNoiseBytes;

    std::string verdict;
    if (!server_.IsRunning()) verdict += " server gone";
    if (!answered) verdict += " not answered";
    if (factor > kFactor) verdict += " slow";
    if (serving != e2e::kInstances) verdict += " instances lost";
    if (!handles) verdict += " handles";
    if (!threads) verdict += " threads";
    if (!memory) verdict += " memory";
    table.Add({Attacks()[kind].name, std::to_string(kAttackers),
               std::to_string(crowd.Connections()), std::to_string(crowd.Writes()),
               Microseconds(idle), Microseconds(attacked), Number(factor, 1),
               std::to_string(serving), Change(before.handles, after.handles),
               Change(before.threads, after.threads),
               Change(before.privateBytes / 1024, after.privateBytes / 1024),
               verdict.empty() ? "ok" : "FAILED:" + verdict});
    return verdict.empty();
  }

 private:
  const ServerProcess& server_;
  WireClient& honest_;
};

// What the one client more experiences than there are places, until one of the others leaves.
bool TryOneMore(WireClient& honest) {
  std::vector<WireClient> others;
  if (!e2e::ConnectMore(others, kAttackers)) return false;
  WireClient more;
  const std::uint32_t refused = more.TryConnect();
  others.pop_back();
  const double begin = bench::Now();
  const bool connected = static_cast<bool>(more.Connect()) && more.IsServed();
  std::printf(
      "\nThe 65th client: error %lu (all pipe instances are busy) while 64 others are "
      "connected; %s %.1f ms after one of them left.\n",
      static_cast<unsigned long>(refused), connected ? "served" : "NOT SERVED",
      (bench::Now() - begin) * 1e3);
  return refused == ERROR_PIPE_BUSY && connected && honest.IsServed();
}

bool RunAll(const Options& options) {
  e2e::RegistryScratch registry;
  registry.CreateKey(kScratchKey);
  registry.SetValue(kScratchKey, kBigName, REG_SZ, Bytes(kBigLength, 'x') + '\0');
  ServerProcess server;
  WireClient honest;
  if (!server.Start() || !honest.Connect()) bench::Die("the server does not serve");

  // What is touched for the first time counts for nobody.
  for (std::size_t kind = 0; kind < Attacks().size(); ++kind) {
    Waits ignored;
    const Crowd crowd(kind, /*processes=*/1);
    (void)Watch(honest, kWarmUpSeconds, ignored);
  }
  (void)ServingInstances(honest);

  TextTable table;
  table.Add({"Attack", "Clients", "Connections", "Writes", "Idle p50 / p99 / max us",
             "Attacked p50 / p99 / max us", "p99 factor", "Serving of 64", "Handles", "Threads",
             "Private KiB", "Verdict"});
  bool passed = true;
  Trial trial(server, honest);
  for (std::size_t kind = 0; kind < Attacks().size(); ++kind) {
    const std::string name = Attacks()[kind].name;
    if (name.find(options.only) == std::string::npos) continue;
    (void)std::fprintf(stderr, "%s ...\n", name.c_str());
    passed &= trial.Run(kind, options, table);
  }
  table.Print(options.markdown);
  passed &= TryOneMore(honest);
  return passed;
}

}  // namespace
}  // namespace hostile

int main(int argc, char** argv) {
  const auto number = [](const char* text) {
    return static_cast<unsigned>(std::strtoul(text, nullptr, 10));
  };
  if (argc == 5 && std::string(argv[1]) == hostile::Crowd::kOption) {
    hostile::Crowd::Drive(number(argv[2]), number(argv[3]), number(argv[4]));
    return 0;
  }
  hostile::Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--markdown") {
      options.markdown = true;
    } else if (word == "--seconds" && i + 1 < argc) {
      options.seconds = std::strtod(argv[++i], nullptr);
    } else if (word == "--processes" && i + 1 < argc) {
      options.processes = number(argv[++i]);
    } else if (word == "--only" && i + 1 < argc) {
      options.only = argv[++i];
    } else {
      bench::Die("unknown option, or one without its value: %s", argv[i]);
    }
  }
  if (options.seconds < 0.1) bench::Die("at least a tenth of a second for each attack");
  if (options.processes < 1 || options.processes > hostile::kAttackers) {
    bench::Die("1 to %u processes", hostile::kAttackers);
  }
  return hostile::RunAll(options) ? 0 : 1;
}
