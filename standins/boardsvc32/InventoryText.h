#ifndef STANDINS_BOARDSVC32_INVENTORYTEXT_H_
#define STANDINS_BOARDSVC32_INVENTORYTEXT_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace boardsim {

struct InventoryError {
  std::size_t line;  ///< 0: the file as a whole
  std::string text;
};

struct InventoryEntry {
  std::string key, value;
  std::size_t line;
};

/// "[fault BRDX_ScanBL]" has the name "fault" and the argument "BRDX_ScanBL".
struct InventorySection {
  std::string name, argument;
  std::size_t line;
  std::vector<InventoryEntry> entries;
};

/// Takes a file apart into sections of keys and values; says nothing about which there may be.
///
/// Every line that cannot be read adds an error and is left out.
std::vector<InventorySection> SplitInventory(std::string_view text,
                                             std::vector<InventoryError>& errors);

/// A text in quotation marks, in printable ASCII: what the file takes back as the same bytes.
std::string Quote(std::string_view text);

std::string_view TrimBlanks(std::string_view text);

bool EqualIgnoringCase(std::string_view left, std::string_view right);

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_INVENTORYTEXT_H_
