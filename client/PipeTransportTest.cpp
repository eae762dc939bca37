#include "client/PipeTransport.h"

#include <windows.h>

#include <sddl.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "client/testing/ScriptedServer.h"

// What only a real pipe can show.

namespace client {
namespace {

struct LocalPipe {
  explicit LocalPipe(const char* suffix, SECURITY_ATTRIBUTES* security = nullptr)
      : name("\\\\.\\pipe\\PipeTransportTest" + std::to_string(GetCurrentProcessId()) + suffix),
        pipe(CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE,
                              /*nMaxInstances=*/1, /*nOutBufferSize=*/8192,
                              /*nInBufferSize=*/8192, /*nDefaultTimeOut=*/5000, security)) {}
  ~LocalPipe() {
    if (pipe != INVALID_HANDLE_VALUE) CloseHandle(pipe);
  }
  std::string name;
  HANDLE pipe;
};

// Wine 8 looks neither at a pipe's access list nor at the level at which a client opens it.
bool RunsOnWine() {
  return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}

TEST(PipeTransportTest, AMissingPipeIsToldAtOnce) {
  PipeTransport transport;
  const ULONGLONG start = GetTickCount64();
  EXPECT_EQ(transport.Open(R"(\\.\pipe\NobodyServesThis)", 3000), kPipeNotFound);
  EXPECT_LT(GetTickCount64() - start, 1000u);
  EXPECT_FALSE(transport.IsOpen());
}

TEST(PipeTransportTest, ABusyPipeIsWaitedForAsLongAsToldAndNoLonger) {
  const LocalPipe server("busy");
  PipeTransport first;
  ASSERT_EQ(first.Open(server.name.c_str(), 1000), 0u);
  PipeTransport second;
  const ULONGLONG start = GetTickCount64();
  EXPECT_EQ(second.Open(server.name.c_str(), 300), kPipeBusy);
  const ULONGLONG waited = GetTickCount64() - start;
  EXPECT_GE(waited, 250u);
  EXPECT_LT(waited, 2500u);
}

TEST(PipeTransportTest, APipeThatBecomesFreeInTimeIsTaken) {
  const LocalPipe server("freed");
  PipeTransport first;
  ASSERT_EQ(first.Open(server.name.c_str(), 1000), 0u);
  std::thread freeing([&] {
    Sleep(150);
    DisconnectNamedPipe(server.pipe);
    ConnectNamedPipe(server.pipe, nullptr);
  });
  PipeTransport second;
  EXPECT_EQ(second.Open(server.name.c_str(), 5000), 0u);
  freeing.join();
}

TEST(PipeTransportTest, TheRightsThatTheServersPipeGrantsAreEnough) {
  if (RunsOnWine()) GTEST_SKIP() << "needs Windows";
  // The mask for ordinary users, which leaves out the right to create instances of the pipe.
  constexpr DWORD kGranted = 0x8000019B;
  BYTE everyone[SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof(everyone);
  ASSERT_TRUE(CreateWellKnownSid(WinWorldSid, /*DomainSid=*/nullptr, everyone, &size));
  BYTE acl[256];
  ASSERT_TRUE(InitializeAcl(reinterpret_cast<ACL*>(acl), sizeof(acl), ACL_REVISION));
  ASSERT_TRUE(AddAccessAllowedAce(reinterpret_cast<ACL*>(acl), ACL_REVISION, kGranted, everyone));
  SECURITY_DESCRIPTOR descriptor;
  ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
  ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, /*bDaclPresent=*/TRUE,
                                        reinterpret_cast<ACL*>(acl), /*bDaclDefaulted=*/FALSE));
  SECURITY_ATTRIBUTES security = {sizeof(security), &descriptor, FALSE};
  const LocalPipe server("rights", &security);
  ASSERT_NE(server.pipe, INVALID_HANDLE_VALUE);
  PipeTransport transport;
  EXPECT_EQ(transport.Open(server.name.c_str(), 1000), 0u);
  EXPECT_EQ(transport.Write("ab", 2, 1000), 0u);
}

