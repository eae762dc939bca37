#ifndef TESTS_SUPPORT_POOLFIXTURE_H_
#define TESTS_SUPPORT_POOLFIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>

#include "server/QorlixSRVPipe.h"
#include "tests/support/WireHex.h"

/// A server object and one instance of its pool that has received a request.
///
/// The instance has no pipe, so a reply stays in its reply buffer, where a test reads it.
class PoolFixture : public testing::Test {
 protected:
  static constexpr int kConId = 7;
  static constexpr std::uint32_t kClient = 4321;  ///< the process at its other end

  PoolFixture();

  /// The instance has received these bytes and nothing of them has been read.
  void Receive(const Bytes& request);
  void Receive(std::string_view hex) { Receive(Wire(hex)); }

  /// As Receive, with the cursor behind the command code, where handlers find it.
  void ReceiveCommand(const Bytes& request);

  /// The reply as it was built so far.
  Bytes Reply() const;

  CQorlixSRVPipe srv_{nullptr};
};

#endif  // TESTS_SUPPORT_POOLFIXTURE_H_
