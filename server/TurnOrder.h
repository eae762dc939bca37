#ifndef SERVER_TURNORDER_H_
#define SERVER_TURNORDER_H_

#include <cstdint>

#include "server/PipeInstance.h"

/// Whose turn it is when several instances of the pool are due at the same time.
///
/// - Instances are served in rotation: the next one behind the one that was served last.
/// - Clients of several processes: the processes take turns, the one first that has waited longest,
///   and each process's instances are served in rotation. So who opens many connections has no more
///   turns than others.
/// - Requests and clients that come and go take turns: these cost more calls of the system than an
///   answer does, and there may be many, but who waits for a connection is a client as well.
///
/// Loop thread only; asks nobody, allocates nothing.
class TurnOrder {
 public:
  /// What an instance is due for.
  enum class Due : std::uint8_t {
    Nothing,
    Request,     ///< a request, the read for one, or the end of a reply
    Connection,  ///< a client who has come, or one who is found gone
  };

  static constexpr std::uint32_t kNobody = kPipeInstances;

  /// The client of an instance belongs to a process. To be told at the latest when another request
  /// is due beside its own.
  void Joins(std::uint32_t instance, std::uint32_t process);

  /// The client of an instance is gone.
  void Leaves(std::uint32_t instance);

  /// \returns the instance that has its turn now, kNobody when none is due.
  std::uint32_t Next(const Due (&due)[kPipeInstances]);

  /// An instance has its turn because the system has named it.
  void Takes(std::uint32_t instance, Due due);

 private:
  // One for each instance; what concerns a process is the same in all of its.
  struct Place {
    std::uint32_t process = kClientNotAsked;
    std::uint32_t served = kPipeInstances - 1;  // its process's instance that was served last
    std::uint64_t turn = 0;                     // its process's last one
  };

  bool IsBefore(std::uint32_t instance, std::uint32_t other) const;
  void TakesRequest(std::uint32_t instance);
  void TakesConnection(std::uint32_t instance);
  void Charge(std::uint32_t instance, std::uint64_t turn);

  Place places_[kPipeInstances] = {};
  std::uint64_t turn_ = 1;  // every other number, so that strangers find one between two turns
  std::uint32_t served_ = kPipeInstances - 1;
  std::uint32_t connectionServed_ = kPipeInstances - 1;
  bool isConnectionsTurn_ = false;
};

#endif  // SERVER_TURNORDER_H_
