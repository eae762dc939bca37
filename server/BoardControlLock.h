#ifndef SERVER_BOARDCONTROLLOCK_H_
#define SERVER_BOARDCONTROLLOCK_H_

/// The board-control lock: a named mutex, one handle for the process, that serialises the calls
/// into the board-control library. CQorlixSRVPipe offers the operations on it.

/// Creates the mutex unless the process has it already.
void CreateBoardControlLock();

/// Kept: lets go of the handle without closing it.
void ForgetBoardControlLock();

#endif  // SERVER_BOARDCONTROLLOCK_H_
