// The ring does what a ring does that is written byte by byte, whatever others write into its
// header between two lines.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/fakes/trace/TraceModels.h"
#include "trace/TraceRing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const auto ringSize = input.ConsumeIntegralInRange<std::uint32_t>(1, 2000);
  std::vector<std::uint32_t> words((ringSize + zqotrc::kRingHeaderSize + 3) / 4);
  const zqotrc::Ring ring = zqotrc::RingAt(words.data(), ringSize);
  zqotrc::BeginRing(ring);
  trace_models::Ring model(ringSize);

  while (input.remaining_bytes() > 0) {
    if (input.ConsumeBool()) {
      const auto index = input.ConsumeIntegralInRange<std::uint32_t>(0, 15);
      words[index] = input.ConsumeIntegral<std::uint32_t>();
      model.offset = words[zqotrc::kRingOffset];
      model.wraps = words[zqotrc::kRingWraps];
    }
    const std::string line = input.ConsumeRandomLengthString(500);
    zqotrc::StoreInRing(ring, line);
    model.Store(line);
    if (std::string_view(ring.data, ringSize) != model.data ||
        words[zqotrc::kRingOffset] != model.offset || words[zqotrc::kRingWraps] != model.wraps) {
      std::abort();
    }
  }

  const std::uint32_t announced = zqotrc::AnnouncedRingSize(words.data());
  if (announced + std::uint64_t{zqotrc::kRingOverhead} > UINT32_MAX) std::abort();
  if (zqotrc::JoinRing(ring)) zqotrc::LeaveRing(ring);
  return 0;
}
