#include "standins/script/CallLog.h"

#include <cstdio>

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

bool AppendLine(const std::string& path, const std::string& line) {
  // Opened anew for every line, so that a test may take the file away between two calls; one write
  // per line, so that two threads do not tear each other's lines.
  std::FILE* const file = std::fopen(path.c_str(), "ab");
  if (file == nullptr) return false;
  const std::string ended = line + '\n';
  const bool written = std::fwrite(ended.data(), 1, ended.size(), file) == ended.size();
  return (std::fclose(file) == 0) && written;
}

}  // namespace standin
