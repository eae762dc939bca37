#ifndef DOCTOR_ACCESSLIST_H_
#define DOCTOR_ACCESSLIST_H_

#include <cstdint>
#include <string>
#include <vector>

namespace doctor {

/// Whom an entry of an access list is about.
enum class Who : std::uint8_t {
  Someone,  ///< nobody whom every user is
  Everyone,
  AuthenticatedUsers,
  Users,
  Interactive,
};

struct AccessEntry {
  Who who = Who::Someone;
  bool allows = true;      ///< else denies
  bool onlyBelow = false;  ///< is inherited by what lies below, and does not hold here
  std::uint32_t mask = 0;
};

/// Who may do what with a file or folder, in the order in which Windows looks at it.
struct AccessList {
  bool isUnrestricted = false;  ///< there is none, so everybody may do everything
  std::vector<AccessEntry> entries;
};

/// The groups of ordinary users who may put another library in place of one in this folder: add a
/// file, delete one, or change who may. "Users, Everyone", for instance; empty when nobody may.
std::string FolderWriters(const AccessList& access);

/// The same of a file: who may change what is in it, replace it, or change who may.
std::string FileWriters(const AccessList& access);

}  // namespace doctor

#endif  // DOCTOR_ACCESSLIST_H_
