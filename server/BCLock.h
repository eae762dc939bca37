#ifndef SERVER_BCLOCK_H_
#define SERVER_BCLOCK_H_

#include "server/QorlixSRVPipe.h"

/// Holds the board-control lock for one scope. The scope is entered after 30000 ms even when the
/// lock was not granted, and the lock is released in every case.
class BCLock {
 public:
  explicit BCLock(CQorlixSRVPipe& srv) : srv_(srv) { (void)srv_.BCLockWait(); }
  ~BCLock() { (void)srv_.BCLockRelease(); }
  BCLock(const BCLock&) = delete;
  BCLock& operator=(const BCLock&) = delete;

 private:
  CQorlixSRVPipe& srv_;
};

#endif  // SERVER_BCLOCK_H_
