#ifndef BOARD_DEVNODESTATUS_H_
#define BOARD_DEVNODESTATUS_H_

#include <cstdint>

#include "server/SrvResult.h"

/// Asks the configuration manager for the state of a device node. Its library is loaded from the
/// system directory for the one call and freed again; it is never taken from the search path.
///
/// \param raised receives whether the call raised; the library is freed then, too
/// \returns the configuration manager's result; 8602 without a usable system directory, 34 when the
///   path is too long, 8603 when the library cannot be loaded, 8601 when it lacks the entry point.
///   Status and problem are untouched unless the configuration manager wrote them.
SrvResult GetWDMStatusHlp(std::uint32_t instance, std::uint32_t& status, std::uint32_t& problem,
                          bool& raised);

#endif  // BOARD_DEVNODESTATUS_H_
