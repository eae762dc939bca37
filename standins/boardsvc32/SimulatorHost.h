#ifndef STANDINS_BOARDSVC32_SIMULATORHOST_H_
#define STANDINS_BOARDSVC32_SIMULATORHOST_H_

#include "standins/boardsvc32/CallLog.h"
#include "standins/script/LibraryHost.h"

/// What the simulator needs of the machine it runs on.
namespace boardsim::host {

using namespace standin::host;

/// Asks from a thread of its own, because the calling one may take a lock that it holds already.
LockState ProbeBoardLock();

}  // namespace boardsim::host

#endif  // STANDINS_BOARDSVC32_SIMULATORHOST_H_
