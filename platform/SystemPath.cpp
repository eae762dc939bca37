#include "platform/SystemPath.h"

#include <cstring>

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
