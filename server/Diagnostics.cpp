#include "server/Diagnostics.h"

#include <windows.h>

#include "platform/CrashEvidence.h"
#include "platform/MachineSetting.h"
#include "server/CrashReport.h"

namespace {

// Above the 30 s that handlers ordinarily wait for the board-control lock.
constexpr std::uint32_t kHangReportMs = 45000;

constexpr char kName[] = "QorlixSRV";

std::uint32_t Setting(const char* name, std::uint32_t otherwise) {
  (void)platform::ReadMachineNumber(name, otherwise);
  return otherwise;
}

void PrepareCrashEvidence() {
  platform::PathBuffer folder;
  const UINT length = GetSystemWindowsDirectoryA(folder, sizeof(folder));
  const bool isPrepared = length != 0 && length < sizeof(folder) &&
                          platform::AppendToPath(folder, "\\QorlixSRV") == 0 &&
                          platform::PrepareCrashEvidence(folder, kName, ReportCrash);
  if (!isPrepared) OutputDebugStringA("QorlixSRV: crash evidence cannot be prepared\n");
}

}  // namespace

Diagnostics::Diagnostics() : watch_(Setting("HangReportMs", kHangReportMs)) {
  if (Setting("CrashEvidence", 1) != 0) PrepareCrashEvidence();
}
