#ifndef TESTS_COVERAGE_FLUSHONDEMAND_H_
#define TESTS_COVERAGE_FLUSHONDEMAND_H_

#include <windows.h>

namespace coverage {

/// Prefixes of two events, followed by the process's number: the first asks the server to write
/// down what it has counted, the second says that it has.
inline constexpr char kAskPrefix[] = "QorlixCoverageAsk-";
inline constexpr char kDonePrefix[] = "QorlixCoverageDone-";

inline void EventName(const char* prefix, DWORD process, char (&name)[64]) {
  wsprintfA(name, "%s%lu", prefix, process);
}

/// Has a server's counters written, if it is of a build that has some; waits for ten seconds.
inline void Flush(DWORD process) {
  char name[64];
  EventName(kAskPrefix, process, name);
  const HANDLE ask = OpenEventA(EVENT_MODIFY_STATE, FALSE, name);
  EventName(kDonePrefix, process, name);
  const HANDLE done = OpenEventA(SYNCHRONIZE, FALSE, name);
  if (ask != nullptr && done != nullptr) {
    SetEvent(ask);
    WaitForSingleObject(done, 10000);
  }
  if (ask != nullptr) CloseHandle(ask);
  if (done != nullptr) CloseHandle(done);
}

}  // namespace coverage

#endif  // TESTS_COVERAGE_FLUSHONDEMAND_H_
