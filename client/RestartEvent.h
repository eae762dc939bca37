#ifndef CLIENT_RESTARTEVENT_H_
#define CLIENT_RESTARTEVENT_H_

#include <cstdint>

namespace client {

/// The named event by which the server tells the end of a silent restart.
///
/// It has to exist until the restart has ended: with nobody there to be told, the server drops the
/// result. Names that begin with "Global\" are the machine's; others belong to the session, which a
/// server elsewhere does not see.
class RestartEvent {
 public:
  RestartEvent() = default;
  ~RestartEvent() { Close(); }
  RestartEvent(const RestartEvent&) = delete;
  RestartEvent& operator=(const RestartEvent&) = delete;

  /// Creates the event, not set, so that a server of another administrator may set it; or opens the
  /// one that exists, and sets it back. \returns 0 or the platform's error code.
  std::uint32_t Create(const char* name, bool& existed) noexcept;
  /// \returns whether the event was set before the time, in milliseconds, ran out.
  bool Wait(std::uint32_t timeoutMs) noexcept;
  void Close() noexcept;

  /// Whether some program has an event of this name.
  static bool Exists(const char* name) noexcept;

 private:
  void* event_ = nullptr;  // a HANDLE; 0 when there is none
};

/// Writes a name that no other process uses at the time, terminated. \param capacity at least 64
void UnusedEventName(char* name, std::uint32_t capacity) noexcept;

}  // namespace client

#endif  // CLIENT_RESTARTEVENT_H_
