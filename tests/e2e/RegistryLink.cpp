#include "tests/e2e/RegistryLink.h"

#include <windows.h>

#include <winternl.h>

#include <gtest/gtest.h>

#include <vector>

namespace e2e {
namespace {

constexpr int kKeyNameInformation = 3;

FARPROC OfNtdll(const char* name) { return GetProcAddress(GetModuleHandleA("ntdll.dll"), name); }

// The name that the kernel knows a key by, which is what a link holds: without a terminator.
std::vector<wchar_t> KernelName(const std::string& path) {
  using Query = NTSTATUS(NTAPI*)(HANDLE, int, void*, ULONG, ULONG*);
  struct {
    ULONG bytes;
    wchar_t name[1024];
  } answer = {};
  HKEY key = nullptr;
  ULONG size = 0;
  EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key), ERROR_SUCCESS);
  const auto query = reinterpret_cast<Query>(OfNtdll("NtQueryKey"));
  EXPECT_GE(query(key, kKeyNameInformation, &answer, sizeof(answer), &size), 0) << path;
  (void)RegCloseKey(key);
  return {answer.name, answer.name + answer.bytes / sizeof(wchar_t)};
}

}  // namespace

RegistryLink::RegistryLink(const std::string& path, const std::string& target) {
  const std::vector<wchar_t> name = KernelName(target);
  HKEY key = nullptr;
  EXPECT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr,
                            REG_OPTION_CREATE_LINK | REG_OPTION_VOLATILE,
                            KEY_CREATE_LINK | KEY_SET_VALUE | DELETE, nullptr, &key, nullptr),
            ERROR_SUCCESS)
      << path;
  EXPECT_EQ(RegSetValueExW(key, L"SymbolicLinkValue", 0, REG_LINK,
                           reinterpret_cast<const BYTE*>(name.data()),
                           static_cast<DWORD>(name.size() * sizeof(wchar_t))),
            ERROR_SUCCESS);
  link_ = key;
}

// By its handle: its name is that of the target.
RegistryLink::~RegistryLink() {
  using Delete = NTSTATUS(NTAPI*)(HANDLE);
  EXPECT_GE(reinterpret_cast<Delete>(OfNtdll("NtDeleteKey"))(link_), 0);
  (void)RegCloseKey(static_cast<HKEY>(link_));
}

}  // namespace e2e
