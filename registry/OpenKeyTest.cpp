#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "registry/RegistryOperation.h"
#include "tests/support/RegistrySetup.h"

// What a query leaves open, counted among the handles of this process.

namespace {

const std::string kKey = "SOFTWARE\\Vesmark\\NORVA\\OpenKeyTest";

struct ObjectName {
  struct {
    USHORT length, capacity;
    wchar_t* text;
  } name;
  char room[2048];
};

// Handles of this process to a key whose path ends so.
int OpenHandles(const std::wstring& end) {
  using QueryObject = LONG(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*);
  const auto query =
      reinterpret_cast<QueryObject>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQueryObject"));
  constexpr int kNameInformation = 1;
  int count = 0;
  for (std::uintptr_t value = 4; value < 0x2000; value += 4) {
    ObjectName object = {};
    ULONG length = 0;
    if (query(reinterpret_cast<HANDLE>(value), kNameInformation, &object, sizeof(object), &length) <
            0 ||
        object.name.text == nullptr) {
      continue;
    }
    const std::wstring name(object.name.text, object.name.length / sizeof(wchar_t));
    if (name.size() >= end.size() && name.substr(name.size() - end.size()) == end) ++count;
  }
  return count;
}

class OpenKeyTest : public testing::Test {
 protected:
  OpenKeyTest() {
    registry_setup::SetValue(kKey, "v", registry_setup::kSz, TextBytes("text") + Bytes{0});
  }
  ~OpenKeyTest() override { registry_setup::DeleteTree(kKey); }
};

TEST_F(OpenKeyTest, KeptAQueriedKeyStaysOpen) {
  const int before = OpenHandles(L"OpenKeyTest");
  char text[16] = {};
  std::uint32_t size = sizeof(text);
  EXPECT_EQ(RegQueryValueLeavingKeyOpen(kKey.c_str(), "v", text, size), 0u);
  EXPECT_EQ(OpenHandles(L"OpenKeyTest"), before + 1);
  EXPECT_EQ(RegQueryValueLeavingKeyOpen(kKey.c_str(), "none", text, size), 2u);
  EXPECT_EQ(OpenHandles(L"OpenKeyTest"), before + 2);
}

TEST_F(OpenKeyTest, OtherReadsLeaveNothingOpen) {
  const int before = OpenHandles(L"OpenKeyTest");
  char text[16] = {};
  std::uint32_t size = sizeof(text);
  EXPECT_EQ(RegGetValueBL(kKey.c_str(), "v", text, size), 0u);
  EXPECT_TRUE(RegKeyExists(kKey.c_str()));
  EXPECT_EQ(OpenHandles(L"OpenKeyTest"), before);
}

}  // namespace
