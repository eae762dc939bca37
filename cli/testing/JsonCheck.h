#ifndef CLI_TESTING_JSONCHECK_H_
#define CLI_TESTING_JSONCHECK_H_

#include <cctype>
#include <string_view>

namespace cli {

/// Whether a text is exactly one JSON value, in ASCII, written as RFC 8259 has it. Independent of
/// the writer that it checks.
class JsonCheck {
 public:
  static bool IsValid(std::string_view text) {
    JsonCheck check(text);
    return check.Value() && check.at_ == text.size();
  }

 private:
  explicit JsonCheck(std::string_view text) : text_(text) {}

  bool Eat(char c) {
    if (at_ >= text_.size() || text_[at_] != c) return false;
    ++at_;
    return true;
  }
  bool EatWord(std::string_view word) {
    if (text_.substr(at_, word.size()) != word) return false;
    at_ += word.size();
    return true;
  }
  bool Value() {
    if (Eat('{')) return Members('}', /*named=*/true);
    if (Eat('[')) return Members(']', /*named=*/false);
    if (at_ < text_.size() && text_[at_] == '"') return Text();
    return EatWord("true") || EatWord("false") || EatWord("null") || Number();
  }
  bool Members(char end, bool named) {
    if (Eat(end)) return true;
    do {
      if (named && !(Text() && Eat(':'))) return false;
      if (!Value()) return false;
    } while (Eat(','));
    return Eat(end);
  }
  bool Digits() {
    const std::size_t begin = at_;
    while (at_ < text_.size() && std::isdigit(static_cast<unsigned char>(text_[at_])) != 0) ++at_;
    return at_ != begin;
  }
  bool Number() {
    const std::size_t begin = at_;
    if (!Digits()) return false;
    if (text_[begin] == '0' && at_ - begin > 1) return false;
    return !Eat('.') || Digits();
  }
  bool Text() {
    if (!Eat('"')) return false;
    while (at_ < text_.size()) {
      const char c = text_[at_++];
      if (c == '"') return true;
      if (c < 0x20 || c > 0x7E) return false;
      if (c == '\\' && !Escape()) return false;
    }
    return false;
  }
  bool Escape() {
    if (Eat('"') || Eat('\\')) return true;
    if (!Eat('u')) return false;
    for (int i = 0; i < 4; ++i) {
      if (at_ >= text_.size() || std::isxdigit(static_cast<unsigned char>(text_[at_++])) == 0) {
        return false;
      }
    }
    return true;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace cli

#endif  // CLI_TESTING_JSONCHECK_H_
