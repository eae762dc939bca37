#include "tests/e2e/RegistryScratch.h"

#include <windows.h>

#include <sddl.h>

#include <gtest/gtest.h>

namespace e2e {
namespace {

// All that a test makes lies below one of these.
constexpr const char* kScratchTrees[] = {
    "SOFTWARE\\Vesmark\\NORVA\\E2E",
    "SOFTWARE\\Vesmark\\NORVAE2E",
    "SOFTWARE\\Vesmark\\E2E",
    "SOFTWARE\\Wow6432Node\\Vesmark\\NORVA\\E2E",
    "SOFTWARE\\Wow6432Node\\Vesmark\\E2E",
    "SOFTWARE\\E2E",
};

// What is removed behind them, if nobody else uses it.
constexpr const char* kParents[] = {
    "SOFTWARE\\Vesmark\\NORVA",
    "SOFTWARE\\Vesmark",
    "SOFTWARE\\Wow6432Node\\Vesmark\\NORVA",
    "SOFTWARE\\Wow6432Node\\Vesmark",
};

class Key {
 public:
  Key(const std::string& path, REGSAM access) {
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, access, &key_) != ERROR_SUCCESS) {
      key_ = nullptr;
    }
  }
  ~Key() {
    if (key_ != nullptr) RegCloseKey(key_);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  explicit operator bool() const { return key_ != nullptr; }
  HKEY get() const { return key_; }

 private:
  HKEY key_ = nullptr;
};

bool IsEmpty(const std::string& path) {
  const Key key(path, KEY_READ);
  DWORD subkeys = 0;
  DWORD values = 0;
  return key &&
         RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, &values,
                          nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
         subkeys == 0 && values == 0;
}

}  // namespace

RegistryScratch::RegistryScratch() { Clear(); }

RegistryScratch::~RegistryScratch() {
  Clear();
  for (const char* const parent : kParents) {
    if (IsEmpty(parent)) RegDeleteKeyA(HKEY_LOCAL_MACHINE, parent);
  }
}

void RegistryScratch::Clear() {
  for (const char* const tree : kScratchTrees) DeleteTree(tree);
}

// Wide, because the narrow call has no room for the longest names on every system.
void RegistryScratch::CreateKey(const std::string& path) {
  wchar_t wide[2 * MAX_PATH] = {};
  MultiByteToWideChar(CP_ACP, 0, path.c_str(), -1, wide, 2 * MAX_PATH - 1);
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, wide, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_READ,
                            nullptr, &key, nullptr),
            ERROR_SUCCESS)
      << path;
  RegCloseKey(key);
}

void RegistryScratch::DeleteTree(const std::string& path) {
  RegDeleteTreeA(HKEY_LOCAL_MACHINE, path.c_str());
}

bool RegistryScratch::HasKey(const std::string& path) const {
  return static_cast<bool>(Key(path, KEY_READ));
}

std::vector<std::string> RegistryScratch::Subkeys(const std::string& path) const {
  std::vector<std::string> names;
  const Key key(path, KEY_READ);
  for (DWORD index = 0; key; ++index) {
    char name[MAX_PATH];
    DWORD length = sizeof(name);
    if (RegEnumKeyExA(key.get(), index, name, &length, nullptr, nullptr, nullptr, nullptr) !=
        ERROR_SUCCESS) {
      break;
    }
    names.emplace_back(name, length);
  }
  return names;
}

void RegistryScratch::SetValue(const std::string& path, const std::string& name, std::uint32_t type,
                               const Bytes& data) {
  const Key key(path, KEY_SET_VALUE);
  ASSERT_TRUE(key) << path;
  ASSERT_EQ(
      RegSetValueExA(key.get(), name.c_str(), 0, type, reinterpret_cast<const BYTE*>(data.data()),
                     static_cast<DWORD>(data.size())),
      ERROR_SUCCESS)
      << path;
}

void RegistryScratch::DenyWriting(const std::string& path, bool denied) {
  const Key key(path, WRITE_DAC);
  ASSERT_TRUE(key) << path;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ASSERT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
                denied ? "D:(D;;0x2;;;WD)(A;;KA;;;WD)" : "D:(A;;KA;;;WD)", SDDL_REVISION_1,
                &descriptor, nullptr),
            FALSE);
  EXPECT_EQ(RegSetKeySecurity(key.get(), DACL_SECURITY_INFORMATION, descriptor), ERROR_SUCCESS);
  LocalFree(descriptor);
}

std::optional<StoredValue> RegistryScratch::Value(const std::string& path,
                                                  const std::string& name) const {
  const Key key(path, KEY_READ);
  Bytes data(0x10000, '\0');
  DWORD type = 0;
  auto size = static_cast<DWORD>(data.size());
  if (!key || RegQueryValueExA(key.get(), name.c_str(), nullptr, &type,
                               reinterpret_cast<BYTE*>(data.data()), &size) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  data.resize(size);
  return StoredValue{type, data};
}

}  // namespace e2e
