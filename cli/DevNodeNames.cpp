#include "cli/DevNodeNames.h"

#include <iterator>

namespace cli {
namespace {

// Bit 0 first. Of bits that were renamed over time, the names that they have today.
constexpr const char* kStatusBits[] = {"DN_ROOT_ENUMERATED",
                                       "DN_DRIVER_LOADED",
                                       "DN_ENUM_LOADED",
                                       "DN_STARTED",
                                       "DN_MANUAL",
                                       "DN_NEED_TO_ENUM",
                                       "DN_DRIVER_BLOCKED",
                                       "DN_HARDWARE_ENUM",
                                       "DN_NEED_RESTART",
                                       "DN_CHILD_WITH_INVALID_ID",
                                       "DN_HAS_PROBLEM",
                                       "DN_FILTERED",
                                       "DN_LEGACY_DRIVER",
                                       "DN_DISABLEABLE",
                                       "DN_REMOVABLE",
                                       "DN_PRIVATE_PROBLEM",
                                       "DN_QUERY_REMOVE_PENDING",
                                       "DN_QUERY_REMOVE_ACTIVE",
                                       "DN_WILL_BE_REMOVED",
                                       "DN_NOT_FIRST_TIMEE",
                                       "DN_STOP_FREE_RES",
                                       "DN_REBAL_CANDIDATE",
                                       "DN_BAD_PARTIAL",
                                       "DN_NT_ENUMERATOR",
                                       "DN_NT_DRIVER",
                                       "DN_DEVICE_DISCONNECTED",
                                       "DN_ARM_WAKEUP",
                                       "DN_APM_ENUMERATOR",
                                       "DN_APM_DRIVER",
                                       "DN_SILENT_INSTALL",
                                       "DN_NO_SHOW_IN_DM",
                                       "DN_BOOT_LOG_PROB"};
static_assert(std::size(kStatusBits) == 32);

// Problem 1 first.
constexpr const char* kProblems[] = {"CM_PROB_NOT_CONFIGURED",
                                     "CM_PROB_DEVLOADER_FAILED",
                                     "CM_PROB_OUT_OF_MEMORY",
                                     "CM_PROB_ENTRY_IS_WRONG_TYPE",
                                     "CM_PROB_LACKED_ARBITRATOR",
                                     "CM_PROB_BOOT_CONFIG_CONFLICT",
                                     "CM_PROB_FAILED_FILTER",
                                     "CM_PROB_DEVLOADER_NOT_FOUND",
                                     "CM_PROB_INVALID_DATA",
                                     "CM_PROB_FAILED_START",
                                     "CM_PROB_LIAR",
                                     "CM_PROB_NORMAL_CONFLICT",
                                     "CM_PROB_NOT_VERIFIED",
                                     "CM_PROB_NEED_RESTART",
                                     "CM_PROB_REENUMERATION",
                                     "CM_PROB_PARTIAL_LOG_CONF",
                                     "CM_PROB_UNKNOWN_RESOURCE",
                                     "CM_PROB_REINSTALL",
                                     "CM_PROB_REGISTRY",
                                     "CM_PROB_VXDLDR",
                                     "CM_PROB_WILL_BE_REMOVED",
                                     "CM_PROB_DISABLED",
                                     "CM_PROB_DEVLOADER_NOT_READY",
                                     "CM_PROB_DEVICE_NOT_THERE",
                                     "CM_PROB_MOVED",
                                     "CM_PROB_TOO_EARLY",
                                     "CM_PROB_NO_VALID_LOG_CONF",
                                     "CM_PROB_FAILED_INSTALL",
                                     "CM_PROB_HARDWARE_DISABLED",
                                     "CM_PROB_CANT_SHARE_IRQ",
                                     "CM_PROB_FAILED_ADD",
                                     "CM_PROB_DISABLED_SERVICE",
                                     "CM_PROB_TRANSLATION_FAILED",
                                     "CM_PROB_NO_SOFTCONFIG",
                                     "CM_PROB_BIOS_TABLE",
                                     "CM_PROB_IRQ_TRANSLATION_FAILED",
                                     "CM_PROB_FAILED_DRIVER_ENTRY",
                                     "CM_PROB_DRIVER_FAILED_PRIOR_UNLOAD",
                                     "CM_PROB_DRIVER_FAILED_LOAD",
                                     "CM_PROB_DRIVER_SERVICE_KEY_INVALID",
                                     "CM_PROB_LEGACY_SERVICE_NO_DEVICES",
                                     "CM_PROB_DUPLICATE_DEVICE",
                                     "CM_PROB_FAILED_POST_START",
                                     "CM_PROB_HALTED",
                                     "CM_PROB_PHANTOM",
                                     "CM_PROB_SYSTEM_SHUTDOWN",
                                     "CM_PROB_HELD_FOR_EJECT",
                                     "CM_PROB_DRIVER_BLOCKED",
                                     "CM_PROB_REGISTRY_TOO_LARGE",
                                     "CM_PROB_SETPROPERTIES_FAILED",
                                     "CM_PROB_WAITING_ON_DEPENDENCY",
                                     "CM_PROB_UNSIGNED_DRIVER",
                                     "CM_PROB_USED_BY_DEBUGGER",
                                     "CM_PROB_DEVICE_RESET",
                                     "CM_PROB_CONSOLE_LOCKED",
                                     "CM_PROB_NEED_CLASS_CONFIG",
                                     "CM_PROB_GUEST_ASSIGNMENT_FAILED"};

}  // namespace

std::vector<const char*> StatusBitNames(std::uint32_t status) {
  std::vector<const char*> names;
  for (std::size_t bit = 0; bit < std::size(kStatusBits); ++bit) {
    if ((status >> bit & 1) != 0) names.push_back(kStatusBits[bit]);
  }
  return names;
}

const char* ProblemName(std::uint32_t problem) {
  return problem == 0 || problem > std::size(kProblems) ? "" : kProblems[problem - 1];
}

}  // namespace cli
