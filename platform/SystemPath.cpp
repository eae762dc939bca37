#include "platform/SystemPath.h"

#include <cstring>

#include "platform/AsciiCase.h"

std::uint32_t platform::AppendToPath(PathBuffer& path, const char* text) {
  const std::size_t used = strnlen(path, sizeof(path));
  const std::size_t size = std::strlen(text);
  if (used + size >= sizeof(path)) {
    path[0] = '\0';
    return kPathTooLong;
  }
  std::memcpy(path + used, text, size + 1);
  return 0;
}

// The letters' case is folded where that is the same on every code page; a folder in another
// spelling of its other letters counts as another one.
bool platform::LiesBelow(const char* full, const char* folder) {
  if (!StartsWithIgnoringCase(full, folder)) return false;
  const char* const rest = full + std::strlen(folder);
  return rest[0] == '\\' && rest[1] != '\0';
}
