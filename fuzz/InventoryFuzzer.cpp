// Any file is either a machine or a list of errors that name its lines, never half of both; and a
// text that the log quotes is taken back from a file as the same bytes.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

#include "standins/boardsvc32/InventoryFile.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

bool IsEmpty(const boardsim::Inventory& inventory) {
  return inventory.boards.empty() && inventory.availableBoards.empty() &&
         inventory.adapters.empty() && inventory.configurations.empty() && inventory.maps.empty() &&
         inventory.infos.empty() && inventory.infosEx.empty() && inventory.instances.empty() &&
         inventory.changes.empty() && inventory.informations.empty() &&
         inventory.uninitializedInstances == 0;
}

void CheckFile(const std::string& text) {
  boardsim::InventoryFile file = boardsim::ParseInventory(text);
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  for (const auto& error : file.errors) {
    Require(error.line >= 1 && error.line <= lines && !error.text.empty());
  }
  if (!file.errors.empty()) Require(IsEmpty(file.inventory) && file.faults.empty());
  for (const auto& board : file.inventory.boards) {
    Require(!board.logicalDevice.empty() && board.logicalDevice.find('\\') == std::string::npos);
  }
  for (const auto& adapter : file.inventory.adapters) Require(adapter.value <= 255);
  for (const auto& fault : file.faults) {
    Require(fault.first >= 1 && fault.first <= fault.last);
    Require(fault.lengths.empty() ||
            fault.lengths.size() == boardsim::RowOf(fault.operation).lengths);
    Require(fault.line >= 1 && fault.line <= lines);
  }
  boardsim::FaultScript script(std::move(file.faults));
  for (int call = 0; call < 3; ++call) (void)script.NextCall(boardsim::Operation::kScan);
}

void CheckQuote(std::string text) {
  std::replace(text.begin(), text.end(), '\0', '0');
  const auto file =
      boardsim::ParseInventory("[info]\ntype=1\ntext=" + boardsim::Quote(text) + "\n");
  Require(file.errors.empty() && file.inventory.infos.at(0).value == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  CheckFile(text);
  CheckQuote(text);
  return 0;
}
