#ifndef TRACE_TRACEROTATION_H_
#define TRACE_TRACEROTATION_H_

#include <cstdint>
#include <optional>
#include <string_view>

namespace zqotrc {

/// Which of the two files goes on after a start: the one that was written last, the first one when
/// that does not decide.
int ChooseFile(std::optional<std::uint64_t> firstWritten,
               std::optional<std::uint64_t> secondWritten);

/// The two alternating files of an output, "<prefix>1.TRC" and "<prefix>2.TRC".
///
/// No file stays open between lines, so that several processes can share the pair.
class FilePair {
 public:
  /// Finds out which file is the current one.
  void Choose(const char* prefix);

  /// Appends a line to the current file. A file that is found above the limit is left for the other
  /// one, which is emptied if it is above the limit as well; a line that crosses the limit is the
  /// last one of its file. The line is dropped when a file cannot be opened or measured.
  void Append(const char* prefix, std::uint32_t limit, std::string_view line);

  int current() const { return current_; }

 private:
  int current_ = 1;
};

}  // namespace zqotrc

#endif  // TRACE_TRACEROTATION_H_
