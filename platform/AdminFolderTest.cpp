#include "platform/AdminFolder.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <sddl.h>

#include <fstream>
#include <string>

#include "tests/support/BrokenFunction.h"

namespace platform {
namespace {

// What a descriptor written as text means to us.
bool IsSafe(const std::string& text) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  EXPECT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
                text.c_str(), SDDL_REVISION_1, &descriptor, /*SecurityDescriptorSize=*/nullptr),
            FALSE)
      << text;
  const bool safe = OnlyAdministratorsMayWrite(descriptor);
  (void)LocalFree(descriptor);
  return safe;
}

constexpr char kInstaller[] = "S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464";

TEST(AdminFolderTest, AdministratorsTheSystemAndItsInstallerAreTrusted) {
  EXPECT_TRUE(IsSafe("O:BAG:SYD:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)"));
  EXPECT_TRUE(IsSafe("O:SYG:SYD:(A;;FA;;;BA)"));
  EXPECT_TRUE(IsSafe("O:BAG:SYD:"));
  const std::string installer = kInstaller;
  EXPECT_TRUE(IsSafe("O:" + installer + "G:SYD:(A;;FA;;;" + installer + ")"));
}

TEST(AdminFolderTest, OthersMayReadIt) {
  EXPECT_TRUE(IsSafe("O:BAG:SYD:(A;OICI;FA;;;BA)(A;OICI;FRFX;;;BU)(A;;GR;;;WD)"));
}

TEST(AdminFolderTest, AFolderMadeByHandInTheSystemsIsSafe) {
  EXPECT_TRUE(
      IsSafe("O:BAG:SYD:AI(A;ID;FA;;;SY)(A;OICIIOID;GA;;;SY)(A;OICIIOID;GA;;;CO)"
             "(A;ID;0x1200a9;;;BU)(A;OICIIOID;GXGR;;;BU)"));
}

TEST(AdminFolderTest, AnOwnerWhoIsNobodyOfTheseIsNot) {
  for (const char* const owner : {"BU", "WD", "AU", "PU", "S-1-5-21-1-2-3-1001",
                                  "S-1-5-80-956008885-3418522649-1831038044-1853292631-1"}) {
    EXPECT_FALSE(IsSafe("O:" + std::string(owner) + "G:SYD:(A;;FA;;;BA)")) << owner;
  }
}

TEST(AdminFolderTest, ARightToWriteForOthersIsNotSafe) {
  // Each kind of writing alone, and generic rights, on a folder and for what is made in it.
  for (const char* const right :
       {"FA", "GA", "GW", "0x2", "0x4", "0x10", "0x40", "0x100", "SD", "WD", "WO", "0x2000000"}) {
    for (const char* const who : {"BU", "WD", "AU", "IU", "CO", "S-1-5-21-1-2-3-1001"}) {
      const std::string ace = ";" + std::string(right) + ";;;" + who + ")";
      EXPECT_FALSE(IsSafe("O:BAG:SYD:(A;" + ace)) << ace;
      EXPECT_FALSE(IsSafe("O:BAG:SYD:(A;;FA;;;BA)(A;OICI" + ace)) << ace;
    }
  }
  EXPECT_FALSE(IsSafe("O:BAG:SYD:(A;OICIIO;GW;;;BU)")) << "it is for what is made in it";
}

TEST(AdminFolderTest, ADenialGrantsNothingAndTakesNothingBack) {
  EXPECT_TRUE(IsSafe("O:BAG:SYD:(D;;GW;;;WD)(A;;FA;;;BA)"));
  EXPECT_FALSE(IsSafe("O:BAG:SYD:(D;;0x2;;;BU)(A;;GW;;;BU)"));
}

TEST(AdminFolderTest, WithoutAnAccessListEverybodyMayWrite) { EXPECT_FALSE(IsSafe("O:BAG:SY")); }

