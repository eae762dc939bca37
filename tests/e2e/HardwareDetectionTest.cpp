// What the start of the server does to the board library, and the library to the server. The board
// library beside the server is the simulator of standins/boardsvc32.

#include <windows.h>

#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "tests/e2e/ServerProcess.h"
#include "tests/e2e/WireClient.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::HasSubstr;

constexpr char kInventory[] = "hardware_detection_test.ini";
constexpr char kLog[] = "hardware_detection_test.log";

// The server is started with the inventory; the first answer of the pipe comes after the detection.
class HardwareDetectionTest : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    (void)std::remove(kLog);
    SetEnvironmentVariableA("QORLIX_BOARD_INVENTORY", kInventory);
    SetEnvironmentVariableA("QORLIX_BOARD_LOG", kLog);
  }

  void TearDown() override {
    server_.Kill();
    SetEnvironmentVariableA("QORLIX_BOARD_INVENTORY", nullptr);
    SetEnvironmentVariableA("QORLIX_BOARD_LOG", nullptr);
    (void)std::remove(kInventory);
    (void)std::remove(kLog);
  }

  void StartWith(const std::string& inventory) {
    std::ofstream(kInventory, std::ios::binary) << inventory;
    ASSERT_TRUE(server_.Start());
    ASSERT_EQ(client_.TryConnect(), static_cast<std::uint32_t>(ERROR_SUCCESS));
    ASSERT_TRUE(client_.IsServed());
  }

  static std::vector<std::string> Log() {
    std::ifstream file(kLog, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

  ServerProcess server_;
  WireClient client_;
};

TEST_F(HardwareDetectionTest, IsStartedWithoutTheBoardLock) {
  StartWith("; no boards\n");
  EXPECT_THAT(Log(), Contains(HasSubstr("StartHardwareDetection -> 0 lock=free thread=")).Times(1));
}

TEST_P(HardwareDetectionTest, MayRaiseAndTheServerServes) {
  StartWith(std::string("[fault StartHardwareDetection]\ncall=*\nraise=") + GetParam() + "\n");
  EXPECT_THAT(Log(), Contains(HasSubstr(std::string("-> raise ") + GetParam())).Times(1));
}

INSTANTIATE_TEST_SUITE_P(EveryException, HardwareDetectionTest,
                         testing::Values("access-violation", "cxx", "divide-by-zero",
                                         "stack-overflow"));

}  // namespace
}  // namespace e2e
