#ifndef TESTS_HOSTILE_CROWD_H_
#define TESTS_HOSTILE_CROWD_H_

#include <cstdint>
#include <memory>

#include "tests/hostile/Attacks.h"

namespace hostile {

/// As many as the pool has places beside the one of an honest client.
inline constexpr unsigned kAttackers = 63;

/// A crowd of attackers of one kind, at work until it is told to end.
///
/// It is a process of its own, as attackers are: what threads of one process take from each other
/// within the system, locks above all, is no doing of the server. One thread drives all of them; on
/// a machine with few processors more would take those from the server, which is the scheduler's
/// matter.
class Crowd {
 public:
  /// Starts this program once more, with an option that makes it call Drive.
  explicit Crowd(std::size_t kind);
  ~Crowd();
  Crowd(const Crowd&) = delete;
  Crowd& operator=(const Crowd&) = delete;

  /// Has them leave, and waits until they have.
  void End();
  std::uint64_t Connections() const;
  std::uint64_t Writes() const;

  /// The crowd's side: attacks until the other side ends it.
  static void Drive(std::size_t kind);

  static constexpr char kOption[] = "--crowd";

 private:
  struct Shared;
  static Shared* Map();

  Shared* shared_;
  void* process_ = nullptr;
};

}  // namespace hostile

#endif  // TESTS_HOSTILE_CROWD_H_
