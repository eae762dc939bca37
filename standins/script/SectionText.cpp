#include "standins/script/SectionText.h"

#include <algorithm>
#include <charconv>

namespace standin {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr char kHexDigits[] = "0123456789abcdef";

char LowerCase(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool IsControl(char letter) {
  const auto byte = static_cast<unsigned char>(letter);
  return (byte < 0x20 && letter != '\t') || byte == 0x7F;
}

bool IsKey(std::string_view key) {
  return !key.empty() && std::all_of(key.begin(), key.end(), [](char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9') || letter == '-';
  });
}

// Reads one escape behind a backslash. Returns how many letters it took, 0 if it is none.
std::size_t ReadEscape(std::string_view rest, std::string& value) {
  if (rest.empty()) return 0;
  if (rest[0] == '\\' || rest[0] == '"') {
    value += rest[0];
    return 1;
  }
  if (rest[0] != 'x' || rest.size() < 3) return 0;
  unsigned byte = 0;
  const char* const end = rest.data() + 3;
  if (std::from_chars(rest.data() + 1, end, byte, 16).ptr != end || byte == 0) return 0;
  value += static_cast<char>(byte);
  return 3;
}

// Returns what is wrong with the text in quotation marks, nothing if it could be read.
const char* ReadQuoted(std::string_view text, std::string& value) {
  std::size_t at = 1;
  for (; at < text.size() && text[at] != '"'; ++at) {
    if (text[at] != '\\') {
      value += text[at];
      continue;
    }
    const std::size_t taken = ReadEscape(text.substr(at + 1), value);
    if (taken == 0) return "after a backslash in quotation marks stands \\, \" or x01 to xff";
    at += taken;
  }
  if (at >= text.size()) return "the closing quotation mark is missing";
  if (at + 1 != text.size()) return "something stands behind the closing quotation mark";
  return nullptr;
}

const char* ReadValue(std::string_view text, std::string& value) {
  if (text.empty()) return "the value is missing; an empty text is \"\"";
  if (text[0] == '"') return ReadQuoted(text, value);
  if (text.find_first_of(";\"") != std::string_view::npos) {
    return "a value with ; or \" belongs in quotation marks; comments have a line of their own";
  }
  value = text;
  return nullptr;
}

const char* ReadSection(std::string_view line, std::size_t number,
                        std::vector<ScriptSection>& sections) {
  if (line.back() != ']') return "the closing bracket is missing";
  const std::string_view inner = TrimBlanks(line.substr(1, line.size() - 2));
  const std::size_t blank = std::min(inner.find_first_of(kBlanks), inner.size());
  const std::string_view name = inner.substr(0, blank);
  sections.push_back({std::string(name), std::string(TrimBlanks(inner.substr(blank))), number, {}});
  return IsKey(name) ? nullptr : "a section's name has small letters, digits and hyphens";
}

const char* ReadEntry(std::string_view line, std::size_t number,
                      std::vector<ScriptSection>& sections) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return "neither a section nor \"key = value\"";
  const std::string_view key = TrimBlanks(line.substr(0, equals));
  if (!IsKey(key)) return "a key has small letters, digits and hyphens";
  if (sections.empty()) return "a key before the first section";

  ScriptSection& section = sections.back();
  for (const ScriptEntry& entry : section.entries) {
    if (entry.key == key) return "this key has a value already in this section";
  }
  std::string value;
  const char* const problem = ReadValue(TrimBlanks(line.substr(equals + 1)), value);
  // The key is kept even if its value is not, so that nobody reports it missing as well.
  section.entries.push_back({std::string(key), std::move(value), number});
  return problem;
}

const char* ReadLine(std::string_view line, std::size_t number,
                     std::vector<ScriptSection>& sections) {
  if (std::any_of(line.begin(), line.end(), IsControl)) return "a control character";
  line = TrimBlanks(line);
  if (line.empty() || line[0] == ';' || line[0] == '#') return nullptr;
  return line[0] == '[' ? ReadSection(line, number, sections) : ReadEntry(line, number, sections);
}

}  // namespace

std::vector<ScriptSection> SplitSections(std::string_view text, std::vector<ScriptError>& errors) {
  std::vector<ScriptSection> sections;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (number == 1 && line.starts_with("\xEF\xBB\xBF")) {
      errors.push_back({number, "a byte order mark; save the file without one"});
      line.remove_prefix(3);
    }
    const char* const problem = ReadLine(line, number, sections);
    if (problem != nullptr) errors.push_back({number, problem});
  }
  return sections;
}

std::string Quote(std::string_view text) {
  std::string quoted = "\"";
  for (const char letter : text) {
    const auto byte = static_cast<unsigned char>(letter);
    if (letter == '"' || letter == '\\') {
      quoted += '\\';
      quoted += letter;
    } else if (byte < 0x20 || byte > 0x7E) {
      quoted += "\\x";
      quoted += kHexDigits[byte >> 4];
      quoted += kHexDigits[byte & 15];
    } else {
      quoted += letter;
    }
  }
  return quoted + '"';
}

std::string_view TrimBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool EqualIgnoringCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return LowerCase(a) == LowerCase(b); });
}

std::optional<std::uint32_t> ReadNumber(std::string_view text) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  std::uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, hexadecimal ? 16 : 10);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

}  // namespace standin
