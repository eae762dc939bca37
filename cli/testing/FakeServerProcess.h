#ifndef CLI_TESTING_FAKESERVERPROCESS_H_
#define CLI_TESTING_FAKESERVERPROCESS_H_

#include <string>

#include "client/ServerProcess.h"

namespace cli {

/// What the native twin of ServerProcess.cpp answers, and what it was asked.
struct FakeServerProcess {
  client::StartReport start;
  std::uint32_t exitCode = 1;
  bool ends = true;
  std::string program;
  std::uint32_t timeoutMs = 0;
};
FakeServerProcess& TheServerProcess();

}  // namespace cli

#endif  // CLI_TESTING_FAKESERVERPROCESS_H_
