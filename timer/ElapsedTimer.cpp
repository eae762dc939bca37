#include "timer/ElapsedTimer.h"

#include <chrono>
#include <exception>

#include "platform/NamedObject.h"
#include "platform/WallClock.h"
#include "trace/Zqotrc.h"

namespace {

constexpr char kMutexName[] = "Global\\SetOpenTCPConnections";
constexpr std::uint32_t kStepMs = 1000;
constexpr std::uint32_t kEndStepMs = 10;

}  // namespace

CElapsedTimer::~CElapsedTimer() {
  cnt_ = 0;
  while (IsWorkerRunning()) platform::SleepMilliseconds(kEndStepMs);
  mutex_ = nullptr;
}

bool CElapsedTimer::IsWorkerRunning() const {
  return worker_.valid() && worker_.wait_for(std::chrono::seconds(0)) != std::future_status::ready;
}

std::int32_t CElapsedTimer::start(std::int32_t limit) {
  static constexpr char kFct[] = "start: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Begin");
  startTime_ = platform::WallClock();
  ++cnt_;
  if (mutex_ != nullptr) {
    ZQ_TRACE(TRC_PROGRESS, kFct, ">> cnt=%d", cnt_.load());
    return 0;
  }
  if (IsWorkerRunning()) return 0;

  std::uint32_t error = 0;
  mutex_ = platform::CreateMarkerMutex(security_, kMutexName, error);
  if (mutex_ == nullptr) {
    ZQ_TRACE(TRC_ERROR, kFct, ">> Error creating mutex: %d", static_cast<int>(error));
    return -1;
  }
  // Kept: the count in this text is fixed.
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Creating new thread, cnt=1");
  try {
    worker_ = std::async(std::launch::async, [this, limit] { runTimer(limit); });
  } catch (const std::exception&) {
    platform::CloseNamedObject(mutex_.exchange(nullptr));
    return -1;
  }
  return 0;
}

std::int32_t CElapsedTimer::stop() {
  static constexpr char kFct[] = "stop: ";
  if (!IsWorkerRunning()) {
    ZQ_TRACE(TRC_PROGRESS, kFct, "not active");
    return -1;
  }
  --cnt_;
  ZQ_TRACE(TRC_PROGRESS, kFct, "cnt=%d", cnt_.load());
  return 0;
}

void CElapsedTimer::runTimer(std::int32_t limit) {
  static constexpr char kFct[] = "runTimer: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Begin");
  bool expired = false;
  while (!expired && cnt_ >= 1) {
    const std::int64_t elapsed = (platform::WallClock() - startTime_) / platform::kTicksPerSecond;
    platform::SleepMilliseconds(kStepMs);
    // A clock that was set back makes this negative, and the wait goes on.
    expired = elapsed >= 0 && elapsed >= limit;
  }
  if (!expired) ZQ_TRACE(TRC_PROGRESS, kFct, "stop thread!");

  if (mutex_ == nullptr) return;
  if (--cnt_ > 0) return;  // Kept: users that never stopped keep the mutex.
  ZQ_TRACE(TRC_PROGRESS, kFct, "cleaning up");
  platform::CloseNamedObject(mutex_.exchange(nullptr));
  cnt_ = 0;
}
