// The exports of boardsvc32.dll. Linked instead of loaded, the same file is a library for native
// tests.

#include "board/boardsvc32.h"

#include "standins/boardsvc32/ResultCode.h"
#include "standins/boardsvc32/Simulator.h"

using boardsim::Arguments;
using boardsim::BoardModel;
using boardsim::Operation;
using boardsim::Serve;

std::uint32_t StartHardwareDetection() {
  return Serve(Operation::kStartHardwareDetection, {},
               [](BoardModel&) { return boardsim::Answer(); });
}

std::uint32_t BRDX_ScanBL() {
  return Serve(Operation::kScan, {}, [](BoardModel& model) { return model.Scan(); });
}

std::uint32_t BRDX_CreateAllLogdevicesBL() {
  return Serve(Operation::kCreateAllLogdevices, {},
               [](BoardModel& model) { return model.CreateAllLogdevices(); });
}

std::uint32_t BRDX_HasUninitializedInstancesBL() {
  return Serve(Operation::kHasUninitializedInstances, {},
               [](BoardModel& model) { return model.HasUninitializedInstances(); });
}

std::uint32_t BRDX_RemoveAbandonLogDevices() {
  return Serve(Operation::kRemoveAbandonLogDevices, {},
               [](BoardModel& model) { return model.RemoveAbandonLogDevices(); });
}

std::uint32_t BRDX_UpdateRoute() {
  return Serve(Operation::kUpdateRoute, {}, [](BoardModel&) { return boardsim::Answer(); });
}

std::uint32_t BRDX_UpdateLogdevicesForDeviceBL(char* deviceId, char* hardwareId) {
  return Serve(
      Operation::kUpdateLogdevicesForDevice,
      Arguments().Text("deviceId", deviceId).Text("hardwareId", hardwareId),
      [=](BoardModel& model) { return model.UpdateLogdevicesForDevice(deviceId, hardwareId); });
}

std::uint32_t BRDX_EnumBoardExBL(char* deviceId, std::uint32_t index, char* board,
                                 std::uint32_t* cbBoard, char* boardMap, std::uint32_t* cbBoardMap,
                                 char* adapter, std::uint32_t* cbAdapter, std::uint32_t zero) {
  return Serve(Operation::kEnumBoard,
               Arguments()
                   .Text("deviceId", deviceId)
                   .Number("index", index)
                   .Room("board", board, cbBoard)
                   .Room("boardMap", boardMap, cbBoardMap)
                   .Room("adapter", adapter, cbAdapter)
                   .Number("zero", zero),
               [=](BoardModel& model) { return model.EnumBoard(deviceId, index); });
}

std::uint32_t BRDX_EnumInstBoardBL(std::uint32_t index, char* board, std::uint32_t* cbBoard,
                                   char* deviceId, std::uint32_t* cbDeviceId, char* netType,
                                   std::uint32_t* cbNetType, char* hardwareId,
                                   std::uint32_t* cbHardwareId, char* hardwareInstanceId,
                                   std::uint32_t* cbHardwareInstanceId, char* boardMap,
                                   std::uint32_t* cbBoardMap, std::uint32_t* state) {
  return Serve(Operation::kEnumInstBoard,
               Arguments()
                   .Number("index", index)
                   .Room("board", board, cbBoard)
                   .Room("deviceId", deviceId, cbDeviceId)
                   .Room("netType", netType, cbNetType)
                   .Room("hardwareId", hardwareId, cbHardwareId)
                   .Room("hardwareInstanceId", hardwareInstanceId, cbHardwareInstanceId)
                   .Room("boardMap", boardMap, cbBoardMap)
                   .NumberOut("state", state),
               [=](BoardModel& model) { return model.EnumInstBoard(index); });
}

std::uint32_t BRDX_EnumAvailableBoardsBL(std::uint32_t index, char* board, std::uint32_t* cbBoard,
                                         char* deviceId, std::uint32_t* cbDeviceId,
                                         std::uint32_t* value) {
  return Serve(Operation::kEnumAvailableBoards,
               Arguments()
                   .Number("index", index)
                   .Room("board", board, cbBoard)
                   .Room("deviceId", deviceId, cbDeviceId)
                   .NumberOut("value", value),
               [=](BoardModel& model) { return model.EnumAvailableBoards(index); });
}

std::uint32_t BRDX_EnumAdaptersBL(std::uint32_t index, char* adapter, std::uint32_t* cbAdapter,
                                  char* boardMap, std::uint32_t* cbBoardMap, std::uint8_t* value) {
  return Serve(Operation::kEnumAdapters,
               Arguments()
                   .Number("index", index)
                   .Room("adapter", adapter, cbAdapter)
                   .Room("boardMap", boardMap, cbBoardMap)
                   .ByteOut("value", value),
               [=](BoardModel& model) { return model.EnumAdapters(index); });
}

std::uint32_t BRDX_EnumConfigurationBL(std::uint32_t index, char* board, char* boardMap,
                                       char* deviceId, char* hardwareInstanceId,
                                       char* configuration, std::uint32_t* cbConfiguration,
                                       char* protocolType, std::uint32_t* cbProtocolType,
                                       char* layer4Protocol, std::uint32_t* cbLayer4Protocol,
                                       char* unit, std::uint32_t* cbUnit) {
  return Serve(Operation::kEnumConfiguration,
               Arguments()
                   .Number("index", index)
                   .Text("board", board)
                   .Text("boardMap", boardMap)
                   .Text("deviceId", deviceId)
                   .Text("hardwareInstanceId", hardwareInstanceId)
                   .Room("configuration", configuration, cbConfiguration)
                   .Room("protocolType", protocolType, cbProtocolType)
                   .Room("layer4Protocol", layer4Protocol, cbLayer4Protocol)
                   .Room("unit", unit, cbUnit),
               [=](BoardModel& model) {
                 return model.EnumConfiguration(index, board, boardMap, deviceId,
                                                hardwareInstanceId);
               });
}

