#include "actions/PluginName.h"

#include <cstring>

PluginName SplitPluginName(char* value) {
  char* const comma = std::strchr(value, ',');
  if (comma == nullptr) return {value, value + std::strlen(value)};
  *comma = '\0';
  return {value, comma + 1};
}

bool IsPlainFileName(const char* library) { return std::strchr(library, '\\') == nullptr; }
