#ifndef TESTS_HOSTILE_TEXTTABLE_H_
#define TESTS_HOSTILE_TEXTTABLE_H_

#include <string>
#include <vector>

namespace hostile {

/// Rows for a reader at the terminal, or as Markdown. The first row is the head.
class TextTable {
 public:
  using Row = std::vector<std::string>;

  void Add(const Row& row) { rows_.push_back(row); }
  void Print(bool markdown) const;

 private:
  std::vector<Row> rows_;
};

}  // namespace hostile

#endif  // TESTS_HOSTILE_TEXTTABLE_H_
