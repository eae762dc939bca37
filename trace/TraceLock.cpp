#include "trace/TraceLock.h"

#include "trace/TraceOutputs.h"
#include "trace/TraceShared.h"
#include "trace/TraceText.h"

namespace zqotrc {
namespace {

/// The error that was reported last; none after a success.
constinit std::uint32_t g_reportedError = 0;
/// How many lines must still get the mutex in a row before one waits for it in full again; not 0
/// since somebody kept it. Whoever lets go of it now and then must not cost the full wait each
/// time.
constinit std::uint32_t g_probation = 0;

bool WaitForMutexInTime() {
  const bool trusted = g_probation == 0;
  const std::uint32_t result =
      WaitForTraceMutex(trusted ? kLockWaitMilliseconds : kHostageWaitMilliseconds);
  if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) {
    if (!trusted) --g_probation;
    return true;
  }
  if (result == WAIT_TIMEOUT) {
    g_probation = kProbationLines;
    if (trusted) {
      SendToDebugger("ERROR: ZqTRC_MUTEX is held by somebody, tracing goes on without it \n");
    }
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
