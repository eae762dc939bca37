#include "server/CommandTable.h"

#include <algorithm>
#include <iterator>

namespace {

using enum Answer;
using Srv = CQorlixSRVPipe;

constexpr CommandRow kCommands[] = {
    {CommandCode::Reg_DelKey, Handler, &Srv::Reg_DelKey},
    {CommandCode::Reg_CreateKey, Handler, &Srv::Reg_CreateKey},
    {CommandCode::Reg_SetValue, Handler, &Srv::Reg_SetValue},
    {CommandCode::Install, Loop, &Srv::Install},
    {CommandCode::Deinstall, Loop, &Srv::Deinstall},
    {CommandCode::AddIpAddress, LoopWithOutputs, &Srv::AddIpAddress},
    {CommandCode::DelIpAddress, Loop, &Srv::DelIpAddress},
    {CommandCode::InstallWdmDriver_32, HandlerThenLoop, &Srv::InstallWdmDriver_32},
    {CommandCode::NoOperation, Loop, &Srv::NoOperation},
    {CommandCode::RunOnlinePanel_32, HandlerThenLoop, &Srv::RunOnlinePanel_32},
    {CommandCode::Reg_DelValue, Handler, &Srv::Reg_DelValue},
    {CommandCode::Reg_EnumKey, Handler, &Srv::Reg_EnumKey},
    {CommandCode::Reg_GetValue, Handler, &Srv::Reg_GetValue},
    {CommandCode::Reg_EnumValue, Handler, &Srv::Reg_EnumValue},
    {CommandCode::Reg_SetValueBase, Handler, &Srv::Reg_SetValueBase},
    {CommandCode::Reg_CreateKeyBase, Handler, &Srv::Reg_CreateKeyBase},
    {CommandCode::Reg_DelKeyBase, Handler, &Srv::Reg_DelKeyBase},
    {CommandCode::BC_HasUninitializedInstances, Handler, &Srv::BC_HasUninitializedInstances},
    {CommandCode::BC_BoardGetMap, Handler, &Srv::BC_BoardGetMap},
    {CommandCode::GetBoardInformation, Handler, &Srv::GetBoardInformation},
    {CommandCode::BC_EnumInstBoard, Handler, &Srv::BC_EnumInstBoard},
    {CommandCode::BC_EnumBoard, Handler, &Srv::BC_EnumBoard},
    {CommandCode::BC_EnumAvailableBoard, Handler, &Srv::BC_EnumAvailableBoard},
    {CommandCode::BC_GetBoardInfo, Handler, &Srv::BC_GetBoardInfo},
    {CommandCode::BC_EnumConfiguration, Handler, &Srv::BC_EnumConfiguration},
    {CommandCode::BC_EnumAdapters, Handler, &Srv::BC_EnumAdapters},
    {CommandCode::BC_Scan, Handler, &Srv::BC_Scan},
    {CommandCode::BC_UpdateLogDevicesForDevice, Handler, &Srv::BC_UpdateLogDevicesForDevice},
    {CommandCode::BC_CreateAllLogdevices, Handler, &Srv::BC_CreateAllLogdevices},
    {CommandCode::BC_GetBoardInfoEx, Handler, &Srv::BC_GetBoardInfoEx},
    {CommandCode::TestFunction, Handler, &Srv::TestFunction},
    {CommandCode::StopServer, Stop, &Srv::StopServer},
    {CommandCode::RegisterForDeviceChangeNotifications, Handler,
     &Srv::RegisterForDeviceChangeNotifications},
    {CommandCode::UnregisterForDeviceChangeNotifications, Handler,
     &Srv::UnregisterForDeviceChangeNotifications},
    {CommandCode::GetDeviceChange, Handler, &Srv::GetDeviceChange},
    {CommandCode::SilentRestart, Handler, &Srv::SilentRestart},
    {CommandCode::GetSilentRestartResult, Handler, &Srv::GetSilentRestartResult},
    {CommandCode::GetDeviceStateEx, Handler, &Srv::GetDeviceStateEx},
    {CommandCode::BC_PlausibilitaetBL, Handler, &Srv::BC_PlausibilitaetBL},
};

constexpr bool IsBelow(const CommandRow& a, const CommandRow& b) { return a.code < b.code; }

static_assert(std::size(kCommands) == 39);
static_assert(std::is_sorted(std::begin(kCommands), std::end(kCommands), IsBelow),
              "the look-up is a binary search");

}  // namespace

const CommandRow* FindCommand(std::uint16_t code) {
  const CommandRow wanted{static_cast<CommandCode>(code), Handler, nullptr};
  const auto* const row =
      std::lower_bound(std::begin(kCommands), std::end(kCommands), wanted, IsBelow);
  return row != std::end(kCommands) && row->code == wanted.code ? row : nullptr;
}
