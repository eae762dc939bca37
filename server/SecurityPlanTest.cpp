#include "server/SecurityPlan.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

bool operator==(const AccessEntry& a, const AccessEntry& b) {
  return a.deny == b.deny && a.rights == b.rights && a.trustee == b.trustee;
}

std::vector<AccessEntry> Entries(const SecurityPlan& plan) {
  return {plan.entries, plan.entries + plan.count};
}

void ExpectEntries(const SecurityPlan& plan, const std::vector<AccessEntry>& expected) {
  const std::vector<AccessEntry> entries = Entries(plan);
  ASSERT_EQ(entries.size(), expected.size());
  for (std::size_t i = 0; i < entries.size(); ++i) EXPECT_TRUE(entries[i] == expected[i]) << i;
}

TEST(SecurityPlanTest, TheGeneralDescriptorLetsAuthenticatedUsersDoEverything) {
  const SecurityPlan plan = PlanSecurity(0, 0);
  ExpectEntries(plan, {{false, 0x1F01FF, Trustee::AuthenticatedUsers}});
  EXPECT_FALSE(plan.setsOwnerAndGroup);
}

TEST(SecurityPlanTest, ThePipeDescriptorDeniesTheNetworkFirst) {
  const SecurityPlan plan = PlanSecurity(kPipeClientRights, kModeCurrentUser);
  ExpectEntries(plan, {{true, 0x1F01FF, Trustee::Network},
                       {false, 0x1F01FF, Trustee::CurrentUser},
                       {false, 0x8000019B, Trustee::AuthenticatedUsers}});
  EXPECT_FALSE(plan.setsOwnerAndGroup);
}

TEST(SecurityPlanTest, ClientsOfThePipeMayNotCreateInstancesOfIt) {
  EXPECT_EQ(kPipeClientRights & 4u, 0u);
}

TEST(SecurityPlanTest, ModeOneAddsLocalSystemWithTheMaskAndSetsOwnerAndGroup) {
  const SecurityPlan plan = PlanSecurity(0x123, kModeLocalSystem);
  ExpectEntries(plan, {{true, 0x1F01FF, Trustee::Network},
                       {false, 0x123, Trustee::LocalSystem},
                       {false, 0x123, Trustee::AuthenticatedUsers}});
  EXPECT_TRUE(plan.setsOwnerAndGroup);
}

TEST(SecurityPlanTest, ModeThreeHasAllFourEntriesInOrder) {
  const SecurityPlan plan = PlanSecurity(0, kModeLocalSystem | kModeCurrentUser);
  ExpectEntries(plan, {{true, 0x1F01FF, Trustee::Network},
                       {false, 0x1F01FF, Trustee::CurrentUser},
                       {false, 0x1F01FF, Trustee::LocalSystem},
                       {false, 0x1F01FF, Trustee::AuthenticatedUsers}});
}

TEST(SecurityPlanTest, AnyOtherModeBitOnlyDeniesTheNetwork) {
  ExpectEntries(PlanSecurity(0, 4), {{true, 0x1F01FF, Trustee::Network},
                                     {false, 0x1F01FF, Trustee::AuthenticatedUsers}});
}

}  // namespace
