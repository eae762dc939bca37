#ifndef CLI_JSON_H_
#define CLI_JSON_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace cli {

/// Writes one JSON value, in ASCII only: every character outside it is a \u escape, and what is not
/// UTF-8 becomes \ufffd, so the output is valid whatever the texts hold.
///
/// Inside an object every value has a Name() in front of it. The caller pairs Open with Close.
class JsonWriter {
 public:
  JsonWriter& Open(char bracket);   ///< '{' or '['
  JsonWriter& Close(char bracket);  ///< '}' or ']'
  JsonWriter& Name(std::string_view name);
  JsonWriter& Text(std::string_view utf8);
  JsonWriter& Number(std::uint64_t number);
  /// With three decimal places, from thousandths.
  JsonWriter& Thousandths(std::uint64_t thousandths);
  JsonWriter& Bool(bool value);

  const std::string& Written() const { return written_; }

 private:
  void Separate();
  void AddEscaped(std::string_view utf8);

  std::string written_;
  bool first_ = true;  // nothing stands in front of the next value that it must be parted from
};

/// The next character of a UTF-8 text, at `at`, which it moves behind it; 0xFFFD for bytes that are
/// none, one at a time.
char32_t NextCharacter(std::string_view utf8, std::size_t& at);

}  // namespace cli

#endif  // CLI_JSON_H_
