#include "codec/HexDump.h"
#include "codec/Wire.h"
#include "server/CommandCode.h"
#include "server/InstanceEvents.h"
#include "server/PipeIo.h"
#include "server/QorlixSRVPipe.h"
#include "server/RequestLog.h"
#include "server/TurnOrder.h"
#include "trace/Zqotrc.h"

namespace {

constexpr char kFct[] = "RunSrvLoop: ";

// Bytes of a request that are shown when its client is gone.
constexpr std::uint32_t kDumpedBytes = 64;

// How often instances whose connect failed outright are looked after.
constexpr std::uint32_t kFailedConnectWaitMs = 100;

// Passes served from memory alone before the system is asked again. Completions reach the thread
// by interrupting it, which a system may put off until the thread waits; a client that always has
// its next request ready must not keep all others from being seen.
constexpr std::uint32_t kPassesWithoutWait = 2 * kPipeInstances;

using Due = TurnOrder::Due;

// What the next pass can do for the instance without a wait. A wait would report it then: every
// operation that completes signals the event, and whoever leaves an instance without one does.
Due DueOf(const PipeInstance& pipe) {
  if (pipe.fPendingIO != 0) {
    if (!pipe_io::IsComplete(pipe.overlapped)) return Due::Nothing;
    return pipe_io::HasTransferred(pipe.overlapped) ? Due::Request : Due::Connection;
  }
  if (pipe.fConnectFailed != 0 || pipe.hPipe == nullptr) return Due::Nothing;
  const bool isLost = pipe.dwState == WRITING_STATE && pipe.ReceivePointer == 0;
  return isLost ? Due::Connection : Due::Request;
}

void LogBegin(int conId, std::uint32_t client) {
  const PipeInstance& pipe = PipeOf(conId);
  std::uint32_t cursor = 0;
  std::uint16_t command = 0;
  (void)wire::Take(pipe.RequestBuffer, pipe.ReceivePointer, cursor, command);
  request_log::Begin(command, conId, client);
}

// \param unsent what is known of the request when no reply has been built
void LogEnd(int conId, std::uint32_t unsent) {
  const PipeInstance& pipe = PipeOf(conId);
  std::uint32_t cursor = sizeof(REPLY_MARK);
  std::uint32_t result = unsent;
  (void)wire::Take(pipe.ReplyBuffer, pipe.cbToWrite, cursor, result);
  request_log::End(result);
}

}  // namespace

// Asked once for each connection: it is a call of the system, and a request is not to cost one
// more.
std::uint32_t CQorlixSRVPipe::ClientOf(int conId) {
  PipeInstance& pipe = PipeOf(conId);
  if (pipe.clientProcess == kClientNotAsked) {
    pipe.clientProcess = pipe_io::ClientProcess(pipe.hPipe);
    turns_->Joins(static_cast<std::uint32_t>(conId), pipe.clientProcess);
  }
  return pipe.clientProcess;
}

// The instance whose turn it is by what memory knows. Processes take turns, so they have to be
// known where several requests are due; who only comes and goes costs no call more.
std::uint32_t CQorlixSRVPipe::NextDue() {
  Due due[kPipeInstances];
  int requests = 0;
  for (int i = 0; i < kPipeInstances; ++i) {
    due[i] = DueOf(PipeOf(i));
    requests += due[i] == Due::Request;
  }
  for (int i = 0; requests > 1 && i < kPipeInstances; ++i) {
    if (due[i] == Due::Request) (void)ClientOf(i);
  }
  return turns_->Next(due);
}

// The wait reports the lowest signalled event, so under load it would starve the high instances,
// and it costs a system call for what memory knows already. So memory is asked first.
std::uint32_t CQorlixSRVPipe::NextInstance() {
  for (;;) {
    if (failedConnects_ > 0 && pipe_io::Now() >= retryAt_) RetryFailedConnects();
    if (++passesWithoutWait_ > kPassesWithoutWait) {
      passesWithoutWait_ = 0;
      (void)pipe_io::WaitAny(InstanceEvents, kPipeInstances, /*milliseconds=*/0, waitError_);
    }

    const std::uint32_t next = NextDue();
    if (next != TurnOrder::kNobody) return next;

    passesWithoutWait_ = 0;
    const std::uint32_t patience = failedConnects_ > 0 ? kFailedConnectWaitMs : pipe_io::kForever;
    const std::uint32_t dwWait =
        pipe_io::WaitAny(InstanceEvents, kPipeInstances, patience, waitError_);
    if (dwWait == WAIT_TIMEOUT && failedConnects_ > 0) continue;
    if (dwWait < kPipeInstances) turns_->Takes(dwWait, DueOf(Pipe[dwWait]));
    return dwWait;
  }
}

