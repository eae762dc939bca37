#include "client/PipeTransport.h"

#include <windows.h>

#include <aclapi.h>

#include <algorithm>
#include <cstring>

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
              kPipeNotConnected == ERROR_PIPE_NOT_CONNECTED && kTimedOut == WAIT_TIMEOUT &&
              kCancelled == ERROR_CANCELLED);
static_assert(IsPipeBroken(ERROR_BROKEN_PIPE) && IsPipeBroken(ERROR_NO_DATA) &&
              IsPipeBroken(ERROR_PIPE_NOT_CONNECTED));

// That wait cannot be interrupted, so it is made in pieces.
constexpr DWORD kPieceMs = 100;

bool IsSet(HANDLE event) {
  return event != nullptr && WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

// Waits for one instance to become free. \returns 0 when it is worth trying again.
std::uint32_t WaitForInstance(const char* name, HANDLE interrupt, const Deadline& deadline) {
  const std::uint32_t left = deadline.LeftMs();
  if (left == 0) return kPipeBusy;
  if (IsSet(interrupt)) return kCancelled;
  if (WaitNamedPipeA(name, std::min<DWORD>(left, kPieceMs)) != FALSE) return 0;
  const DWORD error = GetLastError();
  return error == ERROR_SEM_TIMEOUT ? 0 : error;
}

// Brings an operation that was started to its end, in time or cancelled.
std::uint32_t Finish(HANDLE pipe, OVERLAPPED& overlapped, HANDLE interrupt, std::uint32_t timeoutMs,
                     DWORD& moved) {
  const HANDLE either[] = {overlapped.hEvent, interrupt};
  const DWORD first =
      WaitForMultipleObjects(interrupt != nullptr ? 2 : 1, either, /*bWaitAll=*/FALSE, timeoutMs);
  const bool inTime = first == WAIT_OBJECT_0;
  if (!inTime) (void)CancelIoEx(pipe, &overlapped);
  // Also behind a cancellation: the buffer is ours again only when the operation has ended, and it
  // may have ended by itself just before.
  if (GetOverlappedResult(pipe, &overlapped, &moved, /*bWait=*/TRUE) != FALSE) return 0;
  const DWORD error = GetLastError();
  if (error != ERROR_OPERATION_ABORTED || inTime) return error;
  return first == WAIT_OBJECT_0 + 1 ? kCancelled : kTimedOut;
}

bool Is(PSID sid, WELL_KNOWN_SID_TYPE type) { return IsWellKnownSid(sid, type) != FALSE; }

// The account named Administrator at first, of the machine or of a domain: alone among the elevated
// it may own what it creates itself.
bool IsBuiltInAdministrator(PSID sid) {
  constexpr SID_IDENTIFIER_AUTHORITY kNt = SECURITY_NT_AUTHORITY;
  constexpr BYTE kParts = 5;
  return std::memcmp(GetSidIdentifierAuthority(sid), &kNt, sizeof(kNt)) == 0 &&
         *GetSidSubAuthorityCount(sid) == kParts &&
         *GetSidSubAuthority(sid, 0) == SECURITY_NT_NON_UNIQUE &&
         *GetSidSubAuthority(sid, kParts - 1) == DOMAIN_USER_RID_ADMIN;
}

// Whether the process of this user owns what belongs to this SID: the user, or the one that the
// user's token names as the owner of what he creates.
bool IsThisUser(PSID sid) {
  HANDLE token = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) return false;
  alignas(TOKEN_USER) BYTE told[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
  DWORD size = 0;
  const bool isUser = GetTokenInformation(token, TokenUser, told, sizeof(told), &size) != FALSE &&
                      EqualSid(reinterpret_cast<const TOKEN_USER*>(told)->User.Sid, sid) != FALSE;
  const bool isOwner = GetTokenInformation(token, TokenOwner, told, sizeof(told), &size) != FALSE &&
                       EqualSid(reinterpret_cast<const TOKEN_OWNER*>(told)->Owner, sid) != FALSE;
  (void)CloseHandle(token);
  return isUser || isOwner;
}

PipeOwner OwnerOf(HANDLE pipe) {
  PSID sid = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  const DWORD error =
      GetSecurityInfo(pipe, SE_KERNEL_OBJECT, OWNER_SECURITY_INFORMATION, &sid,
                      /*ppsidGroup=*/nullptr, /*ppDacl=*/nullptr, /*ppSacl=*/nullptr, &descriptor);
  if (error != ERROR_SUCCESS) return PipeOwner::Unknown;
  PipeOwner owner = PipeOwner::Other;
  if (sid == nullptr || IsValidSid(sid) == FALSE) {
    owner = PipeOwner::Unknown;
  } else if (Is(sid, WinBuiltinAdministratorsSid) || IsBuiltInAdministrator(sid)) {
    owner = PipeOwner::Administrators;
  } else if (Is(sid, WinLocalSystemSid)) {
    owner = PipeOwner::System;
  } else if (IsThisUser(sid)) {
    owner = PipeOwner::CurrentUser;
  }
  (void)LocalFree(descriptor);
  return owner;
}

}  // namespace

PipeTransport::PipeTransport() noexcept
    // Without it, which takes a system out of handles, nothing can be interrupted.
    : interrupt_(CreateEventA(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                              /*bInitialState=*/FALSE, /*lpName=*/nullptr)) {}

PipeTransport::~PipeTransport() {
  Close();
  if (interrupt_ != nullptr) (void)CloseHandle(interrupt_);
}

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
    if (error == ERROR_PIPE_BUSY) error = WaitForInstance(name, interrupt_, deadline);
    // Free again does not mean free for us: another client may be faster.
    if (error != 0) {
      Close();
      return error;
    }
  }
}

PipePeer PipeTransport::Peer() const noexcept {
  PipePeer peer;
  if (pipe_ == nullptr) return peer;
  ULONG processId = 0;
  if (GetNamedPipeServerProcessId(pipe_, &processId) != FALSE) peer.processId = processId;
  peer.owner = OwnerOf(pipe_);
  return peer;
}

std::uint32_t PipeTransport::Write(const void* data, std::uint32_t size,
                                   std::uint32_t timeoutMs) noexcept {
  nothingWasWritten_ = pipe_ == nullptr;
  if (pipe_ == nullptr) return kPipeNotConnected;
  OVERLAPPED overlapped = {};
  overlapped.hEvent = event_;
  DWORD written = 0;
  if (WriteFile(pipe_, data, size, &written, &overlapped) == FALSE) {
    const DWORD error = GetLastError();
    nothingWasWritten_ = error != ERROR_IO_PENDING;
    if (nothingWasWritten_) return error;
    const std::uint32_t result = Finish(pipe_, overlapped, interrupt_, timeoutMs, written);
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
    const std::uint32_t result = Finish(pipe_, overlapped, interrupt_, timeoutMs, arrived);
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

void PipeTransport::Interrupt() noexcept {
  if (interrupt_ != nullptr) (void)SetEvent(interrupt_);
}

void PipeTransport::ClearInterrupt() noexcept {
  if (interrupt_ != nullptr) (void)ResetEvent(interrupt_);
}

bool PipeTransport::Interrupted() const noexcept { return IsSet(interrupt_); }

}  // namespace client
