#ifndef TRACEVIEW_TRACEFILES_H_
#define TRACEVIEW_TRACEFILES_H_

/// The pair of trace files, read as one: which of the two is older, and what comes next.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "traceview/FileAccess.h"
#include "traceview/TraceLine.h"

namespace traceview {

/// The two files of a pair, "X1.TRC" and "X2.TRC", if the path is one of them; else the path alone.
std::vector<std::string> PairOf(const std::string& path);

/// Takes a text apart into lines; what stands behind the last line end comes as a line as well. A
/// first or last line that is only a part of one is marked as torn.
void SplitLines(std::string_view text, std::uint32_t source, std::vector<TraceLine>& lines);

/// Whether lines look like no trace at all: none has the columns of a layout, and most have not
/// even the blank at their end that TEXT writes.
bool LooksForeign(std::span<const TraceLine> lines);

/// One file of a pair with what is known of it.
struct ReadFile {
  FileState state;
  std::vector<TraceLine> lines;
};

/// Whether the lines of `one` were written before those of `other`: by the time of the last
/// writing; if that is the same by the times in the lines; if there are none, the second file of a
/// pair is the older one, because the facility goes on with the first.
bool IsOlder(const ReadFile& one, const ReadFile& other);

/// Follows a file, or a pair across its rotation, without holding anything open.
///
/// A file that was deleted and written anew since the last look is read from its start. What was
/// written and deleted between two looks is lost, unseen.
class FileFollower {
 public:
  /// \param paths one file or two
  explicit FileFollower(std::span<const std::string> paths);

  /// Begins behind everything that is there by now.
  void SkipToEnd();

  /// \returns the whole lines, without line ends, that have come since the last look, in order.
  std::vector<std::string> Poll();

  /// The error code of the last look; 0 when all went well. A file that is missing is no error.
  std::uint32_t error() const { return error_; }

 private:
  struct Place {
    std::string path;
    std::uint64_t offset = 0;    ///< behind what was read
    std::uint64_t identity = 0;  ///< of the file that the offset belongs to
    std::string behind;          ///< the last bytes in front of the offset, to know the file by
    std::string partial;         ///< of them, the line that has no end yet
  };

  bool IsSameFile(const Place& place, const FileState& state);
  bool ReadNews(Place& place, std::vector<std::string>& lines);
  static void TakeLines(Place& place, std::string_view bytes, std::vector<std::string>& lines);

  std::vector<Place> places_;
  std::size_t current_ = 0;  ///< the place that the last line came from
  std::uint32_t error_ = 0;
};

}  // namespace traceview

#endif  // TRACEVIEW_TRACEFILES_H_
