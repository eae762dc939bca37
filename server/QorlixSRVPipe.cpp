#include "server/QorlixSRVPipe.h"

#include <cstring>

#include "actions/RestartResults.h"
#include "board/boardsvc32.h"
#include "maintenance/StartupRun.h"
#include "platform/GuardedCall.h"
#include "platform/NamedObject.h"
#include "server/BoardControlLock.h"
#include "server/InstanceEvents.h"
#include "server/PipeIo.h"
#include "server/RequestLog.h"
#include "server/StrictProfile.h"
#include "server/TurnOrder.h"
#include "trace/Zqotrc.h"

PipeInstance Pipe[kPipeInstances];

HANDLE InstanceEvents[kPipeInstances];

namespace {

constexpr char kStartEvent[] = "_QorlixSRVStartSRVEvent";

// How long clients have, when the pool is closed, to read what was written to them. With the rest
// of a stop it stays well below the five seconds after which a starter gives up on the process.
constexpr std::uint32_t kFlushMs = 2000;

// How long an instance rests whose connect failed outright, before the next try.
constexpr std::uint64_t kConnectRetryMs = 100;

// Connects that report a client which came and went, before the instance is left for a later try.
constexpr int kConnectAttempts = 8;

}  // namespace

CQorlixSRVPipe::CQorlixSRVPipe(SECURITY_ATTRIBUTES* pipeSecurity)
    : pipeSecurity_(pipeSecurity),
      turns_(std::make_unique<TurnOrder>()),
      restartResults_(std::make_shared<RestartResults>()) {
  for (PipeInstance& pipe : Pipe) {
    pipe.hPipe = nullptr;
    pipe.cbToWrite = 0;
    pipe.CurrentPointer = 0;
    pipe.fConnectFailed = 0;
    pipe.clientProcess = kClientNotAsked;
    std::memcpy(pipe.PipeName, kPipeName, sizeof(kPipeName));
  }
  request_log::Reset();
  CreateBoardControlLock();
}

CQorlixSRVPipe::~CQorlixSRVPipe() {
  (void)BCLockRelease();
  ForgetBoardControlLock();
}

std::uint32_t CQorlixSRVPipe::StartSRV() {
  static constexpr char kFct[] = "StartSRV: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> StartSRV");
  if (!BuildPool()) return 0;

  // Whoever started the server may wait on this event to learn that the pipes exist.
  if (platform::SetEventIfItExists(kStartEvent)) {
    ZQ_TRACE(TRC_PROGRESS, kFct, "_QorlixSRVStartSRVEvent has been set!");
  }

  RunStartupMaintenance(*this);
  std::uint32_t ignored = 0;
  (void)GuardedCall(ignored, [] { return StartHardwareDetection(); });
  return RunSrvLoop();
}

bool CQorlixSRVPipe::BuildPool() {
  static constexpr char kFct[] = "StartSRV: ";
  for (int conId = 0; conId < kPipeInstances; ++conId) {
    PipeInstance& pipe = PipeOf(conId);

    const HANDLE event = pipe_io::CreateInstanceEvent();
    if (event == nullptr) {
      ZQ_TRACE(TRC_ERROR, kFct, "<< Error CreateEvent");
      return false;
    }
    InstanceEvents[conId] = event;
    pipe.overlapped.hEvent = event;
    ZQ_TRACE(TRC_PROGRESS, kFct, "CreateEvent hEvent=0x%x", HandleNumber(event));

    std::uint32_t error = 0;
    pipe.hPipe = CreatePipeInstance(pipe.PipeName, /*isFirst=*/conId == 0, error);
    if (pipe.hPipe == nullptr) {
      ZQ_TRACE(TRC_ERROR, kFct, "<< Error CreateNamedPipe index=%d ret=%d", conId,
               static_cast<int>(error));
      return false;
    }

    ZQ_TRACE(TRC_PROGRESS, kFct, "Call ConnectToNewClient for Connection(%d) Pipe=0x%x", conId,
             HandleNumber(pipe.hPipe));
    BeginConnect(conId);
  }
  return true;
}

// Under the strict profile the first instance has to be the first of its name as well: beside those
// of somebody else clients could not tell whom they meet.
HANDLE CQorlixSRVPipe::CreatePipeInstance(const char* name, bool isFirst, std::uint32_t& error) {
  if (isFirst && strict_profile::IsOn()) {
    const HANDLE pipe = pipe_io::CreateInstance(name, pipeSecurity_, pipe_io::Claim::First, error);
    if (pipe != nullptr || error != ERROR_ACCESS_DENIED ||
        strict_profile::Refuses(strict_profile::Threat::FirstInstance, strict_profile::kNoClient,
                                name)) {
      return pipe;
    }
  }
  return pipe_io::CreateInstance(name, pipeSecurity_, pipe_io::Claim::Any, error);
}

