#ifndef TESTS_E2E_TOOL_H_
#define TESTS_E2E_TOOL_H_

#include <cstdint>
#include <string>

namespace e2e {

/// The folder for files of a test, with a backslash at its end.
std::string TemporaryFolder();

/// qorlixctl on its way, with its output in a file. It is ended with the object.
class Tool {
 public:
  explicit Tool(const std::string& arguments);
  ~Tool();
  Tool(const Tool&) = delete;
  Tool& operator=(const Tool&) = delete;

  /// Waits until it has ended.
  std::uint32_t ExitCode() const;
  /// What it has written so far, to both outputs.
  std::string Output() const;
  bool Shows(const std::string& text, std::uint32_t milliseconds) const;

  /// Runs it to its end, and expects the exit code. \returns its output.
  static std::string Run(const std::string& arguments, std::uint32_t expected = 0);

 private:
  std::string OutputFile() const;

  void* process_ = nullptr;  // a HANDLE
};

}  // namespace e2e

#endif  // TESTS_E2E_TOOL_H_
