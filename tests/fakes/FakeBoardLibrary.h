#ifndef TESTS_FAKES_FAKEBOARDLIBRARY_H_
#define TESTS_FAKES_FAKEBOARDLIBRARY_H_

#include <functional>
#include <string>
#include <vector>

#include "board/boardsvc32.h"

/// The board-control library, behind board/boardsvc32.h. Every operation is a function that a test
/// sets; one that is not set answers 0 and fills nothing in.
namespace fake_board_library {

struct Library {
  std::function<decltype(::StartHardwareDetection)> startHardwareDetection;
  std::function<decltype(::BRDX_ScanBL)> scan;
  std::function<decltype(::BRDX_CreateAllLogdevicesBL)> createAllLogdevices;
  std::function<decltype(::BRDX_HasUninitializedInstancesBL)> hasUninitializedInstances;
  std::function<decltype(::BRDX_RemoveAbandonLogDevices)> removeAbandonLogDevices;
  std::function<decltype(::BRDX_UpdateRoute)> updateRoute;
  std::function<decltype(::BRDX_UpdateLogdevicesForDeviceBL)> updateLogdevicesForDevice;
  std::function<decltype(::BRDX_EnumBoardExBL)> enumBoardEx;
  std::function<decltype(::BRDX_EnumInstBoardBL)> enumInstBoard;
  std::function<decltype(::BRDX_EnumAvailableBoardsBL)> enumAvailableBoards;
  std::function<decltype(::BRDX_EnumAdaptersBL)> enumAdapters;
  std::function<decltype(::BRDX_EnumConfigurationBL)> enumConfiguration;
  std::function<decltype(::BRDX_BoardGetMapBL)> boardGetMap;
  std::function<decltype(::BRDX_GetBoardInfoBL)> getBoardInfo;
  std::function<decltype(::BRDX_GetBoardInfoExBL)> getBoardInfoEx;
  std::function<decltype(::BRDX_RegisterForDeviceChangeNotifications)> registerForChanges;
  std::function<decltype(::BRDX_UnregisterForDeviceChangeNotifications)> unregisterForChanges;
  std::function<decltype(::BRDX_GetDeviceChange)> getDeviceChange;
  std::function<decltype(::BRDX_GetBoardInformation)> getBoardInformation;
  std::function<decltype(::BRDX_GetDeviceInstance)> getDeviceInstance;
  std::function<decltype(::BRDX_GetDeviceInstanceOpt)> getDeviceInstanceOpt;
};

/// The operations in force.
Library& Lib();

/// Names of the operations called since Reset, as the library exports them.
std::vector<std::string>& Calls();

void Reset();

/// What StartHardwareDetection does; nothing after a call without argument.
void OnStartHardwareDetection(std::function<void()> action = {});

}  // namespace fake_board_library

#endif  // TESTS_FAKES_FAKEBOARDLIBRARY_H_
