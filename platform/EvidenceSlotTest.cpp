#include "platform/EvidenceSlot.h"

#include <gtest/gtest.h>

namespace {

using platform::ChooseEvidenceSlot;

TEST(EvidenceSlotTest, TheFirstFreePlaceIsTaken) {
  EXPECT_EQ(ChooseEvidenceSlot({}), 0u);
  EXPECT_EQ(ChooseEvidenceSlot({5, 6, 7, 0, 0, 0, 0, 0}), 3u);
  EXPECT_EQ(ChooseEvidenceSlot({5, 0, 7, 8, 9, 0, 0, 1}), 1u);
  EXPECT_EQ(ChooseEvidenceSlot({5, 6, 7, 8, 9, 10, 11, 0}), 7u);
}

TEST(EvidenceSlotTest, WhenAllAreTakenTheOldestIsReplaced) {
  EXPECT_EQ(ChooseEvidenceSlot({1, 2, 3, 4, 5, 6, 7, 8}), 0u);
  EXPECT_EQ(ChooseEvidenceSlot({9, 10, 3, 4, 5, 6, 7, 8}), 2u);
  EXPECT_EQ(ChooseEvidenceSlot({~0ull, 6, 5, 4, 3, 2, 1ull << 40, 1}), 7u);
}

TEST(EvidenceSlotTest, OfSeveralOldestTheFirstIsReplaced) {
  EXPECT_EQ(ChooseEvidenceSlot({4, 4, 4, 4, 4, 4, 4, 4}), 0u);
  EXPECT_EQ(ChooseEvidenceSlot({4, 3, 4, 3, 4, 4, 4, 4}), 1u);
}

}  // namespace
