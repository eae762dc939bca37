#include "client/ServerProcess.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace client {
namespace {

// Names of their own keep these tests apart from a server that runs meanwhile.
constexpr char kTestEvent[] = "ServerProcessTestEvent";
constexpr char kTestMutex[] = "Global\\ServerProcessTestMutex";

constexpr char kRole[] = "QORLIX_TEST_ROLE";
constexpr DWORD kServesForMs = 400;

// This program, started by itself with a role, plays a server before any test runs.
bool PlayRole() {
  char role[16] = "";
  if (GetEnvironmentVariableA(kRole, role, sizeof(role)) == 0) return false;
  if (std::strcmp(role, "ready") == 0) {
    SetEvent(OpenEventA(EVENT_ALL_ACCESS, /*bInheritHandle=*/FALSE, kTestEvent));
  }
  Sleep(kServesForMs);
  ExitProcess(7);
}
[[maybe_unused]] const bool played = PlayRole();

StartReport StartThisAs(ServerProcess& server, const char* role, std::uint32_t timeoutMs) {
  char self[MAX_PATH];
  GetModuleFileNameA(/*hModule=*/nullptr, self, sizeof(self));
  SetEnvironmentVariableA(kRole, role);
  const StartReport report = server.Start(self, timeoutMs, kTestEvent);
  SetEnvironmentVariableA(kRole, nullptr);
  return report;
}

TEST(ServerProcessTest, AServerIsReadyOnceItHasSetTheEvent) {
  ServerProcess server;
  const StartReport report = StartThisAs(server, "ready", 20000);
  EXPECT_EQ(report.outcome, StartOutcome::Ready);
  EXPECT_NE(report.processId, 0u);
  EXPECT_EQ(server.WaitForEnd(), 7u);
}

TEST(ServerProcessTest, AServerThatEndsBeforeTheEventIsToldWithItsExitCode) {
  ServerProcess server;
  const StartReport report = StartThisAs(server, "mute", 20000);
  EXPECT_EQ(report.outcome, StartOutcome::EndedFirst);
  EXPECT_EQ(report.code, 7u);
}

TEST(ServerProcessTest, AServerThatIsNotReadyInTimeIsTold) {
  ServerProcess server;
  const StartReport report = StartThisAs(server, "mute", 50);
  EXPECT_EQ(report.outcome, StartOutcome::TimedOut);
  EXPECT_NE(report.processId, 0u);
}

TEST(ServerProcessTest, WithoutAProcessThereIsNoExitCode) {
  EXPECT_EQ(ServerProcess().WaitForEnd(), 0xFFFFFFFFu);
}

TEST(ServerProcessTest, AMissingProgramIsNotStartedAndSaysWhy) {
  const StartReport report =
      ServerProcess().Start("C:\\no such folder\\QorlixSRV.exe", 1000, kTestEvent);
  EXPECT_EQ(report.outcome, StartOutcome::NotStarted);
  EXPECT_TRUE(report.code == ERROR_FILE_NOT_FOUND || report.code == ERROR_PATH_NOT_FOUND)
      << report.code;
  EXPECT_EQ(report.processId, 0u);
}

TEST(ServerProcessTest, AFolderIsNoProgram) {
  EXPECT_EQ(ServerProcess().Start("C:\\", 1000, kTestEvent).outcome, StartOutcome::NotStarted);
}

TEST(ServerProcessTest, AnInvalidPathIsNotStarted) {
  EXPECT_EQ(ServerProcess().Start("\xFF\xFE", 1000, kTestEvent).outcome, StartOutcome::NotStarted);
  EXPECT_EQ(ServerProcess().Start("", 1000, kTestEvent).outcome, StartOutcome::NotStarted);
  const std::string endless(70000, 'x');
  EXPECT_EQ(ServerProcess().Start(endless.c_str(), 1000, kTestEvent).outcome,
            StartOutcome::NotStarted);
}

TEST(ServerProcessTest, AnEventThatIsStillSetFromAnEarlierStartDoesNotMeanReady) {
  ServerProcess server;
  const HANDLE left = CreateEventA(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                                   /*bInitialState=*/TRUE, kTestEvent);
  ASSERT_NE(left, nullptr);
  EXPECT_EQ(StartThisAs(server, "mute", 20000).outcome, StartOutcome::EndedFirst);
  CloseHandle(left);
}

TEST(ServerProcessTest, TheServerIsLookedForBesideTheProgram) {
  char path[1024];
  ASSERT_TRUE(ServerProgramBesideThis(path, sizeof(path)));
  EXPECT_NE(std::strstr(path, "\\QorlixSRV.exe"), nullptr);
  EXPECT_FALSE(ServerProgramBesideThis(path, 8));
}

TEST(ServerProcessTest, AServerIsThereAsLongAsItsMutexExists) {
  const HANDLE mutex =
      CreateMutexA(/*lpMutexAttributes=*/nullptr, /*bInitialOwner=*/FALSE, kTestMutex);
  ASSERT_NE(mutex, nullptr);
  EXPECT_FALSE(WaitUntilNoServer(60, kTestMutex));
  CloseHandle(mutex);
  EXPECT_TRUE(WaitUntilNoServer(1000, kTestMutex));
}

}  // namespace
}  // namespace client
