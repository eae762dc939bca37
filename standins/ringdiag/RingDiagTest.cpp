#include <cstdint>

#include "platform/DynamicLibrary.h"
#include "standins/script/testing/LibraryFixture.h"

namespace {

class RingDiagTest : public LibraryFixture {
 protected:
  using Function = std::uint32_t(ENTRY_STDCALL*)(const char*, std::uint32_t, std::uint32_t*);
  RingDiagTest() : LibraryFixture("ringdiag.dll") {}

  Function ask_ = Find<Function>("EpIsCpInRing");
  std::uint32_t out_ = 77;
};

TEST_F(RingDiagTest, NoDeviceIsInARing) {
  ASSERT_NE(ask_, nullptr);
  EXPECT_EQ(ask_("CP_L2_1:", 6000, &out_), 0u);
  EXPECT_EQ(out_, 0u);
  EXPECT_EQ(Log(), "EpIsCpInRing logDevName=\"CP_L2_1:\" time=6000 -> 0 out=0\n");
}

TEST_F(RingDiagTest, AnAbsentDeviceOrWordIsInvalid) {
  ASSERT_NE(ask_, nullptr);
  EXPECT_EQ(ask_(nullptr, 6000, &out_), 87u);
  EXPECT_EQ(ask_("CP_L2_1:", 6000, nullptr), 87u);
}

TEST_F(RingDiagTest, TheScriptPutsADeviceIntoARing) {
  ASSERT_NE(ask_, nullptr);
  Script("[answer EpIsCpInRing]\ncall = *\nout = 1\n");
  EXPECT_EQ(ask_("CP_L2_1:", 6000, &out_), 0u);
  EXPECT_EQ(out_, 1u);
}

}  // namespace
