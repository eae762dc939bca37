#ifndef CLI_TABLE_H_
#define CLI_TABLE_H_

#include <string>
#include <string_view>
#include <vector>

namespace cli {

/// Rows of texts for the terminal, in columns as wide as their widest text. Widths are counted in
/// characters, not bytes.
class Table {
 public:
  explicit Table(std::vector<std::string> titles) { rows_.push_back(std::move(titles)); }

  /// As many cells as there are titles, in UTF-8 and printable.
  void Add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
  bool Empty() const { return rows_.size() == 1; }

  /// The lines, the titles first, without blanks at their ends.
  std::vector<std::string> Lines() const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

/// A name such as "hardwareInstanceId" as a title: "HARDWARE INSTANCE ID".
std::string TitleOf(std::string_view name);

}  // namespace cli

#endif  // CLI_TABLE_H_
