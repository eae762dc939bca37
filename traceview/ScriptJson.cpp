#include "traceview/ScriptJson.h"

#include <charconv>

namespace traceview {

ScriptJson& ScriptJson::Open(char bracket) {
  Separate();
  written_ += bracket;
  first_ = true;
  return *this;
}

ScriptJson& ScriptJson::Close(char bracket) {
  written_ += bracket;
  first_ = false;
  return *this;
}

ScriptJson& ScriptJson::Name(std::string_view name) {
  Separate();
  AddQuoted(name);
  written_ += ':';
  first_ = true;
  return *this;
}

ScriptJson& ScriptJson::Text(std::string_view utf8) {
  Separate();
  AddQuoted(utf8);
  return *this;
}

ScriptJson& ScriptJson::Number(std::int64_t number) {
  Separate();
  char digits[24];
  const auto [end, error] = std::to_chars(digits, digits + sizeof(digits), number);
  written_.append(digits, end);
  return *this;
}

void ScriptJson::Separate() {
  if (!first_) written_ += ',';
  first_ = false;
}

void ScriptJson::AddQuoted(std::string_view utf8) {
  static constexpr char kDigits[] = "0123456789abcdef";
  written_ += '"';
  for (const char c : utf8) {
    const auto byte = static_cast<unsigned char>(c);
    const bool markup = c == '<' || c == '>' || c == '&';
    if (markup || c == '"' || c == '\\' || byte < 0x20 || byte == 0x7F) {
      written_ += "\\u00";
      written_ += kDigits[byte >> 4];
      written_ += kDigits[byte & 0xF];
    } else {
      written_ += c;
    }
  }
  written_ += '"';
}

}  // namespace traceview
