#ifndef STANDINS_SCRIPT_SECTIONREADER_H_
#define STANDINS_SCRIPT_SECTIONREADER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standins/script/SectionText.h"

namespace standin {

/// Takes the keys of one section by name, and reports what does not fit.
class SectionReader {
 public:
  SectionReader(const ScriptSection& section, std::vector<ScriptError>& errors);

  /// Leaves the target as it is when the key is absent, or reports why the value does not fit.
  SectionReader& Number(std::string_view key, std::optional<std::uint32_t>& value,
                        std::uint32_t most = UINT32_MAX);

  /// \returns the value as it stands, nothing if the section lacks the key.
  const std::string* Value(std::string_view key);

  /// The same, and reports the key if the section lacks it.
  const std::string* Required(std::string_view key);

  /// Reports a problem at the key's line, or at the section's if it lacks the key.
  void Complain(std::string_view key, const std::string& problem);

  /// Reports every key that nobody asked for.
  void End();

 private:
  const ScriptEntry* Find(std::string_view key);

  const ScriptSection& section_;
  std::vector<ScriptError>& errors_;
  std::vector<bool> asked_;
};

}  // namespace standin

#endif  // STANDINS_SCRIPT_SECTIONREADER_H_
