#include "platform/WorkerThread.h"

#include <windows.h>

#include <process.h>

#include "platform/GuardedCall.h"

namespace {

unsigned __stdcall RunAndDestroy(void* work) {
  const std::unique_ptr<platform::Work> owned(static_cast<platform::Work*>(work));
  platform::ReserveStackForGuards();
  owned->Run();
  return 0;
}

}  // namespace

// Not std::thread: where a thread ends while it is being detached, the tool chain's library takes
// back what belongs to it twice, and then gives it to two later threads at once. One of them runs
// with nothing to do, which ends the process.
bool platform::StartWorker(std::unique_ptr<Work> work) {
  Work* const handedOver = work.release();
  const auto thread = reinterpret_cast<HANDLE>(
      _beginthreadex(/*security=*/nullptr, /*stack_size=*/0, RunAndDestroy, handedOver,
                     /*initflag=*/0, /*thrdaddr=*/nullptr));
  if (thread == nullptr) {
    delete handedOver;
    return false;
  }
  (void)CloseHandle(thread);
  return true;
}
