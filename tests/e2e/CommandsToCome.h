#ifndef TESTS_E2E_COMMANDSTOCOME_H_
#define TESTS_E2E_COMMANDSTOCOME_H_

#include <cstdint>

namespace e2e {

struct CommandToCome {
  std::uint16_t code;
  const char* name;
};

/// Commands that the server knows by name but does not serve yet. Until it does, they are answered
/// as every unknown code is; a row goes when its command comes.
inline constexpr CommandToCome kCommandsToCome[] = {
    {5, "Install"},
    {6, "Deinstall"},
    {12, "AddIpAddress"},
    {13, "DelIpAddress"},
    {15, "InstallWdmDriver_32"},
    {17, "RunOnlinePanel_32"},
    {88, "BC_HasUninitializedInstances"},
    {163, "BC_BoardGetMap"},
    {191, "GetBoardInformation"},
    {192, "BC_EnumInstBoard"},
    {193, "BC_EnumBoard"},
    {194, "BC_EnumAvailableBoard"},
    {195, "BC_GetBoardInfo"},
    {196, "BC_EnumConfiguration"},
    {197, "BC_EnumAdapters"},
    {199, "BC_Scan"},
    {200, "BC_UpdateLogDevicesForDevice"},
    {201, "BC_CreateAllLogdevices"},
    {207, "BC_GetBoardInfoEx"},
    {240, "TestFunction"},
    {256, "RegisterForDeviceChangeNotifications"},
    {257, "UnregisterForDeviceChangeNotifications"},
    {258, "GetDeviceChange"},
    {288, "SilentRestart"},
    {289, "GetSilentRestartResult"},
    {290, "GetDeviceStateEx"},
    {292, "BC_PlausibilitaetBL"},
};

}  // namespace e2e

#endif  // TESTS_E2E_COMMANDSTOCOME_H_
