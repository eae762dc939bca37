#include "maintenance/StartupRun.h"

void RunStartupMaintenance(CQorlixSRVPipe&) {}