TEST(AdminFolderTest, OurOwnDescriptorIsSafe) {
  const SECURITY_ATTRIBUTES* const ours = AdministratorsOnly();
  ASSERT_NE(ours, nullptr);
  EXPECT_EQ(AdministratorsOnly(), ours);
  EXPECT_TRUE(OnlyAdministratorsMayWrite(ours->lpSecurityDescriptor));

  PSECURITY_DESCRIPTOR expected = nullptr;
  ASSERT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
                "O:BAD:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)", SDDL_REVISION_1, &expected, nullptr),
            FALSE);
  BYTE relative[512];
  DWORD size = sizeof(relative);
  ASSERT_NE(MakeSelfRelativeSD(ours->lpSecurityDescriptor, relative, &size), FALSE);
  char* text = nullptr;
  char* wanted = nullptr;
  constexpr SECURITY_INFORMATION kParts = OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
  ASSERT_NE(ConvertSecurityDescriptorToStringSecurityDescriptorA(relative, SDDL_REVISION_1, kParts,
                                                                 &text, nullptr),
            FALSE);
  ASSERT_NE(ConvertSecurityDescriptorToStringSecurityDescriptorA(expected, SDDL_REVISION_1, kParts,
                                                                 &wanted, nullptr),
            FALSE);
  EXPECT_STREQ(text, wanted);
  (void)LocalFree(text);
  (void)LocalFree(wanted);
  (void)LocalFree(expected);
}

class PrepareAdminFolderTest : public testing::Test {
 protected:
  PrepareAdminFolderTest() {
    char folder[MAX_PATH];
    (void)GetTempPathA(sizeof(folder), folder);
    path_ = std::string(folder) + "qorlix_admin_folder_" + std::to_string(GetCurrentProcessId());
  }
  ~PrepareAdminFolderTest() override {
    (void)RemoveDirectoryA(path_.c_str());
    (void)DeleteFileA(path_.c_str());
  }

  std::string path_;
};

TEST_F(PrepareAdminFolderTest, AMissingFolderIsMadeAndUsedAgain) {
  EXPECT_EQ(PrepareAdminFolder(path_.c_str()), nullptr);
  EXPECT_NE(GetFileAttributesA(path_.c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0u);
  EXPECT_EQ(PrepareAdminFolder(path_.c_str()), nullptr);
}

TEST_F(PrepareAdminFolderTest, AFileOfTheNameIsNoFolder) {
  std::ofstream(path_) << "x";
  EXPECT_STREQ(PrepareAdminFolder(path_.c_str()), "it is no folder");
}

TEST_F(PrepareAdminFolderTest, AFolderThatOthersMayWriteToIsRefused) {
  PSECURITY_DESCRIPTOR open = nullptr;
  ASSERT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
                "D:P(A;OICI;FA;;;BA)(A;OICI;FA;;;WD)", SDDL_REVISION_1, &open, nullptr),
            FALSE);
  ASSERT_NE(CreateDirectoryA(path_.c_str(), nullptr), FALSE);
  ASSERT_NE(SetFileSecurityA(path_.c_str(), DACL_SECURITY_INFORMATION, open), FALSE);
  (void)LocalFree(open);
  EXPECT_STREQ(PrepareAdminFolder(path_.c_str()), "others than administrators may write to it");
}

TEST_F(PrepareAdminFolderTest, ALinkIsRefusedWhereverItLeads) {
  using Make = BOOLEAN(WINAPI*)(LPCSTR, LPCSTR, DWORD);
  const auto make = reinterpret_cast<Make>(
      GetProcAddress(GetModuleHandleA("kernel32.dll"), "CreateSymbolicLinkA"));
  const std::string target = path_ + "_target";
  ASSERT_EQ(PrepareAdminFolder(target.c_str()), nullptr);
  const bool linked = make != nullptr &&
                      make(path_.c_str(), target.c_str(), /*directory=*/1) != 0 &&
                      GetFileAttributesA(path_.c_str()) != INVALID_FILE_ATTRIBUTES;
  if (linked) {
    EXPECT_STREQ(PrepareAdminFolder(path_.c_str()), "it is no folder");
  }
  (void)RemoveDirectoryA(target.c_str());
  if (!linked) GTEST_SKIP() << "this system makes no links";
}

TEST_F(PrepareAdminFolderTest, AFolderThatTellsNothingAboutItselfIsRefused) {
  const BrokenFunction broken("kernel32.dll", "GetFileInformationByHandle", FALSE, 8);
  EXPECT_STREQ(PrepareAdminFolder(path_.c_str()), "it cannot be opened");
}

TEST_F(PrepareAdminFolderTest, AFolderInNoFolderCannotBeMade) {
  EXPECT_STREQ(PrepareAdminFolder((path_ + "\\in\\it").c_str()), "it cannot be made");
}

}  // namespace
}  // namespace platform
