#include "platform/DynamicLibrary.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

// Over a library of the system that no test program is linked to.

namespace {

constexpr char kName[] = "winmm.dll";
constexpr char kExport[] = "timeGetTime";

bool IsInMemory() { return GetModuleHandleA(kName) != nullptr; }

TEST(DynamicLibraryTest, AnExportOfALoadedLibraryCanBeCalled) {
  platform::DynamicLibrary library;
  ASSERT_TRUE(library.Load(kName));
  EXPECT_TRUE(library.IsLoaded());
  EXPECT_EQ(library.Handle(), GetModuleHandleA(kName));
  const auto entry = reinterpret_cast<DWORD(ENTRY_STDCALL*)()>(library.Find(kExport));
  ASSERT_NE(entry, nullptr);
  (void)entry();
}

TEST(DynamicLibraryTest, AFullPathIsLoadedAsWell) {
  char path[MAX_PATH];
  ASSERT_NE(GetSystemDirectoryA(path, sizeof(path)), 0u);
  platform::DynamicLibrary library;
  EXPECT_TRUE(library.Load((std::string(path) + "\\" + kName).c_str()));
}

TEST(DynamicLibraryTest, TheDestructorUnloads) {
  ASSERT_FALSE(IsInMemory());
  {
    platform::DynamicLibrary library;
    ASSERT_TRUE(library.Load(kName));
    EXPECT_TRUE(IsInMemory());
  }
  EXPECT_FALSE(IsInMemory());
}

TEST(DynamicLibraryTest, FreeUnloadsAndMayBeRepeated) {
  platform::DynamicLibrary library;
  ASSERT_TRUE(library.Load(kName));
  library.Free();
  EXPECT_FALSE(IsInMemory());
  EXPECT_FALSE(library.IsLoaded());
  library.Free();
}

TEST(DynamicLibraryTest, LoadUnloadsWhatWasLoadedBefore) {
  platform::DynamicLibrary library;
  ASSERT_TRUE(library.Load(kName));
  ASSERT_TRUE(library.Load("kernel32.dll"));
  EXPECT_FALSE(IsInMemory());
}

TEST(DynamicLibraryTest, WhatWasReleasedStaysLoaded) {
  void* handle = nullptr;
  {
    platform::DynamicLibrary library;
    ASSERT_TRUE(library.Load(kName));
    handle = library.Release();
    EXPECT_FALSE(library.IsLoaded());
  }
  EXPECT_TRUE(IsInMemory());
  FreeLibrary(static_cast<HMODULE>(handle));
  EXPECT_FALSE(IsInMemory());
}

TEST(DynamicLibraryTest, AMissingLibraryLeavesItsErrorAndNothingLoaded) {
  platform::SetLastError(0);
  platform::DynamicLibrary library;
  EXPECT_FALSE(library.Load("C:\\qorlix-no-such-folder\\none.dll"));
  EXPECT_EQ(platform::LastError(), DWORD{ERROR_MOD_NOT_FOUND});
  EXPECT_FALSE(library.IsLoaded());
  EXPECT_EQ(library.Release(), nullptr);
}

TEST(DynamicLibraryTest, AnEmptyNameLoadsNothing) {
  platform::SetLastError(0);
  platform::DynamicLibrary library;
  EXPECT_FALSE(library.Load(""));
  EXPECT_NE(platform::LastError(), 0u);
}

TEST(DynamicLibraryTest, AMissingExportLeavesItsErrorAndAFoundOneLeavesItAlone) {
  platform::DynamicLibrary library;
  ASSERT_TRUE(library.Load(kName));
  platform::SetLastError(0);
  EXPECT_EQ(library.Find("NoSuchExport"), nullptr);
  EXPECT_EQ(platform::LastError(), DWORD{ERROR_PROC_NOT_FOUND});
  EXPECT_EQ(library.Find(""), nullptr);
  platform::SetLastError(0);
  EXPECT_NE(library.Find(kExport), nullptr);
  EXPECT_EQ(platform::LastError(), 0u);
}

}  // namespace
