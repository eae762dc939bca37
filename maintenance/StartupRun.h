#ifndef MAINTENANCE_STARTUPRUN_H_
#define MAINTENANCE_STARTUPRUN_H_

class CQorlixSRVPipe;

/// The consistency pass over the stack's configuration, made once per server start, after the pipe
/// instances exist and before the first request is served. This release has no checks to make yet.
void RunStartupMaintenance(CQorlixSRVPipe& srv);

#endif  // MAINTENANCE_STARTUPRUN_H_
