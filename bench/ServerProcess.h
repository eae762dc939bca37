#ifndef BENCH_SERVERPROCESS_H_
#define BENCH_SERVERPROCESS_H_

#include <windows.h>

#include <cstddef>
#include <string>

namespace bench {

/// How to start a server, and where it answers.
struct ServerProgram {
  const char* label;
  std::string commandLine;
  std::string pipeName;
};

/// What the system says about a process.
struct Footprint {
  std::size_t peakWorkingSet;  ///< bytes resident at most, pages of libraries included
  std::size_t workingSet;      ///< bytes resident now
  std::size_t committed;       ///< bytes committed that are the process's own: heap, stack, data
  unsigned handles;
};

/// A server that runs as long as the object lives.
class ServerProcess {
 public:
  /// Starts it and waits for its first answer.
  explicit ServerProcess(const ServerProgram& program);
  /// Stops it by its own command; one that does not go is ended and reported.
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  const std::string& PipeName() const { return program_.pipeName; }
  double SecondsToFirstAnswer() const { return secondsToFirstAnswer_; }
  DWORD ThreadId() const { return process_.dwThreadId; }
  Footprint Measure() const;

 private:
  ServerProgram program_;
  PROCESS_INFORMATION process_ = {};
  double secondsToFirstAnswer_ = 0;
};

}  // namespace bench

#endif  // BENCH_SERVERPROCESS_H_
