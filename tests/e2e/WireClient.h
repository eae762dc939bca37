#ifndef TESTS_E2E_WIRECLIENT_H_
#define TESTS_E2E_WIRECLIENT_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>

#include "tests/e2e/Wire.h"

namespace e2e {

/// The name that every client of the server knows.
inline constexpr char kPipeName[] = "\\\\.\\pipe\\QorlixSRVPIPE32";

/// How long a test waits for what must come. Nothing correct ever takes that long.
inline constexpr std::uint32_t kPatienceMs = 5000;

/// A client that speaks in bytes: it knows no command, no field and no reply.
///
/// Every operation has a deadline, so that a server that does not answer fails the test instead of
/// holding it up. Not to be shared between threads.
class WireClient {
 public:
  WireClient();
  ~WireClient();
  WireClient(WireClient&& other);
  WireClient& operator=(WireClient&& other) noexcept;

  /// One attempt to open the pipe. \returns the system's error code, 0 when connected.
  std::uint32_t TryConnect();

  /// Opens the pipe, waiting for a free instance.
  testing::AssertionResult Connect(std::uint32_t milliseconds = kPatienceMs);

  void Close();

  /// Writes all bytes as one write.
  testing::AssertionResult Send(const Bytes& bytes, std::uint32_t milliseconds = kPatienceMs);

  /// Starts a write that may stay pending; there is one at a time. Closing gives it up.
  testing::AssertionResult StartSend(const Bytes& bytes);

  /// Whether the write of StartSend was taken within the time.
  bool SendIsDone(std::uint32_t milliseconds);

  /// Reads until `size` bytes have come. \returns them, or fewer after the deadline or at the end
  /// of the connection.
  Bytes Receive(std::size_t size, std::uint32_t milliseconds = kPatienceMs);

  /// Bytes that wait to be read.
  std::size_t Waiting() const;

  /// Waits until at least `size` bytes wait to be read.
  testing::AssertionResult HasWaiting(std::size_t size, std::uint32_t milliseconds = kPatienceMs);

  /// Sends the request and expects exactly this reply and nothing behind it: the reply to the
  /// `NoOperation` that follows must be the next thing to come.
  testing::AssertionResult Answers(const Bytes& request, const Bytes& reply);

  /// Receives exactly this, and nothing behind it (as above).
  testing::AssertionResult Yields(const Bytes& reply);

  /// Receives exactly this; what comes behind it is left for later.
  testing::AssertionResult YieldsNext(const Bytes& reply, std::uint32_t milliseconds = kPatienceMs);

  /// Sends a `NoOperation` and expects its reply.
  testing::AssertionResult IsServed(std::uint32_t milliseconds = kPatienceMs);

  /// The server has ended the connection, and no byte comes before its end.
  testing::AssertionResult IsBroken(std::uint32_t milliseconds = kPatienceMs);

  /// No byte comes within the time, and the connection stays.
  testing::AssertionResult IsQuiet(std::uint32_t milliseconds);

  /// The pipe handle, for questions about the pipe itself.
  void* Handle() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace e2e

#endif  // TESTS_E2E_WIRECLIENT_H_
