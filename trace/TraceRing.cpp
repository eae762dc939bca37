#include "trace/TraceRing.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace zqotrc {
namespace {

constexpr std::uint32_t kKnownLayout = 1;

std::atomic_ref<std::uint32_t> Word(const Ring& ring, std::uint32_t index) {
  return std::atomic_ref<std::uint32_t>(ring.header[index]);
}

std::uint32_t AddUpToAllBits(std::uint32_t value, std::uint32_t more) {
  return more > UINT32_MAX - value ? UINT32_MAX : value + more;
}

}  // namespace

Ring RingAt(void* view, std::uint32_t size) {
  return {static_cast<std::uint32_t*>(view), static_cast<char*>(view) + kRingHeaderSize, size};
}

std::uint32_t AnnouncedRingSize(const void* view) {
  std::uint32_t size;
  std::memcpy(&size, static_cast<const std::uint32_t*>(view) + kRingSize, sizeof(size));
  return size <= kRingMaxSize ? size : 0;
}

void BeginRing(const Ring& ring) {
  std::memset(ring.header, 0, kRingHeaderSize);
  Word(ring, kRingSize) = ring.size;
  Word(ring, kRingEnabled) = 1;
  Word(ring, kRingAttached) = 1;
  Word(ring, kRingLayout) = kKnownLayout;
}

bool JoinRing(const Ring& ring) {
  if (Word(ring, kRingLayout) != kKnownLayout) return false;
  ++Word(ring, kRingAttached);
  return true;
}

void LeaveRing(const Ring& ring) { --Word(ring, kRingAttached); }

void StoreInRing(const Ring& ring, std::string_view bytes) {
  std::uint32_t offset = Word(ring, kRingOffset);
  if (offset > ring.size) offset %= ring.size;
  std::uint32_t wraps = 0;

  while (!bytes.empty()) {
    if (offset == ring.size) {
      offset = 0;
      ++wraps;
    }
    const std::size_t length = std::min<std::size_t>(bytes.size(), ring.size - offset);
    std::memcpy(ring.data + offset, bytes.data(), length);
    offset += static_cast<std::uint32_t>(length);
    bytes.remove_prefix(length);
  }

  if (wraps != 0) Word(ring, kRingWraps) = AddUpToAllBits(Word(ring, kRingWraps), wraps);
  Word(ring, kRingOffset) = offset;
}

}  // namespace zqotrc
