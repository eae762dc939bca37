#ifndef STANDINS_SCRIPT_RAISED_H_
#define STANDINS_SCRIPT_RAISED_H_

#include <array>
#include <string_view>
#include <utility>

namespace standin {

/// What a call raises instead of coming back.
enum class Raised {
  kNothing,
  kAccessViolation,
  kCxx,  ///< a foreign compiler's C++ exception
  kDivideByZero,
  kIntOverflow,
  kStackOverflow,
};

/// The words of scripts and logs.
inline constexpr std::array<std::pair<std::string_view, Raised>, 5> kRaisedWords{{
    {"access-violation", Raised::kAccessViolation},
    {"cxx", Raised::kCxx},
    {"divide-by-zero", Raised::kDivideByZero},
    {"int-overflow", Raised::kIntOverflow},
    {"stack-overflow", Raised::kStackOverflow},
}};

constexpr std::string_view NameOf(Raised raised) {
  for (const auto& [name, meaning] : kRaisedWords) {
    if (meaning == raised) return name;
  }
  return "nothing";
}

/// Lets it happen. On Windows only.
[[noreturn]] void RaiseNow(Raised raised);

}  // namespace standin

#endif  // STANDINS_SCRIPT_RAISED_H_
