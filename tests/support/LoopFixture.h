#ifndef TESTS_SUPPORT_LOOPFIXTURE_H_
#define TESTS_SUPPORT_LOOPFIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "server/QorlixSRVPipe.h"
#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/FakePipeIo.h"
#include "tests/support/PoolReset.h"
#include "tests/support/WireHex.h"

/// A server whose pipe is scripted. The script is a list of steps, one per wait of the loop; when
/// it is used up the wait fails, and the loop ends.
class LoopFixture : public testing::Test {
 protected:
  LoopFixture() {
    fake_pipe_io::Reset();
    fake_named_object::Reset();
    fake_board_library::OnStartHardwareDetection();
    ResetPool();
  }

  /// Runs the server over the steps scripted so far.
  void Run() { EXPECT_EQ(srv_.StartSRV(), 0u); }

  /// A client connects, and its request arrives, each in a wait of its own.
  static void ClientSends(int conId, const Bytes& request) {
    fake_pipe_io::OnWait([=] { fake_pipe_io::Complete(conId); });
    fake_pipe_io::OnWait([=] { fake_pipe_io::CompleteRead(conId, request); });
  }
  static void ClientSends(int conId, std::string_view hex) { ClientSends(conId, ::Wire(hex)); }

  /// How often a call stands in the log.
  static std::ptrdiff_t Count(const std::string& call) {
    const std::vector<std::string>& calls = fake_pipe_io::Calls();
    return std::count(calls.begin(), calls.end(), call);
  }

  CQorlixSRVPipe srv_{nullptr};
};

#endif  // TESTS_SUPPORT_LOOPFIXTURE_H_
