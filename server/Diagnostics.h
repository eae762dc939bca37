#ifndef SERVER_DIAGNOSTICS_H_
#define SERVER_DIAGNOSTICS_H_

#include "server/RequestWatch.h"

/// What tells of a server that hangs or crashes, as far as the machine's settings
/// (platform/MachineSetting.h) want it. Once for a process, before it serves; the thread that makes
/// it is the one that serves.
///
///   HangReportMs   how long a request may run before it is reported; 45000 without it, 0 for never
///   CrashEvidence  0: an unhandled exception leaves nothing
class Diagnostics {
 public:
  Diagnostics();

  /// Ends the watch, and waits for a moment. \returns false when it has not ended: it is in the
  /// trace, and whoever shut the trace down would have to wait for it.
  bool StopWatch() { return watch_.Stop(); }

 private:
  RequestWatch watch_;
};

#endif  // SERVER_DIAGNOSTICS_H_
