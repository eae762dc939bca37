#include "tests/hostile/TextTable.h"

#include <algorithm>
#include <cstdio>

namespace hostile {

void TextTable::Print(bool markdown) const {
  std::vector<std::size_t> widths;
  for (const Row& row : rows_) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  bool head = true;
  for (const Row& row : rows_) {
    std::string line = markdown ? "|" : "";
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (markdown) {
        line += " " + row[i] + " |";
      } else {
        line += row[i] + std::string(i + 1 < row.size() ? widths[i] - row[i].size() + 2 : 0, ' ');
      }
    }
    std::printf("%s\n", line.c_str());
    if (head && markdown) {
      std::string rule = "|";
      for (std::size_t i = 0; i < row.size(); ++i) rule += i == 0 ? "---|" : "---:|";
      std::printf("%s\n", rule.c_str());
    }
    head = false;
  }
  (void)std::fflush(stdout);
}

}  // namespace hostile
