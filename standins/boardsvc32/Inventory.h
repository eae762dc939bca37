#ifndef STANDINS_BOARDSVC32_INVENTORY_H_
#define STANDINS_BOARDSVC32_INVENTORY_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "board/boardsvc32.h"

namespace boardsim {

struct Board {
  std::string name, deviceId, netType, hardwareId, hardwareInstanceId, map, adapter;
  std::string logicalDevice;         ///< name of its key below LogDevices; never empty
  std::uint32_t state = 0;           ///< answered while it is present
  std::uint32_t abandonedState = 1;  ///< answered while it is not
  bool present = true;
  std::uint32_t appearsAtScan =
      0;  ///< number of the scan that finds it first; 0: there from the start
  std::uint32_t vanishesAtScan = 0;  ///< number of the scan that misses it first; 0: it stays
};

struct AvailableBoard {
  std::string name, deviceId;
  std::uint32_t value = 0;
};

struct Adapter {
  std::string name, map;
  std::uint32_t value = 0;  ///< below 256
};

/// Texts that narrow an entry down; an empty one fits everything.
struct BoardSelector {
  std::string board, map, deviceId, hardwareInstanceId;
};

struct Configuration {
  BoardSelector of;
  std::string configuration, protocolType, layer4Protocol, unit;
};

struct MapEntry {
  std::string deviceId, adapter, hardwareId, map;
};

struct BoardInfo {
  std::uint32_t type = 0;
  BoardSelector of;
  std::string value;  ///< a text, or bytes
};

struct DeviceInstance {
  std::string hardwareId;
  std::optional<std::uint32_t> option;
  std::uint32_t instance = 0;
};

struct DeviceChange {
  std::string deviceId;
  std::uint32_t kind = 0;  ///< below 256
  BRDX_GUID guid{};
  std::string text;
};

/// One answer of BRDX_GetBoardInformation, and the request that it is for; what is not set fits
/// all.
struct BoardInformation {
  std::optional<std::uint32_t> value1, value2, value3, last;
  std::uint32_t result = 0, value = 0, result1 = 0, result2 = 0;
  std::string area1, area2;
};

/// What the simulated machine has.
struct Inventory {
  std::vector<Board> boards;
  std::vector<AvailableBoard> availableBoards;
  std::vector<Adapter> adapters;
  std::vector<Configuration> configurations;
  std::vector<MapEntry> maps;
  std::vector<BoardInfo> infos, infosEx;
  std::vector<DeviceInstance> instances;
  std::vector<DeviceChange> changes;
  std::vector<BoardInformation> informations;
  std::uint32_t uninitializedInstances = 0;  ///< answered by BRDX_HasUninitializedInstancesBL
};

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_INVENTORY_H_
