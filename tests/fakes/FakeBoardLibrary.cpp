#include "tests/fakes/FakeBoardLibrary.h"

#include <utility>

#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/NotOurs.h"

namespace fake_board_library {
namespace {

template <typename Operation, typename... Arguments>
std::uint32_t RunAs(const char* function, const char* name, const Operation& operation,
                    Arguments... arguments) {
  const NotOurs notOurs;
  Calls().push_back(name);
  if (const std::uint32_t code = fault_plan::CodeFor(function)) return code;
  return operation ? operation(arguments...) : 0;
}

template <typename Operation, typename... Arguments>
std::uint32_t Run(const char* name, const Operation& operation, Arguments... arguments) {
  return RunAs(name, name, operation, arguments...);
}

}  // namespace

Library& Lib() {
  static Library library;
  return library;
}

std::vector<std::string>& Calls() {
  static std::vector<std::string> calls;
  return calls;
}

void Reset() {
  Lib() = {};
  Calls().clear();
}

void OnStartHardwareDetection(std::function<void()> action) {
  if (!action) {
    Lib().startHardwareDetection = {};
    return;
  }
  Lib().startHardwareDetection = [action = std::move(action)] {
    action();
    return 0u;
  };
}

}  // namespace fake_board_library

using fake_board_library::Lib;
using fake_board_library::Run;
using fake_board_library::RunAs;

std::uint32_t StartHardwareDetection() {
  return Run("StartHardwareDetection", Lib().startHardwareDetection);
}
std::uint32_t BRDX_ScanBL() { return Run("BRDX_ScanBL", Lib().scan); }
std::uint32_t BRDX_CreateAllLogdevicesBL() {
  return Run("BRDX_CreateAllLogdevicesBL", Lib().createAllLogdevices);
}
std::uint32_t BRDX_HasUninitializedInstancesBL() {
  return Run("BRDX_HasUninitializedInstancesBL", Lib().hasUninitializedInstances);
}
std::uint32_t BRDX_RemoveAbandonLogDevices() {
  return Run("BRDX_RemoveAbandonLogDevices", Lib().removeAbandonLogDevices);
}
std::uint32_t BRDX_UpdateRoute() { return Run("BRDX_UpdateRoute", Lib().updateRoute); }

std::uint32_t BRDX_UpdateLogdevicesForDeviceBL(char* deviceId, char* hardwareId) {
  return Run("BRDX_UpdateLogdevicesForDeviceBL", Lib().updateLogdevicesForDevice, deviceId,
             hardwareId);
}

std::uint32_t BRDX_EnumBoardExBL(char* deviceId, std::uint32_t index, char* board,
                                 std::uint32_t* cbBoard, char* boardMap, std::uint32_t* cbBoardMap,
                                 char* adapter, std::uint32_t* cbAdapter, std::uint32_t zero) {
  return Run("BRDX_EnumBoardExBL", Lib().enumBoardEx, deviceId, index, board, cbBoard, boardMap,
             cbBoardMap, adapter, cbAdapter, zero);
}

std::uint32_t BRDX_EnumInstBoardBL(std::uint32_t index, char* board, std::uint32_t* cbBoard,
                                   char* deviceId, std::uint32_t* cbDeviceId, char* netType,
                                   std::uint32_t* cbNetType, char* hardwareId,
                                   std::uint32_t* cbHardwareId, char* hardwareInstanceId,
                                   std::uint32_t* cbHardwareInstanceId, char* boardMap,
                                   std::uint32_t* cbBoardMap, std::uint32_t* state) {
  return Run("BRDX_EnumInstBoardBL", Lib().enumInstBoard, index, board, cbBoard, deviceId,
             cbDeviceId, netType, cbNetType, hardwareId, cbHardwareId, hardwareInstanceId,
             cbHardwareInstanceId, boardMap, cbBoardMap, state);
}

std::uint32_t BRDX_EnumAvailableBoardsBL(std::uint32_t index, char* board, std::uint32_t* cbBoard,
                                         char* deviceId, std::uint32_t* cbDeviceId,
                                         std::uint32_t* value) {
  return Run("BRDX_EnumAvailableBoardsBL", Lib().enumAvailableBoards, index, board, cbBoard,
             deviceId, cbDeviceId, value);
}

