// Attacks the real server in every way of Attacks.h, one after another, while one client behaves,
// and prints what became of that one and of the server. tools/hostile.sh starts it.
//
//   hostile_suite.exe [--seconds N] [--processes N] [--markdown] [--only PART-OF-A-NAME]

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

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

// What became of one attack.
struct Row {
  std::string name;
  unsigned attackers = 0;
  std::uint64_t connections = 0;
  std::uint64_t writes = 0;
  Waits idle;
  Waits attacked;
  unsigned serving = 0;
  Footprint before;
  Footprint after;
  std::string failures;  // all but waits that are too long
};

Row Try(const ServerProcess& server, WireClient& honest, std::size_t kind, const Options& options) {
  Row row;
  row.name = Attacks()[kind].name;
  row.before = Measure(server);
  bool answered = Watch(honest, options.seconds, row.idle);
  Crowd crowd(kind, options.processes);
  answered = answered && Watch(honest, options.seconds, row.attacked);
  const bool attacks = crowd.StillAttacks();
  row.attackers = crowd.Attackers();
  crowd.End();
  row.connections = crowd.Connections();
  row.writes = crowd.Writes();

  row.serving = ServingInstances(honest);
  const bool handles = static_cast<bool>(server.ComesBackToHandleCount(row.before.handles));
  const bool threads = static_cast<bool>(server.ComesBackToThreadCount(row.before.threads));
  row.after = Measure(server);

  if (!server.IsRunning()) row.failures += " server gone";
  if (!attacks || row.attackers != kAttackers) row.failures += " attackers gone";
  if (!answered) row.failures += " not answered";
  if (row.serving != e2e::kInstances) row.failures += " instances lost";
  if (!handles) row.failures += " handles";
  if (!threads) row.failures += " threads";
  if (row.after.privateBytes > row.before.privateBytes + kNoiseBytes) row.failures += " memory";
  return row;
}

// Of all rows, so that a neighbour's moment on the machine excuses no attack and condemns none.
double IdleP99(const std::vector<Row>& rows) {
  std::vector<double> p99s;
  for (const Row& row : rows) p99s.push_back(row.idle.Quantile(0.99));
  const auto median = p99s.begin() + static_cast<std::ptrdiff_t>(p99s.size() / 2);
  std::nth_element(p99s.begin(), median, p99s.end());
  return std::max(*median, 1e-6);
}

// \returns whether all passed.
bool Print(const std::vector<Row>& rows, bool markdown) {
  const double idleP99 = IdleP99(rows);
  bool passed = true;
  TextTable table;
  table.Add({"Attack", "Clients", "Connections", "Writes", "Idle p50 / p99 / max us",
             "Attacked p50 / p99 / max us", "p99 factor", "Serving of 64", "Handles", "Threads",
             "Private KiB", "Verdict"});
  for (const Row& row : rows) {
    const double factor = row.attacked.Quantile(0.99) / idleP99;
    const std::string failures = row.failures + (factor > kFactor ? " slow" : "");
    passed &= failures.empty();
    table.Add({row.name, std::to_string(row.attackers), std::to_string(row.connections),
               std::to_string(row.writes), Microseconds(row.idle), Microseconds(row.attacked),
               Number(factor, 1), std::to_string(row.serving),
               Change(row.before.handles, row.after.handles),
               Change(row.before.threads, row.after.threads),
               Change(row.before.privateBytes / 1024, row.after.privateBytes / 1024),
               failures.empty() ? "ok" : "FAILED:" + failures});
  }
  table.Print(markdown);
  std::printf("\nFactors are to an idle p99 of %.0f us, the median of the rows'.\n", idleP99 * 1e6);
  return passed;
}

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
      "\nThe 65th client: error %lu%s while 64 others are connected; %s %.1f ms after one of them "
      "left.\n",
      static_cast<unsigned long>(refused),
      refused == ERROR_PIPE_BUSY ? " (all pipe instances are busy)" : "",
      connected ? "served" : "NOT SERVED", (bench::Now() - begin) * 1e3);
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

  std::vector<Row> rows;
  for (std::size_t kind = 0; kind < Attacks().size(); ++kind) {
    const std::string name = Attacks()[kind].name;
    if (name.find(options.only) == std::string::npos) continue;
    (void)std::fprintf(stderr, "%s ...\n", name.c_str());
    rows.push_back(Try(server, honest, kind, options));
  }
  if (rows.empty()) bench::Die("no attack has this in its name: %s", options.only.c_str());
  const bool passed = Print(rows, options.markdown);
  return TryOneMore(honest) && passed;
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
