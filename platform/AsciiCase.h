#ifndef PLATFORM_ASCIICASE_H_
#define PLATFORM_ASCIICASE_H_

/// Texts compared without regard to the case of ASCII letters. All other bytes count as they are;
/// what those above 0x7F mean depends on the code page.

#include <algorithm>
#include <string_view>

namespace platform {

/// Upper case of an ASCII letter; anything else as it is.
constexpr char UpperCase(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

constexpr bool EqualsIgnoringCase(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return UpperCase(a) == UpperCase(b); });
}

constexpr bool StartsWithIgnoringCase(std::string_view text, std::string_view start) {
  return EqualsIgnoringCase(text.substr(0, start.size()), start);
}

}  // namespace platform

#endif  // PLATFORM_ASCIICASE_H_
