#ifndef TESTS_E2E_EVENTLOGTAIL_H_
#define TESTS_E2E_EVENTLOGTAIL_H_

#include <string>
#include <vector>

namespace e2e {

/// What the server reported to the event log since this object was made.
///
/// The runner that starts the test programs shows the reports on the error stream and names a file
/// with that stream in QORLIX_STDERR_FILE. A refusal is reported before it is answered, so a client
/// that has the answer finds the report here. Texts above some 250 bytes are shown cut.
class EventLogTail {
 public:
  EventLogTail();

  /// Whether reports can be seen at all; without a runner they go to the real log.
  static bool IsVisible();

  /// The texts reported so far, oldest first, narrow again.
  std::vector<std::string> Texts() const;

 private:
  std::size_t start_;
};

}  // namespace e2e

#endif  // TESTS_E2E_EVENTLOGTAIL_H_
