#include <cstdint>

#include "platform/DynamicLibrary.h"
#include "standins/script/testing/LibraryFixture.h"

namespace {

class RstAgent9Test : public LibraryFixture {
 protected:
  using Function = std::uint32_t(ENTRY_STDCALL*)(const char*);
  RstAgent9Test() : LibraryFixture("rstagent9.dll") {}

  Function restart_ = Find<Function>("DllEntryFktSilent");
};

TEST_F(RstAgent9Test, ADeviceRestartsAtOnce) {
  ASSERT_NE(restart_, nullptr);
  EXPECT_EQ(restart_("CP_L2_1:"), 0u);
  EXPECT_EQ(Log(), "DllEntryFktSilent logDevName=\"CP_L2_1:\" -> 0\n");
}

TEST_F(RstAgent9Test, AnAbsentDeviceIsInvalid) {
  ASSERT_NE(restart_, nullptr);
  EXPECT_EQ(restart_(nullptr), 87u);
  EXPECT_EQ(Log(), "DllEntryFktSilent logDevName=(null) -> 87\n");
}

TEST_F(RstAgent9Test, TheScriptSaysWhatTheRestartAnswers) {
  ASSERT_NE(restart_, nullptr);
  Script("[answer DllEntryFktSilent]\ncall = *\nresult = 10006\n");
  EXPECT_EQ(restart_("CP_L2_1:"), 10006u);
}

}  // namespace
