#ifndef STANDINS_BOARDSVC32_RESULTCODE_H_
#define STANDINS_BOARDSVC32_RESULTCODE_H_

#include <cstdint>

namespace boardsim {

/// What the exports answer of their own; the values are the platform's.
inline constexpr std::uint32_t kDone = 0;
inline constexpr std::uint32_t kNotFound = 2;           // ERROR_FILE_NOT_FOUND
inline constexpr std::uint32_t kBadInventory = 13;      // ERROR_INVALID_DATA
inline constexpr std::uint32_t kOutOfMemory = 14;       // ERROR_OUTOFMEMORY
inline constexpr std::uint32_t kInvalidParameter = 87;  // ERROR_INVALID_PARAMETER
inline constexpr std::uint32_t kMoreData = 234;         // ERROR_MORE_DATA
inline constexpr std::uint32_t kNoMoreItems = 259;      // ERROR_NO_MORE_ITEMS
inline constexpr std::uint32_t kInternalError = 1359;   // ERROR_INTERNAL_ERROR

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_RESULTCODE_H_
