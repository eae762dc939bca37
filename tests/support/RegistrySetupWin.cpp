#include "tests/support/RegistrySetup.h"

#include <windows.h>

namespace registry_setup {
namespace {

HKEY Open(const std::string& path) {
  HKEY key = nullptr;
  (void)RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS, &key);
  return key;
}

}  // namespace

void CreateKey(const std::string& path) {
  HKEY key = nullptr;
  (void)RegCreateKeyA(HKEY_LOCAL_MACHINE, path.c_str(), &key);
  (void)RegCloseKey(key);
}

void SetValue(const std::string& path, const std::string& name, std::uint32_t type,
              const Bytes& data) {
  CreateKey(path);
  const HKEY key = Open(path);
  (void)RegSetValueExA(key, name.c_str(), 0, type, data.data(), static_cast<DWORD>(data.size()));
  (void)RegCloseKey(key);
}

bool KeyExists(const std::string& path) {
  const HKEY key = Open(path);
  if (key == nullptr) return false;
  (void)RegCloseKey(key);
  return true;
}

std::optional<Bytes> Value(const std::string& path, const std::string& name) {
  const HKEY key = Open(path);
  if (key == nullptr) return std::nullopt;
  Bytes data(20000);
  DWORD type = 0;
  auto size = static_cast<DWORD>(data.size());
  const LSTATUS status = RegQueryValueExA(key, name.c_str(), nullptr, &type, data.data(), &size);
  (void)RegCloseKey(key);
  if (status != ERROR_SUCCESS) return std::nullopt;
  data.resize(size);
  return Bytes{static_cast<std::uint8_t>(type)} + data;
}

void DeleteTree(const std::string& path) { (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, path.c_str()); }

}  // namespace registry_setup
