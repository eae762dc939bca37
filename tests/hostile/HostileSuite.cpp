// Attacks the real server in every way of Attacks.h, one after another, while one client behaves,
// and prints what became of that one and of the server. tools/hostile.sh starts it.
//
//   hostile_suite.exe [--seconds N] [--markdown]
//
// Sixty-three attackers, because the pool has sixty-four places and the honest client has one of
// them. One thread drives the attackers: on a machine with few processors, more would take the
// processor from the server, which is a matter of the system's scheduler and not of the server.

#include <windows.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <string>
#include <thread>

#include "bench/Support.h"
#include "tests/e2e/Clients.h"
#include "tests/e2e/RegistryScratch.h"
#include "tests/hostile/Attacks.h"
#include "tests/hostile/TextTable.h"
#include "tests/hostile/Watch.h"

namespace hostile {
namespace {

using e2e::Bytes;
using e2e::ServerProcess;
using e2e::WireClient;

constexpr unsigned kAttackers = e2e::kInstances - 1;
constexpr double kFactor = 10;                  // of the honest client's p99
constexpr std::size_t kNoiseBytes = 64 * 1024;  // of private memory, which comes in pages
constexpr double kWarmUpSeconds = 0.3;

// A crowd of one kind, at work as long as the object lives.
class Crowd {
 public:
  explicit Crowd(const Attack& attack) : attack_(attack) {
    for (unsigned i = 0; i < kAttackers; ++i) attackers_.emplace_back(i);
    thread_ = std::thread([this] { Run(); });
    while (rounds_ < 2) Sleep(1);
  }
  ~Crowd() { End(); }
  Crowd(const Crowd&) = delete;
  Crowd& operator=(const Crowd&) = delete;

  void End() {
    ending_ = true;
    if (thread_.joinable()) thread_.join();
    for (Attacker& attacker : attackers_) attacker.Leave();
  }
  std::uint64_t Connections() const { return Sum(&Attacker::Connections); }
  std::uint64_t Writes() const { return Sum(&Attacker::Writes); }

 private:
  void Run() {
    while (!ending_) {
      bool busy = false;
      for (Attacker& attacker : attackers_) busy |= attack_.step(attacker);
      ++rounds_;
      if (!busy) Sleep(1);
    }
  }
  std::uint64_t Sum(std::uint64_t (Attacker::*count)() const) const {
    std::uint64_t sum = 0;
    for (const Attacker& attacker : attackers_) sum += (attacker.*count)();
    return sum;
  }

  const Attack& attack_;
  std::deque<Attacker> attackers_;
  std::atomic<bool> ending_ = false;
  std::atomic<unsigned> rounds_ = 0;
  std::thread thread_;
};

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

// Everything of one row, and whether the server passed.
class Trial {
 public:
  Trial(const ServerProcess& server, WireClient& honest) : server_(server), honest_(honest) {}

  bool Run(const Attack& attack, double seconds, TextTable& table) {
    const Footprint before = Measure(server_);
    Waits idle, attacked;
    bool answered = Watch(honest_, seconds, idle);
    Crowd crowd(attack);
    answered = answered && Watch(honest_, seconds, attacked);
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
    table.Add({attack.name, std::to_string(kAttackers), std::to_string(crowd.Connections()),
               std::to_string(crowd.Writes()), Microseconds(idle), Microseconds(attacked),
               Number(factor, 1), std::to_string(serving), Change(before.handles, after.handles),
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

bool RunAll(double seconds, bool markdown) {
  e2e::RegistryScratch registry;
  registry.CreateKey(kKey);
  registry.SetValue(kKey, kBigValue, REG_SZ, Bytes(kBigSize, 'x') + '\0');
  ServerProcess server;
  WireClient honest;
  if (!server.Start() || !honest.Connect()) bench::Die("the server does not serve");

  // What is touched for the first time counts for nobody.
  for (const Attack& attack : Attacks()) {
    Waits ignored;
    const Crowd crowd(attack);
    (void)Watch(honest, kWarmUpSeconds, ignored);
  }
  (void)ServingInstances(honest);

  TextTable table;
  table.Add({"Attack", "Clients", "Connections", "Writes", "Idle p50 / p99 / max us",
             "Attacked p50 / p99 / max us", "p99 factor", "Serving of 64", "Handles", "Threads",
             "Private KiB", "Verdict"});
  bool passed = true;
  Trial trial(server, honest);
  for (const Attack& attack : Attacks()) {
    (void)std::fprintf(stderr, "%s ...\n", attack.name);
    passed &= trial.Run(attack, seconds, table);
  }
  table.Print(markdown);
  passed &= TryOneMore(honest);
  return passed;
}

}  // namespace
}  // namespace hostile

int main(int argc, char** argv) {
  double seconds = 3;
  bool markdown = false;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--markdown") {
      markdown = true;
    } else if (word == "--seconds" && i + 1 < argc) {
      seconds = std::strtod(argv[++i], nullptr);
    } else {
      bench::Die("unknown option, or one without its value: %s", argv[i]);
    }
  }
  if (seconds < 0.1) bench::Die("at least a tenth of a second for each attack");
  return hostile::RunAll(seconds, markdown) ? 0 : 1;
}
