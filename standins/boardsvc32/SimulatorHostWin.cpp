#include <windows.h>

#include "standins/boardsvc32/SimulatorHost.h"

namespace boardsim::host {

namespace {

constexpr char kBoardLock[] = "QorlixSrv_BC_Lock_Mutex";

DWORD WINAPI Probe(void* raw) {
  auto& state = *static_cast<LockState*>(raw);
  const HANDLE mutex = OpenMutexA(SYNCHRONIZE, FALSE, kBoardLock);
  if (mutex == nullptr) return 0;
  switch (WaitForSingleObject(mutex, 0)) {
    case WAIT_OBJECT_0:
    case WAIT_ABANDONED:
      ReleaseMutex(mutex);
      state = LockState::kFree;
      break;
    case WAIT_TIMEOUT:
      state = LockState::kHeld;
      break;
    default:
      break;
  }
  CloseHandle(mutex);
  return 0;
}

}  // namespace

LockState ProbeBoardLock() {
  LockState state = LockState::kNone;
  const HANDLE thread = CreateThread(nullptr, 0, Probe, &state, 0, nullptr);
  if (thread == nullptr) return state;
  (void)WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  return state;
}

}  // namespace boardsim::host
