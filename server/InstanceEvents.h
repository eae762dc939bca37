#ifndef SERVER_INSTANCEEVENTS_H_
#define SERVER_INSTANCEEVENTS_H_

#include "platform/WinTypes.h"
#include "server/PipeInstance.h"

/// The instances' events in index order, because the wait takes them as one array; the same handles
/// as in the records.
extern HANDLE InstanceEvents[kPipeInstances];

#endif  // SERVER_INSTANCEEVENTS_H_
