#include "trace/TraceRecord.h"

#include <algorithm>

#include "trace/TraceText.h"

namespace zqotrc {
namespace {

constexpr std::uint32_t kAllBits = 0xFFFFFFFF;
/// Levels whose lines show a code: errors of the two error kinds.
constexpr std::uint32_t kLevelsWithCode = 128 | 4;
constexpr std::size_t kShownSeconds = 12;

struct LevelName {
  std::uint32_t level;
  std::string_view code;
};
constexpr LevelName kLevelNames[] = {
    {0, "##"},          {1, "PA"},          {2, "PX"},          {4, "PE"},
    {8, "FA"},          {16, "FR"},         {32, "FW"},         {64, "FM"},
    {128, "FE"},        {0x01000000, "L7"}, {0x10000000, "AI"}, {0x20000000, "L2"},
    {0x40000000, "L4"}, {kAllBits, "--"},
};

void PutCodeAndExtra(TraceRecord& record, const TraceCall& call) {
  CutText code(record.code);
  CutText extra(record.extra);
  if ((call.level & kLevelsWithCode) == 0) {
    code.Add("  ");
    extra.Add("      ");
  } else if (call.code != 0 && call.code != 1 && call.code != kAllBits) {
    code.AddHex(call.code, /*width=*/8);
  } else {
    code.Add(call.code == kAllBits ? "-1" : call.code == 1 ? " 1" : " 0");
    extra.Add("  ").AddHex(call.extra, /*width=*/4);
  }
}

void PutTimeOfDay(char (&column)[13], const TraceMoment& moment) {
  CutText time(column);
  if (!moment.hasLocalTime) {
    time.Add("00:00:00,000");
    return;
  }
  time.AddDecimal(moment.hour, 2).Add(':').AddDecimal(moment.minute, 2).Add(':');
  time.AddDecimal(moment.second, 2).Add(',').AddDecimal(moment.millisecond, 3);
}

void PutSource(TraceRecord::Source& source, const TraceCall& call, const TraceMoment& moment) {
  PutTimeOfDay(source.time, moment);
  const std::string_view path = call.file;
  CutText(source.file).Add(path.substr(path.rfind('\\') + 1).substr(0, sizeof(source.file) - 1));
  CutText(source.line).AddDecimal(static_cast<std::int32_t>(call.line), /*width=*/5);
}

char Letter(TraceFormat format) {
  return format == TraceFormat::kShort ? 'S' : format == TraceFormat::kTime ? 'T' : 'L';
}

}  // namespace

std::string_view LevelCode(std::uint32_t level) {
  const auto* const found =
      std::find_if(std::begin(kLevelNames), std::end(kLevelNames),
                   [=](const LevelName& name) { return name.level == level; });
  return found == std::end(kLevelNames) ? "??" : found->code;
}

void BuildRecord(TraceRecord& record, TraceFormat format, std::string_view traceId,
                 const TraceCall& call, const TraceMoment& moment) {
  if (format != TraceFormat::kText) CutText(record.letter).Add(Letter(format));
  CutText(record.traceId).AddRightAligned(traceId, /*width=*/8);
  CutText(record.component).AddRightAligned(call.component, /*width=*/3);
  CutText(record.level).Add(LevelCode(call.level));
  PutCodeAndExtra(record, call);
  if (format == TraceFormat::kLong) PutSource(record.source, call, moment);
  if (format == TraceFormat::kTime) {
    (void)FormatCut(record.seconds, sizeof(record.seconds), "%027.6f",
                    static_cast<double>(moment.counter) / static_cast<double>(moment.frequency));
  }
  CutText(record.function).Add(call.function);
  CutText(record.text).Add(call.text);
}

std::string_view FormatLine(char (&line)[kLineBufferSize], TraceFormat format,
                            const TraceRecord& record, const TraceMoment& moment) {
  CutText out(line);
  if (format == TraceFormat::kText) {
    return out.Add(record.function).Add(' ').Add(record.text).Add(' ').view();
  }

  out.Add(record.letter).Add(' ').Add(record.traceId).Add(' ');
  if (format == TraceFormat::kLong) {
    out.Add('P').AddDecimal(moment.processId, 9).Add('T').AddDecimal(moment.threadId, 9).Add(' ');
  }
  out.Add(record.level).Add(' ').Add(record.component).Add(' ').Add(record.code).Add(record.extra);
  if (format == TraceFormat::kLong) {
    const TraceRecord::Source& source = record.source;
    out.Add(' ').Add(source.time).Add(' ').Add(source.file).Add(',').Add(source.line);
  } else if (format == TraceFormat::kTime) {
    const std::string_view seconds = record.seconds;
    out.Add(' ').Add(seconds.substr(seconds.size() - std::min(seconds.size(), kShownSeconds)));
  }
  return out.Add(' ').Add(record.function).Add(' ').Add(record.text).view();
}

}  // namespace zqotrc