TEST(PipeTransportTest, ARefusedUserIsToldAsSuch) {
  if (RunsOnWine()) GTEST_SKIP() << "needs Windows";
  BYTE acl[64];
  ASSERT_TRUE(InitializeAcl(reinterpret_cast<ACL*>(acl), sizeof(acl), ACL_REVISION));
  SECURITY_DESCRIPTOR descriptor;
  ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
  ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, /*bDaclPresent=*/TRUE,
                                        reinterpret_cast<ACL*>(acl), /*bDaclDefaulted=*/FALSE));
  SECURITY_ATTRIBUTES security = {sizeof(security), &descriptor, FALSE};
  const LocalPipe server("refusing", &security);
  ASSERT_NE(server.pipe, INVALID_HANDLE_VALUE);
  PipeTransport transport;
  EXPECT_EQ(transport.Open(server.name.c_str(), 1000), kPipeAccessDenied);
}

TEST(PipeTransportTest, TheServerCannotActAsTheClient) {
  if (RunsOnWine()) GTEST_SKIP() << "needs Windows";
  const LocalPipe server("squatter");
  PipeTransport transport;
  ASSERT_EQ(transport.Open(server.name.c_str(), 1000), 0u);
  ConnectNamedPipe(server.pipe, nullptr);
  ASSERT_EQ(transport.Write("a", 1, 1000), 0u);
  char byte = 0;
  DWORD size = 0;
  ASSERT_TRUE(ReadFile(server.pipe, &byte, 1, &size, nullptr));
  ASSERT_TRUE(ImpersonateNamedPipeClient(server.pipe));
  HANDLE token = nullptr;
  ASSERT_TRUE(OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, /*OpenAsSelf=*/TRUE, &token));
  SECURITY_IMPERSONATION_LEVEL level = SecurityAnonymous;
  EXPECT_TRUE(GetTokenInformation(token, TokenImpersonationLevel, &level, sizeof(level), &size));
  RevertToSelf();
  CloseHandle(token);
  EXPECT_EQ(level, SecurityIdentification);
}

TEST(PipeTransportTest, AReadThatRanOutOfTimeLeavesTheBufferAlone) {
  const LocalPipe server("late");
  PipeTransport transport;
  ASSERT_EQ(transport.Open(server.name.c_str(), 1000), 0u);
  char buffer[8] = "before";
  std::uint32_t received = 99;
  EXPECT_EQ(transport.Read(buffer, sizeof(buffer), 50, received), kTimedOut);
  EXPECT_EQ(received, 0u);
  DWORD written = 0;
  ASSERT_TRUE(WriteFile(server.pipe, "late!", 5, &written, nullptr));
  Sleep(50);
  EXPECT_STREQ(buffer, "before");
}

TEST(PipeTransportTest, AWriteThatNobodyTakesRunsOutOfTime) {
  const LocalPipe server("stuck");
  PipeTransport transport;
  ASSERT_EQ(transport.Open(server.name.c_str(), 1000), 0u);
  const std::string much(100000, 'x');
  EXPECT_EQ(transport.Write(much.data(), static_cast<std::uint32_t>(much.size()), 100), kTimedOut);
}

TEST(PipeTransportTest, AServerThatGoesAwayBreaksThePipe) {
  PipeTransport transport;
  {
    const LocalPipe server("leaving");
    ASSERT_EQ(transport.Open(server.name.c_str(), 1000), 0u);
  }
  char buffer[8];
  std::uint32_t received = 0;
  EXPECT_TRUE(IsPipeBroken(transport.Read(buffer, sizeof(buffer), 1000, received)));
  EXPECT_TRUE(IsPipeBroken(transport.Write("a", 1, 1000)));
}

TEST(PipeTransportTest, AWriteToAServerThatHasGoneHasWrittenNothing) {
  PipeTransport transport;
  {
    const LocalPipe server("vanished");
    ASSERT_EQ(transport.Open(server.name.c_str(), 1000), 0u);
    ASSERT_EQ(transport.Write("a", 1, 1000), 0u);
    EXPECT_FALSE(transport.NothingWasWritten());
  }
  EXPECT_TRUE(IsPipeBroken(transport.Write("a", 1, 1000)));
  transport.Close();
  EXPECT_TRUE(transport.NothingWasWritten());
}

