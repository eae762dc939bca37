#ifndef CLIENT_PIPETRANSPORT_H_
#define CLIENT_PIPETRANSPORT_H_

#include <cstdint>

#include "client/ServerIdentity.h"

namespace client {

// The platform's codes that the client acts upon.
inline constexpr std::uint32_t kPipeNotFound = 2;
inline constexpr std::uint32_t kPipeAccessDenied = 5;
inline constexpr std::uint32_t kInvalidReply = 13;
inline constexpr std::uint32_t kInvalidPipeName = 123;
inline constexpr std::uint32_t kPipeBusy = 231;
inline constexpr std::uint32_t kPipeNotConnected = 233;
inline constexpr std::uint32_t kTimedOut = 258;
inline constexpr std::uint32_t kCancelled = 1223;

/// Whether the code says that the other end has gone: ERROR_BROKEN_PIPE, ERROR_NO_DATA or
/// ERROR_PIPE_NOT_CONNECTED, depending on how far its closing had come.
constexpr bool IsPipeBroken(std::uint32_t code) noexcept {
  return code == 109 || code == 232 || code == 233;
}

/// One connection to a local byte-mode pipe, with a deadline on everything it does.
///
/// Results are 0 or the platform's error code; times are in milliseconds. A write that did not end
/// well may have moved some of its bytes, so the connection is of no use afterwards; a read that
/// ran out of time has moved none, and may be repeated. For one thread at a time, Interrupt()
/// apart.
class PipeTransport {
 public:
  PipeTransport() noexcept;
  ~PipeTransport();
  PipeTransport(const PipeTransport&) = delete;
  PipeTransport& operator=(const PipeTransport&) = delete;

  /// Connects, and waits for a free instance while all are in use. The server learns who the client
  /// is, but cannot act as the client: another program that has taken the name gains nothing.
  ///
  /// \returns 0; kPipeNotFound when there is no such pipe; kPipeBusy when no instance became free
  ///   in time; kPipeAccessDenied; kCancelled; or another code.
  std::uint32_t Open(const char* name, std::uint32_t timeoutMs) noexcept;
  bool IsOpen() const noexcept { return pipe_ != nullptr; }

  /// What the platform tells of the other end of this connection.
  PipePeer Peer() const noexcept;

  /// Writes all bytes. \returns 0, kTimedOut, kCancelled or another code.
  std::uint32_t Write(const void* data, std::uint32_t size, std::uint32_t timeoutMs) noexcept;
  /// Whether the last write failed at once, so that nobody has seen any of its bytes. Holds beyond
  /// Close().
  bool NothingWasWritten() const noexcept { return nothingWasWritten_; }

  /// Reads what has arrived, at least one byte and at most `capacity`; waits while there is
  /// nothing. \returns 0, kTimedOut, kCancelled or another code; `received` is 0 unless the result
  /// is 0.
  std::uint32_t Read(void* data, std::uint32_t capacity, std::uint32_t timeoutMs,
                     std::uint32_t& received) noexcept;

  void Close() noexcept;

  /// Ends every wait, of now and of later, with kCancelled, until ClearInterrupt(). Any thread may
  /// call it as long as the object lives.
  void Interrupt() noexcept;
  void ClearInterrupt() noexcept;
  bool Interrupted() const noexcept;

 private:
  void* pipe_ = nullptr;  // a HANDLE; 0 when closed
  [[maybe_unused]] void* event_ =
      nullptr;                 // manual reset; of the one operation that is outstanding
  void* interrupt_ = nullptr;  // an event, manual reset; lives as long as the object
  bool nothingWasWritten_ = false;
};

}  // namespace client

#endif  // CLIENT_PIPETRANSPORT_H_
