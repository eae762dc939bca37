#ifndef TESTS_HOSTILE_SCRATCHKEY_H_
#define TESTS_HOSTILE_SCRATCHKEY_H_

#include <cstddef>

namespace hostile {

/// A key of our own, and in it a value whose reply is nearly as long as a reply can be.
inline constexpr char kScratchKey[] = "SOFTWARE\\Vesmark\\NORVA\\E2E";
inline constexpr char kBigName[] = "Big";
inline constexpr std::size_t kBigLength = 8100;

}  // namespace hostile

#endif  // TESTS_HOSTILE_SCRATCHKEY_H_
