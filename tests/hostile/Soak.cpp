// Keeps the real server busy with what clients ask for on a working day, and looks whether it
// grows. tools/soak.sh starts it.
//
//   soak.exe --requests N --csv FILE
//
// All clients write, then all replies are taken and checked, and so on. The exit code is 1 when a
// reply was not the right one, when an instance was lost, or when the line through the last three
// quarters of the samples climbs by more than is allowed.

#include <windows.h>

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
};

// A figure that has to stay flat.
struct Figure {
  const char* name;
  double Sample::*value;
  double allowed;  ///< climb from the begin to the end of the line
};
constexpr Figure kFigures[] = {
    {"private KiB", &Sample::privateKiB, 64},
    {"handles", &Sample::handles, 4},
    {"threads", &Sample::threads, 2},
    {"handles of all processes", &Sample::systemHandles, 8},
};

Sample Take(const e2e::ServerProcess& server, std::uint64_t requests, double seconds) {
  const Footprint now = Measure(server);
  return {static_cast<double>(requests),
          seconds,
          static_cast<double>(now.privateBytes) / 1024,
          static_cast<double>(now.handles),
          static_cast<double>(now.threads),
          static_cast<double>(e2e::ServerProcess::HandlesOfAllProcesses())};
}

// The climb of the straight line that fits the last three quarters best.
double Climb(const std::vector<Sample>& samples, double Sample::*value) {
  const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 4);
  const auto count = static_cast<double>(samples.end() - begin);
  double x = 0;
  double y = 0;
  for (auto sample = begin; sample != samples.end(); ++sample) {
    x += sample->requests / count;
    y += (*sample).*value / count;
  }
  double products = 0;
  double squares = 0;
  for (auto sample = begin; sample != samples.end(); ++sample) {
    products += (sample->requests - x) * ((*sample).*value - y);
    squares += (sample->requests - x) * (sample->requests - x);
  }
  return squares > 0 ? products / squares * (samples.back().requests - begin->requests) : 0;
}

bool IsFlat(const std::vector<Sample>& samples) {
  bool flat = true;
  for (const Figure& figure : kFigures) {
    const double climb = Climb(samples, figure.value);
    const bool kept = climb <= figure.allowed;
    flat &= kept;
    std::printf("%-24s %8.0f at the begin, %8.0f at the end; the line climbs by %.1f of %.0f: %s\n",
                figure.name, samples.front().*figure.value, samples.back().*figure.value, climb,
                figure.allowed, kept ? "ok" : "FAILED");
  }
  return flat;
}

void Write(const std::vector<Sample>& samples, const std::string& path) {
  std::FILE* const file = std::fopen(path.c_str(), "w");
  if (file == nullptr) bench::Die("%s cannot be written", path.c_str());
  (void)std::fputs("requests,seconds,private_kib,handles,threads,system_handles\n", file);
  for (const Sample& sample : samples) {
    (void)std::fprintf(file, "%.0f,%.1f,%.0f,%.0f,%.0f,%.0f\n", sample.requests, sample.seconds,
                       sample.privateKiB, sample.handles, sample.threads, sample.systemHandles);
  }
  (void)std::fclose(file);
}

// Every client asks, then every client is answered.
void Round(const std::vector<std::unique_ptr<SoakClient>>& clients) {
  for (const auto& client : clients) {
    const auto asked = client->Ask();
    if (!asked) bench::Die("%s", asked.message());
  }
  for (const auto& client : clients) {
    const auto taken = client->Take();
    if (!taken) bench::Die("%s", taken.message());
  }
}

bool Run(std::uint64_t requests, const std::string& csv) {
  const Surroundings surroundings(/*faults=*/false);
  e2e::ServerProcess server;
  if (!server.Start()) bench::Die("the server does not start");
  std::vector<std::unique_ptr<SoakClient>> clients = SoakMix(surroundings);

  const std::uint64_t rounds = std::max<std::uint64_t>(requests / clients.size(), 1);
  const std::uint64_t roundsPerSample = std::max<std::uint64_t>(rounds / kSamples, 1);
  std::vector<Sample> samples;
  const double begin = bench::Now();
  for (std::uint64_t round = 1; round <= rounds; ++round) {
    Round(clients);
    if (round % roundsPerSample == 0) {
      samples.push_back(Take(server, round * clients.size(), bench::Now() - begin));
      Write(samples, csv);  // for those who watch
    }
  }
  const double seconds = bench::Now() - begin;
  std::uint64_t connections = 0;
  for (const auto& client : clients) connections += client->Connections();
  const std::size_t count = clients.size();
  clients.clear();

  std::printf("%llu requests of %zu clients on %llu connections in %.0f s, every reply right\n",
              static_cast<unsigned long long>(rounds * count), count,
              static_cast<unsigned long long>(connections), seconds);
  const bool flat = IsFlat(samples);
  const bool serving = static_cast<bool>(e2e::AllInstancesServe());
  std::printf("all 64 instances serve behind it: %s\n", serving ? "ok" : "FAILED");
  return flat && serving;
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
