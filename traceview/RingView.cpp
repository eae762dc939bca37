#include "traceview/RingView.h"

#include <algorithm>
#include <cstring>

#include "trace/TraceRecord.h"
#include "trace/TraceRing.h"

namespace traceview {
namespace {

constexpr std::uint32_t kKnownLayout = 1;
constexpr int kAttempts = 8;
/// No line is longer, so a longer run without a line end is none.
constexpr std::size_t kLongestLine = zqotrc::kLineBufferSize + 2;

std::uint32_t Word(std::span<const std::uint8_t> mapped, std::uint32_t index) {
  // Once, and as a whole: others write it meanwhile.
  return __atomic_load_n(reinterpret_cast<const std::uint32_t*>(mapped.data()) + index,
                         __ATOMIC_ACQUIRE);
}

bool ReadState(std::span<const std::uint8_t> mapped, RingState& state, std::string& problem) {
  if (mapped.size() < zqotrc::kRingOverhead) {
    problem = "the shared memory is too small for a ring";
    return false;
  }
  state = {Word(mapped, zqotrc::kRingOffset),   Word(mapped, zqotrc::kRingSize),
           Word(mapped, zqotrc::kRingWraps),    Word(mapped, zqotrc::kRingEnabled),
           Word(mapped, zqotrc::kRingAttached), Word(mapped, zqotrc::kRingLayout)};
  if (state.layout != kKnownLayout) {
    problem = "the ring has the layout " + std::to_string(state.layout) + ", only 1 is known";
  } else if (state.size == 0 || state.size > mapped.size() - zqotrc::kRingHeaderSize) {
    problem = "the ring says that it has " + std::to_string(state.size) + " bytes, in " +
              std::to_string(mapped.size()) + " of shared memory";
  } else if (state.offset > state.size) {
    problem = "the ring's write offset, " + std::to_string(state.offset) +
              ", lies beyond its size, " + std::to_string(state.size);
  }
  return problem.empty();
}

/// Bytes written since `before`; the wrap count may stand still at its largest.
std::uint64_t Written(const RingState& before, const RingState& after) {
  const std::uint64_t size = after.size;
  if (before.wraps == UINT32_MAX && after.wraps == UINT32_MAX) {
    return (after.offset + size - before.offset) % size;
  }
  const std::uint64_t from = before.wraps * size + before.offset;
  const std::uint64_t to = after.wraps * size + after.offset;
  // Somebody set the ring back: all that stands in it is new.
  return to < from ? to : to - from;
}

/// The `length` bytes in front of the write offset, in order. At most the size.
std::string BytesBefore(std::span<const std::uint8_t> mapped, const RingState& state,
                        std::uint64_t length) {
  const auto* const data = reinterpret_cast<const char*>(mapped.data()) + zqotrc::kRingHeaderSize;
  const std::uint64_t atEnd = std::min<std::uint64_t>(length, state.offset);
  std::string bytes;
  if (length > atEnd) {
    bytes.assign(data + state.size - (length - atEnd), static_cast<std::size_t>(length - atEnd));
  }
  bytes.append(data + state.offset - atEnd, static_cast<std::size_t>(atEnd));
  return bytes;
}

/// Copies what was written last. Others may overwrite the oldest of it meanwhile, so that it is
/// copied again; should they never pause, what they may have touched is left out.
/// \param wanted bytes, by the state; more than can be had is cut to what there is
template <typename Wanted>
bool CopyBytes(std::span<const std::uint8_t> mapped, RingState& state, Wanted wanted,
               std::string& bytes, std::string& problem) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (!ReadState(mapped, state, problem)) return false;
    const std::uint64_t length = std::min<std::uint64_t>(wanted(state), state.size);
    bytes = BytesBefore(mapped, state, length);
    RingState after;
    if (!ReadState(mapped, after, problem)) return false;
    if (after.size == state.size && after.offset == state.offset && after.wraps == state.wraps) {
      return true;
    }
    const std::uint64_t room = state.size - length;
    const std::uint64_t overwritten = Written(state, after) + kLongestLine;
    if (overwritten > room) {
      bytes.erase(
          0, static_cast<std::size_t>(std::min<std::uint64_t>(overwritten - room, bytes.size())));
    }
  }
  return true;
}

}  // namespace

bool ReadRing(std::span<const std::uint8_t> mapped, RingContent& content, std::string& problem) {
  const auto all = [](const RingState& state) {
    return state.wraps != 0 ? state.size : state.offset;
  };
  if (!CopyBytes(mapped, content.state, all, content.text, problem)) return false;
  content.beginsLate = content.state.wraps != 0 || content.text.size() < content.state.offset;
  if (!content.beginsLate) return true;
  // The oldest line is most often overwritten in part.
  const std::size_t end = content.text.find('\n');
  content.text.erase(0, end == std::string::npos ? content.text.size() : end + 1);
  return true;
}

RingFollower::RingFollower(const RingContent& content) : seen_(content.state) {}

bool RingFollower::Poll(std::span<const std::uint8_t> mapped, News& news, std::string& problem) {
  news = {};
  RingState state;
  std::uint64_t written = 0;
  const auto since = [&](const RingState& now) { return written = Written(seen_, now); };
  std::string bytes;
  if (!CopyBytes(mapped, state, since, bytes, problem)) return false;
  news.lost = written - bytes.size();
  if (news.lost != 0) {
    partial_.clear();
    skipping_ = true;
  }
  seen_ = state;
  TakeLines(bytes, news);
  return true;
}

void RingFollower::TakeLines(std::string_view bytes, News& news) {
  for (;;) {
    const std::size_t end = bytes.find('\n');
    partial_ += bytes.substr(0, std::min(end, bytes.size()));
    const bool tooLong = partial_.size() > kLongestLine * 4;
    if (end == std::string_view::npos && !tooLong) return;
    if (!partial_.empty() && partial_.back() == '\r') partial_.pop_back();
    if (skipping_) {
      news.lost += partial_.size();
    } else {
      news.lines.push_back(partial_);
    }
    skipping_ = false;
    partial_.clear();
    if (end == std::string_view::npos) return;
    bytes.remove_prefix(end + 1);
  }
}

}  // namespace traceview
