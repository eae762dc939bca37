#include <cstdint>

#include "platform/DynamicLibrary.h"
#include "standins/script/testing/LibraryFixture.h"

namespace {

class OnlPanelXTest : public LibraryFixture {
 protected:
  using Function = std::uint32_t(ENTRY_STDCALL*)(std::uint32_t, std::uint32_t);
  OnlPanelXTest() : LibraryFixture("onlpanelx.cpl") {}

  Function run_ = Find<Function>("RunEpromPanelAsAdmin");
};

TEST_F(OnlPanelXTest, APanelThatWasShownIsNotZero) {
  ASSERT_NE(run_, nullptr);
  EXPECT_EQ(run_(0, 0), 1u);
  EXPECT_EQ(Log(), "RunEpromPanelAsAdmin first=0 second=0 -> 1\n");
}

TEST_F(OnlPanelXTest, AScriptedPanelIsNotShown) {
  ASSERT_NE(run_, nullptr);
  Script("[answer RunEpromPanelAsAdmin]\ncall = *\nresult = 0\n");
  EXPECT_EQ(run_(0, 0), 0u);
}

}  // namespace
