#ifndef TESTS_FAKES_TRACE_TRACEMODELS_H_
#define TESTS_FAKES_TRACE_TRACEMODELS_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "trace/TraceFilter.h"

/// The facility's arithmetic as it is meant, slow and plain, for tests and fuzzers to compare with.
namespace trace_models {

/// What a pattern means, tried out in every possible way instead of with one place to go back to.
inline bool Matches(std::string_view pattern, std::string_view value, zqotrc::MatchMode mode) {
  if (pattern.empty()) return value.empty() || mode == zqotrc::MatchMode::kLeadingPart;
  const std::string_view rest = pattern.substr(1);
  if (pattern[0] == '*') {
    for (std::size_t skip = 0; skip <= value.size(); ++skip) {
      const std::string_view from = value.substr(skip);
      // A backslash behind a star is looked for in the value before it makes anything literal.
      const bool mayGoOn = rest.empty() || rest[0] != '\\' || (!from.empty() && from[0] == '\\');
      if (mayGoOn && Matches(rest, from, mode)) return true;
    }
    return false;
  }
  if (value.empty()) return false;
  if (pattern[0] == '?') return Matches(rest, value.substr(1), mode);
  if (pattern[0] == '\\' && !rest.empty()) {
    return value[0] == rest[0] && Matches(rest.substr(1), value.substr(1), mode);
  }
  return value[0] == pattern[0] && Matches(rest, value.substr(1), mode);
}

/// A ring that is written byte by byte.
struct Ring {
  explicit Ring(std::uint32_t size) : data(size, '\0') {}

  void Store(std::string_view bytes) {
    if (offset > data.size()) offset %= static_cast<std::uint32_t>(data.size());
    for (const char byte : bytes) {
      if (offset == data.size()) {
        offset = 0;
        if (wraps != UINT32_MAX) ++wraps;
      }
      data[offset++] = byte;
    }
  }

  std::string data;
  std::uint32_t offset = 0;
  std::uint32_t wraps = 0;
};

}  // namespace trace_models

#endif  // TESTS_FAKES_TRACE_TRACEMODELS_H_
