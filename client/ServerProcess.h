#ifndef CLIENT_SERVERPROCESS_H_
#define CLIENT_SERVERPROCESS_H_

#include <cstdint>

namespace client {

/// The event that a starter creates in its session and the server sets once its pipe exists.
inline constexpr char kStartEventName[] = "_QorlixSRVStartSRVEvent";

/// Exists, as a mutex, as long as a server process does.
inline constexpr char kSingleInstanceName[] = R"(Global\QORLIXSRV_SINGLE_INSTANCE_42)";

enum class StartOutcome : std::uint8_t {
  Ready,       ///< the server runs and its pipe exists
  EndedFirst,  ///< the process ended before it was ready; the code is its exit code
  TimedOut,    ///< it runs, but was not ready in time; it is left running
  NotStarted,  ///< there is no process; the code is the platform's
};

struct StartReport {
  StartOutcome outcome = StartOutcome::NotStarted;
  std::uint32_t code = 0;       ///< see StartOutcome
  std::uint32_t processId = 0;  ///< 0 when there is no process
};

/// A server program that was started here. For one thread at a time; the process outlives the
/// object.
class ServerProcess {
 public:
  ServerProcess() = default;
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  /// Starts the program and waits until it serves.
  ///
  /// The server has the rights of whoever starts it; it is meant to be started elevated. It
  /// inherits no handle, and its current directory is that of its program.
  ///
  /// \param program UTF-8 path; a relative one is below the current directory
  /// \param eventName another name than the server's is of use in tests only
  StartReport Start(const char* program, std::uint32_t timeoutMs,
                    const char* eventName = kStartEventName) noexcept;

  /// Waits, as long as it takes, until the process that was started ends. \returns its exit code,
  /// or 0xFFFFFFFF when there is none.
  std::uint32_t WaitForEnd() noexcept;

 private:
  void* process_ = nullptr;  // a HANDLE
};

/// Writes the UTF-8 path of QorlixSRV.exe in the folder of the running program, terminated.
/// \returns false when it does not fit.
bool ServerProgramBesideThis(char* path, std::uint32_t capacity) noexcept;

/// Waits until no server process is left on this computer. \returns false when the time ran out.
bool WaitUntilNoServer(std::uint32_t timeoutMs,
                       const char* mutexName = kSingleInstanceName) noexcept;

}  // namespace client

#endif  // CLIENT_SERVERPROCESS_H_
