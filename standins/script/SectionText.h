#ifndef STANDINS_SCRIPT_SECTIONTEXT_H_
#define STANDINS_SCRIPT_SECTIONTEXT_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

struct ScriptError {
  std::size_t line;  ///< 0: the file as a whole
  std::string text;
};

struct ScriptEntry {
  std::string key, value;
  std::size_t line;
};

/// "[answer EpIsCpInRing]" has the name "answer" and the argument "EpIsCpInRing".
struct ScriptSection {
  std::string name, argument;
  std::size_t line;
  std::vector<ScriptEntry> entries;
};

/// Takes a file apart into sections of keys and values; says nothing about which there may be.
///
/// Every line that cannot be read adds an error and is left out.
std::vector<ScriptSection> SplitSections(std::string_view text, std::vector<ScriptError>& errors);

/// A text in quotation marks, in printable ASCII: what the file takes back as the same bytes.
std::string Quote(std::string_view text);

std::string_view TrimBlanks(std::string_view text);

/// Letters of ASCII only.
bool EqualIgnoringCase(std::string_view left, std::string_view right);

/// A decimal number, or a hexadecimal one behind 0x, without sign.
std::optional<std::uint32_t> ReadNumber(std::string_view text);

}  // namespace standin

#endif  // STANDINS_SCRIPT_SECTIONTEXT_H_
