#ifndef TRACE_TRACEFILTER_H_
#define TRACE_TRACEFILTER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zqotrc {

enum class MatchMode {
  kWhole,        ///< the pattern has to cover the whole value
  kLeadingPart,  ///< it is enough that the pattern covers the beginning of the value
};

/// Matches one pattern, letter for letter; both sides come in upper case.
///
/// `*` stands for any characters, `?` for one, and `\` makes the next character stand for itself
/// (so does a `\` at the very end). Everything else stands for itself.
bool MatchesPattern(std::string_view pattern, std::string_view value, MatchMode mode);

/// One configured filter: up to 100 patterns, none of which means that everything passes.
class PatternList {
 public:
  static constexpr std::size_t kMaxPatterns = 100;
  static constexpr std::size_t kBufferSize = 256;
  static constexpr std::size_t kMaxValueLength = 256;

  void Clear() { count_ = 0; }

  /// Takes the patterns from a text that separates them by blanks. A text beyond 255 characters is
  /// cut, and so is the list behind its hundredth pattern.
  void Assign(std::string_view text);

  /// \returns whether the list is empty, or one pattern matches the first 256 characters of
  ///   `value`, regardless of case.
  bool Passes(std::string_view value, MatchMode mode) const;

  std::size_t size() const { return count_; }
  std::string_view operator[](std::size_t index) const;

 private:
  struct Entry {
    std::uint8_t begin;
    std::uint8_t length;
  };
  static_assert(kBufferSize - 1 <= UINT8_MAX, "an entry counts in bytes");

  std::array<char, kBufferSize> text_{};
  std::array<Entry, kMaxPatterns> entries_{};
  std::size_t count_ = 0;
};

}  // namespace zqotrc

#endif  // TRACE_TRACEFILTER_H_
