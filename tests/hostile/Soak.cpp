// Keeps the real server busy with what clients ask for on a working day, and looks whether it
// grows. tools/soak.sh starts it.
//
//   soak.exe --requests N --csv FILE
//
// All clients write, then all replies are taken and checked, and so on. The exit code is not 0 when
// a reply was not the right one or an instance was lost.

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/Support.h"
#include "tests/e2e/Clients.h"
#include "tests/hostile/SoakMix.h"
#include "tests/hostile/Surroundings.h"
#include "tests/hostile/Watch.h"

namespace hostile {
namespace {

constexpr std::uint64_t kSamples = 200;

struct Sample {
  double requests;
  double seconds;
  double privateKiB;
  double handles;
  double threads;
  double systemHandles;
  std::uint64_t restarts;
};

Sample Take(const e2e::ServerProcess& server, std::uint64_t requests, double seconds,
            std::uint64_t restarts) {
  const Footprint now = Measure(server);
  return {static_cast<double>(requests),
          seconds,
          static_cast<double>(now.privateBytes) / 1024,
          static_cast<double>(now.handles),
          static_cast<double>(now.threads),
          static_cast<double>(e2e::ServerProcess::HandlesOfAllProcesses()),
          restarts};
}

void Write(const std::vector<Sample>& samples, const std::string& path) {
  std::FILE* const file = std::fopen(path.c_str(), "w");
  if (file == nullptr) bench::Die("%s cannot be written", path.c_str());
  (void)std::fputs("requests,seconds,private_kib,handles,threads,system_handles,restarts\n", file);
  for (const Sample& sample : samples) {
    (void)std::fprintf(file, "%.0f,%.1f,%.0f,%.0f,%.0f,%.0f,%llu\n", sample.requests,
                       sample.seconds, sample.privateKiB, sample.handles, sample.threads,
                       sample.systemHandles, static_cast<unsigned long long>(sample.restarts));
  }
  (void)std::fclose(file);
}

using Clients = std::vector<std::unique_ptr<SoakClient>>;

std::uint64_t Sum(const Clients& clients, std::uint64_t (SoakClient::*count)() const) {
  std::uint64_t sum = 0;
  for (const auto& client : clients) sum += (*client.*count)();
  return sum;
}

// Every client asks, then every client is answered.
void Round(const Clients& clients) {
  for (const auto& client : clients) {
    const auto asked = client->Ask();
    if (!asked) bench::Die("%s", asked.message());
  }
  for (const auto& client : clients) {
    const auto taken = client->Take();
    if (!taken) bench::Die("%s", taken.message());
  }
}

// What the system's loader keeps of each time that the two libraries of a restart are loaded and
// freed, in a process that does nothing else meanwhile: this one.
double LoaderGrowth() {
  constexpr int kWarmUp = 100;
  constexpr int kTurns = 1000;
  const auto privateBytes = [] {
    PROCESS_MEMORY_COUNTERS counters = {};
    counters.cb = sizeof(counters);
    (void)K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    return static_cast<double>(counters.PagefileUsage);
  };
  const auto turn = [] {
    for (const char* const name : {"rstagent9.dll", "ringdiag.dll"}) {
      const HMODULE library = LoadLibraryA(name);
      if (library == nullptr) bench::DieOfLastError(name);
      (void)FreeLibrary(library);
    }
  };
  for (int i = 0; i < kWarmUp; ++i) turn();
  const double before = privateBytes();
  for (int i = 0; i < kTurns; ++i) turn();
  return (privateBytes() - before) / kTurns;
}

bool Run(std::uint64_t requests, const std::string& csv) {
  const Surroundings surroundings(/*faults=*/false);
  e2e::ServerProcess server;
  if (!server.Start()) bench::Die("the server does not start");
  Clients clients = SoakMix(surroundings);

  const std::uint64_t rounds = std::max<std::uint64_t>(requests / clients.size(), 1);
  const std::uint64_t roundsPerSample = std::max<std::uint64_t>(rounds / kSamples, 1);
  std::vector<Sample> samples;
  const double begin = bench::Now();
  for (std::uint64_t round = 1; round <= rounds; ++round) {
    Round(clients);
    if (round % roundsPerSample == 0) {
      samples.push_back(Take(server, round * clients.size(), bench::Now() - begin,
                             Sum(clients, &SoakClient::Restarts)));
      Write(samples, csv);  // for those who watch
    }
  }
  const double seconds = bench::Now() - begin;
  const std::uint64_t connections = Sum(clients, &SoakClient::Connections);
  const std::size_t count = clients.size();
  clients.clear();

  std::printf("%llu requests of %zu clients on %llu connections in %.0f s, every reply right\n",
              static_cast<unsigned long long>(rounds * count), count,
              static_cast<unsigned long long>(connections), seconds);
  const bool serving = static_cast<bool>(e2e::AllInstancesServe());
  std::printf("all 64 instances serve behind it: %s\n", serving ? "ok" : "FAILED");
  std::printf(
      "the loader alone keeps %.0f bytes of each time that a restart's libraries are loaded\n",
      LoaderGrowth());
  return serving;
}

}  // namespace
}  // namespace hostile

int main(int argc, char** argv) {
  std::uint64_t requests = 0;
  std::string csv;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string word = argv[i];
    if (word == "--requests") requests = std::strtoull(argv[i + 1], nullptr, 10);
    if (word == "--csv") csv = argv[i + 1];
  }
  if (requests == 0 || csv.empty()) bench::Die("--requests N and --csv FILE");
  return hostile::Run(requests, csv) ? 0 : 1;
}
