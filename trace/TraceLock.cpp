#include "trace/TraceLock.h"

#include "trace/TraceOutputs.h"
#include "trace/TraceShared.h"
#include "trace/TraceText.h"

namespace zqotrc {
namespace {

/// The error that was reported last; none after a success.
constinit std::uint32_t g_reportedError = 0;
/// Whether the last wait for the mutex ended without it.
constinit bool g_isHostage = false;

bool WaitForMutexInTime() {
  const std::uint32_t result =
      WaitForTraceMutex(g_isHostage ? kHostageWaitMilliseconds : kLockWaitMilliseconds);
  if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) {
    g_isHostage = false;
    return true;
  }
  if (result == WAIT_TIMEOUT && !g_isHostage) {
    g_isHostage = true;
    SendToDebugger("ERROR: ZqTRC_MUTEX is held by somebody, tracing goes on without it \n");
  }
  return false;
}

}  // namespace

void EnsureTraceMutex(SECURITY_ATTRIBUTES* security) {
  if (HasTraceMutex()) return;
  const std::uint32_t error = CreateTraceMutex(security);
  if (error != ERROR_SUCCESS && error != g_reportedError) {
    char text[80];
    (void)FormatCut(text, sizeof(text), "ERROR: Can't create ZqTRC_MUTEX, GetLastError()=%d \n",
                    static_cast<int>(error));
    SendToDebugger(text);
  }
  g_reportedError = error;
}

TraceLock::TraceLock(SECURITY_ATTRIBUTES* const& security) {
  EnterProcessLock();
  EnsureTraceMutex(security);
  ownsMutex_ = HasTraceMutex() && WaitForMutexInTime();
}

TraceLock::~TraceLock() {
  if (ownsMutex_) ReleaseTraceMutex();
  LeaveProcessLock();
}

}  // namespace zqotrc