TEST(PipeTransportTest, AReadThatIsInterruptedByAnotherThreadEndsAtOnce) {
  const LocalPipe server("interrupted");
  PipeTransport transport;
  ASSERT_EQ(transport.Open(server.name.c_str(), 1000), 0u);
  std::thread interrupting([&] {
    Sleep(100);
    transport.Interrupt();
  });
  const ULONGLONG start = GetTickCount64();
  char buffer[8];
  std::uint32_t received = 0;
  EXPECT_EQ(transport.Read(buffer, sizeof(buffer), 20000, received), kCancelled);
  EXPECT_LT(GetTickCount64() - start, 10000u);
  interrupting.join();
  transport.ClearInterrupt();
  EXPECT_EQ(transport.Read(buffer, sizeof(buffer), 20, received), kTimedOut);
}

TEST(PipeTransportTest, WaitingForAFreeInstanceCanBeInterrupted) {
  const LocalPipe server("full");
  PipeTransport first;
  ASSERT_EQ(first.Open(server.name.c_str(), 1000), 0u);
  PipeTransport second;
  std::thread interrupting([&] {
    Sleep(100);
    second.Interrupt();
  });
  EXPECT_EQ(second.Open(server.name.c_str(), 20000), kCancelled);
  interrupting.join();
}

// The other end of a pipe whose security descriptor is written so; nothing if the platform does not
// let this user make such a pipe.
PipePeer PeerOf(const char* suffix, const char* text, bool& made) {
  SECURITY_ATTRIBUTES security = {sizeof(security), nullptr, FALSE};
  EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
      text, SDDL_REVISION_1, &security.lpSecurityDescriptor, nullptr));
  const LocalPipe server(suffix, &security);
  LocalFree(security.lpSecurityDescriptor);
  made = server.pipe != INVALID_HANDLE_VALUE;
  PipeTransport transport;
  if (made) {
    EXPECT_EQ(transport.Open(server.name.c_str(), 1000), 0u);
  }
  return transport.Peer();
}

TEST(PipeTransportTest, TheOwnerOfAPipeIsTold) {
  constexpr struct {
    const char* suffix;
    const char* descriptor;
    PipeOwner owner;
  } kCases[] = {
      {"admins", "O:BAG:SYD:(A;;GA;;;WD)", PipeOwner::Administrators},
      {"administrator", "O:S-1-5-21-1-2-3-500G:SYD:(A;;GA;;;WD)", PipeOwner::Administrators},
      {"system", "O:SYG:SYD:(A;;GA;;;WD)", PipeOwner::System},
      {"others", "O:LSG:SYD:(A;;GA;;;WD)", PipeOwner::Other},
      {"stranger", "O:S-1-5-21-1-2-3-4711G:SYD:(A;;GA;;;WD)", PipeOwner::Other},
  };
  int shown = 0;
  for (const auto& one : kCases) {
    bool made = false;
    const PipePeer peer = PeerOf(one.suffix, one.descriptor, made);
    if (!made) continue;  // naming somebody else as the owner takes a privilege
    ++shown;
    EXPECT_EQ(peer.owner, one.owner) << one.suffix;
    EXPECT_EQ(peer.processId, GetCurrentProcessId()) << one.suffix;
  }
  if (shown == 0) GTEST_SKIP() << "needs a user who may name other owners";
}

TEST(PipeTransportTest, APipeOfThisUserIsNobodyElses) {
  const LocalPipe server("own");
  PipeTransport transport;
  ASSERT_EQ(transport.Open(server.name.c_str(), 1000), 0u);
  // Wine's pipes have no owner unless one is named; an elevated user's belong to the
  // administrators.
  EXPECT_NE(transport.Peer().owner, PipeOwner::Other);
  EXPECT_EQ(transport.Peer().processId, GetCurrentProcessId());
  transport.Close();
  EXPECT_EQ(transport.Peer().owner, PipeOwner::Unknown);
}

TEST(PipeTransportTest, NothingWorksOnAClosedConnection) {
  PipeTransport transport;
  char buffer[8];
  std::uint32_t received = 0;
  EXPECT_EQ(transport.Read(buffer, sizeof(buffer), 10, received), kPipeNotConnected);
  EXPECT_EQ(transport.Write("a", 1, 10), kPipeNotConnected);
}

}  // namespace
}  // namespace client
