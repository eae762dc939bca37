#ifndef SERVER_PIPEIO_H_
#define SERVER_PIPEIO_H_

#include <cstdint>

#include "platform/WinTypes.h"

/// The pipe as the loop sees it: each function is one call of the platform, and hands back what the
/// call said together with the error it left.
namespace pipe_io {

struct Outcome {
  bool success;         ///< the call returned nonzero
  std::uint32_t error;  ///< last error when it did not
  std::uint32_t count;  ///< bytes moved, where bytes move
};

/// Manual-reset, initially signalled, unnamed. \returns 0 on failure.
HANDLE CreateInstanceEvent();

/// Whether an instance has to be the first of its name: otherwise it fails with access denied.
enum class Claim { Any, First };

/// One instance of a local byte-mode pipe with overlapped I/O.
/// \returns 0 on failure, with the last error in `error`.
HANDLE CreateInstance(const char* name, SECURITY_ATTRIBUTES* security, Claim claim,
                      std::uint32_t& error);

Outcome Connect(HANDLE pipe, OVERLAPPED& overlapped);
Outcome Disconnect(HANDLE pipe);
Outcome Read(HANDLE pipe, void* buffer, std::uint32_t size, OVERLAPPED& overlapped);
Outcome Write(HANDLE pipe, const void* data, std::uint32_t size, OVERLAPPED& overlapped);

/// What became of an overlapped operation; does not wait for it.
Outcome Completion(HANDLE pipe, OVERLAPPED& overlapped);

/// Whether the overlapped operation is through, by a look at memory alone.
bool IsComplete(const OVERLAPPED& overlapped);
/// Whether the operation, which is complete, went well and moved bytes. In the same way.
bool HasTransferred(const OVERLAPPED& overlapped);

/// Cancels an operation that is still outstanding and waits until its overlapped block is free.
void Abandon(HANDLE pipe, OVERLAPPED& overlapped);

void Signal(HANDLE event);
void Unsignal(HANDLE event);

/// Waits for any of `count` events. \returns the platform's wait result; `error` is the last error.
std::uint32_t WaitAny(const HANDLE* events, std::uint32_t count, std::uint32_t milliseconds,
                      std::uint32_t& error);
inline constexpr std::uint32_t kForever = 0xFFFFFFFF;

/// Waits until the clients of all these pipes have read what was written to them, but no longer
/// than told. One that does not read does not keep the others from reading meanwhile.
void FlushAll(const HANDLE* pipes, std::uint32_t count, std::uint32_t milliseconds);
void Close(HANDLE pipe);

/// Milliseconds of a clock that only runs forward.
std::uint64_t Now();

/// The process that opened the pipe as its client; 0 when the system does not tell.
std::uint32_t ClientProcess(HANDLE pipe);

/// Lets other threads run once.
void GiveWay();

/// The address of the platform's error query.
std::uintptr_t ErrorQueryAddress();

}  // namespace pipe_io

#endif  // SERVER_PIPEIO_H_
