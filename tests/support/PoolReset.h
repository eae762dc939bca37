#ifndef TESTS_SUPPORT_POOLRESET_H_
#define TESTS_SUPPORT_POOLRESET_H_

#include "server/PipeInstance.h"

/// Forgets what a server before this one has left in the pool, which is static. Its buffers stay:
/// what a request or a reply does not fill is anybody's.
inline void ResetPool() {
  for (PipeInstance& pipe : Pipe) {
    pipe.overlapped = {};
    pipe.dwState = CONNECTING_STATE;
    pipe.fPendingIO = 0;
    pipe.ReceivePointer = 0;
    pipe.cbWriteNext = 0;
  }
}

#endif  // TESTS_SUPPORT_POOLRESET_H_
