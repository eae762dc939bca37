#ifndef TRACE_TRACERING_H_
#define TRACE_TRACERING_H_

/// The shared-memory ring: arithmetic over words that any other process may have written.
///
/// Memory: sixteen 32-bit words, six of them in use, then the data, then four spare bytes. Readers
/// attach to it live, so the bytes of a line stand there before the offset says so.

#include <cstdint>
#include <string_view>

namespace zqotrc {

inline constexpr std::uint32_t kRingHeaderSize = 64;
/// What the mapping takes beside the data.
inline constexpr std::uint32_t kRingOverhead = 68;
/// The largest data area whose mapping still has a 32-bit size.
inline constexpr std::uint32_t kRingMaxSize = UINT32_MAX - kRingOverhead;

/// A ring as one process sees it. The size is its own copy: the word in the header is the others'.
struct Ring {
  std::uint32_t* header = nullptr;
  char* data = nullptr;
  std::uint32_t size = 0;  ///< bytes of data, all of them mapped
};

/// The words of the header, by index.
inline constexpr std::uint32_t kRingOffset = 0;    ///< where the next byte goes; may equal the size
inline constexpr std::uint32_t kRingSize = 1;      ///< bytes of data
inline constexpr std::uint32_t kRingWraps = 2;     ///< how often writing began again; stays at most
inline constexpr std::uint32_t kRingEnabled = 3;   ///< 1
inline constexpr std::uint32_t kRingAttached = 4;  ///< processes that write
inline constexpr std::uint32_t kRingLayout = 5;    ///< 1; set last

/// The view of a mapping whose data area is `size` bytes.
Ring RingAt(void* view, std::uint32_t size);

/// The size that the header at `view` announces, or 0 if it can be no ring's.
std::uint32_t AnnouncedRingSize(const void* view);

/// Makes a zero-filled mapping a ring with one process attached.
void BeginRing(const Ring& ring);

/// \returns false, with nothing changed, when the layout is none that we know.
bool JoinRing(const Ring& ring);

void LeaveRing(const Ring& ring);

/// Stores the bytes at the write offset, beginning again at the start where the data ends. Of more
/// bytes than the ring has, the last ones remain.
void StoreInRing(const Ring& ring, std::string_view bytes);

}  // namespace zqotrc

#endif  // TRACE_TRACERING_H_
