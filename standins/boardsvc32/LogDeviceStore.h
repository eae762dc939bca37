#ifndef STANDINS_BOARDSVC32_LOGDEVICESTORE_H_
#define STANDINS_BOARDSVC32_LOGDEVICESTORE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "standins/boardsvc32/Inventory.h"

/// The logical devices of the machine: one key each below
/// "Software\Vesmark\NORVA\LogDevices" of HKEY_LOCAL_MACHINE.
///
/// Results are 0 or a registry code. A key that Write made carries the value "Simulated" and is
/// ours; no other key is ever changed by the callers of this header.
namespace boardsim::log_device_store {

struct Entry {
  std::string name;
  bool ours;
};

/// All logical devices; none without the area.
std::vector<Entry> List();

/// Creates the key of the board's logical device, or rewrites it: the texts "Board", "DeviceId",
/// "NetType", "BoardMap", "Adapter", "HardwareId", "HardwareInstanceId", the numbers "Present" 1
/// and "Simulated" 1.
std::uint32_t Write(const Board& board);

/// Sets the number "Present".
std::uint32_t MarkPresent(const std::string& name, bool present);

/// Deletes the key.
std::uint32_t Remove(const std::string& name);

}  // namespace boardsim::log_device_store

#endif  // STANDINS_BOARDSVC32_LOGDEVICESTORE_H_
