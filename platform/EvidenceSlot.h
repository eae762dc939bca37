#ifndef PLATFORM_EVIDENCESLOT_H_
#define PLATFORM_EVIDENCESLOT_H_

#include <cstddef>
#include <cstdint>

namespace platform {

/// Crashes whose evidence is kept. Who makes the server crash again and again fills no disk.
inline constexpr std::size_t kEvidenceSlots = 8;

/// Where the next crash goes: the first free place, else that of the oldest.
///
/// \param written when each place was written, in any unit that grows; 0 for a free one
constexpr std::size_t ChooseEvidenceSlot(const std::uint64_t (&written)[kEvidenceSlots]) {
  std::size_t oldest = 0;
  for (std::size_t i = 0; i < kEvidenceSlots; ++i) {
    if (written[i] < written[oldest]) oldest = i;
  }
  return oldest;
}

}  // namespace platform

#endif  // PLATFORM_EVIDENCESLOT_H_
