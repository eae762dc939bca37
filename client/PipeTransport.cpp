#include "client/PipeTransport.h"

#include <windows.h>

#include <algorithm>

#include "client/Deadline.h"

namespace client {
namespace {

// GENERIC_WRITE would ask for the right to create further instances of the pipe as well, which the
// server grants to its own user only; other users would be refused.
constexpr DWORD kAccess = GENERIC_READ | FILE_WRITE_DATA;

// What the pipe's access list gives every local user, and what we ask for, both spelled out.
constexpr DWORD kGranted = FILE_GENERIC_READ | FILE_READ_DATA | FILE_WRITE_DATA | FILE_READ_EA |
                           FILE_WRITE_EA | FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES;
constexpr DWORD kAskedFor = FILE_GENERIC_READ | (kAccess & ~GENERIC_READ);
static_assert((kAskedFor & ~kGranted) == 0, "ordinary users could not connect");

// The other end may find out who we are, but not act as us.
constexpr DWORD kFlags = FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

static_assert(kPipeNotFound == ERROR_FILE_NOT_FOUND && kPipeAccessDenied == ERROR_ACCESS_DENIED &&
              kInvalidReply == ERROR_INVALID_DATA && kPipeBusy == ERROR_PIPE_BUSY &&
              kPipeNotConnected == ERROR_PIPE_NOT_CONNECTED && kTimedOut == WAIT_TIMEOUT);
static_assert(IsPipeBroken(ERROR_BROKEN_PIPE) && IsPipeBroken(ERROR_NO_DATA) &&
              IsPipeBroken(ERROR_PIPE_NOT_CONNECTED));

// Waits for one instance to become free. \returns 0 when it is worth trying again.
std::uint32_t WaitForInstance(const char* name, const Deadline& deadline) {
  const std::uint32_t left = deadline.LeftMs();
  if (left == 0) return kPipeBusy;
  if (WaitNamedPipeA(name, left) != FALSE) return 0;
  const DWORD error = GetLastError();
  return error == ERROR_SEM_TIMEOUT ? kPipeBusy : error;
}

// Brings an operation that was started to its end, in time or cancelled.
std::uint32_t Finish(HANDLE pipe, OVERLAPPED& overlapped, std::uint32_t timeoutMs, DWORD& moved) {
  const bool inTime = WaitForSingleObject(overlapped.hEvent, timeoutMs) == WAIT_OBJECT_0;
  if (!inTime) (void)CancelIoEx(pipe, &overlapped);
  // Also behind a cancellation: the buffer is ours again only when the operation has ended, and it
  // may have ended by itself just before.
  if (GetOverlappedResult(pipe, &overlapped, &moved, /*bWait=*/TRUE) != FALSE) return 0;
  const DWORD error = GetLastError();
  return error == ERROR_OPERATION_ABORTED && !inTime ? kTimedOut : error;
}

}  // namespace

std::uint32_t PipeTransport::Open(const char* name, std::uint32_t timeoutMs) noexcept {
  Close();
  event_ = CreateEventA(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                        /*bInitialState=*/FALSE, /*lpName=*/nullptr);
  if (event_ == nullptr) return GetLastError();

  const Deadline deadline(timeoutMs);
  for (;;) {
    const HANDLE pipe =
        CreateFileA(name, kAccess, /*dwShareMode=*/0, /*lpSecurityAttributes=*/nullptr,
                    OPEN_EXISTING, kFlags, /*hTemplateFile=*/nullptr);
    if (pipe != INVALID_HANDLE_VALUE) {
      pipe_ = pipe;
      return 0;
    }
    std::uint32_t error = GetLastError();
    if (error == ERROR_PIPE_BUSY) error = WaitForInstance(name, deadline);
    // Free again does not mean free for us: another client may be faster.
    if (error != 0) {
      Close();
      return error;
    }
  }
}

std::uint32_t PipeTransport::Write(const void* data, std::uint32_t size,
                                   std::uint32_t timeoutMs) noexcept {
  if (pipe_ == nullptr) return kPipeNotConnected;
  OVERLAPPED overlapped = {};
  overlapped.hEvent = event_;
  DWORD written = 0;
  if (WriteFile(pipe_, data, size, &written, &overlapped) == FALSE) {
    const DWORD error = GetLastError();
    if (error != ERROR_IO_PENDING) return error;
    const std::uint32_t result = Finish(pipe_, overlapped, timeoutMs, written);
    if (result != 0) return result;
  }
  return written == size ? 0 : kTimedOut;
}

std::uint32_t PipeTransport::Read(void* data, std::uint32_t capacity, std::uint32_t timeoutMs,
                                  std::uint32_t& received) noexcept {
  received = 0;
  if (pipe_ == nullptr) return kPipeNotConnected;
  OVERLAPPED overlapped = {};
  overlapped.hEvent = event_;
  DWORD arrived = 0;
  if (ReadFile(pipe_, data, capacity, &arrived, &overlapped) == FALSE) {
    const DWORD error = GetLastError();
    if (error != ERROR_IO_PENDING) return error;
    const std::uint32_t result = Finish(pipe_, overlapped, timeoutMs, arrived);
    if (result != 0) return result;
  }
  // A reply is never empty, so a read of nothing is the end.
  if (arrived == 0) return ERROR_BROKEN_PIPE;
  received = arrived;
  return 0;
}

void PipeTransport::Close() noexcept {
  if (pipe_ != nullptr) (void)CloseHandle(pipe_);
  if (event_ != nullptr) (void)CloseHandle(event_);
  pipe_ = nullptr;
  event_ = nullptr;
}

}  // namespace client
