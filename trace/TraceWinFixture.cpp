#include "trace/TraceWinFixture.h"

#include <windows.h>

#include <fstream>
#include <sstream>

namespace {

constexpr DWORD kChildTimeout = 60000;

}  // namespace

TraceWinFixture::TraceWinFixture() {
  char temporary[MAX_PATH];
  (void)GetTempPathA(sizeof(temporary), temporary);
  folder_ = std::string(temporary) + "qorlix_trace_" + std::to_string(GetCurrentProcessId());
  (void)CreateDirectoryA(folder_.c_str(), nullptr);
  SetText("Level", "0xFFFFFFFF");
  SetText("zqserver_level", "0xFFFFFFFF");
}

TraceWinFixture::~TraceWinFixture() {
  zqotrc::ShutDown();
  RemoveKey();
  Initialise();
  zqotrc::ShutDown();
  for (const int index : {1, 2}) (void)DeleteFileA(FileName(index).c_str());
  (void)RemoveDirectoryA(folder_.c_str());
}

void TraceWinFixture::ConfigureFiles() {
  SetText("Output", "FILE");
  SetText("Format", "TEXT");
  SetText("Path", folder_);
  SetText("FileName", "run.log");
  SetText("Byte/File", "2097152");
}

std::string TraceWinFixture::FileName(int index) const {
  return folder_ + "\\run" + std::to_string(index) + ".TRC";
}

std::string TraceWinFixture::Content(int index) const { return ReadWholeFile(FileName(index)); }

std::string ReadWholeFile(const std::string& name) {
  std::ifstream stream(name, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

ChildProcess::ChildProcess(const std::string& filter) {
  char program[MAX_PATH];
  (void)GetModuleFileNameA(nullptr, program, sizeof(program));
  std::string command = std::string("\"") + program + "\" --gtest_also_run_disabled_tests" +
                        " --gtest_brief=1 --gtest_filter=" + filter;
  PROCESS_INFORMATION created = {};
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  EXPECT_TRUE(CreateProcessA(nullptr, command.data(), nullptr, nullptr, /*bInheritHandles=*/FALSE,
                             0, nullptr, nullptr, &startup, &created));
  process_ = created.hProcess;
  if (created.hThread != nullptr) (void)CloseHandle(created.hThread);
}

ChildProcess::~ChildProcess() { (void)CloseHandle(process_); }

bool ChildProcess::Passed() {
  DWORD code = 1;
  return WaitForSingleObject(process_, kChildTimeout) == WAIT_OBJECT_0 &&
         GetExitCodeProcess(process_, &code) != FALSE && code == 0;
}
