#ifndef SERVER_SECURITYPLAN_H_
#define SERVER_SECURITYPLAN_H_

#include <cstdint>

/// Which access entries a descriptor gets, in which order: the decisions of SrvSecurity, apart from
/// the calls that carry them out.

inline constexpr std::uint32_t kAllFileRights = 0x1F01FF;

/// Mode bits.
inline constexpr std::uint32_t kModeLocalSystem = 1;  ///< Local System entry; owner and group
inline constexpr std::uint32_t kModeCurrentUser = 2;  ///< entry for the user of the process token

/// GENERIC_READ with the rights to read and write data and attributes. FILE_CREATE_PIPE_INSTANCE
/// (4) is left out, so that only the server's own user can add instances of the pipe name.
inline constexpr std::uint32_t kPipeClientRights = 0x8000019B;

enum class Trustee { Network, CurrentUser, LocalSystem, AuthenticatedUsers };

struct AccessEntry {
  bool deny;
  std::uint32_t rights;
  Trustee trustee;
};

struct SecurityPlan {
  AccessEntry entries[4];
  std::uint32_t count;
  bool setsOwnerAndGroup;
};

/// \param mask rights of Authenticated Users and Local System; 0 stands for all
/// \param mode mode bits; any set bit adds the entry that denies the network
SecurityPlan PlanSecurity(std::uint32_t mask, std::uint32_t mode);

#endif  // SERVER_SECURITYPLAN_H_