std::uint32_t BRDX_BoardGetMapBL(char* deviceId, char* adapter, char* hardwareId, char* boardMap,
                                 std::uint32_t* cbBoardMap) {
  return Serve(Operation::kBoardGetMap,
               Arguments()
                   .Text("deviceId", deviceId)
                   .Text("adapter", adapter)
                   .Text("hardwareId", hardwareId)
                   .Room("boardMap", boardMap, cbBoardMap),
               [=](BoardModel& model) { return model.BoardGetMap(deviceId, adapter, hardwareId); });
}

std::uint32_t BRDX_GetBoardInfoBL(std::uint32_t infoType, char* board, char* boardMap,
                                  char* deviceId, char* hardwareInstanceId, char* value,
                                  std::uint32_t* cbValue) {
  return Serve(Operation::kGetBoardInfo,
               Arguments()
                   .Number("infoType", infoType)
                   .Text("board", board)
                   .Text("boardMap", boardMap)
                   .Text("deviceId", deviceId)
                   .Text("hardwareInstanceId", hardwareInstanceId)
                   .Room("value", value, cbValue),
               [=](BoardModel& model) {
                 return model.GetBoardInfo(infoType, board, boardMap, deviceId, hardwareInstanceId);
               });
}

std::uint32_t BRDX_GetBoardInfoExBL(std::uint32_t infoType, char* board, char* boardMap,
                                    char* hardwareInstanceId, std::uint8_t* buffer,
                                    std::uint32_t* cbBuffer) {
  return Serve(Operation::kGetBoardInfoEx,
               Arguments()
                   .Number("infoType", infoType)
                   .Text("board", board)
                   .Text("boardMap", boardMap)
                   .Text("hardwareInstanceId", hardwareInstanceId)
                   .Room("buffer", buffer, cbBuffer),
               [=](BoardModel& model) {
                 return model.GetBoardInfoEx(infoType, board, boardMap, hardwareInstanceId);
               });
}

std::uint32_t BRDX_RegisterForDeviceChangeNotifications(BRDX_GUID interfaceClass, char* deviceId) {
  return Serve(Operation::kRegister,
               Arguments().Guid("interfaceClass", interfaceClass).Text("deviceId", deviceId),
               [=](BoardModel& model) { return model.Register(interfaceClass, deviceId); });
}

std::uint32_t BRDX_UnregisterForDeviceChangeNotifications(BRDX_GUID interfaceClass,
                                                          char* deviceId) {
  return Serve(Operation::kUnregister,
               Arguments().Guid("interfaceClass", interfaceClass).Text("deviceId", deviceId),
               [=](BoardModel& model) { return model.Unregister(interfaceClass, deviceId); });
}

std::uint32_t BRDX_GetDeviceChange(char* deviceId, std::uint8_t* kind, BRDX_GUID* guid, char* text,
                                   std::uint32_t* cbText) {
  return Serve(Operation::kGetDeviceChange,
               Arguments()
                   .Text("deviceId", deviceId)
                   .ByteOut("kind", kind)
                   .GuidOut("guid", guid)
                   .Room("text", text, cbText),
               [=](BoardModel& model) { return model.GetDeviceChange(deviceId); });
}

std::uint32_t BRDX_GetBoardInformation(std::uint8_t*, BRDX_INFO_INPUT* input,
                                       BRDX_INFO_OUTPUT* output, std::uint32_t last) {
  // The first block has no length of its own in this interface, so nobody looks into it here.
  if (input == nullptr || output == nullptr) {
    return Serve(
        Operation::kGetBoardInformation, Arguments().Number("last", last),
        [](BoardModel&) { return boardsim::Answer{.result = boardsim::kInvalidParameter}; });
  }
  std::uint32_t cbArea1 = input->cbArea1;
  std::uint32_t cbArea2 = output->cbArea2;
  return Serve(Operation::kGetBoardInformation,
               Arguments()
                   .Number("value1", input->value1)
                   .Number("value2", input->value2)
                   .Number("value3", input->value3)
                   .Bytes("data", input->data, input->cbData)
                   .Room("area1", input->area1, &cbArea1)
                   .NumberOut("value", input->value)
                   .Room("area2", output->area2, &cbArea2)
                   .NumberOut("result1", &output->result1)
                   .NumberOut("result2", &output->result2)
                   .Number("last", last),
               [=](BoardModel& model) { return model.GetBoardInformation(*input, last); });
}

std::uint32_t BRDX_GetDeviceInstance(char* hardwareId, std::uint32_t* instance) {
  return Serve(
      Operation::kGetDeviceInstance,
      Arguments().Text("hardwareId", hardwareId).NumberOut("instance", instance),
      [=](BoardModel& model) { return model.GetDeviceInstance(hardwareId, /*option=*/nullptr); });
}

std::uint32_t BRDX_GetDeviceInstanceOpt(char* hardwareId, std::uint32_t option,
                                        std::uint32_t* instance) {
  return Serve(Operation::kGetDeviceInstanceOpt,
               Arguments()
                   .Text("hardwareId", hardwareId)
                   .Number("option", option)
                   .NumberOut("instance", instance),
               [=](BoardModel& model) { return model.GetDeviceInstance(hardwareId, &option); });
}
