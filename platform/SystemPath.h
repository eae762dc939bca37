#ifndef PLATFORM_SYSTEMPATH_H_
#define PLATFORM_SYSTEMPATH_H_

#include <cstddef>
#include <cstdint>

namespace platform {

inline constexpr std::uint32_t kMaxPath = 260;
using PathBuffer = char[kMaxPath];

/// The platform's code for a text that does not fit (ERANGE).
inline constexpr std::uint32_t kPathTooLong = 34;

/// The system directory. \returns what the platform's call returned: the length, 0 or the size that
/// would be needed.
std::uint32_t SystemDirectory(PathBuffer& path);

/// Whether SystemDirectory returned a path.
inline bool IsSystemDirectory(std::uint32_t returned) {
  return returned != 0 && returned <= kMaxPath;
}

/// The path as the platform resolves it: dot elements, slashes, names of devices.
/// \returns false, with an empty path, when it cannot or there is no room.
bool FullPath(const char* path, PathBuffer& full);

/// Whether a full path leads to something below a folder, at whatever depth.
bool LiesBelow(const char* full, const char* folder);

/// A special folder of the shell by its number, not created. \returns false, with an empty path,
/// when there is none.
bool SpecialFolder(int number, PathBuffer& path);

/// Appends a text within the buffer. \returns 0, or kPathTooLong, with an empty path, when the text
/// and its terminator do not fit.
std::uint32_t AppendToPath(PathBuffer& path, const char* text);

}  // namespace platform

#endif  // PLATFORM_SYSTEMPATH_H_
