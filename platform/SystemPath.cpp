#include "platform/SystemPath.h"

#include <cstring>

namespace {

char FoldCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

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
  for (; *folder != '\0'; ++full, ++folder) {
    if (FoldCase(*full) != FoldCase(*folder)) return false;
  }
  return full[0] == '\\' && full[1] != '\0';
}
