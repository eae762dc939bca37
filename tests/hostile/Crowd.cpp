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
  struct Process {
    std::atomic<std::uint32_t> rounds;
    std::atomic<std::uint32_t> attackers;
    std::atomic<std::uint32_t> connections;
    std::atomic<std::uint32_t> writes;
  };
  std::atomic<std::uint32_t> ending;
  Process processes[kAttackers];
};

// The mapping lives until the process ends, and so serves all crowds of a run.
Crowd::Shared* Crowd::Map() {
  static const HANDLE mapping =
      CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(Shared), kName);
  static void* const view = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(Shared));
  if (view == nullptr) bench::DieOfLastError("mapping what crowd and suite share");
  return static_cast<Shared*>(view);
}

Crowd::Crowd(std::size_t kind, unsigned processes) : shared_(Map()) {
  shared_->ending = 0;
  for (Shared::Process& process : shared_->processes) {
    process.rounds = process.attackers = process.connections = process.writes = 0;
  }
  char path[MAX_PATH] = "";
  (void)GetModuleFileNameA(nullptr, path, sizeof(path));
  for (unsigned i = 0; i < processes; ++i) {
    std::string line = "\"" + std::string(path) + "\" " + kOption + " " + std::to_string(kind) +
                       " " + std::to_string(i) + " " + std::to_string(processes);
    STARTUPINFOA startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started = {};
    if (CreateProcessA(path, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                       &started) == FALSE) {
      bench::DieOfLastError("starting the crowd");
    }
    (void)CloseHandle(started.hThread);
    processes_.push_back(started.hProcess);
  }
  for (unsigned i = 0; i < processes; ++i) {
    if (!Reaches(i, kUnderWay)) bench::Die("the crowd is gone");
  }
}

bool Crowd::Reaches(std::size_t process, std::uint32_t rounds) const {
  const ULONGLONG end = GetTickCount64() + kPatienceMs;
  while (shared_->processes[process].rounds < rounds) {
    if (WaitForSingleObject(processes_[process], 1) == WAIT_OBJECT_0) return false;
    if (GetTickCount64() > end) return false;
  }
  return true;
}

bool Crowd::StillAttacks() const {
  for (std::size_t i = 0; i < processes_.size(); ++i) {
    if (!Reaches(i, shared_->processes[i].rounds + 1)) return false;
  }
  return true;
}

Crowd::~Crowd() { End(); }

void Crowd::End() {
  shared_->ending = 1;
  for (const HANDLE process : processes_) {
    if (WaitForSingleObject(process, kPatienceMs) != WAIT_OBJECT_0) {
      (void)TerminateProcess(process, 1);
      bench::Die("the crowd does not end");
    }
    (void)CloseHandle(process);
  }
  processes_.clear();
}

unsigned Crowd::Attackers() const {
  unsigned sum = 0;
  for (const Shared::Process& process : shared_->processes) sum += process.attackers;
  return sum;
}

std::uint64_t Crowd::Connections() const {
  std::uint64_t sum = 0;
  for (const Shared::Process& process : shared_->processes) sum += process.connections;
  return sum;
}

std::uint64_t Crowd::Writes() const {
  std::uint64_t sum = 0;
  for (const Shared::Process& process : shared_->processes) sum += process.writes;
  return sum;
}

void Crowd::Drive(std::size_t kind, unsigned process, unsigned processes) {
  Shared& shared = *Map();
  Shared::Process& mine = shared.processes[process];
  const Attack& attack = Attacks()[kind];
  std::deque<Attacker> attackers;
  for (unsigned i = process; i < kAttackers; i += processes) attackers.emplace_back(i);
  while (shared.ending == 0) {
    bool busy = false;
    std::uint32_t connected = 0;
    std::uint64_t connections = 0;
    std::uint64_t writes = 0;
    for (Attacker& attacker : attackers) {
      busy |= attack.step(attacker);
      connected += attacker.Connections() != 0;
      connections += attacker.Connections();
      writes += attacker.Writes();
    }
    mine.attackers = connected;
    mine.connections = static_cast<std::uint32_t>(connections);
    mine.writes = static_cast<std::uint32_t>(writes);
    ++mine.rounds;
    if (!busy) Sleep(1);
  }
}

}  // namespace hostile
