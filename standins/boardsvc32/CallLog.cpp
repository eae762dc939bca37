#include "standins/boardsvc32/CallLog.h"

namespace boardsim {

namespace {

const char* NameOf(LockState lock) {
  if (lock == LockState::kHeld) return "held";
  return lock == LockState::kFree ? "free" : "none";
}

}  // namespace

std::string FormatCall(const CallRecord& call, const std::string& in, const std::string& out) {
  std::string line = std::to_string(call.sequence) + ' ' + std::string(RowOf(call.operation).name);
  if (!in.empty()) line += ' ' + in;
  line += " -> ";
  if (call.raised != Raised::kNothing) {
    line += "raise " + std::string(NameOf(call.raised));
  } else {
    line += std::to_string(call.result);
    if (!out.empty()) line += ' ' + out;
  }
  line += std::string(" lock=") + NameOf(call.lock) + " thread=" + std::to_string(call.thread);
  if (call.faultLine != 0) line += " fault=" + std::to_string(call.faultLine);
  return line;
}

}  // namespace boardsim