std::uint32_t BRDX_EnumAdaptersBL(std::uint32_t index, char* adapter, std::uint32_t* cbAdapter,
                                  char* boardMap, std::uint32_t* cbBoardMap, std::uint8_t* value) {
  return Run("BRDX_EnumAdaptersBL", Lib().enumAdapters, index, adapter, cbAdapter, boardMap,
             cbBoardMap, value);
}

std::uint32_t BRDX_EnumConfigurationBL(std::uint32_t index, char* board, char* boardMap,
                                       char* deviceId, char* hardwareInstanceId,
                                       char* configuration, std::uint32_t* cbConfiguration,
                                       char* protocolType, std::uint32_t* cbProtocolType,
                                       char* layer4Protocol, std::uint32_t* cbLayer4Protocol,
                                       char* unit, std::uint32_t* cbUnit) {
  return Run("BRDX_EnumConfigurationBL", Lib().enumConfiguration, index, board, boardMap, deviceId,
             hardwareInstanceId, configuration, cbConfiguration, protocolType, cbProtocolType,
             layer4Protocol, cbLayer4Protocol, unit, cbUnit);
}

std::uint32_t BRDX_BoardGetMapBL(char* deviceId, char* adapter, char* hardwareId, char* boardMap,
                                 std::uint32_t* cbBoardMap) {
  return Run("BRDX_BoardGetMapBL", Lib().boardGetMap, deviceId, adapter, hardwareId, boardMap,
             cbBoardMap);
}

std::uint32_t BRDX_GetBoardInfoBL(std::uint32_t infoType, char* board, char* boardMap,
                                  char* deviceId, char* hardwareInstanceId, char* value,
                                  std::uint32_t* cbValue) {
  return Run("BRDX_GetBoardInfoBL", Lib().getBoardInfo, infoType, board, boardMap, deviceId,
             hardwareInstanceId, value, cbValue);
}

std::uint32_t BRDX_GetBoardInfoExBL(std::uint32_t infoType, char* board, char* boardMap,
                                    char* hardwareInstanceId, std::uint8_t* buffer,
                                    std::uint32_t* cbBuffer) {
  return Run("BRDX_GetBoardInfoExBL", Lib().getBoardInfoEx, infoType, board, boardMap,
             hardwareInstanceId, buffer, cbBuffer);
}

std::uint32_t BRDX_RegisterForDeviceChangeNotifications(BRDX_GUID interfaceClass, char* deviceId) {
  return Run("BRDX_RegisterForDeviceChangeNotifications", Lib().registerForChanges, interfaceClass,
             deviceId);
}

std::uint32_t BRDX_UnregisterForDeviceChangeNotifications(BRDX_GUID interfaceClass,
                                                          char* deviceId) {
  return Run("BRDX_UnregisterForDeviceChangeNotifications", Lib().unregisterForChanges,
             interfaceClass, deviceId);
}

std::uint32_t BRDX_GetDeviceChange(char* deviceId, std::uint8_t* kind, BRDX_GUID* guid, char* text,
                                   std::uint32_t* cbText) {
  return Run("BRDX_GetDeviceChange", Lib().getDeviceChange, deviceId, kind, guid, text, cbText);
}

std::uint32_t BRDX_GetBoardInformation(std::uint8_t* block1, BRDX_INFO_INPUT* input,
                                       BRDX_INFO_OUTPUT* output, std::uint32_t last) {
  return Run("BRDX_GetBoardInformation", Lib().getBoardInformation, block1, input, output, last);
}

std::uint32_t BRDX_GetDeviceInstance(char* hardwareId, std::uint32_t* instance) {
  return RunAs("BRDX_GetDeviceInstance", "BRDX_GetDeviceInstanceBL/2", Lib().getDeviceInstance,
               hardwareId, instance);
}

std::uint32_t BRDX_GetDeviceInstanceOpt(char* hardwareId, std::uint32_t option,
                                        std::uint32_t* instance) {
  return RunAs("BRDX_GetDeviceInstanceOpt", "BRDX_GetDeviceInstanceBL/3",
               Lib().getDeviceInstanceOpt, hardwareId, option, instance);
}
