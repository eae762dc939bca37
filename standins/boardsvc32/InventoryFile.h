#ifndef STANDINS_BOARDSVC32_INVENTORYFILE_H_
#define STANDINS_BOARDSVC32_INVENTORYFILE_H_

#include <string>
#include <string_view>
#include <vector>

#include "standins/boardsvc32/FaultScript.h"
#include "standins/boardsvc32/Inventory.h"
#include "standins/boardsvc32/InventoryText.h"

namespace boardsim {

/// What a file says. With errors, inventory and faults are empty, so that a typo is never half a
/// machine; the name of the log stays, because that is where the errors go.
struct InventoryFile {
  Inventory inventory;
  std::vector<Fault> faults;
  std::string logFile;
  std::vector<InventoryError> errors;
};

/// The format is told in README.md beside this file.
InventoryFile ParseInventory(std::string_view text);

/// Reads a file. One that cannot be read, or is above 1 MiB, has an error at line 0.
InventoryFile LoadInventory(const std::string& path);

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_INVENTORYFILE_H_
