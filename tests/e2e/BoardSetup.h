#ifndef TESTS_E2E_BOARDSETUP_H_
#define TESTS_E2E_BOARDSETUP_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/e2e/ServerProcess.h"
#include "tests/e2e/WireClient.h"
#include "tests/support/RegistryKeyScratch.h"

namespace e2e {

/// The files of a simulated board library: what it is told, and what it tells of its calls. Servers
/// that are started while an object lives find them in their environment.
class BoardFiles {
 public:
  BoardFiles();
  ~BoardFiles();
  BoardFiles(const BoardFiles&) = delete;
  BoardFiles& operator=(const BoardFiles&) = delete;

  /// Servers that are started from now on tell nothing of their calls.
  static void KeepNoLog();

  /// Replaces the inventory and begins a new log. A running server has read the old one.
  void Write(const std::string& inventory);

  /// The calls since the last time: operation, arguments, answer and lock, without the numbers of
  /// call, thread and line.
  std::vector<std::string> NewCalls();

 private:
  std::string inventory_;
  std::string log_;
  std::size_t seen_ = 0;
};

/// The lock that the server holds around calls of the board library, as another process sees it.
class ForeignBoardLock {
 public:
  ForeignBoardLock();
  ~ForeignBoardLock();
  ForeignBoardLock(const ForeignBoardLock&) = delete;
  ForeignBoardLock& operator=(const ForeignBoardLock&) = delete;

  /// Waits for it. \returns whether the calling thread has it now.
  bool Take(std::uint32_t milliseconds);
  void Release();

  /// Whether nobody has it now.
  bool IsFree();

 private:
  void* mutex_;
};

/// What the configuration manager of this machine says of a device instance; status and problem
/// are 0 where it says nothing.
struct DevNode {
  explicit DevNode(std::uint32_t instance);
  std::uint32_t result;
  std::uint32_t status;
  std::uint32_t problem;
};

/// A server of its own, on a machine whose boards are described by an inventory. The keys in which
/// the board library and the plausibility check work are empty at the start of a test.
class BoardTest : public testing::Test {
 protected:
  ~BoardTest() override;

  /// Starts the server and waits until it serves; the calls of its start are taken away.
  void StartWith(const std::string& inventory);

  BoardFiles files_;
  RegistryKeyScratch logNames_{"SOFTWARE\\Vesmark\\NORVA\\LogNames"};
  RegistryKeyScratch logDevices_{"SOFTWARE\\Vesmark\\NORVA\\LogDevices"};
  RegistryKeyScratch gate_{"SOFTWARE\\Vesmark\\Shared Tools\\MIREL"};
  ServerProcess server_;
  WireClient client_;
};

}  // namespace e2e

#endif  // TESTS_E2E_BOARDSETUP_H_
