// No text, number or clock makes a column longer than it is, and every line is what printf makes of
// its columns.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "trace/TraceRecord.h"

namespace {

using zqotrc::TraceFormat;
using zqotrc::TraceRecord;

template <std::size_t kSize>
void ExpectTerminated(const char (&column)[kSize]) {
  if (std::memchr(column, 0, kSize) == nullptr) std::abort();
}

std::string Printed(TraceFormat format, const TraceRecord& r, const zqotrc::TraceMoment& moment) {
  char line[1000] = "";
  switch (format) {
    case TraceFormat::kShort:
      (void)std::snprintf(line, sizeof(line), "%s %s %s %s %s%s %s %s", r.letter, r.traceId,
                          r.level, r.component, r.code, r.extra, r.function, r.text);
      break;
    case TraceFormat::kLong:
      (void)std::snprintf(line, sizeof(line), "%s %s P%09dT%09d %s %s %s%s %s %s,%s %s %s",
                          r.letter, r.traceId, moment.processId, moment.threadId, r.level,
                          r.component, r.code, r.extra, r.source.time, r.source.file, r.source.line,
                          r.function, r.text);
      break;
    case TraceFormat::kTime:
      (void)std::snprintf(line, sizeof(line), "%s %s %s %s %s%s %s %s %s", r.letter, r.traceId,
                          r.level, r.component, r.code, r.extra,
                          r.seconds + std::strlen(r.seconds) - 12, r.function, r.text);
      break;
    case TraceFormat::kText:
      (void)std::snprintf(line, sizeof(line), "%s %s ", r.function, r.text);
      break;
  }
  return line;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const auto format = static_cast<TraceFormat>(input.ConsumeIntegralInRange(1, 4));
  zqotrc::TraceMoment moment = {};
  moment.hasLocalTime = input.ConsumeBool();
  for (std::int32_t* part : {&moment.hour, &moment.minute, &moment.second, &moment.millisecond,
                             &moment.processId, &moment.threadId}) {
    *part = input.ConsumeIntegral<std::int32_t>();
  }
  moment.counter = input.ConsumeIntegral<std::int64_t>();
  moment.frequency = input.ConsumeIntegral<std::int64_t>();
  if (moment.frequency == 0) moment.frequency = 1;
  const auto level = input.ConsumeIntegral<std::uint32_t>();
  const auto code = input.ConsumeIntegral<std::uint32_t>();
  const auto extra = input.ConsumeIntegral<std::uint16_t>();
  const auto line = input.ConsumeIntegral<std::uint32_t>();
  const std::string traceId = input.ConsumeRandomLengthString(40);
  const std::string component = input.ConsumeRandomLengthString(40);
  const std::string function = input.ConsumeRandomLengthString(200);
  const std::string file = input.ConsumeRandomLengthString(300);
  const std::string text = input.ConsumeRemainingBytesAsString();

  TraceRecord record;
  std::memset(&record, '#', sizeof(record));
  std::strcpy(record.letter, "L");
  zqotrc::BuildRecord(
      record, format, traceId,
      {function.c_str(), level, component.c_str(), code, extra, file.c_str(), line, text.c_str()},
      moment);
  ExpectTerminated(record.letter);
  ExpectTerminated(record.traceId);
  ExpectTerminated(record.component);
  ExpectTerminated(record.level);
  ExpectTerminated(record.code);
  ExpectTerminated(record.extra);
  ExpectTerminated(record.function);
  ExpectTerminated(record.text);
  if (format == TraceFormat::kLong) {
    ExpectTerminated(record.source.time);
    ExpectTerminated(record.source.file);
    ExpectTerminated(record.source.line);
  }
  if (format == TraceFormat::kTime) ExpectTerminated(record.seconds);

  char buffer[zqotrc::kLineBufferSize];
  const std::string_view laidOut = zqotrc::FormatLine(buffer, format, record, moment);
  if (laidOut.size() >= sizeof(buffer) || buffer[laidOut.size()] != '\0') std::abort();
  if (laidOut != Printed(format, record, moment)) std::abort();
  return 0;
}
