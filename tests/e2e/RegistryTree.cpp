#include "tests/e2e/RegistryTree.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace e2e {

RegistryTree::RegistryTree(const std::string& path) { Add(path, ""); }

void RegistryTree::Add(const std::string& path, const std::string& relative) {
  HKEY key = nullptr;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
  values[relative] = {};
  for (DWORD index = 0;; ++index) {
    char name[1024];
    DWORD length = sizeof(name);
    Bytes data(0x10000, '\0');
    auto size = static_cast<DWORD>(data.size());
    DWORD type = 0;
    if (RegEnumValueA(key, index, name, &length, nullptr, &type,
                      reinterpret_cast<BYTE*>(data.data()), &size) != ERROR_SUCCESS) {
      break;
    }
    data.resize(size);
    values[relative + '|' + std::string(name, length)] = {type, data};
  }
  for (DWORD index = 0;; ++index) {
    char name[1024];
    DWORD length = sizeof(name);
    if (RegEnumKeyExA(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) !=
        ERROR_SUCCESS) {
      break;
    }
    const std::string subkey(name, length);
    Add(path + '\\' + subkey, relative.empty() ? subkey : relative + '\\' + subkey);
  }
  (void)RegCloseKey(key);
}

void RegistryTree::CreateKey(const std::string& path) {
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyA(HKEY_LOCAL_MACHINE, path.c_str(), &key), ERROR_SUCCESS) << path;
  (void)RegCloseKey(key);
}

void RegistryTree::Set(const std::string& path, const std::string& name, std::uint32_t type,
                       const Bytes& data) {
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyA(HKEY_LOCAL_MACHINE, path.c_str(), &key), ERROR_SUCCESS) << path;
  EXPECT_EQ(RegSetValueExA(key, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(data.data()),
                           static_cast<DWORD>(data.size())),
            ERROR_SUCCESS)
      << path;
  (void)RegCloseKey(key);
}

void RegistryTree::SetText(const std::string& path, const std::string& name,
                           const std::string& text) {
  Set(path, name, REG_SZ, text + '\0');
}

bool RegistryTree::HasKey(const std::string& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return false;
  }
  (void)RegCloseKey(key);
  return true;
}

std::ostream& operator<<(std::ostream& out, const RegistryTree& tree) {
  for (const auto& [name, value] : tree.values) {
    out << "\n  " << name << " type " << value.type << " " << Describe(value.data);
  }
  return out;
}

}  // namespace e2e
