#ifndef STANDINS_BOARDSVC32_FAULTSCRIPT_H_
#define STANDINS_BOARDSVC32_FAULTSCRIPT_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "standins/boardsvc32/Operation.h"
#include "standins/boardsvc32/SectionReader.h"
#include "standins/script/Raised.h"

namespace boardsim {

using standin::Raised;

/// What a call does to the room behind its answers. Never more than the caller's capacity.
enum class Fill {
  kNothing,
  kUnterminated,  ///< the answer, then letters up to the capacity: no zero anywhere
  kCapacity,      ///< letters only, as many as the capacity, which is the length reported
};

/// What goes wrong in the calls `first` to `last` of one operation.
struct Fault {
  std::size_t line = 0;  ///< of the file, for the log
  Operation operation{};
  std::uint32_t first = 1, last = UINT32_MAX;
  std::optional<std::uint32_t> result{};  ///< answered without asking the model
  std::uint32_t delay = 0;                ///< milliseconds
  Raised raised = Raised::kNothing;
  Fill fill = Fill::kNothing;
  std::vector<std::optional<std::uint32_t>> lengths{};  ///< reported in their order; may be fewer
};

/// Reads a section "[fault OPERATION]"; what does not fit is reported.
Fault ReadFault(const InventorySection& section, std::vector<InventoryError>& errors);

/// Counts the calls of every operation and knows which goes wrong.
class FaultScript {
 public:
  explicit FaultScript(std::vector<Fault> faults = {}) : faults_(std::move(faults)) {}

  /// Counts one call. \returns the first fault in the file that is for it, or nothing.
  const Fault* NextCall(Operation operation);

 private:
  std::vector<Fault> faults_;
  std::array<std::uint32_t, kOperations.size()> calls_{};
};

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_FAULTSCRIPT_H_
