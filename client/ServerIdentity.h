#ifndef CLIENT_SERVERIDENTITY_H_
#define CLIENT_SERVERIDENTITY_H_

#include <cstdint>

namespace client {

/// Who owns a pipe, as seen from this process. The owner of a pipe is the one who created its first
/// instance: nobody can name a group or a user that he is not, so another user's pipe shows.
enum class PipeOwner : std::uint8_t {
  Unknown,         ///< the platform does not tell, or the pipe has no owner
  Administrators,  ///< what an elevated process owns
  System,
  CurrentUser,  ///< the user of this process
  Other,
};

/// What the platform tells of the other end of a connection.
struct PipePeer {
  std::uint32_t processId = 0;  ///< that created this instance; 0 when the platform does not tell
  PipeOwner owner = PipeOwner::Unknown;
};

/// What a client does about who serves the pipe.
enum class Verification : std::uint8_t {
  Off,     ///< does not ask
  Warn,    ///< asks, tells, and goes on whatever the answer is
  Refuse,  ///< does not use a pipe that is somebody else's; goes on when it cannot be told
};

enum class ServerTrust : std::uint8_t {
  NotChecked,
  Trusted,  ///< administrators, the system or this user serve the pipe
  Unknown,  ///< the platform does not tell who does
  Foreign,  ///< another user does
};

/// Who serves the pipe that a client is, or was last, connected to.
struct ServerIdentity {
  ServerTrust trust = ServerTrust::NotChecked;
  PipePeer peer;

  /// Why, in one clause.
  const char* text() const noexcept;
};

ServerIdentity Identify(const PipePeer& peer) noexcept;

}  // namespace client

#endif  // CLIENT_SERVERIDENTITY_H_
