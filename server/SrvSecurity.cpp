#include "server/SrvSecurity.h"

#include <windows.h>

#include <aclapi.h>

#include "platform/WinHandles.h"
#include "server/SecurityPlan.h"

namespace {

void* AllocLocal(SIZE_T size) { return LocalAlloc(LPTR, size); }

void FreeLocal(void*& block) {
  if (block != nullptr) (void)LocalFree(block);
  block = nullptr;
}

}  // namespace

SrvSecurity::SrvSecurity() {
  attributes_.nLength = sizeof(attributes_);
  attributes_.lpSecurityDescriptor = nullptr;
  attributes_.bInheritHandle = FALSE;
}

SrvSecurity::~SrvSecurity() { Free(); }

void SrvSecurity::Free() {
  attributes_.lpSecurityDescriptor = nullptr;
  FreeLocal(descriptor_);
  FreeLocal(acl_);
  FreeLocal(tokenUser_);
  for (void*& sid : sids_) FreeLocal(sid);
}

bool SrvSecurity::Build(std::uint32_t mask, std::uint32_t mode) {
  if (!CreateSids()) {
    // The caller reports the error of the SID, which freeing must not change.
    const DWORD error = GetLastError();
    Free();
    SetLastError(error);
    return false;
  }
  if (!BuildDescriptor(mask, mode)) Free();
  return true;
}

bool SrvSecurity::CreateSids() {
  static constexpr WELL_KNOWN_SID_TYPE kTypes[kWellKnownCount] = {
      WinAuthenticatedUserSid, WinBuiltinAdministratorsSid, WinLocalSystemSid, WinNetworkSid};
  for (int i = 0; i < kWellKnownCount; ++i) {
    DWORD size = SECURITY_MAX_SID_SIZE;
    sids_[i] = AllocLocal(size);
    if (sids_[i] == nullptr) return false;
    if (CreateWellKnownSid(kTypes[i], /*DomainSid=*/nullptr, sids_[i], &size) == FALSE)
      return false;
  }
  return true;
}

// \returns false when the descriptor cannot be built; a token that cannot even be opened is left to
// the ACL merge, as an entry without a SID.
bool SrvSecurity::ReadCurrentUser() {
  UniqueKernelHandle token;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.put()) == FALSE) return true;

  DWORD size = 0;
  (void)GetTokenInformation(token.get(), TokenUser, /*TokenInformation=*/nullptr, 0, &size);
  tokenUser_ = AllocLocal(size);
  if (tokenUser_ == nullptr) return false;
  if (GetTokenInformation(token.get(), TokenUser, tokenUser_, size, &size) == FALSE) return false;
  OutputDebugStringA("set pCurrentUserSID");
  return true;
}

bool SrvSecurity::BuildDescriptor(std::uint32_t mask, std::uint32_t mode) {
  const SecurityPlan plan = PlanSecurity(mask, mode);
  if ((mode & kModeCurrentUser) != 0 && !ReadCurrentUser()) return false;

  const auto sidOf = [this](Trustee trustee) -> void* {
    switch (trustee) {
      case Trustee::Network:
        return sids_[kNetwork];
      case Trustee::LocalSystem:
        return sids_[kLocalSystem];
      case Trustee::AuthenticatedUsers:
        return sids_[kAuthenticatedUsers];
      case Trustee::CurrentUser:
        break;
    }
    return tokenUser_ == nullptr ? nullptr : static_cast<TOKEN_USER*>(tokenUser_)->User.Sid;
  };

  EXPLICIT_ACCESSA access[sizeof(plan.entries) / sizeof(plan.entries[0])] = {};
  for (std::uint32_t i = 0; i < plan.count; ++i) {
    access[i].grfAccessPermissions = plan.entries[i].rights;
    access[i].grfAccessMode = plan.entries[i].deny ? DENY_ACCESS : SET_ACCESS;
    access[i].grfInheritance = NO_INHERITANCE;
    access[i].Trustee.TrusteeForm = TRUSTEE_IS_SID;
    access[i].Trustee.TrusteeType = TRUSTEE_IS_GROUP;
    access[i].Trustee.ptstrName = static_cast<LPSTR>(sidOf(plan.entries[i].trustee));
  }
  PACL acl = nullptr;
  if (SetEntriesInAclA(plan.count, access, /*OldAcl=*/nullptr, &acl) != ERROR_SUCCESS) return false;
  acl_ = acl;

  descriptor_ = AllocLocal(SECURITY_DESCRIPTOR_MIN_LENGTH);
  if (descriptor_ == nullptr) {
    OutputDebugStringA("MIREL: Alloc SecurityDescriptor failed!!!");
    return false;
  }
  if (InitializeSecurityDescriptor(descriptor_, SECURITY_DESCRIPTOR_REVISION) == FALSE) {
    OutputDebugStringA("MIREL: InitializeSecurityDescriptor failed!!!");
    return false;
  }
  if (SetSecurityDescriptorDacl(descriptor_, /*bDaclPresent=*/TRUE, acl,
                                /*bDaclDefaulted=*/FALSE) == FALSE) {
    OutputDebugStringA("MIREL: SetSecurityDescriptorDacl failed!!!");
    return false;
  }
  if (plan.setsOwnerAndGroup) {
    (void)SetSecurityDescriptorOwner(descriptor_, sids_[kAdministrators],
                                     /*bOwnerDefaulted=*/FALSE);
    (void)SetSecurityDescriptorGroup(descriptor_, sids_[kLocalSystem], /*bGroupDefaulted=*/FALSE);
  }
  attributes_.lpSecurityDescriptor = descriptor_;
  return true;
}
