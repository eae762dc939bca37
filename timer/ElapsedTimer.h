#ifndef TIMER_ELAPSEDTIMER_H_
#define TIMER_ELAPSEDTIMER_H_

#include <atomic>
#include <cstdint>
#include <future>

#include "platform/WinTypes.h"

/// Tells other processes that a time-limited activity is under way: while it is, a named mutex
/// exists, "Global\SetOpenTCPConnections". Nobody ever owns that mutex; others test for it.
///
/// start and stop belong to one thread. The worker runs by itself and ends when every start was
/// matched by a stop, or when the limit has passed since the last start.
class CElapsedTimer {
 public:
  /// \param security for the mutex; must stay valid as long as the object. May be null.
  explicit CElapsedTimer(SECURITY_ATTRIBUTES* security) : security_(security) {}
  /// Ends the worker and waits for it: a second, at most.
  ///
  /// The worker closes the mutex. Kept: one that an earlier worker has left behind stays open, and
  /// goes with the process.
  virtual ~CElapsedTimer();
  CElapsedTimer(const CElapsedTimer&) = delete;
  CElapsedTimer& operator=(const CElapsedTimer&) = delete;

  /// One user more, and the time from now on. \param limit in seconds; it counts for the worker
  /// that this call starts, not for one that runs already.
  /// \returns 0, or -1 when the mutex or the worker cannot be created
  std::int32_t start(std::int32_t limit);

  /// One user less. \returns 0, or -1 when no worker is running.
  std::int32_t stop();

 private:
  void runTimer(std::int32_t limit);
  bool IsWorkerRunning() const;

  SECURITY_ATTRIBUTES* const security_;
  std::atomic<std::int64_t> startTime_{0};  // 100 ns
  std::future<void> worker_;
  std::atomic<std::int32_t> cnt_{0};  // starts that no stop has matched
  std::atomic<HANDLE> mutex_{nullptr};
};

#endif  // TIMER_ELAPSEDTIMER_H_
