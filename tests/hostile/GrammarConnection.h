#ifndef TESTS_HOSTILE_GRAMMARCONNECTION_H_
#define TESTS_HOSTILE_GRAMMARCONNECTION_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/e2e/WireClient.h"
#include "tests/hostile/RequestGrammar.h"

namespace hostile {

/// A connection on which every reply is compared with what the description of the commands says
/// about it.
class GrammarConnection {
 public:
  testing::AssertionResult Connect();
  void Close() { client_.Close(); }

  void Load(Shot shot);
  bool IsLoaded() const { return !shot_.writes.empty(); }
  /// Writes the next piece of the shot.
  testing::AssertionResult Fire();
  /// Takes the replies to it.
  testing::AssertionResult Collect();

  /// What was fired last.
  e2e::Bytes Awaited() const;

  std::uint64_t Replies() const { return replies_; }
  /// Connections that the server ended because an answer did not fit a reply.
  std::uint64_t Breaks() const { return breaks_; }

 private:
  enum class Taken : std::uint8_t { Reply, Nothing, End };

  Taken ReceiveMore(std::uint32_t milliseconds);
  testing::AssertionResult CollectOne(const e2e::Bytes& request);
  testing::AssertionResult CollectGrowing(const e2e::Bytes& request);
  testing::AssertionResult CollectHurried(const e2e::Bytes& first, const e2e::Bytes& second);
  testing::AssertionResult Ended(const e2e::Bytes& request);
  testing::AssertionResult Failure(const char* what, const e2e::Bytes& request) const;

  e2e::WireClient client_;
  Shot shot_;
  std::vector<e2e::Bytes> awaited_;
  e2e::Bytes received_;
  std::uint64_t replies_ = 0;
  std::uint64_t breaks_ = 0;
};

}  // namespace hostile

#endif  // TESTS_HOSTILE_GRAMMARCONNECTION_H_
