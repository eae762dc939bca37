#ifndef TESTS_HOSTILE_CROWD_H_
#define TESTS_HOSTILE_CROWD_H_

#include <cstdint>
#include <vector>

#include "tests/hostile/Attacks.h"

namespace hostile {

/// As many as the pool has places beside the one of an honest client.
inline constexpr unsigned kAttackers = 63;

/// A crowd of attackers of one kind, at work until it is told to end.
///
/// It is processes of its own, as attackers are: what threads of one process take from each other
/// within the system, locks above all, is no doing of the server. One thread of each drives its
/// attackers; on a machine with few processors more would take those from the server, which is the
/// scheduler's matter.
class Crowd {
 public:
  /// Starts this program so many times more, 1 to kAttackers, with an option that makes it call
  /// Drive. The attackers are divided among them.
  Crowd(std::size_t kind, unsigned processes);
  ~Crowd();
  Crowd(const Crowd&) = delete;
  Crowd& operator=(const Crowd&) = delete;

  /// Whether every process still attacks: waits until each has begun a round more, for a moment.
  bool StillAttacks() const;
  /// Has them leave, and waits until they have.
  void End();
  /// Attackers that have got a connection so far.
  unsigned Attackers() const;
  std::uint64_t Connections() const;
  std::uint64_t Writes() const;

  /// The side of one of the processes: attacks until the other side ends it.
  static void Drive(std::size_t kind, unsigned process, unsigned processes);

  static constexpr char kOption[] = "--crowd";

 private:
  struct Shared;
  static Shared* Map();
  bool Reaches(std::size_t process, std::uint32_t rounds) const;

  Shared* shared_;
  std::vector<void*> processes_;
};

}  // namespace hostile

#endif  // TESTS_HOSTILE_CROWD_H_
