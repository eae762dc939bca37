#ifndef SERVER_SRVRESULT_H_
#define SERVER_SRVRESULT_H_

#include <cstdint>

/// Result of every handler, reader and writer operation, and the second field of every reply.
///
/// 0 is success. 8601 to 8620 are the server's own; all other values are platform error codes or
/// results of the libraries that a command calls, passed on unchanged.
using SrvResult = std::uint32_t;

inline constexpr SrvResult SRV_OK = 0;

/// A library that was loaded at run time lacks the entry point.
inline constexpr SrvResult SRV_ERR_ENTRY_POINT_MISSING = 8601;
/// A read past the received bytes, a reply past 8192 bytes, an answer past 8160 bytes, a fixed-size
/// path buffer that is too small, or an allocation that failed.
inline constexpr SrvResult BUFFER_OVERFLOW = 8602;
/// A library that is loaded at run time could not be loaded.
inline constexpr SrvResult SRV_ERR_DLL_NOT_FOUND = 8603;
/// A call into a library or into the registry raised an exception.
inline constexpr SrvResult SRV_ERR_EXCEPTION_OCCURED = 8604;
/// A registry key was opened, but no handle came back.
inline constexpr SrvResult SRV_ERR_NO_KEY_HANDLE = 8606;
/// No command has this code.
inline constexpr SrvResult SRV_ERR_UNKNOWN_COMMAND = 8620;

/// What an accepted stop is answered with: the platform's ERROR_SERVER_SHUTDOWN_IN_PROGRESS, by
/// number because clients know it by that.
inline constexpr SrvResult SRV_SHUTDOWN_IN_PROGRESS = 1255;

#endif  // SERVER_SRVRESULT_H_
