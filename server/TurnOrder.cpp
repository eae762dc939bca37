#include "server/TurnOrder.h"

namespace {

// How many instances lie between, in rotation.
std::uint32_t Distance(std::uint32_t from, std::uint32_t to) {
  return (to + kPipeInstances - 1 - from) % kPipeInstances;
}

}  // namespace

void TurnOrder::Joins(std::uint32_t instance, std::uint32_t process) {
  // A process nobody knew begins behind those who wait already, or the next stranger would always
  // be first; and before the one that had the last turn.
  Place joined = {process, served_, turn_ - 1};
  const Place alone = places_[instance];
  for (const Place& place : places_) {
    if (place.process == process) joined = place;
  }
  places_[instance] = joined;
  // The turn that it had before its process was known was its process's.
  if (alone.turn > joined.turn) Charge(instance, alone.turn);
}

void TurnOrder::Leaves(std::uint32_t instance) { places_[instance] = {}; }

bool TurnOrder::IsBefore(std::uint32_t instance, std::uint32_t other) const {
  const Place& one = places_[instance];
  const Place& two = places_[other];
  if (one.turn != two.turn) return one.turn < two.turn;
  return Distance(one.served, instance) < Distance(two.served, other);
}

std::uint32_t TurnOrder::Next(const Due (&due)[kPipeInstances]) {
  std::uint32_t request = kNobody;
  std::uint32_t connection = kNobody;
  for (std::uint32_t i = 0; i < kPipeInstances; ++i) {
    if (due[i] == Due::Request) {
      if (request == kNobody || IsBefore(i, request)) request = i;
    } else if (due[i] == Due::Connection) {
      if (connection == kNobody ||
          Distance(connectionServed_, i) < Distance(connectionServed_, connection)) {
        connection = i;
      }
    }
  }

  if (connection != kNobody && (request == kNobody || isConnectionsTurn_)) {
    TakesConnection(connection);
    return connection;
  }
  if (request == kNobody) return kNobody;
  TakesRequest(request);
  isConnectionsTurn_ = connection != kNobody;
  return request;
}

void TurnOrder::Takes(std::uint32_t instance, Due due) {
  if (due == Due::Request) TakesRequest(instance);
  if (due == Due::Connection) TakesConnection(instance);
}

void TurnOrder::TakesRequest(std::uint32_t instance) {
  turn_ += 2;
  served_ = instance;
  Charge(instance, turn_);
}

void TurnOrder::Charge(std::uint32_t instance, std::uint64_t turn) {
  const std::uint32_t process = places_[instance].process;
  for (Place& place : places_) {
    const bool isOfProcess =
        process == kClientNotAsked ? &place == &places_[instance] : place.process == process;
    if (!isOfProcess) continue;
    place.served = instance;
    place.turn = turn;
  }
}

void TurnOrder::TakesConnection(std::uint32_t instance) {
  isConnectionsTurn_ = false;
  connectionServed_ = instance;
}
