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

  /// The same of one word of a table of pairs, word and meaning.
  template <typename Table, typename Meaning>
  SectionReader& Word(std::string_view key, const Table& table, Meaning& value);

  /// The same of which calls are meant: "*" for all, "3" or "3-5", counted from 1.
  SectionReader& Calls(std::string_view key, std::uint32_t& first, std::uint32_t& last);

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

template <typename Table, typename Meaning>
SectionReader& SectionReader::Word(std::string_view key, const Table& table, Meaning& value) {
  const std::string* const word = Value(key);
  if (word == nullptr) return *this;
  std::string known;
  for (const auto& [name, meaning] : table) {
    if (*word == name) {
      value = meaning;
      return *this;
    }
    known += (known.empty() ? "" : ", ") + std::string(name);
  }
  Complain(key, "one of these is wanted: " + known);
  return *this;
}

}  // namespace standin

#endif  // STANDINS_SCRIPT_SECTIONREADER_H_
