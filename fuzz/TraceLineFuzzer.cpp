// No line makes the reader fault, and what the writer lays out comes back column by column,
// whatever its texts hold.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "trace/TraceRecord.h"
#include "traceview/TraceLine.h"

namespace {

using traceview::Layout;
using zqotrc::TraceFormat;

void Expect(bool holds) {
  if (!holds) std::abort();
}

std::string Trimmed(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  return std::string(text);
}

// As names of functions are: no blank inside; a colon, or a colon and a blank, at the end.
std::string FunctionName(FuzzedDataProvider& input) {
  std::string name = input.ConsumeRandomLengthString(50);
  name.erase(std::remove_if(name.begin(), name.end(), [](char c) { return c == ' ' || c == '\0'; }),
             name.end());
  while (name.ends_with(':')) name.pop_back();
  return name + (input.ConsumeBool() ? ":" : ": ");
}

void RoundTrip(FuzzedDataProvider& input) {
  const auto format = static_cast<TraceFormat>(input.ConsumeIntegralInRange(1, 3));
  zqotrc::TraceMoment moment = {};
  moment.hasLocalTime = input.ConsumeBool();
  moment.hour = input.ConsumeIntegralInRange(0, 23);
  moment.minute = input.ConsumeIntegralInRange(0, 59);
  moment.second = input.ConsumeIntegralInRange(0, 59);
  moment.millisecond = input.ConsumeIntegralInRange(0, 999);
  moment.counter = input.ConsumeIntegralInRange<std::int64_t>(0, 1ll << 50);
  moment.frequency = 10000000;
  moment.processId = input.ConsumeIntegral<std::int32_t>();
  moment.threadId = input.ConsumeIntegral<std::int32_t>();
  const std::string component = input.ConsumeRandomLengthString(5);
  std::string file = input.ConsumeRandomLengthString(20);
  // A name with a comma and a number would end there.
  std::replace(file.begin(), file.end(), ',', '.');
  const std::string function = FunctionName(input);
  const std::uint32_t level = 1u << input.ConsumeIntegralInRange(0, 31);
  const auto code = input.ConsumeIntegral<std::uint32_t>();
  const auto lineNumber = input.ConsumeIntegralInRange<std::uint32_t>(0, 1 << 30);
  std::string text = input.ConsumeRemainingBytesAsString();
  // A blank in front would belong to the name.
  if (text.starts_with(' ')) text[0] = 'x';

  zqotrc::TraceRecord record = {};
  zqotrc::BuildRecord(
      record, format, "QORLIXSRV64",
      {function.c_str(), level, component.c_str(), code, 7, file.c_str(), lineNumber, text.c_str()},
      moment);
  char buffer[zqotrc::kLineBufferSize];
  const std::string_view laidOut = zqotrc::FormatLine(buffer, format, record, moment);
  const traceview::TraceLine line = traceview::ParseTraceLine(laidOut);

  Expect(line.layout == (format == TraceFormat::kShort  ? Layout::kShort
                         : format == TraceFormat::kLong ? Layout::kLong
                                                        : Layout::kTime));
  Expect(line.level == record.level);
  Expect(line.component == Trimmed(record.component));
  Expect(line.code == Trimmed(record.code));
  Expect(line.extra == Trimmed(record.extra));
  Expect(line.function == function.substr(0, function.rfind(':')));
  if (laidOut.size() + 1 < sizeof(buffer)) Expect(line.text == record.text);
  if (format != TraceFormat::kLong) return;
  Expect(line.process == static_cast<std::uint32_t>(moment.processId));
  Expect(line.thread == static_cast<std::uint32_t>(moment.threadId));
  Expect(line.time == record.source.time);
  Expect(line.microseconds >= 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  if (input.ConsumeBool()) {
    RoundTrip(input);
  } else {
    const std::string raw = input.ConsumeRemainingBytesAsString();
    const traceview::TraceLine line = traceview::ParseTraceLine(raw);
    if (line.layout == Layout::kUnknown) Expect(line.text == raw);
    (void)traceview::LevelName(line.level);
  }
  return 0;
}