std::uint32_t CQorlixSRVPipe::RunSrvLoop() {
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start receiving loop ");
  for (;;) {
    ZQ_TRACE(TRC_PROGRESS, kFct, "while - WaitForMultipleObjects");
    const std::uint32_t dwWait = NextInstance();
    ZQ_TRACE(TRC_PROGRESS, kFct, "WaitForMultipleObjects received Element on dwWait=0x%x", dwWait);
    if (dwWait >= kPipeInstances) {
      ZQ_TRACE(TRC_ERROR, kFct,
               "<< Out of Range dwWait(0x%x) or Server-Timeout reached .. Get ErrorCode=%d", dwWait,
               static_cast<int>(waitError_));
      return 0;
    }

    const int conId = static_cast<int>(dwWait);
    PipeInstance& pipe = PipeOf(conId);
    if (pipe.fPendingIO != 0) {
      const Next next = CompletePending(conId);
      if (next == Next::EndLoop) return 0;
      if (next == Next::NextPass) continue;
    } else {
      ZQ_TRACE(TRC_PROGRESS, kFct, "No Pending Operation -> check Pipe-State");
    }

    switch (pipe.dwState) {
      case READING_STATE:
        StartRead(conId);
        break;
      case WRITING_STATE:
        ServeRequest(conId);
        // A confirmed stop has closed the pool, and nothing is left that could wake the loop.
        if (shutdown_ && AllClosed()) return 0;
        break;
      default:
        ZQ_TRACE(TRC_ERROR, kFct, "<< RunSrvLoop End Invalid pipe state");
        return 0;
    }
  }
}

// Looks at what became of the outstanding operation.
CQorlixSRVPipe::Next CQorlixSRVPipe::CompletePending(int conId) {
  PipeInstance& pipe = PipeOf(conId);
  const pipe_io::Outcome io = pipe_io::Completion(pipe.hPipe, pipe.overlapped);
  if (!io.success && io.error == ERROR_IO_INCOMPLETE) {
    // Woken for nothing. Taken for a failure, it would cost a client, or in CONNECTING_STATE all.
    pipe_io::Unsignal(pipe.overlapped.hEvent);
    if (pipe_io::IsComplete(pipe.overlapped)) pipe_io::Signal(pipe.overlapped.hEvent);
    return Next::NextPass;
  }
  switch (pipe.dwState) {
    case CONNECTING_STATE:
      ZQ_TRACE(TRC_PROGRESS, kFct, "Pending: CONNECTING_STATE");
      if (!io.success) {
        ZQ_TRACE(TRC_ERROR, kFct, "<< Error CONNECTING_STATE ret=%d", static_cast<int>(io.error));
        return Next::EndLoop;
      }
      pipe.fPendingIO = 0;
      pipe.dwState = READING_STATE;
      return Next::Act;

    case READING_STATE:
      ZQ_TRACE(TRC_PROGRESS, kFct, "Pending: READING_STATE");
      if (io.success && io.count != 0) {
        pipe.fPendingIO = 0;
        pipe.dwState = WRITING_STATE;
        pipe.ReceivePointer = io.count;
        return Next::Act;
      }
      TraceLostClient(conId, io.success, io.count);
      DisconnectAndReconnect(conId);
      return Next::NextPass;

    case WRITING_STATE:
      ZQ_TRACE(TRC_PROGRESS, kFct, "Pending: WRITING_STATE");
      if (!io.success || io.count != pipe.cbWriting) {
        ZQ_TRACE(TRC_ERROR, kFct,
                 "Pending: WRITING_STATE: Something is wrong: ->DisconnectAndReconnect");
        DisconnectAndReconnect(conId);
        return Next::NextPass;
      }
      pipe.fPendingIO = 0;
      if (pipe.cbWriteNext != 0) {
        WriteSecondReply(conId);
        return Next::NextPass;
      }
      pipe.dwState = READING_STATE;
      return Next::Act;

    default:
      ZQ_TRACE(TRC_ERROR, kFct, "<< Error Invalid PipeState");
      return Next::EndLoop;
  }
}

