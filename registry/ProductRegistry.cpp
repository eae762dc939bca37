#include <windows.h>

#include <shlwapi.h>

#include "platform/WinHandles.h"
#include "registry/ProductInformation.h"

bool ReadProductValues(const char* key, const char* const* names, ProductValue* values,
                       std::size_t count) {
  UniqueRegKey opened;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, key, /*ulOptions=*/0, KEY_READ, opened.put()) !=
      ERROR_SUCCESS) {
    return false;
  }
  for (std::size_t i = 0; i < count; ++i) {
    DWORD size = sizeof(values[i].text) - 1;
    if (SHGetValueA(opened.get(), /*pszSubKey=*/nullptr, names[i], /*pdwType=*/nullptr,
                    values[i].text, &size) != ERROR_SUCCESS) {
      values[i] = {};
    }
  }
  return true;
}
