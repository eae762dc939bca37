#include <windows.h>

#include "platform/GuardedCall.h"
#include "server/Diagnostics.h"
#include "server/QorlixSRVPipe.h"
#include "server/SecurityPlan.h"
#include "server/SrvSecurity.h"
#include "server/StrictProfile.h"
#include "timer/ElapsedTimer.h"
#include "trace/Zqotrc.h"

namespace {

constexpr char kSingleInstance[] = "Global\\QORLIXSRV_SINGLE_INSTANCE_42";
constexpr int kEndOfServing = 1;

}  // namespace

/// Process entry. The command line and the other arguments are not used.
///
/// Exit codes: 1 after serving, also when the pool could not be built; 183 when a server runs
/// already; 1338 when the strict profile refuses to serve the pipe without a descriptor, and
/// 1368, from anywhere, when it cannot put a client's identity off; else the error of the security
/// attributes or of the single-instance mutex.
int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  static constexpr char kFct[] = "CreateSRV: ";
  platform::ReserveStackForGuards();

  SrvSecurity general;
  SrvSecurity pipe;
  if (!general.Build(/*mask=*/0, /*mode=*/0)) return static_cast<int>(GetLastError());
  if (!pipe.Build(kPipeClientRights, kModeCurrentUser)) return static_cast<int>(GetLastError());

  zqotrc::Initialise(general.Attributes(), "zqserver_level");
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start Pipe Server");

  // Never waited on: that it exists says that a server runs, in whatever session.
  const HANDLE mutex =
      CreateMutexExA(general.Attributes(), kSingleInstance, /*dwFlags=*/0, SYNCHRONIZE);
  const DWORD error = GetLastError();
  if (mutex == nullptr) {
    ZQ_TRACE(TRC_ERROR, kFct, "Couldn't CreateMutex! LastError = %d", static_cast<int>(error));
    // Here as below: whoever has joined the ring leaves it, or it counts one process for ever.
    zqotrc::ShutDown();
    return static_cast<int>(error);
  }
  if (error == ERROR_ALREADY_EXISTS) {
    ZQ_TRACE(TRC_ERROR, kFct, "Couldn't CreateMutex because ERROR_ALREADY_EXISTS");
    zqotrc::ShutDown();
    (void)CloseHandle(mutex);
    return static_cast<int>(error);
  }
  ZQ_TRACE(TRC_PROGRESS, kFct, "namedMutex erfolgreich angelegt!");

  strict_profile::Read();
  if (strict_profile::RefusesPipe(*pipe.Attributes())) {
    zqotrc::ShutDown();
    (void)CloseHandle(mutex);
    return ERROR_INVALID_SECURITY_DESCR;
  }

  Diagnostics diagnostics;

  // The process's one timer, which lives as long as the server. No command starts it.
  const CElapsedTimer elapsedTimer(general.Attributes());

  auto* const server = new CQorlixSRVPipe(pipe.Attributes());
  (void)server->StartSRV();

  // A watch that waits for the trace keeps its lock, and is not to keep the server from ending.
  if (diagnostics.StopWatch()) zqotrc::ShutDown();
  server->CloseSRV();
  delete server;
  (void)CloseHandle(mutex);
  return kEndOfServing;
}
