// The pattern matcher agrees with trying out every way, whatever pattern and value are; and a list
// of any bytes can be taken and asked.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <string>

#include "tests/fakes/trace/TraceModels.h"
#include "trace/TraceFilter.h"

namespace {

// Trying out every way takes exponential time.
constexpr std::size_t kModelPattern = 8;
constexpr std::size_t kModelValue = 16;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const auto mode =
      input.ConsumeBool() ? zqotrc::MatchMode::kWhole : zqotrc::MatchMode::kLeadingPart;
  const std::string pattern = input.ConsumeRandomLengthString(300);
  const std::string value = input.ConsumeRemainingBytesAsString();

  const bool matches = zqotrc::MatchesPattern(pattern, value.substr(0, 300), mode);
  if (pattern.size() <= kModelPattern && value.size() <= kModelValue &&
      matches != trace_models::Matches(pattern, value, mode)) {
    std::abort();
  }

  zqotrc::PatternList list;
  list.Assign(pattern);
  (void)list.Passes(value, mode);
  const bool hasPattern =
      pattern.substr(0, zqotrc::PatternList::kBufferSize - 1).find_first_not_of(' ') !=
      std::string::npos;
  if (hasPattern != (list.size() != 0)) std::abort();
  for (std::size_t index = 0; index < list.size(); ++index) {
    if (list[index].empty() || list[index].find(' ') != std::string_view::npos) std::abort();
  }
  return 0;
}
