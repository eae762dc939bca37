#include "server/ClientIdentity.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "server/PipeIo.h"
#include "tests/support/RestrictedProcess.h"

// Over a real pipe whose client is this process. Who is no administrator is a second run of this
// program, under a token in which the group is not enabled.

namespace {

constexpr char kPipe[] = "\\\\.\\pipe\\QorlixClientIdentityTest";
constexpr char kRestricted[] = "QORLIX_TEST_IS_RESTRICTED";
constexpr DWORD kIdentification = SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
constexpr DWORD kImpersonation = SECURITY_SQOS_PRESENT | SECURITY_IMPERSONATION;

bool HasThreadToken() {
  HANDLE token = nullptr;
  const bool has = OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token) != FALSE;
  if (has) (void)CloseHandle(token);
  return has;
}

// Independent of what is tested: the group as the process's own token has it.
bool ProcessIsAdministrator() {
  HANDLE token = nullptr;
  EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
  alignas(TOKEN_GROUPS) BYTE groups[4096];
  DWORD size = 0;
  EXPECT_TRUE(GetTokenInformation(token, TokenGroups, groups, sizeof(groups), &size));
  (void)CloseHandle(token);
  BYTE administrators[SECURITY_MAX_SID_SIZE];
  size = sizeof(administrators);
  EXPECT_TRUE(CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &size));
  const auto* const list = reinterpret_cast<const TOKEN_GROUPS*>(groups);
  for (DWORD i = 0; i < list->GroupCount; ++i) {
    if (EqualSid(list->Groups[i].Sid, administrators) != FALSE) {
      return (list->Groups[i].Attributes & SE_GROUP_ENABLED) != 0;
    }
  }
  return false;
}

class ClientIdentityTest : public testing::Test {
 protected:
  void Connect(DWORD level) {
    pipe_ = CreateNamedPipeA(kPipe, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 64, 64, 0, nullptr);
    ASSERT_NE(pipe_, INVALID_HANDLE_VALUE);
    client_ =
        CreateFileA(kPipe, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, level, nullptr);
    ASSERT_NE(client_, INVALID_HANDLE_VALUE);
    // Whose identity it is, is known by a message that was read.
    DWORD count = 0;
    char byte = 0;
    ASSERT_TRUE(WriteFile(client_, "x", 1, &count, nullptr));
    ASSERT_TRUE(ReadFile(pipe_, &byte, 1, &count, nullptr));
  }
  ~ClientIdentityTest() override {
    (void)CloseHandle(client_);
    (void)CloseHandle(pipe_);
  }

  HANDLE pipe_ = INVALID_HANDLE_VALUE;
  HANDLE client_ = INVALID_HANDLE_VALUE;
};

TEST_F(ClientIdentityTest, AClientIsJudgedByItsToken) {
  Connect(kImpersonation);
  EXPECT_EQ(client_identity::IsAdministrator(pipe_), ProcessIsAdministrator());
  EXPECT_FALSE(HasThreadToken());
}

TEST_F(ClientIdentityTest, IdentificationLevelIsEnough) {
  Connect(kIdentification);
  EXPECT_EQ(client_identity::IsAdministrator(pipe_), ProcessIsAdministrator());
  EXPECT_FALSE(HasThreadToken());
}

TEST_F(ClientIdentityTest, AnAnonymousClientIsNone) {
  Connect(SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS);
  EXPECT_TRUE(ImpersonateNamedPipeClient(pipe_));
  HANDLE token = nullptr;
  const bool isKnown = OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token) != FALSE;
  EXPECT_TRUE(RevertToSelf());
  if (isKnown) {
    (void)CloseHandle(token);
    GTEST_SKIP() << "this system does not look at the level";
  }
  EXPECT_FALSE(client_identity::IsAdministrator(pipe_));
  EXPECT_FALSE(HasThreadToken());
}

TEST_F(ClientIdentityTest, WhereThereIsNoClientThereIsNoAdministrator) {
  EXPECT_FALSE(client_identity::IsAdministrator(nullptr));
  EXPECT_FALSE(client_identity::IsAdministrator(INVALID_HANDLE_VALUE));
  EXPECT_FALSE(HasThreadToken());
}

TEST_F(ClientIdentityTest, TheProcessThatOpenedThePipeIsNamed) {
  Connect(kIdentification);
  EXPECT_EQ(pipe_io::ClientProcess(pipe_), GetCurrentProcessId());
  EXPECT_EQ(pipe_io::ClientProcess(nullptr), 0u);
}

TEST_F(ClientIdentityTest, AskingLeavesNoHandleBehind) {
  Connect(kIdentification);
  // Handle numbers are given out again, so one that is lost shows as a higher next one.
  const HANDLE before = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  (void)CloseHandle(before);
  for (int i = 0; i < 100; ++i) (void)client_identity::IsAdministrator(pipe_);
  const HANDLE after = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  (void)CloseHandle(after);
  EXPECT_EQ(before, after);
}

// Runs the tests above once more, as somebody else.
TEST(ClientIdentityRestrictedTest, OneWhoIsNotElevatedIsNoAdministrator) {
  if (std::getenv(kRestricted) != nullptr) {
    EXPECT_FALSE(ProcessIsAdministrator());
    return;
  }
  if (!ProcessIsAdministrator()) GTEST_SKIP() << "already without administrator's rights";
  char program[MAX_PATH] = "";
  (void)GetModuleFileNameA(nullptr, program, sizeof(program));
  std::string command = std::string("\"") + program + "\" --gtest_filter=ClientIdentity*";
  const HANDLE token = TokenWithoutAdministrators();
  ASSERT_NE(token, nullptr);
  (void)SetEnvironmentVariableA(kRestricted, "1");
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  const BOOL runs = CreateProcessAsUserA(token, program, command.data(), nullptr, nullptr, FALSE, 0,
                                         nullptr, nullptr, &startup, &started);
  (void)SetEnvironmentVariableA(kRestricted, nullptr);
  (void)CloseHandle(token);
  ASSERT_TRUE(runs) << GetLastError();
  constexpr DWORD kRunMs = 20000;
  EXPECT_EQ(WaitForSingleObject(started.hProcess, kRunMs), WAIT_OBJECT_0);
  DWORD code = 99;
  (void)GetExitCodeProcess(started.hProcess, &code);
  EXPECT_EQ(code, 0u) << "the tests above, in a process that is no administrator";
  (void)CloseHandle(started.hThread);
  (void)CloseHandle(started.hProcess);
}

}  // namespace
