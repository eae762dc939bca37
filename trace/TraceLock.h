#ifndef TRACE_TRACELOCK_H_
#define TRACE_TRACELOCK_H_

#include <cstdint>

#include "platform/WinTypes.h"

namespace zqotrc {

/// How long a line waits for the other processes' lines.
inline constexpr std::uint32_t kLockWaitMilliseconds = 10000;
/// How long it waits while somebody has kept the mutex longer than that.
inline constexpr std::uint32_t kHostageWaitMilliseconds = 1;
/// Lines that must get the mutex in a row before it is waited for in full again.
inline constexpr std::uint32_t kProbationLines = 1000;

/// Creates the shared mutex if there is none. What prevents that is told to the debugger once.
void EnsureTraceMutex(SECURITY_ATTRIBUTES* security);

/// Holds the facility: against the threads of this process always, against other processes as far
/// as the shared mutex can be had in time. A line is rather written unlocked than not at all.
class TraceLock {
 public:
  /// \param security a reference, because it is looked at behind the process lock only
  explicit TraceLock(SECURITY_ATTRIBUTES* const& security);
  ~TraceLock();
  TraceLock(const TraceLock&) = delete;
  TraceLock& operator=(const TraceLock&) = delete;

 private:
  bool ownsMutex_;
};

}  // namespace zqotrc

#endif  // TRACE_TRACELOCK_H_
