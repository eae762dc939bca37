#include "cli/testing/FakeServerProcess.h"

#include <cstring>

namespace cli {

FakeServerProcess& TheServerProcess() {
  static FakeServerProcess process;
  return process;
}

}  // namespace cli

namespace client {

ServerProcess::~ServerProcess() { process_ = nullptr; }

StartReport ServerProcess::Start(const char* program, std::uint32_t timeoutMs,
                                 const char* /*eventName*/) noexcept {
  cli::TheServerProcess().program = program;
  cli::TheServerProcess().timeoutMs = timeoutMs;
  return cli::TheServerProcess().start;
}

std::uint32_t ServerProcess::WaitForEnd() noexcept { return cli::TheServerProcess().exitCode; }

bool ServerProgramBesideThis(char* path, std::uint32_t capacity) noexcept {
  static constexpr char kPath[] = "C:\\Stack\\QorlixSRV.exe";
  if (capacity < sizeof(kPath)) return false;
  std::memcpy(path, kPath, sizeof(kPath));
  return true;
}

bool WaitUntilNoServer(std::uint32_t /*timeoutMs*/, const char* /*mutexName*/) noexcept {
  return cli::TheServerProcess().ends;
}

}  // namespace client
