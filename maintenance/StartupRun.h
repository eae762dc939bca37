#ifndef MAINTENANCE_STARTUPRUN_H_
#define MAINTENANCE_STARTUPRUN_H_

class CQorlixSRVPipe;

/// The consistency pass over the stack's configuration, made once per server start, after the pipe
/// instances exist and before the first request is served: the hardware-identifier repair, then the
/// plausibility check.
///
/// It runs only when the stack's set-up has finished: when the value "SetupSucceeded" of the key
/// SOFTWARE\Vesmark\Shared Tools\MIREL can be read, is not empty and not "0". A number counts by
/// its bytes, so one whose lowest byte is 0 reads as empty.
void RunStartupMaintenance(CQorlixSRVPipe& srv);

#endif  // MAINTENANCE_STARTUPRUN_H_
