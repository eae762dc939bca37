#include "trace/TraceFilter.h"

#include <algorithm>

#include "platform/AsciiCase.h"

namespace zqotrc {
namespace {

constexpr std::size_t kNowhere = std::string_view::npos;

/// Where a match stands, and where it may begin again after a mismatch.
struct Cursor {
  std::string_view pattern;
  std::string_view value;
  std::size_t inPattern = 0;
  std::size_t inValue = 0;
  std::size_t star = kNowhere;  ///< the last `*` that was passed
  std::size_t retry = 0;        ///< where in the value that `*` goes on when what follows fails

  bool PatternEnds() const { return inPattern == pattern.size(); }
  bool ValueEnds() const { return inValue == value.size(); }

  /// \returns false when the match cannot begin again.
  bool Restart() {
    if (star == kNowhere || retry > value.size()) return false;
    inPattern = star;
    inValue = retry;
    return true;
  }

  /// Passes a `*` that has something behind it.
  /// \returns false when what has to come next comes nowhere.
  bool PassStar() {
    star = inPattern++;
    const char next = pattern[inPattern];
    if (next != '?' && next != '*') {
      // Kept: behind a `*` the next character is looked for as it stands, a `\` included. So `*\X`
      // looks for a backslash, and `*\\` is the only escape that can match there.
      inValue = value.find(next, inValue);
      if (inValue == kNowhere) return false;
    }
    retry = inValue + 1;
    return true;
  }

  /// Passes one character that stands for itself, if the value has it here.
  bool PassLiteral() {
    const bool escapes = pattern[inPattern] == '\\' && inPattern + 1 < pattern.size();
    const std::size_t literal = escapes ? inPattern + 1 : inPattern;
    if (ValueEnds() || value[inValue] != pattern[literal]) return false;
    inPattern = literal + 1;
    ++inValue;
    return true;
  }
};

}  // namespace

bool MatchesPattern(std::string_view pattern, std::string_view value, MatchMode mode) {
  Cursor at{pattern, value};
  for (;;) {
    if (at.PatternEnds()) {
      if (at.ValueEnds() || mode == MatchMode::kLeadingPart) return true;
      if (!at.Restart()) return false;
    } else if (pattern[at.inPattern] == '*') {
      if (at.inPattern + 1 == pattern.size()) return true;
      if (!at.PassStar()) return false;
    } else if (pattern[at.inPattern] == '?') {
      if (at.ValueEnds()) return false;
      ++at.inPattern;
      ++at.inValue;
    } else if (!at.PassLiteral() && !at.Restart()) {
      return false;
    }
  }
}

void PatternList::Assign(std::string_view text) {
  text = text.substr(0, kBufferSize - 1);
  std::transform(text.begin(), text.end(), text_.begin(), platform::UpperCase);
  count_ = 0;
  std::size_t begin = 0;
  while (begin < text.size() && count_ < kMaxPatterns) {
    const std::size_t end = std::min(text.find(' ', begin), text.size());
    if (end > begin) {
      entries_[count_++] = {static_cast<std::uint8_t>(begin),
                            static_cast<std::uint8_t>(end - begin)};
    }
    begin = end + 1;
  }
}

bool PatternList::Passes(std::string_view value, MatchMode mode) const {
  if (count_ == 0) return true;

  char upper[kMaxValueLength];
  const std::size_t length = std::min(value.size(), kMaxValueLength);
  std::transform(value.begin(), value.begin() + static_cast<std::ptrdiff_t>(length), upper,
                 platform::UpperCase);
  for (std::size_t index = 0; index < count_; ++index) {
    if (MatchesPattern((*this)[index], {upper, length}, mode)) return true;
  }
  return false;
}

std::string_view PatternList::operator[](std::size_t index) const {
  return {text_.data() + entries_[index].begin, entries_[index].length};
}

}  // namespace zqotrc
