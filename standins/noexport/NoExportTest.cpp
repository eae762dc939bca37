#include <windows.h>

#include "standins/script/testing/LibraryFixture.h"

namespace {

struct Lacking {
  const char* file;
  const char* entryPoint;
};

class NoExportTest : public LibraryFixture, public testing::WithParamInterface<Lacking> {
 protected:
  NoExportTest() : LibraryFixture(GetParam().file) {}
};

TEST_P(NoExportTest, TheLibraryLoadsAndItsTwinLacksTheEntryPoint) {
  EXPECT_NE(Find<void*>(GetParam().entryPoint), nullptr);
  const std::string twin = StandInFolder() + "\\noexport\\" + GetParam().file;
  const HMODULE library = LoadLibraryA(twin.c_str());
  ASSERT_NE(library, nullptr) << GetLastError();
  EXPECT_EQ(GetProcAddress(library, GetParam().entryPoint), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));
  EXPECT_TRUE(FreeLibrary(library));
}

INSTANTIATE_TEST_SUITE_P(AllLibraries, NoExportTest,
                         testing::Values(Lacking{"drvinstx.dll", "EINST_InstallWdmDriver"},
                                         Lacking{"onlpanelx.cpl", "RunEpromPanelAsAdmin"},
                                         Lacking{"rstagent9.dll", "DllEntryFktSilent"},
                                         Lacking{"ringdiag.dll", "EpIsCpInRing"},
                                         Lacking{"ipcfgx.dll", "IE_AddIPAddressEx"},
                                         Lacking{"ipcfgx.dll", "IE_DeleteIPAddressEx"},
                                         Lacking{"sampledev.dll", "SampleInstall"}));

}  // namespace
