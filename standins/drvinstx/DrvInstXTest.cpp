#include <cstdint>

#include "platform/DynamicLibrary.h"
#include "standins/script/testing/LibraryFixture.h"

namespace {

class DrvInstXTest : public LibraryFixture {
 protected:
  using Function = std::uint32_t(ENTRY_STDCALL*)(const char*, const char*, const char*,
                                                 std::uint32_t);
  DrvInstXTest() : LibraryFixture("drvinstx.dll") {}

  Function install_ = Find<Function>("EINST_InstallWdmDriver");
};

TEST_F(DrvInstXTest, ADriverIsTakenAndItsArgumentsAreLogged) {
  ASSERT_NE(install_, nullptr);
  EXPECT_EQ(install_("svc", "C:\\drv\\x.inf", "", 3), 0u);
  EXPECT_EQ(Log(),
            "EINST_InstallWdmDriver service=\"svc\" infFile=\"C:\\\\drv\\\\x.inf\" third=\"\" "
            "mode=3 -> 0\n");
}

TEST_F(DrvInstXTest, AnAbsentServiceOrFileIsInvalidAndAnAbsentThirdTextIsNot) {
  ASSERT_NE(install_, nullptr);
  EXPECT_EQ(install_(nullptr, "x.inf", "", 0), 87u);
  EXPECT_EQ(install_("svc", nullptr, "", 0), 87u);
  EXPECT_EQ(install_("svc", "x.inf", nullptr, 0), 0u);
}

TEST_F(DrvInstXTest, TheScriptSaysWhatTheInstallationAnswers) {
  ASSERT_NE(install_, nullptr);
  Script("[answer EINST_InstallWdmDriver]\ncall = *\nresult = 0xE000020B\n");
  EXPECT_EQ(install_("svc", "x.inf", "", 0), 0xE000020Bu);
}

}  // namespace
