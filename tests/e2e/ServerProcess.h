#ifndef TESTS_E2E_SERVERPROCESS_H_
#define TESTS_E2E_SERVERPROCESS_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace e2e {

/// The real server beside the test program. Whatever still runs at the end of the object is ended.
class ServerProcess {
 public:
  ServerProcess() = default;
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  /// The full path of the program.
  static std::string Path();

  /// Starts it as its starter does: with the start event created first, and waited for.
  testing::AssertionResult Start(const char* arguments = "");

  /// The same under a primary token.
  testing::AssertionResult StartUnder(void* token, const char* arguments = "");

  /// As Start, with a function of a library that fails before it does anything.
  struct Failure {
    const char* library;
    const char* function;
    std::uint32_t result;
    std::uint8_t argumentBytes;  ///< that the function takes off the stack
  };
  testing::AssertionResult StartWith(const Failure& failure);

  /// Starts it and waits for nothing; no start event exists.
  testing::AssertionResult StartWithoutEvent();

  /// Starts one under a debugger until it serves, and ends it. \returns what it told the debugger.
  static std::vector<std::string> DebuggerOutputOfAStart();

  bool IsRunning() const;

  /// The number that the system knows it by.
  std::uint32_t Id() const { return id_; }

  /// \returns the exit code, nothing if it still runs after the time.
  std::optional<std::uint32_t> ExitCode(std::uint32_t milliseconds) const;

  /// Ends it and waits until it is gone, with its pipe and its objects.
  void Kill();

  /// Handles that it holds, as the system counts them; 0 if the system does not tell.
  std::uint32_t HandleCount() const;

  /// Handles of all processes, servers and others; 0 if the system does not tell.
  static std::uint32_t HandlesOfAllProcesses();

  /// Whether it comes back to that many handles or fewer; the system may hold one more for a moment
  /// while an operation of the server runs.
  testing::AssertionResult ComesBackToHandleCount(std::uint32_t count) const;

  /// Threads that run in it.
  std::uint32_t ThreadCount() const;

  /// Whether it comes back to that many threads or fewer.
  testing::AssertionResult ComesBackToThreadCount(std::uint32_t count) const;

  /// Whether a library of this file name is loaded in it; upper and lower case are the same.
  bool HasModule(const std::string& fileName) const;

  /// Bytes of memory that are its own.
  std::size_t PrivateBytes() const;

  /// Bytes of its address space in which sections are mapped, its programs and libraries apart.
  std::size_t MappedBytes() const;

 private:
  testing::AssertionResult Launch(const char* arguments, std::uint32_t flags = 0,
                                  void* token = nullptr);

  testing::AssertionResult WaitUntilItServes(void* event);
  testing::AssertionResult Break(const Failure& failure);

  void* process_ = nullptr;
  std::uint32_t id_ = 0;
};

}  // namespace e2e

#endif  // TESTS_E2E_SERVERPROCESS_H_
