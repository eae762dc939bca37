#include "cli/Json.h"

#include <cstdio>

namespace cli {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// How many continuation bytes follow a first byte, and the least character written that long;
// shorter ones written longer than needed are no UTF-8.
struct Sequence {
  int following;
  char32_t bits;
  char32_t least;
};

bool SequenceOf(unsigned char first, Sequence& sequence) {
  if (first >= 0xC0 && first < 0xE0) {
    sequence = {1, static_cast<char32_t>(first & 0x1F), 0x80};
  } else if (first >= 0xE0 && first < 0xF0) {
    sequence = {2, static_cast<char32_t>(first & 0x0F), 0x800};
  } else if (first >= 0xF0 && first < 0xF8) {
    sequence = {3, static_cast<char32_t>(first & 0x07), 0x10000};
  } else {
    return false;
  }
  return true;
}

bool IsCharacter(char32_t value) { return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF); }

void AddUnit(std::string& text, char32_t unit) {
  char escape[8];
  (void)std::snprintf(escape, sizeof(escape), "\\u%04x", static_cast<unsigned>(unit & 0xFFFF));
  text += escape;
}

}  // namespace

char32_t NextCharacter(std::string_view utf8, std::size_t& at) {
  const auto first = static_cast<unsigned char>(utf8[at++]);
  if (first < 0x80) return first;
  Sequence sequence{};
  if (!SequenceOf(first, sequence)) return kReplacement;

  char32_t value = sequence.bits;
  std::size_t next = at;
  for (int i = 0; i < sequence.following; ++i, ++next) {
    if (next >= utf8.size()) return kReplacement;
    const auto byte = static_cast<unsigned char>(utf8[next]);
    if ((byte & 0xC0) != 0x80) return kReplacement;
    value = (value << 6) | static_cast<char32_t>(byte & 0x3F);
  }
  if (value < sequence.least || !IsCharacter(value)) return kReplacement;
  at = next;
  return value;
}

void JsonWriter::Separate() {
  if (!first_) written_ += ',';
  first_ = false;
}

JsonWriter& JsonWriter::Open(char bracket) {
  Separate();
  written_ += bracket;
  first_ = true;
  return *this;
}

JsonWriter& JsonWriter::Close(char bracket) {
  written_ += bracket;
  first_ = false;
  return *this;
}

JsonWriter& JsonWriter::Name(std::string_view name) {
  Text(name);
  written_ += ':';
  first_ = true;
  return *this;
}

JsonWriter& JsonWriter::Text(std::string_view utf8) {
  Separate();
  written_ += '"';
  AddEscaped(utf8);
  written_ += '"';
  return *this;
}

void JsonWriter::AddEscaped(std::string_view utf8) {
  for (std::size_t at = 0; at < utf8.size();) {
    const char32_t c = NextCharacter(utf8, at);
    if (c == '"' || c == '\\') {
      written_ += '\\';
      written_ += static_cast<char>(c);
    } else if (c >= 0x20 && c < 0x7F) {
      written_ += static_cast<char>(c);
    } else if (c < 0x10000) {
      AddUnit(written_, c);
    } else {
      AddUnit(written_, 0xD800 + ((c - 0x10000) >> 10));
      AddUnit(written_, 0xDC00 + ((c - 0x10000) & 0x3FF));
    }
  }
}

JsonWriter& JsonWriter::Number(std::uint64_t number) {
  Separate();
  written_ += std::to_string(number);
  return *this;
}

JsonWriter& JsonWriter::Thousandths(std::uint64_t thousandths) {
  Number(thousandths / 1000);
  char decimals[8];
  (void)std::snprintf(decimals, sizeof(decimals), ".%03u",
                      static_cast<unsigned>(thousandths % 1000));
  written_ += decimals;
  return *this;
}

JsonWriter& JsonWriter::Bool(bool value) {
  Separate();
  written_ += value ? "true" : "false";
  return *this;
}

}  // namespace cli
