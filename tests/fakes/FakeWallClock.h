#ifndef TESTS_FAKES_FAKEWALLCLOCK_H_
#define TESTS_FAKES_FAKEWALLCLOCK_H_

#include <cstdint>

#include "platform/WallClock.h"

/// A clock that a test moves, behind platform/WallClock.h. Sleeping takes no time of day; a sleep
/// of a second waits until the test lets one pass.
namespace fake_wall_clock {

void Reset();

/// Moves the clock; by a negative number of seconds, too.
void Move(std::int64_t seconds);

/// Waits until some thread sleeps for a second or more, and ends that sleep.
void EndOneSleep();

/// Ends all sleeps, those that come as well.
void EndAllSleeps();
/// \returns whether somebody sleeps a second, or begins to within five.
bool SomebodySleeps();

}  // namespace fake_wall_clock

#endif  // TESTS_FAKES_FAKEWALLCLOCK_H_
