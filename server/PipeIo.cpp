#include "server/PipeIo.h"

#include <windows.h>

#include "server/PipeInstance.h"

namespace pipe_io {
namespace {

constexpr DWORD kDefaultTimeoutMs = 5000;

Outcome Of(BOOL returned, DWORD count = 0) {
  return {returned != FALSE, returned != FALSE ? ERROR_SUCCESS : GetLastError(), count};
}

DWORD WINAPI FlushThread(void* ownPipe) {
  (void)FlushFileBuffers(ownPipe);
  (void)CloseHandle(ownPipe);
  return 0;
}

// Starts a thread that flushes on a handle of its own, so that closing ours cannot make it flush
// whatever comes to bear the same handle next. \returns null on failure.
HANDLE StartFlush(HANDLE pipe) {
  HANDLE ownPipe = nullptr;
  if (DuplicateHandle(GetCurrentProcess(), pipe, GetCurrentProcess(), &ownPipe,
                      /*dwDesiredAccess=*/0, /*bInheritHandle=*/FALSE,
                      DUPLICATE_SAME_ACCESS) == FALSE) {
    return nullptr;
  }
  // Up to 64 of them at once: a full stack each would be much address space for one call.
  constexpr SIZE_T kStackSize = 65536;
  const HANDLE thread =
      CreateThread(/*lpThreadAttributes=*/nullptr, kStackSize, FlushThread, ownPipe,
                   STACK_SIZE_PARAM_IS_A_RESERVATION, /*lpThreadId=*/nullptr);
  if (thread == nullptr) (void)CloseHandle(ownPipe);
  return thread;
}

}  // namespace

HANDLE CreateInstanceEvent() {
  return CreateEventA(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE, /*bInitialState=*/TRUE,
                      /*lpName=*/nullptr);
}

HANDLE CreateInstance(const char* name, SECURITY_ATTRIBUTES* security, Claim claim,
                      std::uint32_t& error) {
  const DWORD first = claim == Claim::First ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0;
  const HANDLE pipe = CreateNamedPipeA(
      name, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | first,
      PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, kPipeInstances,
      kPipeBufferSize, kPipeBufferSize, kDefaultTimeoutMs, security);
  error = GetLastError();
  return pipe == INVALID_HANDLE_VALUE ? nullptr : pipe;
}

Outcome Connect(HANDLE pipe, OVERLAPPED& overlapped) {
  return Of(ConnectNamedPipe(pipe, &overlapped));
}

Outcome Disconnect(HANDLE pipe) { return Of(DisconnectNamedPipe(pipe)); }

Outcome Read(HANDLE pipe, void* buffer, std::uint32_t size, OVERLAPPED& overlapped) {
  DWORD count = 0;
  const BOOL returned = ReadFile(pipe, buffer, size, &count, &overlapped);
  return Of(returned, count);
}

Outcome Write(HANDLE pipe, const void* data, std::uint32_t size, OVERLAPPED& overlapped) {
  DWORD count = 0;
  const BOOL returned = WriteFile(pipe, data, size, &count, &overlapped);
  return Of(returned, count);
}

Outcome Completion(HANDLE pipe, OVERLAPPED& overlapped) {
  DWORD count = 0;
  const BOOL returned = GetOverlappedResult(pipe, &overlapped, &count, /*bWait=*/FALSE);
  return Of(returned, count);
}

bool IsComplete(const OVERLAPPED& overlapped) {
  // Written behind our back by the system, with the rest of the block before it.
  const volatile ULONG_PTR& status = overlapped.Internal;
  return status != static_cast<ULONG_PTR>(STATUS_PENDING);
}

bool HasTransferred(const OVERLAPPED& overlapped) {
  const volatile OVERLAPPED& block = overlapped;
  return block.Internal == ERROR_SUCCESS && block.InternalHigh != 0;
}

void Abandon(HANDLE pipe, OVERLAPPED& overlapped) {
  (void)CancelIoEx(pipe, &overlapped);
  DWORD count = 0;
  (void)GetOverlappedResult(pipe, &overlapped, &count, /*bWait=*/TRUE);
}

void Signal(HANDLE event) { (void)SetEvent(event); }

void Unsignal(HANDLE event) { (void)ResetEvent(event); }

std::uint32_t WaitAny(const HANDLE* events, std::uint32_t count, std::uint32_t milliseconds,
                      std::uint32_t& error) {
  static_assert(kPipeInstances <= MAXIMUM_WAIT_OBJECTS);
  const DWORD result = WaitForMultipleObjects(count, events, /*bWaitAll=*/FALSE, milliseconds);
  error = result == WAIT_FAILED ? GetLastError() : ERROR_SUCCESS;
  return result;
}

void FlushAll(const HANDLE* pipes, std::uint32_t count, std::uint32_t milliseconds) {
  // A flush waits for its reader without a limit, so each gets a thread of its own; the disconnect
  // that follows ends those that are still waiting.
  HANDLE threads[MAXIMUM_WAIT_OBJECTS];
  DWORD started = 0;
  for (std::uint32_t i = 0; i < count && started < MAXIMUM_WAIT_OBJECTS; ++i) {
    threads[started] = StartFlush(pipes[i]);
    if (threads[started] != nullptr) ++started;
  }
  if (started == 0) return;
  (void)WaitForMultipleObjects(started, threads, /*bWaitAll=*/TRUE, milliseconds);
  for (DWORD i = 0; i < started; ++i) (void)CloseHandle(threads[i]);
}

void Close(HANDLE pipe) { (void)CloseHandle(pipe); }

std::uint64_t Now() { return GetTickCount64(); }

std::uint32_t ClientProcess(HANDLE pipe) {
  ULONG id = 0;
  return GetNamedPipeClientProcessId(pipe, &id) != FALSE ? id : 0;
}

void GiveWay() { Sleep(0); }

std::uintptr_t ErrorQueryAddress() { return reinterpret_cast<std::uintptr_t>(&GetLastError); }

}  // namespace pipe_io
