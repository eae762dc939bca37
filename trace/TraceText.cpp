#include "trace/TraceText.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace zqotrc {

CutText& CutText::Add(std::string_view text) {
  const std::size_t length = std::min(text.size(), left_);
  std::memcpy(at_, text.data(), length);
  at_ += length;
  left_ -= length;
  *at_ = '\0';
  return *this;
}

CutText& CutText::AddDecimal(std::int32_t value, std::size_t width) {
  char digits[12];
  const std::int64_t magnitude = value < 0 ? -std::int64_t{value} : std::int64_t{value};
  const char* const end = std::to_chars(digits, std::end(digits), magnitude).ptr;
  auto length = static_cast<std::size_t>(end - digits);
  if (value < 0) {
    Add('-');
    ++length;
  }
  for (; length < width; ++length) Add('0');
  return Add({digits, end});
}

CutText& CutText::AddHex(std::uint32_t value, std::size_t width) {
  char digits[8];
  const char* const end = std::to_chars(digits, std::end(digits), value, /*base=*/16).ptr;
  for (auto length = static_cast<std::size_t>(end - digits); length < width; ++length) Add('0');
  return Add({digits, end});
}

CutText& CutText::AddRightAligned(std::string_view text, std::size_t width) {
  const std::string_view shown = text.substr(0, width);
  for (std::size_t length = shown.size(); length < width; ++length) Add(' ');
  return Add(shown);
}

std::size_t FormatListCut(char* buffer, std::size_t capacity, const char* format,
                          std::va_list arguments) {
  buffer[0] = '\0';
#ifdef _WIN32
  // The platform's own: the one that the C++ library puts in its place allocates for some numbers.
  (void)_vsnprintf(buffer, capacity, format, arguments);
#else
  (void)std::vsnprintf(buffer, capacity, format, arguments);
#endif
  // A text that is cut comes without a terminator.
  buffer[capacity - 1] = '\0';
  return std::strlen(buffer);
}

std::size_t FormatCut(char* buffer, std::size_t capacity, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const std::size_t length = FormatListCut(buffer, capacity, format, arguments);
  va_end(arguments);
  return length;
}

}  // namespace zqotrc
