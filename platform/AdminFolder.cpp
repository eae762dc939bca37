#include "platform/AdminFolder.h"

#include <windows.h>

#include "platform/WinHandles.h"

namespace platform {
namespace {

// Room for any well-known SID, aligned as one.
union SidRoom {
  SID sid;
  BYTE bytes[SECURITY_MAX_SID_SIZE];
};

bool MakeSid(WELL_KNOWN_SID_TYPE type, SidRoom& room) {
  DWORD size = sizeof(room);
  return CreateWellKnownSid(type, /*DomainSid=*/nullptr, &room, &size) != FALSE;
}

// The service that installs the system; it owns most of the system's folders.
bool IsTrustedInstaller(PSID sid) {
  static constexpr DWORD kParts[] = {
      SECURITY_SERVICE_ID_BASE_RID, 956008885, 3418522649, 1831038044, 1853292631, 2271478464};
  SID_IDENTIFIER_AUTHORITY nt = {SECURITY_NT_AUTHORITY};
  if (memcmp(GetSidIdentifierAuthority(sid), &nt, sizeof(nt)) != 0) return false;
  if (*GetSidSubAuthorityCount(sid) != sizeof(kParts) / sizeof(kParts[0])) return false;
  return memcmp(GetSidSubAuthority(sid, 0), kParts, sizeof(kParts)) == 0;
}

bool IsOurUser(PSID sid) {
  HANDLE token = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) return false;
  struct {
    TOKEN_USER user;
    SidRoom room;
  } ours = {};
  DWORD size = 0;
  const bool read = GetTokenInformation(token, TokenUser, &ours, sizeof(ours), &size) != FALSE;
  (void)CloseHandle(token);
  return read && EqualSid(ours.user.User.Sid, sid) != FALSE;
}

bool IsTrusted(PSID sid) {
  return sid != nullptr && IsValidSid(sid) != FALSE &&
         (IsWellKnownSid(sid, WinBuiltinAdministratorsSid) != FALSE ||
          IsWellKnownSid(sid, WinLocalSystemSid) != FALSE || IsTrustedInstaller(sid) ||
          IsOurUser(sid));
}

// Who makes something below is trusted already, or could not make it.
bool IsWhoeverMakesIt(PSID sid) { return IsWellKnownSid(sid, WinCreatorOwnerSid) != FALSE; }

constexpr DWORD kAnyWriting = GENERIC_ALL | GENERIC_WRITE | MAXIMUM_ALLOWED | DELETE | WRITE_DAC |
                              WRITE_OWNER | FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_WRITE_EA |
                              FILE_WRITE_ATTRIBUTES | FILE_DELETE_CHILD;

bool GrantsWritingToOthers(const ACE_HEADER& header) {
  if (header.AceType == ACCESS_DENIED_ACE_TYPE) return false;
  if (header.AceType != ACCESS_ALLOWED_ACE_TYPE) return true;
  const auto& ace = reinterpret_cast<const ACCESS_ALLOWED_ACE&>(header);
  if ((ace.Mask & kAnyWriting) == 0) return false;
  const auto sid = const_cast<PSID>(static_cast<const void*>(&ace.SidStart));
  if (IsTrusted(sid)) return false;
  return (header.AceFlags & INHERIT_ONLY_ACE) == 0 || !IsWhoeverMakesIt(sid);
}

}  // namespace

SECURITY_ATTRIBUTES* AdministratorsOnly() {
  static SidRoom administrators;
  static SidRoom system;
  static union {
    ACL acl;
    BYTE bytes[sizeof(ACL) + 2 * (sizeof(ACCESS_ALLOWED_ACE) + sizeof(SidRoom))];
  } list;
  static SECURITY_DESCRIPTOR descriptor;
  static SECURITY_ATTRIBUTES attributes = {sizeof(attributes), &descriptor, FALSE};
  static bool isMade = false;
  if (isMade) return &attributes;

  constexpr DWORD kInherit = OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE;
  isMade =
      MakeSid(WinBuiltinAdministratorsSid, administrators) && MakeSid(WinLocalSystemSid, system) &&
      InitializeAcl(&list.acl, sizeof(list), ACL_REVISION) != FALSE &&
      AddAccessAllowedAceEx(&list.acl, ACL_REVISION, kInherit, FILE_ALL_ACCESS, &administrators) !=
          FALSE &&
      AddAccessAllowedAceEx(&list.acl, ACL_REVISION, kInherit, FILE_ALL_ACCESS, &system) != FALSE &&
      InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) != FALSE &&
      SetSecurityDescriptorOwner(&descriptor, &administrators, FALSE) != FALSE &&
      SetSecurityDescriptorDacl(&descriptor, TRUE, &list.acl, FALSE) != FALSE &&
      SetSecurityDescriptorControl(&descriptor, SE_DACL_PROTECTED, SE_DACL_PROTECTED) != FALSE;
  return isMade ? &attributes : nullptr;
}

bool OnlyAdministratorsMayWrite(const void* descriptor) {
  const auto checked = const_cast<PSECURITY_DESCRIPTOR>(descriptor);
  PSID owner = nullptr;
  PACL list = nullptr;
  BOOL isDefault = FALSE;
  BOOL isPresent = FALSE;
  if (IsValidSecurityDescriptor(checked) == FALSE ||
      GetSecurityDescriptorOwner(checked, &owner, &isDefault) == FALSE || !IsTrusted(owner) ||
      GetSecurityDescriptorDacl(checked, &isPresent, &list, &isDefault) == FALSE ||
      isPresent == FALSE || list == nullptr) {
    return false;
  }
  for (DWORD i = 0; i < list->AceCount; ++i) {
    void* ace = nullptr;
    if (GetAce(list, i, &ace) == FALSE) return false;
    if (GrantsWritingToOthers(*static_cast<const ACE_HEADER*>(ace))) return false;
  }
  return true;
}

const char* PrepareAdminFolder(const char* path) {
  SECURITY_ATTRIBUTES* const ours = AdministratorsOnly();
  if (ours == nullptr) return "its access list cannot be made";
  if (CreateDirectoryA(path, ours) == FALSE && GetLastError() != ERROR_ALREADY_EXISTS) {
    return "it cannot be made";
  }

  const UniqueFileHandle folder(
      CreateFileA(path, FILE_READ_ATTRIBUTES | READ_CONTROL, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  /*lpSecurityAttributes=*/nullptr, OPEN_EXISTING,
                  FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  BY_HANDLE_FILE_INFORMATION about = {};
  if (!folder || GetFileInformationByHandle(folder.get(), &about) == FALSE) {
    return "it cannot be opened";
  }
  constexpr DWORD kKind = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  if ((about.dwFileAttributes & kKind) != FILE_ATTRIBUTE_DIRECTORY) return "it is no folder";

  alignas(SECURITY_DESCRIPTOR) static BYTE descriptor[16 * 1024];
  DWORD size = 0;
  if (GetKernelObjectSecurity(folder.get(), OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                              descriptor, sizeof(descriptor), &size) == FALSE ||
      !OnlyAdministratorsMayWrite(descriptor)) {
    return "others than administrators may write to it";
  }
  return nullptr;
}

}  // namespace platform
