#include "standins/script/CallLog.h"

namespace standin {

std::string FormatCall(const CallRecord& call, const std::string& in, const std::string& outs) {
  std::string line = std::to_string(call.sequence) + ' ' + std::string(RowOf(call.which).name);
  if (!in.empty()) line += ' ' + in;
  line += " -> ";
  if (call.raised != Raised::kNothing) {
    line += "raise " + std::string(NameOf(call.raised));
  } else {
    line += std::to_string(call.result);
    if (!outs.empty()) line += ' ' + outs;
  }
  line += " thread=" + std::to_string(call.thread);
  if (call.answerLine != 0) line += " answer=" + std::to_string(call.answerLine);
  return line;
}

}  // namespace standin
