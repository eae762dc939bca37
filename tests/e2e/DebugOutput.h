#ifndef TESTS_E2E_DEBUGOUTPUT_H_
#define TESTS_E2E_DEBUGOUTPUT_H_

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace e2e {

/// What programs tell the system's debugger, as a debug viewer gets it. One at a time on a machine.
class DebugOutput {
 public:
  DebugOutput();
  ~DebugOutput();
  DebugOutput(const DebugOutput&) = delete;
  DebugOutput& operator=(const DebugOutput&) = delete;

  /// The texts of one process so far that hold `part`.
  std::vector<std::string> TextsOf(std::uint32_t process, const std::string& part) const;

  /// The same once there is one, or after a while.
  std::vector<std::string> Await(std::uint32_t process, const std::string& part) const;

 private:
  struct Text {
    std::uint32_t process;
    std::string text;
  };
  void Collect();

  void* section_;
  void* view_;
  void* free_;
  void* filled_;
  std::atomic<bool> stop_ = false;
  mutable std::mutex mutex_;
  std::vector<Text> texts_;
  std::thread thread_;
};

}  // namespace e2e

#endif  // TESTS_E2E_DEBUGOUTPUT_H_
