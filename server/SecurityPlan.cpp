#include "server/SecurityPlan.h"

SecurityPlan PlanSecurity(std::uint32_t mask, std::uint32_t mode) {
  const std::uint32_t rights = mask == 0 ? kAllFileRights : mask;
  SecurityPlan plan = {};
  const auto add = [&plan](bool deny, std::uint32_t entryRights, Trustee trustee) {
    plan.entries[plan.count++] = {deny, entryRights, trustee};
  };

  if (mode != 0) add(/*deny=*/true, kAllFileRights, Trustee::Network);
  if ((mode & kModeCurrentUser) != 0) add(/*deny=*/false, kAllFileRights, Trustee::CurrentUser);
  if ((mode & kModeLocalSystem) != 0) add(/*deny=*/false, rights, Trustee::LocalSystem);
  add(/*deny=*/false, rights, Trustee::AuthenticatedUsers);
  plan.setsOwnerAndGroup = (mode & kModeLocalSystem) != 0;
  return plan;
}