std::uint32_t CQorlixSRVPipe::ConnectToNewClient(HANDLE hPipe, OVERLAPPED* overlapped) {
  static constexpr char kFct[] = "ConnectToNewClient: ";
  const pipe_io::Outcome connect = pipe_io::Connect(hPipe, *overlapped);
  connectError_ = 0;
  if (!connect.success && connect.error == ERROR_IO_PENDING) return 1;
  if (!connect.success && connect.error == ERROR_PIPE_CONNECTED) {
    pipe_io::Signal(overlapped->hEvent);
    return 0;
  }
  connectError_ = connect.error;
  // An overlapped connect has no business to succeed at once either; the read that follows tells.
  // Kept: the number is the address of the error query, not the error.
  ZQ_TRACE(TRC_ERROR, kFct, "ConnectNamedPipe failed with %d",
           static_cast<int>(pipe_io::ErrorQueryAddress()));
  return 0;
}

// Offers an instance to the next client and sets its state.
//
// A connect that the pipe refuses leaves the event unsignalled, so nothing would ever wake the
// instance; one that never reaches a pipe leaves the event as it was, and a signal left over would
// wake the loop for nothing. Unsignalled in both cases: a client that came and went (232) is
// disconnected and the connect repeated at once; after any other failure the loop tries again
// later.
void CQorlixSRVPipe::BeginConnect(int conId) {
  PipeInstance& pipe = PipeOf(conId);
  for (int attempt = 0; attempt < kConnectAttempts; ++attempt) {
    if (attempt > 0) (void)pipe_io::Disconnect(pipe.hPipe);
    pipe.fPendingIO = ConnectToNewClient(pipe.hPipe, &pipe.overlapped);
    if (connectError_ != ERROR_NO_DATA) break;
  }
  pipe.dwState = pipe.fPendingIO != 0 ? CONNECTING_STATE : READING_STATE;
  if (connectError_ != 0) {
    pipe.fConnectFailed = 1;
    pipe_io::Unsignal(pipe.overlapped.hEvent);
    if (failedConnects_++ == 0) retryAt_ = pipe_io::Now() + kConnectRetryMs;
  }
}

void CQorlixSRVPipe::DisconnectAndReconnect(int conId) {
  static constexpr char kFct[] = "DisconnectAndReconnect: ";
  PipeInstance& pipe = PipeOf(conId);
  ZQ_TRACE(TRC_PROGRESS, kFct, "DisconnectAndReconnect for Pipe(%d)", conId);

  // The connect uses the same overlapped block; a write that is still out must not complete into
  // it.
  if (pipe.fPendingIO != 0 && !pipe_io::IsComplete(pipe.overlapped)) {
    pipe_io::Abandon(pipe.hPipe, pipe.overlapped);
  }
  pipe.cbWriteNext = 0;
  pipe.clientProcess = kClientNotAsked;
  turns_->Leaves(static_cast<std::uint32_t>(conId));
  if (!pipe_io::Disconnect(pipe.hPipe).success) {
    ZQ_TRACE(TRC_ERROR, kFct, "DisconnectNamedPipe failed with %d",
             static_cast<int>(pipe_io::ErrorQueryAddress()));
  }
  BeginConnect(conId);
}

void CQorlixSRVPipe::RetryFailedConnects() {
  failedConnects_ = 0;
  for (int conId = 0; conId < kPipeInstances; ++conId) {
    PipeInstance& pipe = PipeOf(conId);
    if (pipe.fConnectFailed == 0) continue;
    pipe.fConnectFailed = 0;
    DisconnectAndReconnect(conId);
  }
}

void CQorlixSRVPipe::CloseSRV() {
  static constexpr char kFct[] = "CloseSRV: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> ClosePipes");
  // Where nobody is connected there is nothing to flush.
  HANDLE connected[kPipeInstances];
  std::uint32_t count = 0;
  for (const PipeInstance& pipe : Pipe) {
    if (pipe.hPipe != nullptr && pipe.dwState != CONNECTING_STATE) connected[count++] = pipe.hPipe;
  }
  pipe_io::FlushAll(connected, count, kFlushMs);

  for (PipeInstance& pipe : Pipe) {
    if (pipe.hPipe == nullptr) continue;
    (void)pipe_io::Disconnect(pipe.hPipe);
    pipe_io::Close(pipe.hPipe);
    pipe.hPipe = nullptr;
  }
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< ClosePipes");
}

bool CQorlixSRVPipe::AllClosed() const {
  for (const PipeInstance& pipe : Pipe) {
    if (pipe.hPipe != nullptr) return false;
  }
  return true;
}
