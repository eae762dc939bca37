#include "maintenance/StartupRun.h"

#include <cstring>

#include "maintenance/HardwareIdRepair.h"
#include "registry/RegistryOperation.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

constexpr char kFct[] = "BRDX_RunPlausibilitaet: ";
constexpr std::uint32_t kValueSize = 8160;

bool IsSetupRunning(const char* succeeded) {
  return succeeded[0] == '\0' || std::strcmp(succeeded, "0") == 0;
}

}  // namespace

void RunStartupMaintenance(CQorlixSRVPipe& srv) {
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  char succeeded[kValueSize + 1] = {};
  std::uint32_t size = kValueSize;
  if (RegGetValueBL("SOFTWARE\\Vesmark\\Shared Tools\\MIREL", "SetupSucceeded", succeeded, size) !=
      ERROR_SUCCESS) {
    ZQ_TRACE(TRC_ERROR, kFct, "Error in RegGetValueBL --> Can't run Plausibilitaet!");
    return;
  }

  if (IsSetupRunning(succeeded)) {
    ZQ_TRACE(TRC_PROGRESS, kFct,
             "Warning: Setup l\xE4"
             "uft, keine BRDX_Plausibilitaet m\xF6"
             "glich");
  } else {
    HwIdRepair repair;
    repair.Run();
    (void)srv.BC_PlausibilitaetBL(CQorlixSRVPipe::kNoConnection);
  }
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< End");
}
