#include "server/SrvSecurity.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

#include "server/SecurityPlan.h"
#include "tests/support/BrokenFunction.h"

namespace {

struct Ace {
  bool deny;
  DWORD mask;
  std::string sid;
};

std::string SidText(const BYTE* sid) {
  const SID* const s = reinterpret_cast<const SID*>(sid);
  std::string text =
      "S-" + std::to_string(s->Revision) + "-" + std::to_string(s->IdentifierAuthority.Value[5]);
  for (BYTE i = 0; i < s->SubAuthorityCount; ++i) {
    text += "-" + std::to_string(s->SubAuthority[i]);
  }
  return text;
}

std::vector<Ace> DaclOf(void* descriptor) {
  BOOL present = FALSE;
  BOOL defaulted = TRUE;
  PACL acl = nullptr;
  EXPECT_TRUE(GetSecurityDescriptorDacl(descriptor, &present, &acl, &defaulted));
  EXPECT_TRUE(present);
  EXPECT_FALSE(defaulted);
  std::vector<Ace> aces;
  for (DWORD i = 0; acl != nullptr && i < acl->AceCount; ++i) {
    void* raw = nullptr;
    EXPECT_TRUE(GetAce(acl, i, &raw));
    const auto* const ace = static_cast<const ACCESS_ALLOWED_ACE*>(raw);
    EXPECT_EQ(ace->Header.AceFlags, 0);
    aces.push_back(
        {ace->Header.AceType == ACCESS_DENIED_ACE_TYPE, ace->Mask,
         SidText(static_cast<const BYTE*>(raw) + offsetof(ACCESS_ALLOWED_ACE, SidStart))});
  }
  return aces;
}

std::string CurrentUser() {
  HANDLE token = nullptr;
  (void)OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token);
  std::vector<BYTE> user(1024);
  DWORD size = 0;
  (void)GetTokenInformation(token, TokenUser, user.data(), static_cast<DWORD>(user.size()), &size);
  (void)CloseHandle(token);
  return SidText(static_cast<const BYTE*>(reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid));
}

constexpr char kAuthenticatedUsers[] = "S-1-5-11";
constexpr char kNetwork[] = "S-1-5-2";
constexpr char kLocalSystem[] = "S-1-5-18";
constexpr char kAdministrators[] = "S-1-5-32-544";

TEST(SrvSecurityTest, TheGeneralDescriptorHasOneEntry) {
  SrvSecurity security;
  ASSERT_TRUE(security.Build(0, 0));
  ASSERT_NE(security.Attributes()->lpSecurityDescriptor, nullptr);
  EXPECT_EQ(security.Attributes()->nLength, sizeof(SECURITY_ATTRIBUTES));
  EXPECT_FALSE(security.Attributes()->bInheritHandle);
  const std::vector<Ace> aces = DaclOf(security.Attributes()->lpSecurityDescriptor);
  ASSERT_EQ(aces.size(), 1u);
  EXPECT_FALSE(aces[0].deny);
  EXPECT_EQ(aces[0].mask, 0x1F01FFu);
  EXPECT_EQ(aces[0].sid, kAuthenticatedUsers);
}

TEST(SrvSecurityTest, ThePipeDescriptorDeniesTheNetworkAndLetsUsersReadAndWrite) {
  SrvSecurity security;
  ASSERT_TRUE(security.Build(kPipeClientRights, kModeCurrentUser));
  const std::vector<Ace> aces = DaclOf(security.Attributes()->lpSecurityDescriptor);
  ASSERT_EQ(aces.size(), 3u);
  EXPECT_TRUE(aces[0].deny);
  EXPECT_EQ(aces[0].mask, 0x1F01FFu);
  EXPECT_EQ(aces[0].sid, kNetwork);
  EXPECT_FALSE(aces[1].deny);
  EXPECT_EQ(aces[1].mask, 0x1F01FFu);
  EXPECT_EQ(aces[1].sid, CurrentUser());
  EXPECT_FALSE(aces[2].deny);
  EXPECT_EQ(aces[2].mask, 0x8000019Bu);
  EXPECT_EQ(aces[2].sid, kAuthenticatedUsers);
}

TEST(SrvSecurityTest, ModeOneSetsOwnerAndGroup) {
  SrvSecurity security;
  ASSERT_TRUE(security.Build(0, kModeLocalSystem));
  void* const descriptor = security.Attributes()->lpSecurityDescriptor;
  PSID owner = nullptr;
  PSID group = nullptr;
  BOOL defaulted = TRUE;
  ASSERT_TRUE(GetSecurityDescriptorOwner(descriptor, &owner, &defaulted));
  ASSERT_TRUE(GetSecurityDescriptorGroup(descriptor, &group, &defaulted));
  EXPECT_EQ(SidText(static_cast<const BYTE*>(owner)), kAdministrators);
  EXPECT_EQ(SidText(static_cast<const BYTE*>(group)), kLocalSystem);
  const std::vector<Ace> aces = DaclOf(descriptor);
  ASSERT_EQ(aces.size(), 3u);
  EXPECT_EQ(aces[1].sid, kLocalSystem);
}

TEST(SrvSecurityTest, APipeTakesTheDescriptor) {
  SrvSecurity security;
  ASSERT_TRUE(security.Build(kPipeClientRights, kModeCurrentUser));
  ASSERT_NE(security.Attributes()->lpSecurityDescriptor, nullptr);
  const HANDLE pipe = CreateNamedPipeA("\\\\.\\pipe\\QorlixSrvSecurityTest", PIPE_ACCESS_DUPLEX,
                                       PIPE_TYPE_BYTE, 1, 64, 64, 0, security.Attributes());
  EXPECT_NE(pipe, INVALID_HANDLE_VALUE);
  (void)CloseHandle(pipe);
}

// --- Failures ---

TEST(SrvSecurityTest, WithoutItsSidsNothingIsBuiltAndTheErrorIsTheirs) {
  const BrokenFunction broken("advapi32.dll", "CreateWellKnownSid", FALSE, 16);
  SrvSecurity security;
  SetLastError(ERROR_INVALID_SID);
  EXPECT_FALSE(security.Build(kPipeClientRights, kModeCurrentUser));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_SID));
  EXPECT_EQ(security.Attributes()->lpSecurityDescriptor, nullptr);
}

// The default descriptor of the system it is then.
TEST(SrvSecurityTest, ADescriptorThatCannotBeBuiltIsNone) {
  struct Step {
    const char* function;
    std::uint32_t result;
    std::uint8_t argumentBytes;
  };
  for (const Step& step : {Step{"SetEntriesInAclA", ERROR_NOT_ENOUGH_MEMORY, 16},
                           Step{"InitializeSecurityDescriptor", FALSE, 8},
                           Step{"SetSecurityDescriptorDacl", FALSE, 16}}) {
    const BrokenFunction broken("advapi32.dll", step.function, step.result, step.argumentBytes);
    SrvSecurity security;
    EXPECT_TRUE(security.Build(kPipeClientRights, kModeCurrentUser)) << step.function;
    EXPECT_EQ(security.Attributes()->lpSecurityDescriptor, nullptr) << step.function;
    EXPECT_EQ(security.Attributes()->nLength, sizeof(SECURITY_ATTRIBUTES)) << step.function;
  }
}

}  // namespace
