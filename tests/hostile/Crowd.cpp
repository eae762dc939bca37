#include "tests/hostile/Crowd.h"

#include <windows.h>

#include <atomic>
#include <deque>
#include <string>

#include "bench/Support.h"

namespace hostile {
namespace {

constexpr char kName[] = "QorlixHostileCrowd";
constexpr DWORD kPatienceMs = 60000;
constexpr std::uint32_t kUnderWay = 2;  // rounds after which all have done something

}  // namespace

// What both sides see. Counts are of 32 bits, so that both read them whole.
struct Crowd::Shared {
  std::atomic<std::uint32_t> ending;
  std::atomic<std::uint32_t> rounds;
  std::atomic<std::uint32_t> connections;
  std::atomic<std::uint32_t> writes;
};

// The mapping lives until the process ends, and so serves all crowds of a run.
Crowd::Shared* Crowd::Map() {
  static const HANDLE mapping =
      CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(Shared), kName);
  static void* const view = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(Shared));
  if (view == nullptr) bench::DieOfLastError("mapping what crowd and suite share");
  return static_cast<Shared*>(view);
}

Crowd::Crowd(std::size_t kind) : shared_(Map()) {
  shared_->ending = shared_->rounds = shared_->connections = shared_->writes = 0;
  char path[MAX_PATH] = "";
  (void)GetModuleFileNameA(nullptr, path, sizeof(path));
  std::string line = "\"" + std::string(path) + "\" " + kOption + " " + std::to_string(kind);
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  if (CreateProcessA(path, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                     &started) == FALSE) {
    bench::DieOfLastError("starting the crowd");
  }
  (void)CloseHandle(started.hThread);
  process_ = started.hProcess;
  while (shared_->rounds < kUnderWay) {
    if (WaitForSingleObject(process_, 1) == WAIT_OBJECT_0) bench::Die("the crowd is gone");
  }
}

Crowd::~Crowd() { End(); }

void Crowd::End() {
  if (process_ == nullptr) return;
  shared_->ending = 1;
  if (WaitForSingleObject(process_, kPatienceMs) != WAIT_OBJECT_0) {
    (void)TerminateProcess(process_, 1);
    bench::Die("the crowd does not end");
  }
  (void)CloseHandle(process_);
  process_ = nullptr;
}

std::uint64_t Crowd::Connections() const { return shared_->connections; }
std::uint64_t Crowd::Writes() const { return shared_->writes; }

void Crowd::Drive(std::size_t kind) {
  Shared& shared = *Map();
  const Attack& attack = Attacks()[kind];
  std::deque<Attacker> attackers;
  for (unsigned i = 0; i < kAttackers; ++i) attackers.emplace_back(i);
  while (shared.ending == 0) {
    bool busy = false;
    std::uint64_t connections = 0;
    std::uint64_t writes = 0;
    for (Attacker& attacker : attackers) {
      busy |= attack.step(attacker);
      connections += attacker.Connections();
      writes += attacker.Writes();
    }
    shared.connections = static_cast<std::uint32_t>(connections);
    shared.writes = static_cast<std::uint32_t>(writes);
    ++shared.rounds;
    if (!busy) Sleep(1);
  }
}

}  // namespace hostile
