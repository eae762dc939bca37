#include "client/RestartEvent.h"

#include <gtest/gtest.h>

#include <cstring>

#include "client/testing/EventSetter.h"

// Runs natively against the fake and on Windows against real events.

namespace client {
namespace {

constexpr char kName[] = "QorlixRestartEventTest";

TEST(RestartEventTest, ANewEventIsNotSetAndIsThereUntilItIsClosed) {
  EXPECT_FALSE(RestartEvent::Exists(kName));
  {
    RestartEvent event;
    bool existed = true;
    ASSERT_EQ(event.Create(kName, existed), 0u);
    EXPECT_FALSE(existed);
    EXPECT_TRUE(RestartEvent::Exists(kName));
    EXPECT_FALSE(event.Wait(/*timeoutMs=*/1));
  }
  EXPECT_FALSE(RestartEvent::Exists(kName));
}

TEST(RestartEventTest, AnEventThatExistsIsSetBackAndSaid) {
  const EventHolder other(kName);
  RestartEvent event;
  bool existed = false;
  ASSERT_EQ(event.Create(kName, existed), 0u);
  EXPECT_TRUE(existed);
  EXPECT_FALSE(event.Wait(/*timeoutMs=*/1));
}

TEST(RestartEventTest, AWaitEndsWhenSomebodySetsTheEvent) {
  RestartEvent event;
  bool existed = false;
  ASSERT_EQ(event.Create(kName, existed), 0u);
  const EventSetter server(kName);
  EXPECT_TRUE(event.Wait(/*timeoutMs=*/10000));
}

TEST(RestartEventTest, WithoutAnEventAWaitEndsAtOnce) {
  RestartEvent event;
  EXPECT_FALSE(event.Wait(/*timeoutMs=*/10000));
}

TEST(RestartEventTest, ANameThatThePlatformRefusesIsItsError) {
  RestartEvent event;
  bool existed = true;
  EXPECT_NE(event.Create("No\\Such\\Space", existed), 0u);
  EXPECT_FALSE(existed);
  EXPECT_FALSE(event.Wait(/*timeoutMs=*/1));
}

TEST(RestartEventTest, UnusedNamesDifferAndBelongToTheMachine) {
  char first[64];
  char second[64];
  UnusedEventName(first, sizeof(first));
  UnusedEventName(second, sizeof(second));
  EXPECT_STRNE(first, second);
  EXPECT_EQ(std::strncmp(first, "Global\\", 7), 0);
  EXPECT_FALSE(RestartEvent::Exists(first));
}

}  // namespace
}  // namespace client
