#ifndef TESTS_E2E_SERVERLOG_H_
#define TESTS_E2E_SERVERLOG_H_

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace e2e {

/// What threads ask of Wine's server, cut into stretches by marks.
///
/// The runner starts Wine's server with its debug log and names the file in QORLIX_SERVER_LOG.
/// Every call that leaves a process for pipes, events, mutexes and the registry is a request to
/// that server, and a line of the log.
class ServerLog {
 public:
  /// The names of the requests of one stretch, in order.
  using Requests = std::vector<std::string>;

  /// Whether there is a log; without the runner there is none.
  static bool IsVisible();

  /// Begins the first stretch once everybody is at rest.
  ServerLog();

  /// Ends a stretch and begins the next. Waits first, so that whoever is still busy behind the last
  /// reply comes to rest. Where that takes longer, the rest falls into the next stretch.
  void Mark();

  /// The requests of the thread, one entry for each stretch that has ended.
  std::vector<Requests> Of(std::uint32_t thread) const;

 private:
  std::string name_;  ///< of this object's marks
  std::size_t start_ = 0;
};

/// Counts what the threads of servers take from the heap, by the lines of the channel `heap` on the
/// error stream that the runner keeps.
class HeapTrace {
 public:
  /// Processes that are started while one lives show their heap calls.
  class Shown {
   public:
    Shown();
    ~Shown();
    Shown(const Shown&) = delete;
    Shown& operator=(const Shown&) = delete;

   private:
    std::string before_;
  };

  HeapTrace();

  /// Ends a stretch and begins the next.
  void Mark();

  /// Blocks that the thread took, or asked to grow, one entry for each stretch that has ended.
  std::vector<std::size_t> CallsOf(std::uint32_t thread) const;

 private:
  /// Open all the time, so that a mark costs the calling process no request.
  std::ifstream stream_;
  std::vector<std::size_t> marks_;  ///< offsets in the stream
};

}  // namespace e2e

#endif  // TESTS_E2E_SERVERLOG_H_
