#include <cstdint>

#include "platform/DynamicLibrary.h"
#include "standins/script/testing/LibraryFixture.h"

namespace {

constexpr std::uint32_t kMask = 0x00FFFFFF;

class IpCfgXTest : public LibraryFixture {
 protected:
  using AddFunction = std::uint32_t(ENTRY_CDECL*)(std::uint32_t, std::uint32_t, std::uint32_t,
                                                  std::uint32_t*, std::uint32_t*);
  using DeleteFunction = std::uint32_t(ENTRY_CDECL*)(std::uint32_t);
  IpCfgXTest() : LibraryFixture("ipcfgx.dll") {}

  std::uint32_t Add(std::uint32_t address) {
    const auto add = Find<AddFunction>("IE_AddIPAddressEx");
    return add != nullptr ? add(address, kMask, /*ifIndex=*/2, &context_, &instance_) : 0xFFFFFFFF;
  }
  std::uint32_t Delete(std::uint32_t context) {
    const auto remove = Find<DeleteFunction>("IE_DeleteIPAddressEx");
    return remove != nullptr ? remove(context) : 0xFFFFFFFF;
  }

  std::uint32_t context_ = 0;
  std::uint32_t instance_ = 0;
};

TEST_F(IpCfgXTest, AnAddedAddressIsDeletedByItsContext) {
  ASSERT_EQ(Add(0x0100A8C0), 0u);
  EXPECT_NE(context_, 0u);
  EXPECT_EQ(instance_, context_ + 1000);
  EXPECT_EQ(Delete(context_), 0u);
  EXPECT_EQ(Delete(context_), 1168u);
  const std::string context = std::to_string(context_);
  EXPECT_EQ(Log(), "IE_AddIPAddressEx address=16820416 mask=16777215 ifIndex=2 -> 0 nteContext=" +
                       context + " nteInstance=" + std::to_string(instance_) +
                       "\nIE_DeleteIPAddressEx nteContext=" + context +
                       " -> 0\nIE_DeleteIPAddressEx nteContext=" + context + " -> 1168\n");
}

TEST_F(IpCfgXTest, AnAddressOutlivesTheLibrary) {
  ASSERT_EQ(Add(0x0200A8C0), 0u);
  const std::uint32_t context = context_;
  Free();
  Load();
  EXPECT_EQ(Add(0x0200A8C0), 5010u);
  EXPECT_EQ(Delete(context), 0u);
}

TEST_F(IpCfgXTest, AbsentOutputWordsAreInvalid) {
  const auto add = Find<AddFunction>("IE_AddIPAddressEx");
  ASSERT_NE(add, nullptr);
  EXPECT_EQ(add(0x0300A8C0, kMask, 2, nullptr, &instance_), 87u);
  EXPECT_EQ(add(0x0300A8C0, kMask, 2, &context_, nullptr), 87u);
}

TEST_F(IpCfgXTest, TheScriptGivesContextAndInstance) {
  Script("[answer IE_AddIPAddressEx]\ncall = *\nresult = 0\nnte-context = 7\nnte-instance = 8\n");
  EXPECT_EQ(Add(0x0400A8C0), 0u);
  EXPECT_EQ(context_, 7u);
  EXPECT_EQ(instance_, 8u);
}

}  // namespace
