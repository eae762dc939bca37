#ifndef FUZZ_SECTIONS_H_
#define FUZZ_SECTIONS_H_

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <span>
#include <vector>

/// An input of several parts, with a mark between them, so that a part may grow and shrink without
/// moving what the others mean.
namespace sections {

inline constexpr std::uint8_t kMark[] = {0xF5, '|', '|', 0xF5};

inline std::vector<std::span<const std::uint8_t>> Split(std::span<const std::uint8_t> input) {
  std::vector<std::span<const std::uint8_t>> parts;
  auto from = input.begin();
  for (;;) {
    const auto mark = std::search(from, input.end(), std::begin(kMark), std::end(kMark));
    parts.emplace_back(from, mark);
    if (mark == input.end()) return parts;
    from = mark + sizeof(kMark);
  }
}

}  // namespace sections

#endif  // FUZZ_SECTIONS_H_