void CQorlixSRVPipe::TraceLostClient(int conId, bool success, std::uint32_t count) {
  const PipeInstance& pipe = PipeOf(conId);
  if (!success) ZQ_TRACE(TRC_ERROR, kFct, "fSuccess != Success");
  if (count == 0) {
    ZQ_TRACE(TRC_ERROR, kFct, "cbRet == 0");
  } else {
    TraceHexDump(kFct, pipe.RequestBuffer, kDumpedBytes);
  }
  ZQ_TRACE(TRC_PROGRESS, kFct, "CurrentPointer=0x%x  fPendingIO=0x%x  hPipe=0x%x  Event=0x%x",
           pipe.CurrentPointer, pipe.fPendingIO, HandleNumber(pipe.hPipe),
           HandleNumber(pipe.hEvent));
  ZQ_TRACE(TRC_PROGRESS, kFct,
           "Pending: READING_STATE: Client disconnected ... prepare Pipe for new Client: "
           "->DisconnectAndReconnect");
}

void CQorlixSRVPipe::StartRead(int conId) {
  PipeInstance& pipe = PipeOf(conId);
  ZQ_TRACE(TRC_PROGRESS, kFct, "READING_STATE -> ReadFile: Pipe(%d)=0x%x", conId,
           HandleNumber(pipe.hPipe));
  const pipe_io::Outcome io =
      pipe_io::Read(pipe.hPipe, pipe.RequestBuffer, kPipeBufferSize, pipe.overlapped);
  pipe.ReceivePointer = io.count;

  if (io.success && io.count != 0) {
    // The event stays signalled, so a request that completed at once is served on a later pass.
    pipe.fPendingIO = 0;
    pipe.dwState = WRITING_STATE;
    ZQ_TRACE(TRC_PROGRESS, kFct, "ReadFile: ReceivePointer=%d Byte", static_cast<int>(io.count));
  } else if (!io.success && io.error == ERROR_IO_PENDING) {
    pipe.fPendingIO = 1;
    ZQ_TRACE(TRC_PROGRESS, kFct, "ReadFile: ReceivePointer=%d Byte", static_cast<int>(io.count));
  } else {
    ZQ_TRACE(TRC_ERROR, kFct, "READING_STATE: Something is wrong: ->DisconnectAndReconnect");
    pipe.fPendingIO = 0;
    DisconnectAndReconnect(conId);
  }
}

void CQorlixSRVPipe::ServeRequest(int conId) {
  PipeInstance& pipe = PipeOf(conId);
  ZQ_TRACE(TRC_PROGRESS, kFct, "WRITING_STATE -> GetCommand for Pipe(%d)", conId);
  if (pipe.ReceivePointer == 0) {
    ZQ_TRACE(TRC_ERROR, kFct, "WRITING_STATE: ReceivePointer is wrong: ->DisconnectAndReconnect");
    DisconnectAndReconnect(conId);
  } else {
    SrvResult lResult = SRV_OK;
    SrvResult sendResult = SRV_OK;
    LogBegin(conId, ClientOf(conId));
    Dispatch(conId, lResult, sendResult);
    if (lResult != SRV_OK) {
      ZQ_TRACE(TRC_ERROR, kFct, "Error occured : lResult=0x%x", lResult);
      sendResult = Send(conId, lResult);
    }
    LogEnd(conId, lResult != SRV_OK ? lResult : sendResult);
    if (sendResult != SRV_OK) {
      ZQ_TRACE(TRC_ERROR, kFct, "PipeSend: sendResult != ERROR_SUCCESS => Reconnect Pipe");
      DisconnectAndReconnect(conId);
    }
  }
  pipe.ReceivePointer = 0;
  pipe.cbToWrite = 0;
  pipe.CurrentPointer = 0;
  if (shutdown_) ZQ_TRACE(TRC_PROGRESS, kFct, "Server Shutdown: SHUTDOWN == TRUE");
}
