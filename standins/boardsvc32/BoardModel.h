#ifndef STANDINS_BOARDSVC32_BOARDMODEL_H_
#define STANDINS_BOARDSVC32_BOARDMODEL_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "standins/boardsvc32/Arguments.h"
#include "standins/boardsvc32/Inventory.h"

namespace boardsim {

/// A machine with boards: what each operation of the library answers, and what changes by it.
///
/// Texts are null when the caller gave none. A text that one side leaves empty fits any text of the
/// other; otherwise texts are compared without regard to case. Enumerations answer 259 past their
/// end, look-ups 2. Logical devices live in log_device_store.h; everything else in memory.
class BoardModel {
 public:
  explicit BoardModel(Inventory inventory = {});

  /// Counts a scan, which lets boards appear and vanish, and notes in every simulated logical
  /// device whether its board is present. \returns 0 or a registry code.
  Answer Scan();

  /// Creates the logical device of every present board that has none. \returns like Scan.
  Answer CreateAllLogdevices();

  /// Deletes the simulated logical devices that no present board has. \returns like Scan.
  Answer RemoveAbandonLogDevices();

  /// Rewrites, or creates, the logical devices of the present boards with this device id and
  /// hardware id, those that somebody else made excepted. \returns like Scan; 87 without a device
  /// id, 2 if no present board has it.
  Answer UpdateLogdevicesForDevice(const char* deviceId, const char* hardwareId);

  Answer HasUninitializedInstances() const;

  /// The n-th present board with the device id.
  Answer EnumBoard(const char* deviceId, std::uint32_t index) const;
  /// The n-th board, present or abandoned.
  Answer EnumInstBoard(std::uint32_t index) const;
  Answer EnumAvailableBoards(std::uint32_t index) const;
  Answer EnumAdapters(std::uint32_t index) const;
  Answer EnumConfiguration(std::uint32_t index, const char* board, const char* map,
                           const char* deviceId, const char* hardwareInstanceId) const;

  /// The first entry that fits; without one, the map of the first present board that does.
  Answer BoardGetMap(const char* deviceId, const char* adapter, const char* hardwareId) const;
  Answer GetBoardInfo(std::uint32_t type, const char* board, const char* map, const char* deviceId,
                      const char* hardwareInstanceId) const;
  Answer GetBoardInfoEx(std::uint32_t type, const char* board, const char* map,
                        const char* hardwareInstanceId) const;

  /// 2 if neither a board nor a change has the device id. Twice is once.
  Answer Register(const BRDX_GUID& guid, const char* deviceId);
  /// 2 if there is no such registration.
  Answer Unregister(const BRDX_GUID& guid, const char* deviceId);
  /// The first change that is still to be delivered and that a registration covers; 259 without.
  Answer GetDeviceChange(const char* deviceId) const;

  Answer GetBoardInformation(const BRDX_INFO_INPUT& input, std::uint32_t last) const;

  /// `option` is null for the look-up without one. An entry with that option comes before one
  /// without any; an entry with an option is never found without it.
  Answer GetDeviceInstance(const char* hardwareId, const std::uint32_t* option) const;

  /// The answer reached its caller whole; a change is delivered only then.
  void Delivered(const Answer& answer);

 private:
  struct Registration {
    BRDX_GUID guid;
    std::string deviceId;
  };

  bool IsPresent(const Board& board) const;
  bool IsPresentDevice(std::string_view logicalDevice) const;
  bool Knows(std::string_view deviceId) const;
  bool IsRegistered(const DeviceChange& change) const;
  std::vector<Registration>::iterator Find(const BRDX_GUID& guid, std::string_view deviceId);

  Inventory inventory_;
  std::uint32_t scans_ = 0;
  std::vector<Registration> registrations_;
  std::vector<bool> delivered_;  // one per change of the inventory
};

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_BOARDMODEL_H_
