#ifndef TRACEVIEW_RINGVIEW_H_
#define TRACEVIEW_RINGVIEW_H_

/// The trace ring as its reader sees it: memory that other processes write meanwhile, and whose
/// words any of them may have written. Nothing outside the mapped bytes is touched whatever they
/// say.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace traceview {

/// The words of the header; see trace/TraceRing.h.
struct RingState {
  std::uint32_t offset = 0;
  std::uint32_t size = 0;
  std::uint32_t wraps = 0;
  std::uint32_t enabled = 0;
  std::uint32_t attached = 0;
  std::uint32_t layout = 0;
};

/// What stands in the ring.
struct RingContent {
  RingState state;
  std::string text;         ///< whole lines, the oldest first, with their line ends
  bool beginsLate = false;  ///< older lines were overwritten
};

/// Copies the lines out of the mapped bytes of a ring.
/// \returns false with a sentence in `problem` when this is no ring that we know.
bool ReadRing(std::span<const std::uint8_t> mapped, RingContent& content, std::string& problem);

/// Follows a ring by its offset and wrap count.
class RingFollower {
 public:
  struct News {
    std::vector<std::string> lines;  ///< without line ends
    std::uint64_t lost = 0;          ///< bytes that were overwritten before they could be read
  };

  /// Begins behind what `content` holds.
  explicit RingFollower(const RingContent& content);

  /// \returns false with a sentence in `problem` when the ring is none any more.
  bool Poll(std::span<const std::uint8_t> mapped, News& news, std::string& problem);

 private:
  void TakeLines(std::string_view bytes, News& news);

  RingState seen_;
  std::string partial_;
  bool skipping_ = false;  ///< bytes were lost: what comes up to the next line end is half a line
};

}  // namespace traceview

#endif  // TRACEVIEW_RINGVIEW_H_
