#include <windows.h>

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <string>

#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/RegistryScratch.h"

// The compiled examples with the real server.

namespace e2e {
namespace {

constexpr DWORD kLongestRunMs = 30000;

struct Ran {
  DWORD exitCode = 0;
  std::string output;
  bool operator==(const Ran&) const = default;
};
[[maybe_unused]] void PrintTo(const Ran& ran, std::ostream* out) {
  *out << ran.exitCode << ": " << ran.output;
}

// What a program beside the server does and says, with CR taken out.
Ran RunProgram(const std::string& program, const std::string& arguments = "") {
  char folder[MAX_PATH] = "";
  (void)GetTempPathA(sizeof(folder), folder);
  // One for each run: a process that has ended may have its output open for a moment longer.
  static int runs = 0;
  const std::string file = std::string(folder) + "QorlixExample" + std::to_string(++runs) + ".txt";
  SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, /*bInheritHandle=*/TRUE};
  STARTUPINFOA start = {};
  start.cb = sizeof(start);
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = CreateFileA(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                 &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  EXPECT_NE(start.hStdOutput, INVALID_HANDLE_VALUE);
  const std::string server = ServerProcess::Path();
  std::string command =
      '"' + server.substr(0, server.rfind('\\') + 1) + program + ".exe\" " + arguments;
  PROCESS_INFORMATION process = {};
  Ran ran;
  if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, /*bInheritHandles=*/TRUE,
                     CREATE_NO_WINDOW, nullptr, nullptr, &start, &process) == FALSE) {
    ADD_FAILURE() << command << ": " << GetLastError();
  } else {
    EXPECT_EQ(WaitForSingleObject(process.hProcess, kLongestRunMs), WAIT_OBJECT_0);
    (void)TerminateProcess(process.hProcess, 9);
    (void)GetExitCodeProcess(process.hProcess, &ran.exitCode);
    (void)CloseHandle(process.hThread);
    (void)CloseHandle(process.hProcess);
  }
  (void)CloseHandle(start.hStdOutput);
  std::ifstream stream(file, std::ios::binary);
  ran.output = {std::istreambuf_iterator<char>(stream), {}};
  stream.close();
  (void)DeleteFileA(file.c_str());
  std::erase(ran.output, '\r');
  return ran;
}

constexpr char kNoServer[] = "the server is not running: its pipe does not exist\n";

TEST(ExamplesTest, WithoutAServerTheySaySo) {
  EXPECT_EQ(RunProgram("example_hello"), (Ran{1, std::string("no answer: ") + kNoServer}));
  EXPECT_EQ(RunProgram("example_boards"), (Ran{1, std::string("no connection: ") + kNoServer}));
  EXPECT_EQ(RunProgram("example_background").exitCode, 1u);
}

TEST(ExamplesTest, HelloReadsAValue) {
  const RegistryKeyScratch demo("SOFTWARE\\Vesmark\\NORVA\\Demo");
  ServerProcess server;
  ASSERT_TRUE(server.Start());
  EXPECT_EQ(RunProgram("example_hello"),
            (Ran{1, "refused: the key, value or file does not exist\n"}));
  demo.SetText("Mode", "fast");
  EXPECT_EQ(RunProgram("example_hello"), (Ran{0, "Mode is fast\n"}));
}

class BoardExamplesTest : public BoardTest {};

TEST_F(BoardExamplesTest, BoardsListsWhatIsInstalled) {
  StartWith(
      "[board]\nname = NB410A\ndevice-id = HWX7101\nmap = 1\n"
      "[board]\nname = NB510\ndevice-id = HWX7104\nmap = 2\n");
  EXPECT_EQ(RunProgram("example_boards"),
            (Ran{0, "NB410A  1  HWX7101\nNB510  2  HWX7104\n2 boards\n"}));
}

TEST_F(BoardExamplesTest, BackgroundWaitsForTheScanOrGivesUp) {
  StartWith("[fault BRDX_ScanBL]\ncall = *\ndelay = 1500\nresult = 0\n");
  EXPECT_EQ(RunProgram("example_background"),
            (Ran{0, "scanning\nscan: done (0)\nstate: status 0x00000000, problem 0\n"}));
  EXPECT_EQ(RunProgram("example_background", "1").output,
            "scanning\nscan: no whole reply came before the time ran out (258)\n");
}

}  // namespace
}  // namespace e2e
