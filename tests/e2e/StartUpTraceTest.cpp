#include <windows.h>

#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/ServerProcess.h"
#include "tests/e2e/WireClient.h"
#include "tests/support/RegistryKeyScratch.h"

// What the process itself traces, read from the trace file that it writes.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Optional;

constexpr DWORD kExitMs = 10000;

class StartUpTraceTest : public testing::Test {
 protected:
  StartUpTraceTest() {
    char folder[MAX_PATH] = "";
    (void)GetTempPathA(sizeof(folder), folder);
    file_ = std::string(folder) + "QorlixStartUp1.TRC";
    (void)DeleteFileA(file_.c_str());
    key_.SetText("Level", "0xFFFFFFFF");
    key_.SetText("zqserver_level", "0xFFFFFFFF");
    key_.SetText("Output", "FILE");
    key_.SetText("Format", "TEXT");
    key_.SetText("Path", std::string(folder, std::string(folder).size() - 1));
    key_.SetText("FileName", "QorlixStartUp");
  }
  ~StartUpTraceTest() override { (void)DeleteFileA(file_.c_str()); }

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

  RegistryKeyScratch key_{kTraceKey};
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

// --- The ring counts who writes to it ---

// A ring that is there before any server, as a reader of traces may have made it.
class Ring {
 public:
  Ring()
      : section_(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                    kHeaderBytes + kDataBytes, "Global\\ZqSDD_Trace")),
        words_(static_cast<DWORD*>(MapViewOfFile(section_, FILE_MAP_WRITE, 0, 0, 0))) {
    words_[1] = kDataBytes;
    words_[5] = kLayout;
  }
  ~Ring() {
    (void)UnmapViewOfFile(words_);
    (void)CloseHandle(section_);
  }
  Ring(const Ring&) = delete;
  Ring& operator=(const Ring&) = delete;

  DWORD Attached() const { return std::atomic_ref(words_[4]); }
  std::string Data() const { return reinterpret_cast<const char*>(words_ + 16); }

 private:
  static constexpr DWORD kHeaderBytes = 68;
  static constexpr DWORD kDataBytes = 0x100000;
  static constexpr DWORD kLayout = 1;

  HANDLE section_;
  DWORD* words_;
};

TEST_F(StartUpTraceTest, ASecondServerLeavesTheRingThatItJoined) {
  key_.SetText("Output", "SM");
  const Ring ring;
  ASSERT_TRUE(server_.Start());
  ASSERT_EQ(ring.Attached(), 1u);
  ServerProcess second;
  ASSERT_TRUE(second.StartWithoutEvent());
  ASSERT_THAT(second.ExitCode(kExitMs), Optional(183u));
  EXPECT_THAT(ring.Data(), HasSubstr("Couldn't CreateMutex because ERROR_ALREADY_EXISTS"));
  EXPECT_EQ(ring.Attached(), 1u);
}

TEST_F(StartUpTraceTest, AServerWithoutItsMutexLeavesTheRingThatItJoined) {
  key_.SetText("Output", "SM");
  const Ring ring;
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, "Global\\QORLIXSRV_SINGLE_INSTANCE_42");
  ASSERT_TRUE(server_.StartWithoutEvent());
  EXPECT_THAT(server_.ExitCode(kExitMs), Optional(6u));
  (void)CloseHandle(event);
  EXPECT_THAT(ring.Data(), HasSubstr("Couldn't CreateMutex! LastError = 6"));
  EXPECT_EQ(ring.Attached(), 0u);
}

TEST_F(StartUpTraceTest, AServerThatIsStoppedLeavesTheRing) {
  key_.SetText("Output", "SM");
  const Ring ring;
  ASSERT_TRUE(server_.Start());
  WireClient client;
  ASSERT_TRUE(client.Connect());
  ASSERT_TRUE(client.Send(Wire("FD00 FD000000")));
  ASSERT_THAT(server_.ExitCode(kExitMs), Optional(1u));
  EXPECT_EQ(ring.Attached(), 0u);
}

// --- The end ---

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
