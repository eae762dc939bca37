#ifndef TRACEVIEW_TRACELINE_H_
#define TRACEVIEW_TRACELINE_H_

/// One line of a trace, taken apart into its columns, whichever of the four layouts it was written
/// in. Reading never fails: a line that has no known layout keeps its whole content as text.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace traceview {

enum class Layout : std::uint8_t {
  kShort,    ///< "S": no time, no place
  kLong,     ///< "L": process, thread, time of day, file and line
  kTime,     ///< "T": seconds of the performance counter
  kText,     ///< function and text alone
  kError,    ///< "E": a complaint of the trace facility itself
  kUnknown,  ///< none of these; everything is in `text`
};

/// Texts are bytes in the ANSI code page, as written; columns that the layout lacks are empty.
struct TraceLine {
  Layout layout = Layout::kUnknown;
  std::string traceId;
  std::uint32_t process = 0;  ///< 0 when the layout lacks it
  std::uint32_t thread = 0;   ///< 0 when the layout lacks it
  std::string level;          ///< level code of two characters: "FR", "--", ...
  std::string component;
  std::string code;   ///< code column without its blanks; empty when there is none
  std::string extra;  ///< extra column without its blanks
  std::string time;   ///< as written: "14:05:09,123", or seconds "12345.678901"
  /// The time in microseconds: since midnight (kLong) or of the performance counter (kTime); -1
  /// when the layout has none or it cannot be read.
  std::int64_t microseconds = -1;
  std::string file;
  std::uint32_t line = 0;
  std::string function;  ///< without the colon and blanks at its end: "Reg_SetValue"
  std::string text;
  std::uint32_t source = 0;  ///< tells the lines of one file from those of another
  bool torn = false;         ///< at an end of its file, and not whole
};

/// Takes one line apart, without its line end.
TraceLine ParseTraceLine(std::string_view raw);

/// What a level code stands for. Only the bits 8, 16, 64 and 128 are the server's and have a name.
struct LevelCodeInfo {
  std::string_view code;  ///< as it stands in the column
  std::uint32_t bits;     ///< all bits for "??", which may stand for any mixture
  std::string_view name;  ///< "error"; "bit 5" where no name is known
};
std::span<const LevelCodeInfo> LevelCodes();

/// The name of a level code: "FR" is "error"; the code itself when it is unknown.
std::string_view LevelName(std::string_view code);

/// Reads whole trace files, in the order in which their lines were written: a pair "X1.TRC" and
/// "X2.TRC" is put in order by itself, whichever is named first or if only one is named with
/// `withTwin`. Of a pair that is named one file may be missing. A last line without its end is
/// taken as well. \param notes sentences about what is odd: a file that is missing, or that is no
/// trace; may be
///   null
/// \returns false with a sentence in `error` when a file cannot be read.
bool ReadTraceFiles(const std::vector<std::string>& paths, bool withTwin,
                    std::vector<TraceLine>& lines, std::string& error,
                    std::vector<std::string>* notes = nullptr);

}  // namespace traceview

#endif  // TRACEVIEW_TRACELINE_H_
