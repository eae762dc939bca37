// Answers for a machine without a single communication board: enumerations are at their end,
// look-ups find nothing, and what works on all boards has nothing to do.

#include "board/boardsvc32.h"

namespace {

constexpr std::uint32_t kDone = 0;
constexpr std::uint32_t kNotFound = 2;       // ERROR_FILE_NOT_FOUND
constexpr std::uint32_t kNoMoreItems = 259;  // ERROR_NO_MORE_ITEMS

// Every length that the caller lent is set back: nothing was filled in.
template <typename... Lengths>
std::uint32_t Nothing(std::uint32_t code, Lengths*... lengths) {
  const auto clear = [](std::uint32_t* length) {
    if (length != nullptr) *length = 0;
  };
  (clear(lengths), ...);
  return code;
}

}  // namespace

std::uint32_t StartHardwareDetection() { return kDone; }
std::uint32_t BRDX_ScanBL() { return kDone; }
std::uint32_t BRDX_CreateAllLogdevicesBL() { return kDone; }
std::uint32_t BRDX_HasUninitializedInstancesBL() { return kDone; }
std::uint32_t BRDX_RemoveAbandonLogDevices() { return kDone; }
std::uint32_t BRDX_UpdateRoute() { return kDone; }

std::uint32_t BRDX_UpdateLogdevicesForDeviceBL(char*, char*) { return kNotFound; }

std::uint32_t BRDX_EnumBoardExBL(char*, std::uint32_t, char*, std::uint32_t* cbBoard, char*,
                                 std::uint32_t* cbBoardMap, char*, std::uint32_t* cbAdapter,
                                 std::uint32_t) {
  return Nothing(kNoMoreItems, cbBoard, cbBoardMap, cbAdapter);
}

std::uint32_t BRDX_EnumInstBoardBL(std::uint32_t, char*, std::uint32_t* cbBoard, char*,
                                   std::uint32_t* cbDeviceId, char*, std::uint32_t* cbNetType,
                                   char*, std::uint32_t* cbHardwareId, char*,
                                   std::uint32_t* cbHardwareInstanceId, char*,
                                   std::uint32_t* cbBoardMap, std::uint32_t* state) {
  return Nothing(kNoMoreItems, cbBoard, cbDeviceId, cbNetType, cbHardwareId, cbHardwareInstanceId,
                 cbBoardMap, state);
}

std::uint32_t BRDX_EnumAvailableBoardsBL(std::uint32_t, char*, std::uint32_t* cbBoard, char*,
                                         std::uint32_t* cbDeviceId, std::uint32_t* value) {
  return Nothing(kNoMoreItems, cbBoard, cbDeviceId, value);
}

std::uint32_t BRDX_EnumAdaptersBL(std::uint32_t, char*, std::uint32_t* cbAdapter, char*,
                                  std::uint32_t* cbBoardMap, std::uint8_t*) {
  return Nothing(kNoMoreItems, cbAdapter, cbBoardMap);
}

std::uint32_t BRDX_EnumConfigurationBL(std::uint32_t, char*, char*, char*, char*, char*,
                                       std::uint32_t* cbConfiguration, char*,
                                       std::uint32_t* cbProtocolType, char*,
                                       std::uint32_t* cbLayer4Protocol, char*,
                                       std::uint32_t* cbUnit) {
  return Nothing(kNoMoreItems, cbConfiguration, cbProtocolType, cbLayer4Protocol, cbUnit);
}

std::uint32_t BRDX_BoardGetMapBL(char*, char*, char*, char*, std::uint32_t* cbBoardMap) {
  return Nothing(kNotFound, cbBoardMap);
}

std::uint32_t BRDX_GetBoardInfoBL(std::uint32_t, char*, char*, char*, char*, char*,
                                  std::uint32_t* cbValue) {
  return Nothing(kNotFound, cbValue);
}

std::uint32_t BRDX_GetBoardInfoExBL(std::uint32_t, char*, char*, char*, std::uint8_t*,
                                    std::uint32_t* cbBuffer) {
  return Nothing(kNotFound, cbBuffer);
}

std::uint32_t BRDX_RegisterForDeviceChangeNotifications(BRDX_GUID, char*) { return kNotFound; }
std::uint32_t BRDX_UnregisterForDeviceChangeNotifications(BRDX_GUID, char*) { return kNotFound; }

std::uint32_t BRDX_GetDeviceChange(char*, std::uint8_t*, BRDX_GUID*, char*, std::uint32_t* cbText) {
  return Nothing(kNoMoreItems, cbText);
}

std::uint32_t BRDX_GetBoardInformation(std::uint8_t*, BRDX_INFO_INPUT*, BRDX_INFO_OUTPUT*,
                                       std::uint32_t) {
  return kNotFound;
}

std::uint32_t BRDX_GetDeviceInstance(char*, std::uint32_t* instance) {
  return Nothing(kNotFound, instance);
}

std::uint32_t BRDX_GetDeviceInstanceOpt(char*, std::uint32_t, std::uint32_t* instance) {
  return Nothing(kNotFound, instance);
}
