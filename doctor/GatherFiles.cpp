#include <windows.h>

#include <aclapi.h>

#include <iterator>
#include <string_view>
#include <vector>

#include "doctor/Gather.h"
#include "platform/UniqueHandle.h"
#include "platform/WinHandles.h"

namespace doctor {
namespace {

struct LocalTraits {
  using Type = PSECURITY_DESCRIPTOR;
  static Type None() { return nullptr; }
  static void Close(Type memory) { (void)LocalFree(memory); }
};

constexpr struct {
  WELL_KNOWN_SID_TYPE type;
  Who who;
} kGroups[] = {{WinWorldSid, Who::Everyone},
               {WinAuthenticatedUserSid, Who::AuthenticatedUsers},
               {WinBuiltinUsersSid, Who::Users},
               {WinInteractiveSid, Who::Interactive}};

Who WhoIs(PSID sid) {
  for (const auto& group : kGroups) {
    if (IsWellKnownSid(sid, group.type) != FALSE) return group.who;
  }
  return Who::Someone;
}

// Entries of other kinds, such as those for objects of a directory service, do not occur on files.
void AddEntry(const ACE_HEADER* header, AccessList& access) {
  const bool allows = header->AceType == ACCESS_ALLOWED_ACE_TYPE;
  if (!allows && header->AceType != ACCESS_DENIED_ACE_TYPE) return;
  // Both kinds are laid out alike.
  const auto* const ace = reinterpret_cast<const ACCESS_ALLOWED_ACE*>(header);
  AccessEntry entry;
  entry.who = WhoIs(const_cast<DWORD*>(&ace->SidStart));
  entry.allows = allows;
  entry.onlyBelow = (header->AceFlags & INHERIT_ONLY_ACE) != 0;
  entry.mask = ace->Mask;
  access.entries.push_back(entry);
}

std::uint32_t ReadAccess(const std::string& path, AccessList& access) {
  PACL list = nullptr;
  UniqueHandle<LocalTraits> descriptor;
  std::string name = path;  // the call takes a text that could be written to
  const DWORD error = GetNamedSecurityInfoA(
      name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, /*ppsidOwner=*/nullptr,
      /*ppsidGroup=*/nullptr, &list, /*ppSacl=*/nullptr, descriptor.put());
  if (error != ERROR_SUCCESS) return error;
  access.isUnrestricted = list == nullptr;
  for (WORD i = 0; list != nullptr && i < list->AceCount; ++i) {
    void* entry = nullptr;
    if (GetAce(list, i, &entry) != FALSE) AddEntry(static_cast<ACE_HEADER*>(entry), access);
  }
  return 0;
}

// What a library's properties say of the product that it belongs to.
bool IsStandIn(const std::string& path) {
  static constexpr char kProduct[] = "QorlixSRV stand-ins";
  DWORD ignored = 0;
  std::vector<BYTE> block(GetFileVersionInfoSizeA(path.c_str(), &ignored));
  if (block.empty() || GetFileVersionInfoA(path.c_str(), /*dwHandle=*/0,
                                           static_cast<DWORD>(block.size()), block.data()) == FALSE)
    return false;
  void* text = nullptr;
  UINT size = 0;
  if (VerQueryValueA(block.data(), R"(\StringFileInfo\040904E4\ProductName)", &text, &size) ==
      FALSE)
    return false;
  // Whether the terminator is counted differs from platform to platform.
  const std::string_view product(static_cast<const char*>(text), size);
  return product.substr(0, product.find('\0')) == kProduct;
}

}  // namespace

ImageKind KindOfFile(const std::string& path) {
  const UniqueFileHandle file(CreateFileA(
      path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
      /*lpSecurityAttributes=*/nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
      /*hTemplateFile=*/nullptr));
  if (!file) {
    // A folder of that name is refused, too; whether anything is there tells the other call.
    return GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES ? ImageKind::Missing
                                                                       : ImageKind::Unreadable;
  }
  // A plug-in's name may be that of a device, CON say, and whoever reads that waits for a key.
  if (GetFileType(file.get()) != FILE_TYPE_DISK) return ImageKind::Unreadable;
  std::uint8_t head[kImageHead] = {};
  DWORD size = 0;
  if (ReadFile(file.get(), head, sizeof(head), &size, /*lpOverlapped=*/nullptr) == FALSE) {
    return ImageKind::Unreadable;
  }
  return KindOf({head, size});
}

FileFacts GatherFile(const std::string& path) {
  FileFacts facts;
  facts.path = path;
  facts.kind = KindOfFile(path);
  if (facts.kind != ImageKind::Missing) facts.error = ReadAccess(path, facts.access);
  facts.isStandIn = facts.kind == ImageKind::Fitting && IsStandIn(path);
  return facts;
}

FolderFacts GatherFolder(const std::string& path) {
  FolderFacts facts;
  facts.path = path;
  facts.error = ReadAccess(path, facts.access);
  return facts;
}

std::string SystemFolder() {
  char path[MAX_PATH] = "";
  // On 64-bit Windows; elsewhere there is no such folder.
  UINT length = GetSystemWow64DirectoryA(path, std::size(path));
  if (length == 0 || length >= std::size(path)) {
    length = GetSystemDirectoryA(path, std::size(path));
  }
  return length < std::size(path) ? std::string(path, length) : std::string();
}

}  // namespace doctor
