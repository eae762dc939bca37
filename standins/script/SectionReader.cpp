#include "standins/script/SectionReader.h"

namespace standin {

namespace {

struct Range {
  std::uint32_t first, last;
};

std::optional<Range> ReadRange(std::string_view text) {
  const std::size_t hyphen = text.find('-');
  const auto first = ReadNumber(TrimBlanks(text.substr(0, hyphen)));
  const auto last =
      hyphen == std::string_view::npos ? first : ReadNumber(TrimBlanks(text.substr(hyphen + 1)));
  if (!first || !last || *first == 0 || *last < *first) return std::nullopt;
  return Range{*first, *last};
}

}  // namespace

SectionReader::SectionReader(const ScriptSection& section, std::vector<ScriptError>& errors)
    : section_(section), errors_(errors), asked_(section.entries.size()) {}

const ScriptEntry* SectionReader::Find(std::string_view key) {
  for (std::size_t index = 0; index < section_.entries.size(); ++index) {
    if (section_.entries[index].key == key) {
      asked_[index] = true;
      return &section_.entries[index];
    }
  }
  return nullptr;
}

SectionReader& SectionReader::Number(std::string_view key, std::optional<std::uint32_t>& value,
                                     std::uint32_t most) {
  const std::string* const found = Value(key);
  if (found == nullptr) return *this;
  const std::optional<std::uint32_t> number = ReadNumber(*found);
  if (!number || *number > most) {
    Complain(key, "a number from 0 to " + std::to_string(most) + " is wanted");
  } else {
    value = number;
  }
  return *this;
}

SectionReader& SectionReader::Calls(std::string_view key, std::uint32_t& first,
                                    std::uint32_t& last) {
  const std::string* const text = Value(key);
  if (text == nullptr || *text == "*") return *this;
  const std::optional<Range> range = ReadRange(*text);
  if (!range) {
    Complain(key, "calls are * or 3 or 3-5, counted from 1");
  } else {
    first = range->first;
    last = range->last;
  }
  return *this;
}

const std::string* SectionReader::Value(std::string_view key) {
  const ScriptEntry* const entry = Find(key);
  return entry != nullptr ? &entry->value : nullptr;
}

const std::string* SectionReader::Required(std::string_view key) {
  const std::string* const value = Value(key);
  if (value == nullptr) {
    Complain(key, "[" + section_.name + "] needs the key " + std::string(key));
  }
  return value;
}

void SectionReader::Complain(std::string_view key, const std::string& problem) {
  const ScriptEntry* const entry = Find(key);
  errors_.push_back({entry != nullptr ? entry->line : section_.line, problem});
}

void SectionReader::End() {
  for (std::size_t index = 0; index < asked_.size(); ++index) {
    const ScriptEntry& entry = section_.entries[index];
    if (!asked_[index]) {
      errors_.push_back({entry.line, "[" + section_.name + "] has no key " + entry.key});
    }
  }
}

}  // namespace standin
