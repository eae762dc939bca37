#include "server/TurnOrder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <random>
#include <vector>

namespace {

using Due = TurnOrder::Due;
using testing::ElementsAre;

class TurnOrderTest : public testing::Test {
 protected:
  static constexpr std::uint32_t kNobody = TurnOrder::kNobody;

  void Joins(std::uint32_t process, std::initializer_list<std::uint32_t> instances) {
    for (const std::uint32_t i : instances) order_.Joins(i, process);
  }
  void Are(Due due, std::initializer_list<std::uint32_t> instances) {
    for (const std::uint32_t i : instances) due_[i] = due;
  }
  // So many turns, with what is due staying so.
  std::vector<std::uint32_t> Turns(int count) {
    std::vector<std::uint32_t> turns;
    for (int i = 0; i < count; ++i) turns.push_back(order_.Next(due_));
    return turns;
  }
  // Turns until nothing is due any more.
  std::vector<std::uint32_t> TurnsOnce() {
    std::vector<std::uint32_t> turns;
    for (std::uint32_t i = order_.Next(due_); i != kNobody; i = order_.Next(due_)) {
      turns.push_back(i);
      due_[i] = Due::Nothing;
    }
    return turns;
  }

  TurnOrder order_;
  Due due_[kPipeInstances] = {};
};

TEST_F(TurnOrderTest, NobodyIsNextWhenNothingIsDue) {
  EXPECT_THAT(Turns(2), ElementsAre(kNobody, kNobody));
}

TEST_F(TurnOrderTest, OneProcessIsServedInRotation) {
  Joins(4, {0, 9, 30, 63});
  Are(Due::Request, {0, 9, 30, 63});
  EXPECT_THAT(Turns(6), ElementsAre(0u, 9u, 30u, 63u, 0u, 9u));
}

TEST_F(TurnOrderTest, TheRotationGoesOnBehindTheInstanceThatTheSystemNamed) {
  Joins(4, {0, 9, 30, 63});
  Are(Due::Request, {0, 9, 30, 63});
  order_.Takes(10, Due::Request);  // nobody's yet
  order_.Takes(9, Due::Request);
  order_.Takes(50, Due::Connection);
  order_.Takes(51, Due::Nothing);
  EXPECT_THAT(TurnsOnce(), ElementsAre(30u, 63u, 0u, 9u));
}

TEST_F(TurnOrderTest, TheRotationGoesOnBehindTheInstanceServedLastForAStrangerToo) {
  order_.Takes(20, Due::Request);
  Joins(4, {9, 20, 30});
  Are(Due::Request, {9, 20, 30});
  EXPECT_THAT(TurnsOnce(), ElementsAre(30u, 9u, 20u));
}

TEST_F(TurnOrderTest, ProcessesTakeTurnsAndEachServesItsOwnInRotation) {
  Joins(4, {0, 1, 2, 3});
  Joins(8, {40});
  Joins(12, {41, 42});
  Are(Due::Request, {0, 1, 2, 3, 40, 41, 42});
  EXPECT_THAT(Turns(10), ElementsAre(0u, 40u, 41u, 1u, 40u, 42u, 2u, 40u, 41u, 3u));
}

TEST_F(TurnOrderTest, TheProcessThatHasWaitedLongestIsFirst) {
  Joins(4, {0, 1});
  Joins(8, {40});
  Joins(12, {41});
  Are(Due::Request, {0, 40, 41});
  EXPECT_THAT(TurnsOnce(), ElementsAre(0u, 40u, 41u));
  Are(Due::Request, {1});
  EXPECT_THAT(TurnsOnce(), ElementsAre(1u));
  Are(Due::Request, {0, 1, 40, 41});
  EXPECT_THAT(TurnsOnce(), ElementsAre(40u, 41u, 0u, 1u));
}

TEST_F(TurnOrderTest, AnotherConnectionOfAProcessBringsNoEarlierTurn) {
  Joins(4, {0});
  Joins(8, {40});
  Are(Due::Request, {0, 40});
  EXPECT_THAT(Turns(3), ElementsAre(0u, 40u, 0u));
  Joins(4, {5});
  Are(Due::Request, {5});
  EXPECT_THAT(Turns(2), ElementsAre(40u, 5u));
}

TEST_F(TurnOrderTest, AnotherConnectionOfAProcessBringsNoLaterTurn) {
  Joins(4, {0, 1});
  Joins(8, {40});
  Are(Due::Request, {0, 40});
  EXPECT_THAT(Turns(3), ElementsAre(0u, 40u, 0u));
  Are(Due::Nothing, {0, 40});
  Joins(8, {41});
  Are(Due::Request, {1, 41});
  EXPECT_THAT(TurnsOnce(), ElementsAre(41u, 1u));
}

TEST_F(TurnOrderTest, StrangersWaitBehindThoseWhoWait) {
  Joins(4, {0});
  Joins(8, {40});
  Are(Due::Request, {0, 40});
  EXPECT_THAT(Turns(1), ElementsAre(0u));
  for (std::uint32_t i = 1; i < 10; ++i) {
    Joins(100 + i, {i});
    Are(Due::Request, {i});
  }
  EXPECT_THAT(Turns(1), ElementsAre(40u));
}

TEST_F(TurnOrderTest, ANumberThatIsGivenAgainIsAStrangers) {
  Joins(4, {0});
  Joins(8, {40});
  Joins(12, {50});
  Are(Due::Request, {0, 40, 50});
  EXPECT_THAT(Turns(4), ElementsAre(0u, 40u, 50u, 0u));
  due_[40] = Due::Nothing;
  order_.Leaves(40);
  Joins(8, {41});
  Are(Due::Request, {41});
  EXPECT_THAT(TurnsOnce(), ElementsAre(50u, 41u, 0u));
}

TEST_F(TurnOrderTest, ATurnBeforeTheProcessIsKnownIsTheProcesssToo) {
  Joins(4, {0, 1, 2});
  Joins(8, {40});
  order_.Takes(0, Due::Request);
  order_.Takes(40, Due::Request);
  order_.Takes(30, Due::Request);
  Joins(4, {30});
  Are(Due::Request, {0, 1, 2, 40});
  EXPECT_THAT(Turns(3), ElementsAre(40u, 0u, 40u));
}

TEST_F(TurnOrderTest, AStrangerIsBeforeTheProcessThatHadTheLastTurn) {
  Joins(4, {0, 1});
  Are(Due::Request, {0, 1});
  EXPECT_THAT(Turns(1), ElementsAre(0u));
  Joins(8, {40});
  Are(Due::Request, {40});
  EXPECT_THAT(Turns(2), ElementsAre(40u, 1u));
}

TEST_F(TurnOrderTest, ClientsOfWhomTheSystemDoesNotTellAreOneProcess) {
  Joins(0, {0, 1, 2});
  Joins(4, {40});
  Are(Due::Request, {0, 1, 2, 40});
  EXPECT_THAT(Turns(5), ElementsAre(0u, 40u, 1u, 40u, 2u));
}

TEST_F(TurnOrderTest, AConnectionThatTheSystemNamedCountsAsOne) {
  Are(Due::Connection, {0, 1, 2});
  order_.Takes(1, Due::Connection);
  EXPECT_THAT(TurnsOnce(), ElementsAre(2u, 0u, 1u));
}

TEST_F(TurnOrderTest, RequestsAndConnectionsTakeTurnsRequestsFirst) {
  Are(Due::Connection, {0, 1, 3});
  Are(Due::Request, {2, 50});
  EXPECT_THAT(TurnsOnce(), ElementsAre(2u, 0u, 50u, 1u, 3u));
}

TEST_F(TurnOrderTest, ConnectionsAreServedInRotationBetweenRequests) {
  Are(Due::Connection, {0, 1, 7});
  Are(Due::Request, {20});
  EXPECT_THAT(Turns(9), ElementsAre(20u, 0u, 20u, 1u, 20u, 7u, 20u, 0u, 20u));
}

TEST_F(TurnOrderTest, ARequestServedWhileNoConnectionWaitedCountsForNone) {
  Are(Due::Request, {20});
  EXPECT_THAT(Turns(3), testing::Each(20u));
  Are(Due::Connection, {0});
  EXPECT_THAT(Turns(2), ElementsAre(20u, 0u));
}

TEST_F(TurnOrderTest, AConnectionsTurnMovesNoProcesssRotation) {
  Joins(4, {0, 9, 30});
  Are(Due::Request, {0, 9, 30});
  EXPECT_THAT(Turns(1), ElementsAre(0u));
  Are(Due::Nothing, {0, 9, 30});
  Are(Due::Connection, {20});
  EXPECT_THAT(TurnsOnce(), ElementsAre(20u));
  Are(Due::Request, {0, 9, 30});
  EXPECT_THAT(TurnsOnce(), ElementsAre(9u, 30u, 0u));
}

// Whoever is due and stays so has a turn within a bound, whatever the others do.
TEST_F(TurnOrderTest, NobodyStarves) {
  constexpr std::uint32_t kProcesses = 3;
  // A turn of each process for each instance of one's own, and as many for connections.
  constexpr std::uint32_t kMost = kProcesses * kPipeInstances * 2;
  std::minstd_rand random(1);
  std::uint32_t waited[kPipeInstances] = {};
  for (std::uint32_t i = 0; i < kPipeInstances; ++i) order_.Joins(i, i % kProcesses);
  for (int turn = 0; turn < 100000; ++turn) {
    // One in eleven is due because its client comes or goes.
    for (std::uint32_t i = 0; i < kPipeInstances; ++i) {
      if (due_[i] == Due::Nothing && random() % 8 != 0) {
        due_[i] = random() % 64 < 6 ? Due::Connection : Due::Request;
      }
    }
    const std::uint32_t next = order_.Next(due_);
    ASSERT_LT(next, kNobody);
    if (due_[next] == Due::Connection) {
      order_.Leaves(next);
      order_.Joins(next, static_cast<std::uint32_t>(random()) % kProcesses);
    }
    due_[next] = Due::Nothing;
    waited[next] = 0;
    for (std::uint32_t i = 0; i < kPipeInstances; ++i) {
      if (due_[i] == Due::Nothing) continue;
      ASSERT_LT(++waited[i], due_[i] == Due::Request ? kMost : 2 * kPipeInstances) << i;
    }
  }
}

}  // namespace
