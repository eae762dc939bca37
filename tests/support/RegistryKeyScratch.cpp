#include "tests/support/RegistryKeyScratch.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr char kOriginal[] = "\\original";

/// What is the machine's must not be lost, so nothing here goes on after a failure.
void MustSucceed(LSTATUS status, const std::string& path) {
  if (status == ERROR_SUCCESS) return;
  (void)std::fprintf(stderr, "the registry key %s cannot be put aside: error %ld\n", path.c_str(),
                     status);
  std::abort();
}

bool Exists(const std::string& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return false;
  }
  (void)RegCloseKey(key);
  return true;
}

void Create(const std::string& path) {
  HKEY key = nullptr;
  MustSucceed(RegCreateKeyA(HKEY_LOCAL_MACHINE, path.c_str(), &key), path);
  (void)RegCloseKey(key);
}

void Copy(const std::string& from, const std::string& to) {
  HKEY target = nullptr;
  MustSucceed(RegCreateKeyA(HKEY_LOCAL_MACHINE, to.c_str(), &target), to);
  MustSucceed(RegCopyTreeA(HKEY_LOCAL_MACHINE, from.c_str(), target), from);
  (void)RegCloseKey(target);
}

}  // namespace

RegistryKeyScratch::RegistryKeyScratch(const std::string& path)
    : path_(path), aside_(path + " put aside by a test") {
  if (!Exists(aside_)) {
    Create(aside_);
    if (Exists(path_)) Copy(path_, aside_ + kOriginal);
  }
  Remove();
}

RegistryKeyScratch::~RegistryKeyScratch() {
  Remove();
  if (Exists(aside_ + kOriginal)) Copy(aside_ + kOriginal, path_);
  (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, aside_.c_str());
}

void RegistryKeyScratch::Remove() const { (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, path_.c_str()); }

void RegistryKeyScratch::SetText(const std::string& name, const std::string& text) const {
  SetRaw(name, REG_SZ, text + '\0');
}

void RegistryKeyScratch::SetRaw(const std::string& name, unsigned type,
                                const std::string& data) const {
  HKEY key = nullptr;
  (void)RegCreateKeyA(HKEY_LOCAL_MACHINE, path_.c_str(), &key);
  (void)RegSetValueExA(key, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(data.data()),
                       static_cast<DWORD>(data.size()));
  (void)RegCloseKey(key);
}
