// Whatever others write into a ring's words and data, its reader stays within the mapped bytes and
// within the ring's size; and lines that are stored between two looks come out as they went in.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "trace/TraceRing.h"
#include "traceview/RingView.h"

namespace {

void Expect(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const auto ringSize = input.ConsumeIntegralInRange<std::uint32_t>(1, 2000);
  std::vector<std::uint32_t> words((ringSize + zqotrc::kRingOverhead + 3) / 4);
  const zqotrc::Ring ring = zqotrc::RingAt(words.data(), ringSize);
  const std::span<const std::uint8_t> mapped(reinterpret_cast<const std::uint8_t*>(words.data()),
                                             words.size() * 4);
  zqotrc::BeginRing(ring);

  traceview::RingContent content;
  std::string problem;
  Expect(traceview::ReadRing(mapped, content, problem));
  traceview::RingFollower follower(content);
  bool honest = true;
  while (input.remaining_bytes() > 0) {
    if (input.ConsumeBool()) {
      words[input.ConsumeIntegralInRange<std::uint32_t>(0, 15)] =
          input.ConsumeIntegral<std::uint32_t>();
      honest = false;
    }
    std::string line = input.ConsumeRandomLengthString(500);
    for (char& c : line) {
      if (c == '\n' || c == '\r') c = '.';
    }
    // The writer keeps to its own size, whatever the header says.
    zqotrc::StoreInRing(ring, line + "\r\n");

    problem.clear();
    traceview::RingContent now;
    if (traceview::ReadRing(mapped, now, problem)) {
      Expect(now.text.size() <= mapped.size());
      Expect(now.text.empty() || !honest || now.text.back() == '\n');
    } else {
      Expect(!problem.empty() && !honest);
    }
    problem.clear();
    traceview::RingFollower::News news;
    const bool followed = follower.Poll(mapped, news, problem);
    Expect(followed || !honest);
    if (honest && line.size() + 2 < ringSize) {
      Expect(news.lost == 0 && news.lines.size() == 1 && news.lines[0] == line);
    }
    if (honest && line.size() + 2 >= ringSize) return 0;
  }
  return 0;
}
