#ifndef SERVER_SRVSECURITY_H_
#define SERVER_SRVSECURITY_H_

#include <cstdint>

#include "platform/WinTypes.h"

/// A security descriptor with an explicit DACL, and the attributes record that carries it.
///
/// The pipe of an elevated server must be open to every local user and to nobody on the network,
/// and nobody but the server's own user may add instances of its name.
class SrvSecurity {
 public:
  SrvSecurity();
  /// Frees the descriptor, the ACL and the SIDs.
  ~SrvSecurity();
  SrvSecurity(const SrvSecurity&) = delete;
  SrvSecurity& operator=(const SrvSecurity&) = delete;

  /// Builds the descriptor; call once.
  ///
  /// \param mask rights of Authenticated Users; 0 stands for all file rights
  /// \param mode see SecurityPlan.h
  /// \returns false, with the last error set, when a well-known SID cannot be created.
  ///
  /// Kept: a failure in any later step is not reported. Attributes() then carries no descriptor,
  /// and what is created with it gets the platform's default security.
  bool Build(std::uint32_t mask, std::uint32_t mode);

  /// Valid as long as this object; handle inheritance is off.
  SECURITY_ATTRIBUTES* Attributes() { return &attributes_; }

 private:
  enum WellKnown { kAuthenticatedUsers, kAdministrators, kLocalSystem, kNetwork, kWellKnownCount };

  bool CreateSids();
  bool ReadCurrentUser();
  bool BuildDescriptor(std::uint32_t mask, std::uint32_t mode);
  void Free();

  SECURITY_ATTRIBUTES attributes_ = {};
  void* sids_[kWellKnownCount] = {};
  void* tokenUser_ = nullptr;  // TOKEN_USER of the process; null when it could not be read
  void* acl_ = nullptr;
  void* descriptor_ = nullptr;
};

#endif  // SERVER_SRVSECURITY_H_
