#include "cli/Table.h"

#include <algorithm>

#include "cli/Json.h"
#include "platform/AsciiCase.h"

namespace cli {
namespace {

std::size_t CharactersOf(std::string_view utf8) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < utf8.size(); ++count) (void)NextCharacter(utf8, at);
  return count;
}

bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }

}  // namespace

std::vector<std::string> Table::Lines() const {
  std::vector<std::size_t> widths(rows_[0].size());
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], CharactersOf(row[i]));
    }
  }
  std::vector<std::string> lines;
  for (const auto& row : rows_) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += row[i] + std::string(widths[i] - CharactersOf(row[i]) + 2, ' ');
    }
    line.resize(line.find_last_not_of(' ') + 1);
    lines.push_back(line);
  }
  return lines;
}

std::string TitleOf(std::string_view name) {
  std::string title;
  for (const char c : name) {
    if (IsUpper(c)) title += ' ';
    title += platform::UpperCase(c);
  }
  return title;
}

}  // namespace cli
