#include "standins/script/LogFile.h"

#include <cstdio>

namespace standin {

bool AppendLine(const std::string& path, const std::string& line) {
  // Opened anew for every line, so that a test may take the file away between two calls; one write
  // per line, so that two writers do not tear each other's lines.
  std::FILE* const file = std::fopen(path.c_str(), "ab");
  if (file == nullptr) return false;
  const std::string ended = line + '\n';
  const bool written = std::fwrite(ended.data(), 1, ended.size(), file) == ended.size();
  return (std::fclose(file) == 0) && written;
}

}  // namespace standin
