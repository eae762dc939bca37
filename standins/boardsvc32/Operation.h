#ifndef STANDINS_BOARDSVC32_OPERATION_H_
#define STANDINS_BOARDSVC32_OPERATION_H_

#include <array>
#include <cstddef>
#include <string_view>

namespace boardsim {

/// The exports of the library, in the order of board/boardsvc32.h.
enum class Operation {
  kStartHardwareDetection,
  kScan,
  kCreateAllLogdevices,
  kHasUninitializedInstances,
  kRemoveAbandonLogDevices,
  kUpdateRoute,
  kUpdateLogdevicesForDevice,
  kEnumBoard,
  kEnumInstBoard,
  kEnumAvailableBoards,
  kEnumAdapters,
  kEnumConfiguration,
  kBoardGetMap,
  kGetBoardInfo,
  kGetBoardInfoEx,
  kRegister,
  kUnregister,
  kGetDeviceChange,
  kGetBoardInformation,
  kGetDeviceInstance,
  kGetDeviceInstanceOpt,
};

struct OperationRow {
  std::string_view name;  ///< as logs and fault scripts spell it
  std::size_t lengths;    ///< how many lengths it reports
};

inline constexpr std::array<OperationRow, 21> kOperations{{
    {"StartHardwareDetection", 0},
    {"BRDX_ScanBL", 0},
    {"BRDX_CreateAllLogdevicesBL", 0},
    {"BRDX_HasUninitializedInstancesBL", 0},
    {"BRDX_RemoveAbandonLogDevices", 0},
    {"BRDX_UpdateRoute", 0},
    {"BRDX_UpdateLogdevicesForDeviceBL", 0},
    {"BRDX_EnumBoardExBL", 3},
    {"BRDX_EnumInstBoardBL", 6},
    {"BRDX_EnumAvailableBoardsBL", 2},
    {"BRDX_EnumAdaptersBL", 2},
    {"BRDX_EnumConfigurationBL", 4},
    {"BRDX_BoardGetMapBL", 1},
    {"BRDX_GetBoardInfoBL", 1},
    {"BRDX_GetBoardInfoExBL", 1},
    {"BRDX_RegisterForDeviceChangeNotifications", 0},
    {"BRDX_UnregisterForDeviceChangeNotifications", 0},
    {"BRDX_GetDeviceChange", 1},
    {"BRDX_GetBoardInformation", 0},
    {"BRDX_GetDeviceInstance", 0},
    {"BRDX_GetDeviceInstanceOpt", 0},
}};
static_assert(static_cast<std::size_t>(Operation::kGetDeviceInstanceOpt) + 1 == kOperations.size());

constexpr const OperationRow& RowOf(Operation operation) {
  return kOperations[static_cast<std::size_t>(operation)];
}

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_OPERATION_H_
