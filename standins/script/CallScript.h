#ifndef STANDINS_SCRIPT_CALLSCRIPT_H_
#define STANDINS_SCRIPT_CALLSCRIPT_H_

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standins/script/Export.h"
#include "standins/script/SectionText.h"

namespace standin {

/// What the calls `first` to `last` of one export do.
struct ScriptAnswer {
  std::size_t line = 0;  ///< of the script, for the log
  Export which{};
  std::uint32_t first = 1, last = UINT32_MAX;
  std::optional<std::uint32_t> result;     ///< answered without doing the library's own work
  std::optional<std::uint32_t> delay;      ///< milliseconds before anything else
  std::optional<std::uint32_t> lastError;  ///< left in the thread's last error
  std::array<std::optional<std::uint32_t>, kMostOuts> outs{};
  Raised raised = Raised::kNothing;
};

/// What a script says. With errors, there are no answers, so that a typo is never half a script;
/// the name of the log stays, because that is where the errors go.
struct CallScript {
  std::vector<ScriptAnswer> answers;
  std::string logFile;
  std::vector<ScriptError> errors;

  /// \returns the first answer in the file that is for this call, counted from 1, or nothing.
  const ScriptAnswer* Find(Export which, std::uint32_t call) const;
};

/// The format is told in standins/README.md.
CallScript ParseScript(std::string_view text);

/// Reads a file. One that cannot be read, or is above 1 MiB, has an error at line 0.
CallScript LoadScript(const std::string& path);

}  // namespace standin

#endif  // STANDINS_SCRIPT_CALLSCRIPT_H_
