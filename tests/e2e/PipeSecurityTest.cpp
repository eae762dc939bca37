#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/e2e/ServerProcess.h"
#include "tests/e2e/WireClient.h"

namespace e2e {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

constexpr DWORD kAllRights = 0x1F01FF;
constexpr char kNetwork[] = "S-1-5-2";
constexpr char kAuthenticatedUsers[] = "S-1-5-11";

// FILE_CREATE_PIPE_INSTANCE, under the name that the headers have for the same bit of a file.
constexpr DWORD kCreatePipeInstance = FILE_APPEND_DATA;

struct Entry {
  int type;
  DWORD mask;
  std::string sid;
};

std::string SidText(PSID sid) {
  char* text = nullptr;
  if (ConvertSidToStringSidA(sid, &text) == FALSE) return "?";
  std::string copy = text;
  LocalFree(text);
  return copy;
}

std::string CurrentUser() {
  HANDLE token = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) return "?";
  alignas(TOKEN_USER) unsigned char user[256];
  DWORD size = sizeof(user);
  const BOOL known = GetTokenInformation(token, TokenUser, user, size, &size);
  CloseHandle(token);
  return known != FALSE ? SidText(reinterpret_cast<TOKEN_USER*>(user)->User.Sid) : "?";
}

// The DACL as it is kept with the object; the pipe driver may have mapped generic rights.
std::vector<Entry> Dacl(HANDLE object) {
  std::vector<Entry> entries;
  PACL acl = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  EXPECT_EQ(GetSecurityInfo(object, SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                            &acl, nullptr, &descriptor),
            static_cast<DWORD>(ERROR_SUCCESS));
  for (DWORD i = 0; acl != nullptr && i < acl->AceCount; ++i) {
    void* ace = nullptr;
    if (GetAce(acl, i, &ace) == FALSE) continue;
    // Both kinds of entry that occur have the same layout.
    const auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(ace);
    entries.push_back(
        {allowed->Header.AceType, allowed->Mask, SidText(const_cast<DWORD*>(&allowed->SidStart))});
  }
  LocalFree(descriptor);
  return entries;
}

auto EntryIs(int type, testing::Matcher<DWORD> mask, const std::string& sid) {
  return testing::AllOf(Field("type", &Entry::type, type), Field("mask", &Entry::mask, mask),
                        Field("sid", &Entry::sid, sid));
}

class PipeSecurityTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(server_.Start());
    ASSERT_TRUE(client_.Connect());
  }

  ServerProcess server_;
  WireClient client_;
};

TEST_F(PipeSecurityTest, NetworkIsDeniedAndLocalUsersMayReadAndWrite) {
  EXPECT_THAT(Dacl(client_.Handle()),
              ElementsAre(EntryIs(ACCESS_DENIED_ACE_TYPE, kAllRights, kNetwork),
                          EntryIs(ACCESS_ALLOWED_ACE_TYPE, kAllRights, CurrentUser()),
                          EntryIs(ACCESS_ALLOWED_ACE_TYPE, AnyOf(0x8000019Bu, 0x0012019Bu),
                                  kAuthenticatedUsers)));
}

TEST_F(PipeSecurityTest, NoLocalUserButTheServersOwnMayAddInstances) {
  const std::vector<Entry> entries = Dacl(client_.Handle());
  ASSERT_THAT(entries, SizeIs(3));
  EXPECT_EQ(entries[2].mask & kCreatePipeInstance, 0u);
  EXPECT_NE(entries[1].mask & kCreatePipeInstance, 0u);
}

TEST_F(PipeSecurityTest, SingleInstanceMutexIsOpenToAuthenticatedUsers) {
  const HANDLE mutex =
      OpenMutexA(READ_CONTROL | SYNCHRONIZE, FALSE, "Global\\QORLIXSRV_SINGLE_INSTANCE_42");
  ASSERT_NE(mutex, nullptr);
  EXPECT_THAT(Dacl(mutex),
              ElementsAre(EntryIs(ACCESS_ALLOWED_ACE_TYPE, kAllRights, kAuthenticatedUsers)));
  CloseHandle(mutex);
}

TEST(DebuggerOutputTest, UserWhoMayAddInstancesIsReportedOnce) {
  const std::vector<std::string> reports = ServerProcess::DebuggerOutputOfAStart();
  EXPECT_EQ(std::count(reports.begin(), reports.end(), "set pCurrentUserSID"), 1);
  EXPECT_THAT(reports, Not(Contains(HasSubstr("failed"))));
}

}  // namespace
}  // namespace e2e
