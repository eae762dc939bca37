#ifndef SERVER_COMMANDCODE_H_
#define SERVER_COMMANDCODE_H_

#include <cstdint>

/// The first 16 bits of every request, little-endian. Every other value is unknown (8620).
enum class CommandCode : std::uint16_t {
  Reg_DelKey = 1,
  Reg_CreateKey = 2,
  Reg_SetValue = 3,
  Install = 5,
  Deinstall = 6,
  AddIpAddress = 12,
  DelIpAddress = 13,
  InstallWdmDriver_32 = 15,
  NoOperation = 16,
  RunOnlinePanel_32 = 17,
  Reg_DelValue = 18,
  Reg_EnumKey = 21,
  Reg_GetValue = 22,
  Reg_EnumValue = 23,
  Reg_SetValueBase = 28,
  Reg_CreateKeyBase = 29,
  Reg_DelKeyBase = 30,
  BC_HasUninitializedInstances = 88,
  BC_BoardGetMap = 163,
  GetBoardInformation = 191,
  BC_EnumInstBoard = 192,
  BC_EnumBoard = 193,
  BC_EnumAvailableBoard = 194,
  BC_GetBoardInfo = 195,
  BC_EnumConfiguration = 196,
  BC_EnumAdapters = 197,
  BC_Scan = 199,
  BC_UpdateLogDevicesForDevice = 200,
  BC_CreateAllLogdevices = 201,
  BC_GetBoardInfoEx = 207,
  TestFunction = 240,
  StopServer = 253,
  RegisterForDeviceChangeNotifications = 256,
  UnregisterForDeviceChangeNotifications = 257,
  GetDeviceChange = 258,
  SilentRestart = 288,
  GetSilentRestartResult = 289,
  GetDeviceStateEx = 290,
  BC_PlausibilitaetBL = 292,
};

/// Confirmation value of `StopServer`: the command code repeated.
inline constexpr std::uint32_t kStopConfirmation = 253;

/// First field of every reply.
inline constexpr std::uint16_t REPLY_MARK = 4;

/// Length of a text or buffer field that is absent; no bytes follow it.
inline constexpr std::uint32_t kAbsentLength = 65535;

#endif  // SERVER_COMMANDCODE_H_
