#include "server/BoardControlLock.h"

#include "platform/NamedObject.h"
#include "platform/WinTypes.h"
#include "server/QorlixSRVPipe.h"

namespace {

constexpr char kLockName[] = "QorlixSrv_BC_Lock_Mutex";
constexpr std::uint32_t kLockWaitMs = 30000;

HANDLE g_boardControlLock = nullptr;

bool IsUsable(HANDLE handle) {
  constexpr std::intptr_t kInvalid = -1;
  return handle != nullptr && reinterpret_cast<std::intptr_t>(handle) != kInvalid;
}

}  // namespace

void CreateBoardControlLock() {
  if (g_boardControlLock == nullptr) g_boardControlLock = platform::CreateNamedMutex(kLockName);
}

void ForgetBoardControlLock() { g_boardControlLock = nullptr; }

std::uint32_t CQorlixSRVPipe::BCLockWait() {
  if (!IsUsable(g_boardControlLock)) return ERROR_INVALID_HANDLE;
  return platform::WaitForMutex(g_boardControlLock, kLockWaitMs);
}

std::uint32_t CQorlixSRVPipe::BCLockRelease() {
  if (!IsUsable(g_boardControlLock)) return 1;
  platform::ReleaseNamedMutex(g_boardControlLock);
  return 0;
}
