#ifndef STANDINS_BOARDSVC32_CALLLOG_H_
#define STANDINS_BOARDSVC32_CALLLOG_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "standins/boardsvc32/Arguments.h"
#include "standins/script/LogFile.h"

namespace boardsim {

/// The board-control lock, as another thread found it during the call.
enum class LockState { kNone, kFree, kHeld };

/// One call, as far as its arguments do not tell it.
struct CallRecord {
  std::uint32_t sequence = 0;  ///< counted from 1 over all operations
  Operation operation{};
  std::uint32_t result = 0;
  Raised raised = Raised::kNothing;
  LockState lock = LockState::kNone;
  std::uint32_t thread = 0;
  std::size_t faultLine = 0;  ///< of the inventory; 0 without a fault
};

/// 7 BRDX_BoardGetMapBL deviceId="HWX7101" ... boardMap[8192] -> 0 boardMap=1 lock=held thread=292
///
/// `in` and `out` are those of Arguments. Without line end.
std::string FormatCall(const CallRecord& call, const std::string& in, const std::string& out);

using standin::AppendLine;

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_CALLLOG_H_
