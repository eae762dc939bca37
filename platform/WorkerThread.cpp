#include "platform/WorkerThread.h"

#include <windows.h>

#include <process.h>

#include "platform/GuardedCall.h"

namespace {

// What workers leave of the address space, in one piece. Whoever starts them without end gets as
// many as there is room for; the libraries that others need still have to find some.
constexpr SIZE_T kLeftFree = 128 * 1024 * 1024;

bool IsRoomLeft() {
  void* const room = VirtualAlloc(/*lpAddress=*/nullptr, kLeftFree, MEM_RESERVE, PAGE_NOACCESS);
  return room != nullptr && VirtualFree(room, /*dwSize=*/0, MEM_RELEASE) != FALSE;
}

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
  if (!IsRoomLeft()) return false;
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
