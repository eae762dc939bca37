#ifndef TESTS_HOSTILE_ATTACKS_H_
#define TESTS_HOSTILE_ATTACKS_H_

#include <cstdint>
#include <span>

#include "tests/e2e/Wire.h"
#include "tests/e2e/WireClient.h"

namespace hostile {

/// One hostile client. It is moved on step by step and never waits, so that one thread can drive
/// a crowd of them.
class Attacker {
 public:
  explicit Attacker(unsigned place) : place_(place), random_(place + 1) {}

  /// A number of its own, from 0.
  unsigned Place() const { return place_; }
  bool Connected() const { return connected_; }
  std::uint64_t Connections() const { return connections_; }
  std::uint64_t Writes() const { return writes_; }

  /// One attempt to connect. \returns false when no instance is free.
  bool Connect();
  void Leave();
  /// Starts a write. \returns false when the one before has not been taken yet, or nobody is there.
  bool Write(const e2e::Bytes& bytes);
  /// Takes what has been answered. \returns whether there was something.
  bool Read();

  /// Steps since it connected for which nothing of its writing was taken.
  unsigned stuck = 0;
  /// What the kind of attack counts.
  unsigned phase = 0;

  /// A number below `limit`, the same in every run.
  std::uint32_t Random(std::uint32_t limit);

 private:
  unsigned place_;
  std::uint32_t random_;
  e2e::WireClient client_;
  bool connected_ = false;
  std::uint64_t connections_ = 0;
  std::uint64_t writes_ = 0;
};

/// A way to be hostile.
struct Attack {
  const char* name;
  /// Moves the client on. \returns false when there was nothing to do.
  bool (*step)(Attacker& attacker);
};

/// All of them; the last is a mixture of the others.
std::span<const Attack> Attacks();

}  // namespace hostile

#endif  // TESTS_HOSTILE_ATTACKS_H_
