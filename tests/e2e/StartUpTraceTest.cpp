#include <windows.h>

#include <gmock/gmock.h>

#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/ServerProcess.h"
#include "tests/e2e/WireClient.h"

// What the process itself traces, read from the trace file that it writes.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::Optional;

constexpr char kTraceKey[] = "SOFTWARE\\Vesmark\\NORVA\\TrcParams";
constexpr DWORD kExitMs = 10000;

class StartUpTraceTest : public testing::Test {
 protected:
  StartUpTraceTest() {
    char folder[MAX_PATH] = "";
    (void)GetTempPathA(sizeof(folder), folder);
    file_ = std::string(folder) + "QorlixStartUp1.TRC";
    (void)DeleteFileA(file_.c_str());
    Set("Level", "0xFFFFFFFF");
    Set("zqserver_level", "0xFFFFFFFF");
    Set("Output", "FILE");
    Set("Format", "TEXT");
    Set("Path", std::string(folder, std::string(folder).size() - 1));
    Set("FileName", "QorlixStartUp");
  }
  ~StartUpTraceTest() override {
    (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, kTraceKey);
    (void)DeleteFileA(file_.c_str());
  }

  static void Set(const char* name, const std::string& text) {
    HKEY key = nullptr;
    (void)RegCreateKeyA(HKEY_LOCAL_MACHINE, kTraceKey, &key);
    (void)RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                         static_cast<DWORD>(text.size() + 1));
    (void)RegCloseKey(key);
  }

  // The lines of one function, in order.
  std::vector<std::string> Lines(const std::string& function) const {
    std::vector<std::string> lines;
    std::ifstream stream(file_);
    for (std::string line; std::getline(stream, line);) {
      while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.pop_back();
      if (line.rfind(function, 0) == 0) lines.push_back(line.substr(function.size() + 1));
    }
    return lines;
  }

  std::string file_;
  ServerProcess server_;
};

TEST_F(StartUpTraceTest, TheFirstServerTracesItsStartAndItsMutex) {
  ASSERT_TRUE(server_.Start());
  server_.Kill();
  EXPECT_THAT(Lines("CreateSRV: "),
              ElementsAre(">> Start Pipe Server", "namedMutex erfolgreich angelegt!"));
}

TEST_F(StartUpTraceTest, ASecondServerTracesWhyItEnds) {
  ASSERT_TRUE(server_.Start());
  ServerProcess second;
  ASSERT_TRUE(second.StartWithoutEvent());
  ASSERT_THAT(second.ExitCode(kExitMs), Optional(183u));
  EXPECT_THAT(
      Lines("CreateSRV: "),
      ElementsAre(">> Start Pipe Server", "namedMutex erfolgreich angelegt!",
                  ">> Start Pipe Server", "Couldn't CreateMutex because ERROR_ALREADY_EXISTS"));
}

TEST_F(StartUpTraceTest, ANameThatIsTakenBySomethingElseEndsTheServerWithItsError) {
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, "Global\\QORLIXSRV_SINGLE_INSTANCE_42");
  ASSERT_NE(event, nullptr);
  ASSERT_TRUE(server_.StartWithoutEvent());
  EXPECT_THAT(server_.ExitCode(kExitMs), Optional(6u));
  (void)CloseHandle(event);
  EXPECT_THAT(Lines("CreateSRV: "),
              ElementsAre(">> Start Pipe Server", "Couldn't CreateMutex! LastError = 6"));
}

TEST_F(StartUpTraceTest, AStopTracesTheClosingOnceForThePoolAndOnceForTheEnd) {
  ASSERT_TRUE(server_.Start());
  WireClient client;
  ASSERT_TRUE(client.Connect());
  ASSERT_TRUE(client.Send(Wire("FD00 FD000000")));
  ASSERT_THAT(server_.ExitCode(kExitMs), Optional(1u));
  EXPECT_THAT(Lines("CloseSRV: "),
              ElementsAre(">> ClosePipes", "<< ClosePipes", ">> ClosePipes", "<< ClosePipes"));
}

}  // namespace
}  // namespace e2e
