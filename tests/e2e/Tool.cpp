#include "tests/e2e/Tool.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "tests/e2e/ServerProcess.h"

namespace e2e {
namespace {

constexpr DWORD kPatience = 20000;
constexpr DWORD kPause = 20;

std::string Program() {
  const std::string server = ServerProcess::Path();
  return '"' + server.substr(0, server.rfind('\\')) + "\\qorlixctl.exe\"";
}

}  // namespace

std::string TemporaryFolder() {
  char folder[MAX_PATH] = "";
  (void)GetTempPathA(sizeof(folder), folder);
  return folder;
}

Tool::Tool(const std::string& arguments) {
  SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, /*bInheritHandle=*/TRUE};
  const HANDLE file =
      CreateFileA(OutputFile().c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  STARTUPINFOA start = {};
  start.cb = sizeof(start);
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = file;
  start.hStdError = file;
  std::string command = Program() + " " + arguments;
  PROCESS_INFORMATION process = {};
  EXPECT_NE(CreateProcessA(nullptr, command.data(), nullptr, nullptr, /*bInheritHandles=*/TRUE,
                           CREATE_NO_WINDOW, nullptr, nullptr, &start, &process),
            FALSE);
  (void)CloseHandle(file);
  (void)CloseHandle(process.hThread);
  process_ = process.hProcess;
}

Tool::~Tool() {
  (void)TerminateProcess(process_, 9);
  (void)WaitForSingleObject(process_, kPatience);
  (void)CloseHandle(process_);
  (void)DeleteFileA(OutputFile().c_str());
}

std::uint32_t Tool::ExitCode() const {
  DWORD code = 0;
  EXPECT_EQ(WaitForSingleObject(process_, kPatience), WAIT_OBJECT_0);
  (void)GetExitCodeProcess(process_, &code);
  return code;
}

std::string Tool::Output() const {
  std::ifstream stream(OutputFile(), std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

bool Tool::Shows(const std::string& text, std::uint32_t milliseconds) const {
  for (DWORD waited = 0;; waited += kPause) {
    if (Output().find(text) != std::string::npos) return true;
    if (waited >= milliseconds) return false;
    Sleep(kPause);
  }
}

std::string Tool::Run(const std::string& arguments, std::uint32_t expected) {
  const Tool tool(arguments);
  EXPECT_EQ(tool.ExitCode(), expected) << arguments << '\n' << tool.Output();
  return tool.Output();
}

std::string Tool::OutputFile() const {
  char name[64];
  (void)std::snprintf(name, sizeof(name), "QorlixTool%p.txt", static_cast<const void*>(this));
  return TemporaryFolder() + name;
}

}  // namespace e2e
