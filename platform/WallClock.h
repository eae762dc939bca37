#ifndef PLATFORM_WALLCLOCK_H_
#define PLATFORM_WALLCLOCK_H_

#include <cstdint>

namespace platform {

/// One second in the units of WallClock.
inline constexpr std::int64_t kTicksPerSecond = 10000000;

/// The time of day in steps of 100 ns. It jumps when somebody sets the clock.
std::int64_t WallClock();

void SleepMilliseconds(std::uint32_t milliseconds);

}  // namespace platform

#endif  // PLATFORM_WALLCLOCK_H_
