#ifndef SERVER_CLIENTIDENTITY_H_
#define SERVER_CLIENTIDENTITY_H_

#include <cstdint>

#include "platform/WinTypes.h"

/// Who is at the other end of a pipe instance.
namespace client_identity {

/// Whether the client that sent the last request acts as an administrator: the group is enabled in
/// its token, so one who has not been elevated does not. A client is known if it opened the pipe at
/// identification level or above; one who is anonymous, or about whom anything cannot be found out,
/// is no administrator.
///
/// The thread takes the client's identity for a moment. If it cannot put it off again, the process
/// ends at once with kCannotPutIdentityOff: nothing may be done in a client's name.
///
/// Not to be called within a guarded call, which could leave the identity on.
bool IsAdministrator(HANDLE pipe);

/// Exit code (ERROR_CANNOT_IMPERSONATE).
inline constexpr std::uint32_t kCannotPutIdentityOff = 1368;

}  // namespace client_identity

#endif  // SERVER_CLIENTIDENTITY_H_
