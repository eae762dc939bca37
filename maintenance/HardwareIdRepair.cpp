#include "maintenance/HardwareIdRepair.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "platform/AsciiCase.h"
#include "platform/GuardedCall.h"
#include "registry/RegistryOperation.h"
#include "server/SrvResult.h"
#include "trace/Zqotrc.h"

namespace {

constexpr char kFct[] = "HwIdRepair: ";
constexpr char kHardwareId[] = "HardwareId";
constexpr std::uint32_t kTextSize = 256;

// Two boards may share an incomplete identifier; their names tell them apart.
constexpr HwIdRepairEntry kRepairTable[] = {
    {"HWX7101", "NB410A", "PCI\\VEN_1F3C&DEV_5101", "PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C"},
    {"HWX7102", "NB420A", "PCI\\VEN_1F3C&DEV_5101", "PCI\\VEN_1F3C&DEV_5101&SUBSYS_D1011F3C"},
    {"HWX7104", "NB510", "PCI\\VEN_1F3C&DEV_5202", "PCI\\VEN_1F3C&DEV_5202&SUBSYS_52021F3C"},
    {"HWX7105", "NB520", "PCI\\VEN_1F3C&DEV_5202", "PCI\\VEN_1F3C&DEV_5202&SUBSYS_D2021F3C"},
    {"HWX7106", "NB410B", "PCI\\VEN_1F3C&DEV_5303", "PCI\\VEN_1F3C&DEV_5303&SUBSYS_53031F3C"},
    // Kept: this one gets another device number, too.
    {"HWX7090", "NB300", "PCI\\VEN_1F3C&DEV_2404", "PCI\\VEN_1F3C&DEV_5404&SUBSYS_54041F3C"},
};

// What all three steps do once the key's name has been found to be the row's.
void RepairKey(const char* function, const char* area, const char* name,
               const HwIdRepairEntry& row) {
  char path[2 * kTextSize];
  (void)std::snprintf(path, sizeof(path), "%s\\%s", area, name);

  char value[kTextSize + 1] = {};
  std::uint32_t size = kTextSize;
  std::uint32_t result = RegGetValueBL(path, kHardwareId, value, size);
  if (result != SRV_OK) {
    ZQ_TRACE(TRC_ERROR, function, "RegistryGetValue failed with result: %d",
             static_cast<int>(result));
    return;
  }

  ZQ_TRACE(TRC_PROGRESS, function, "... found HwId=%s", value);
  ZQ_TRACE(TRC_PROGRESS, function, "... cmp   HwId=%s", row.incompleteId);
  if (value[0] != '\0' && platform::EqualsIgnoringCase(value, row.incompleteId)) {
    ZQ_TRACE(TRC_PROGRESS, function, "... Set new HwId=%s", row.completeId);
    result = RegSetValueBL(path, kHardwareId, row.completeId);
    ZQ_TRACE(TRC_PROGRESS, function, "RegistrySetValue returned with result: %d",
             static_cast<int>(result));
  }
  ZQ_TRACE(TRC_PROGRESS, function, "<-- end");
}

}  // namespace

HwIdRepair::HwIdRepair()
    : defaultDevices_("Software\\Vesmark\\Norva\\DefDevices\\DeviceId"),
      defaultLogDevices_("Software\\Vesmark\\Norva\\DefDevices\\DefaultLogDevices"),
      logDevices_("Software\\Vesmark\\Norva\\Logdevices") {}

void HwIdRepair::Run() {
  ZQ_TRACE(TRC_PROGRESS, kFct, "--> start");
  std::uint32_t ignored = SRV_OK;
  const bool returned = GuardedCall(ignored, [this] {
    RunPhases();
    return SRV_OK;
  });
  if (!returned) ZQ_TRACE(TRC_ERROR, kFct, "Exception: HwIdRepair");
}

void HwIdRepair::RunPhases() {
  ZQ_TRACE(TRC_PROGRESS, kFct, "Checking Boards for wrong HW Ids");
  RepairArea(defaultDevices_, &HwIdRepair::RepairBoard);
  ZQ_TRACE(TRC_PROGRESS, kFct, "Checking DefLogDevs for wrong HW Ids");
  RepairArea(defaultLogDevices_, &HwIdRepair::RepairDefLogDev);
  ZQ_TRACE(TRC_PROGRESS, kFct, "Checking LogDevices for wrong HW Ids");
  RepairArea(logDevices_, &HwIdRepair::RepairLogDev);
}

void HwIdRepair::RepairArea(const char* area, Step step) {
  for (std::int32_t index = 0;; ++index) {
    char name[kTextSize] = {};
    std::uint32_t length = kTextSize;
    if (RegEnumKeyBL(area, index, name, length) != SRV_OK) return;
    for (const HwIdRepairEntry& row : kRepairTable) (this->*step)(name, row);
  }
}

void HwIdRepair::RepairBoard(const char* name, const HwIdRepairEntry& row) {
  static constexpr char kStep[] = "RepairBoard: ";
  ZQ_TRACE(TRC_PROGRESS, kStep, "--> start for board: %s", name);
  if (std::strstr(name, row.deviceId) != nullptr) RepairKey(kStep, defaultDevices_, name, row);
}

void HwIdRepair::RepairDefLogDev(const char* name, const HwIdRepairEntry& row) {
  static constexpr char kStep[] = "RepairDefLogDev: ";
  ZQ_TRACE(TRC_PROGRESS, kStep, "--> start for DefLogDev: %s", name);
  if (std::strstr(name, row.boardModel) != nullptr) RepairKey(kStep, defaultLogDevices_, name, row);
}

void HwIdRepair::RepairLogDev(const char* name, const HwIdRepairEntry& row) {
  static constexpr char kStep[] = "RepairLogDev: ";
  ZQ_TRACE(TRC_PROGRESS, kStep, "--> start for LogDev: %s", name);
  if (std::strstr(name, row.boardModel) != nullptr) RepairKey(kStep, logDevices_, name, row);
}
