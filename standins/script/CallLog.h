#ifndef STANDINS_SCRIPT_CALLLOG_H_
#define STANDINS_SCRIPT_CALLLOG_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "standins/script/CallScript.h"

namespace standin {

/// One call, as far as its arguments do not tell it.
struct CallRecord {
  std::uint32_t sequence = 0;  ///< counted from 1 over all exports of one library in one process
  Export which{};
  std::uint32_t result = 0;
  Raised raised = Raised::kNothing;
  std::uint32_t thread = 0;
  std::size_t answerLine = 0;  ///< of the script; 0 where nothing was scripted
};

/// 7 IE_AddIPAddressEx address=1 mask=255 ifIndex=2 -> 0 nteContext=1 nteInstance=101 thread=292
///
/// `in` and `outs` are those of Arguments. Without line end.
std::string FormatCall(const CallRecord& call, const std::string& in, const std::string& outs);

}  // namespace standin

#endif  // STANDINS_SCRIPT_CALLLOG_H_
