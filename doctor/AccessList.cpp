#include "doctor/AccessList.h"

namespace doctor {
namespace {

// Rights as Windows has them; of a folder the first two mean to add a file and a folder.
constexpr std::uint32_t kWriteData = 0x2;
constexpr std::uint32_t kAppendData = 0x4;
constexpr std::uint32_t kDeleteChild = 0x40;
constexpr std::uint32_t kDelete = 0x10000;
constexpr std::uint32_t kWriteDac = 0x40000;
constexpr std::uint32_t kWriteOwner = 0x80000;
constexpr std::uint32_t kGenericAll = 0x10000000;
constexpr std::uint32_t kGenericWrite = 0x40000000;

// A folder that may be added to, but only by folders, is no way to plant a library.
constexpr std::uint32_t kFolderRights =
    kWriteData | kDeleteChild | kDelete | kWriteDac | kWriteOwner;
constexpr std::uint32_t kFileRights = kWriteData | kAppendData | kDelete | kWriteDac | kWriteOwner;

constexpr struct {
  Who who;
  const char* name;
} kGroups[] = {{Who::Everyone, "Everyone"},
               {Who::AuthenticatedUsers, "Authenticated Users"},
               {Who::Users, "Users"},
               {Who::Interactive, "INTERACTIVE"}};

std::uint32_t Specific(std::uint32_t mask, std::uint32_t wanted) {
  if ((mask & kGenericAll) != 0) return wanted;
  if ((mask & kGenericWrite) != 0) mask |= kWriteData | kAppendData;
  return mask & wanted;
}

// A denial counts if it is about the same group or about everyone; other groups' denials need not
// concern every member.
bool MayWrite(const AccessList& access, Who who, std::uint32_t wanted) {
  std::uint32_t denied = 0;
  for (const AccessEntry& entry : access.entries) {
    if (entry.onlyBelow) continue;
    const std::uint32_t rights = Specific(entry.mask, wanted);
    if (!entry.allows && (entry.who == who || entry.who == Who::Everyone)) denied |= rights;
    if (entry.allows && entry.who == who && (rights & ~denied) != 0) return true;
  }
  return false;
}

std::string Writers(const AccessList& access, std::uint32_t wanted) {
  if (access.isUnrestricted) return "Everyone";
  std::string names;
  for (const auto& group : kGroups) {
    if (!MayWrite(access, group.who, wanted)) continue;
    if (!names.empty()) names += ", ";
    names += group.name;
  }
  return names;
}

}  // namespace

std::string FolderWriters(const AccessList& access) { return Writers(access, kFolderRights); }

std::string FileWriters(const AccessList& access) { return Writers(access, kFileRights); }

}  // namespace doctor
