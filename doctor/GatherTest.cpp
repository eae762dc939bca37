#include "doctor/Gather.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <cstdio>

#include "client/testing/ScriptedServer.h"
#include "tests/support/RegistryKeyScratch.h"

// What is gathered on a real computer.

namespace doctor {
namespace {

std::string OwnPath() {
  char path[MAX_PATH] = "";
  (void)GetModuleFileNameA(nullptr, path, sizeof(path));
  return path;
}

TEST(GatherTest, APipeTellsItsInstancesAndItsProcess) {
  client::ScriptedServer server;
  server.Answers({"0400 00000000"});
  const PipeFacts facts = GatherPipe(server.PipeName(), 5000);
  EXPECT_EQ(facts.error, 0u);
  EXPECT_EQ(facts.instances, 1u);
  EXPECT_EQ(facts.limit, 1u);
  EXPECT_EQ(facts.process, GetCurrentProcessId());
  EXPECT_EQ(facts.program, OwnPath());
  EXPECT_EQ(facts.answer, 0u);
  EXPECT_EQ(server.Requests(), std::vector<std::string>{"1000"});
}

TEST(GatherTest, APipeThatIsNotThereAndOneThatIsBusyAreTold) {
  EXPECT_EQ(GatherPipe(R"(\\.\pipe\DoctorTestNoSuchPipe)", 5000).error,
            static_cast<std::uint32_t>(ERROR_FILE_NOT_FOUND));
  client::ScriptedServer server;
  server.IsBusy();
  EXPECT_EQ(GatherPipe(server.PipeName(), 100).error, static_cast<std::uint32_t>(ERROR_PIPE_BUSY));
}

TEST(GatherTest, FilesAreWhatTheyAre) {
  EXPECT_EQ(GatherFile(OwnPath()).kind, ImageKind::Fitting);
  EXPECT_EQ(GatherFile(OwnPath()).error, 0u);
  EXPECT_EQ(GatherFile(OwnPath() + ".no").kind, ImageKind::Missing);
  char folder[MAX_PATH] = "";
  (void)GetTempPathA(sizeof(folder), folder);
  EXPECT_EQ(GatherFile(folder).kind, ImageKind::Unreadable);
  char name[MAX_PATH] = "";
  (void)GetTempFileNameA(folder, "doc", 0, name);
  EXPECT_EQ(GatherFile(name).kind, ImageKind::NoImage);
  (void)DeleteFileA(name);
}

}  // namespace
}  // namespace doctor
