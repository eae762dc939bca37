#ifndef TRACE_TRACETEXT_H_
#define TRACE_TRACETEXT_H_

/// Text handling that never allocates, never ends the process and never leaves its buffer: what
/// does not fit is cut, and a terminator always stands at the end.

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zqotrc {

/// Builds a text in a buffer of fixed size.
class CutText {
 public:
  template <std::size_t kCapacity>
  explicit CutText(char (&buffer)[kCapacity]) : CutText(buffer, kCapacity) {}

  /// \param capacity bytes of the buffer, terminator included; at least 1
  CutText(char* buffer, std::size_t capacity) : begin_(buffer), at_(buffer), left_(capacity - 1) {
    *at_ = '\0';
  }

  CutText& Add(std::string_view text);
  CutText& Add(char letter) { return Add(std::string_view(&letter, 1)); }

  /// A decimal number, filled with zeros on the left to at least `width` characters, sign included.
  CutText& AddDecimal(std::int32_t value, std::size_t width);

  /// The same in hexadecimal, lower case.
  CutText& AddHex(std::uint32_t value, std::size_t width);

  /// The first `width` characters of the text, filled with blanks on the left if there are fewer.
  CutText& AddRightAligned(std::string_view text, std::size_t width);

  std::string_view view() const { return {begin_, static_cast<std::size_t>(at_ - begin_)}; }

 private:
  char* begin_;
  char* at_;
  std::size_t left_;
};

/// printf into `buffer`. \returns the length of what stands there.
[[gnu::format(printf, 3, 4)]] std::size_t FormatCut(char* buffer, std::size_t capacity,
                                                    const char* format, ...);
/// The same for a list; not an overload, because a list is a `char*` on some platforms.
[[gnu::format(printf, 3, 0)]] std::size_t FormatListCut(char* buffer, std::size_t capacity,
                                                        const char* format, std::va_list arguments);

}  // namespace zqotrc

#endif  // TRACE_TRACETEXT_H_
