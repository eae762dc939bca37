#ifndef BOARD_BOARDSVC32_H_
#define BOARD_BOARDSVC32_H_

/// The interface of boardsvc32.dll, the vendor's board-control library.
///
/// All exports are __cdecl and return 0 on success. Texts are narrow and zero-terminated; an out
/// buffer is followed by the address of its length, which is in-out. The layout is that of a 32-bit
/// x86 process with natural alignment; the twins for other targets serve tests only.

#include <cstdint>

#ifdef _WIN32
#define BRDX_API __attribute__((cdecl))
#else
#define BRDX_API
#endif

/// A device interface class; passed by value, as 16 bytes.
struct BRDX_GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};

/// What BRDX_GetBoardInformation is asked.
struct BRDX_INFO_INPUT {
  std::uint32_t value1, value2, value3;
  std::uint8_t* data;
  std::uint32_t cbData;
  std::uint8_t* area1;
  std::uint32_t cbArea1;
  std::uint32_t* value;  ///< the library fills it; 0 before the call
};

/// What BRDX_GetBoardInformation answers.
struct BRDX_INFO_OUTPUT {
  std::uint8_t* area2;
  std::uint32_t cbArea2;
  std::uint32_t result1, result2;  ///< 0 before the call
};

extern "C" {

std::uint32_t BRDX_API StartHardwareDetection();
std::uint32_t BRDX_API BRDX_ScanBL();
std::uint32_t BRDX_API BRDX_CreateAllLogdevicesBL();
std::uint32_t BRDX_API BRDX_HasUninitializedInstancesBL();
std::uint32_t BRDX_API BRDX_RemoveAbandonLogDevices();
std::uint32_t BRDX_API BRDX_UpdateRoute();
std::uint32_t BRDX_API BRDX_UpdateLogdevicesForDeviceBL(char* deviceId, char* hardwareId);
std::uint32_t BRDX_API BRDX_EnumBoardExBL(char* deviceId, std::uint32_t index, char* board,
                                          std::uint32_t* cbBoard, char* boardMap,
                                          std::uint32_t* cbBoardMap, char* adapter,
                                          std::uint32_t* cbAdapter, std::uint32_t zero);
std::uint32_t BRDX_API BRDX_EnumInstBoardBL(std::uint32_t index, char* board,
                                            std::uint32_t* cbBoard, char* deviceId,
                                            std::uint32_t* cbDeviceId, char* netType,
                                            std::uint32_t* cbNetType, char* hardwareId,
                                            std::uint32_t* cbHardwareId, char* hardwareInstanceId,
                                            std::uint32_t* cbHardwareInstanceId, char* boardMap,
                                            std::uint32_t* cbBoardMap, std::uint32_t* state);
std::uint32_t BRDX_API BRDX_EnumAvailableBoardsBL(std::uint32_t index, char* board,
                                                  std::uint32_t* cbBoard, char* deviceId,
                                                  std::uint32_t* cbDeviceId, std::uint32_t* value);
std::uint32_t BRDX_API BRDX_EnumAdaptersBL(std::uint32_t index, char* adapter,
                                           std::uint32_t* cbAdapter, char* boardMap,
                                           std::uint32_t* cbBoardMap, std::uint8_t* value);
std::uint32_t BRDX_API BRDX_EnumConfigurationBL(std::uint32_t index, char* board, char* boardMap,
                                                char* deviceId, char* hardwareInstanceId,
                                                char* configuration, std::uint32_t* cbConfiguration,
                                                char* protocolType, std::uint32_t* cbProtocolType,
                                                char* layer4Protocol,
                                                std::uint32_t* cbLayer4Protocol, char* unit,
                                                std::uint32_t* cbUnit);
std::uint32_t BRDX_API BRDX_BoardGetMapBL(char* deviceId, char* adapter, char* hardwareId,
                                          char* boardMap, std::uint32_t* cbBoardMap);
std::uint32_t BRDX_API BRDX_GetBoardInfoBL(std::uint32_t infoType, char* board, char* boardMap,
                                           char* deviceId, char* hardwareInstanceId, char* value,
                                           std::uint32_t* cbValue);
std::uint32_t BRDX_API BRDX_GetBoardInfoExBL(std::uint32_t infoType, char* board, char* boardMap,
                                             char* hardwareInstanceId, std::uint8_t* buffer,
                                             std::uint32_t* cbBuffer);
std::uint32_t BRDX_API BRDX_RegisterForDeviceChangeNotifications(BRDX_GUID interfaceClass,
                                                                 char* deviceId);
std::uint32_t BRDX_API BRDX_UnregisterForDeviceChangeNotifications(BRDX_GUID interfaceClass,
                                                                   char* deviceId);
std::uint32_t BRDX_API BRDX_GetDeviceChange(char* deviceId, std::uint8_t* kind, BRDX_GUID* guid,
                                            char* text, std::uint32_t* cbText);
std::uint32_t BRDX_API BRDX_GetBoardInformation(std::uint8_t* block1, BRDX_INFO_INPUT* input,
                                                BRDX_INFO_OUTPUT* output, std::uint32_t last);

/// The library exports this pair under one C++ name; boardsvc32.def maps it to these two.
std::uint32_t BRDX_API BRDX_GetDeviceInstance(char* hardwareId, std::uint32_t* instance);
std::uint32_t BRDX_API BRDX_GetDeviceInstanceOpt(char* hardwareId, std::uint32_t option,
                                                 std::uint32_t* instance);

}  // extern "C"

inline std::uint32_t BRDX_GetDeviceInstanceBL(char* hardwareId, std::uint32_t* instance) {
  return BRDX_GetDeviceInstance(hardwareId, instance);
}
inline std::uint32_t BRDX_GetDeviceInstanceBL(char* hardwareId, std::uint32_t option,
                                              std::uint32_t* instance) {
  return BRDX_GetDeviceInstanceOpt(hardwareId, option, instance);
}

#endif  // BOARD_BOARDSVC32_H_
