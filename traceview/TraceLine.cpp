#include "traceview/TraceLine.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace traceview {
namespace {

constexpr std::size_t kTraceIdWidth = 8;
constexpr std::size_t kLevelWidth = 2;
constexpr std::size_t kComponentWidth = 3;
constexpr std::size_t kCodeAndExtraWidth = 8;  ///< whatever they hold, they fill it together
constexpr std::size_t kTimeWidth = 12;
constexpr std::size_t kFileWidth = 12;
constexpr std::size_t kLineDigits = 5;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsHex(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(),
                                      [](char c) { return IsDigit(c) || (c >= 'a' && c <= 'f'); });
}

std::string_view WithoutBlanks(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(' ');
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

/// Walks over a line from column to column. Each step is false, for good, once one failed.
class Columns {
 public:
  explicit Columns(std::string_view line) : rest_(line) {}

  bool Take(char letter) {
    if (rest_.empty() || rest_[0] != letter) return false;
    rest_.remove_prefix(1);
    return true;
  }

  bool Take(std::size_t width, std::string_view& column) {
    if (rest_.size() < width) return false;
    column = rest_.substr(0, width);
    rest_.remove_prefix(width);
    return true;
  }

  /// A number as the facility writes it: at least so many characters, filled with zeros.
  bool TakeNumber(std::size_t fewest, std::uint32_t& number) {
    std::int64_t wide = 0;
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), wide);
    const auto length = static_cast<std::size_t>(end - rest_.data());
    if (error != std::errc() || length < fewest) return false;
    if (wide < INT32_MIN || wide > INT32_MAX) return false;
    number = static_cast<std::uint32_t>(wide);
    rest_.remove_prefix(length);
    return true;
  }

  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

bool TakeCodeAndExtra(Columns& columns, TraceLine& line) {
  std::string_view both;
  if (!columns.Take(kCodeAndExtraWidth, both)) return false;
  if (WithoutBlanks(both).empty()) return true;
  if (IsHex(both)) {
    line.code = both;
    return true;
  }
  const std::string_view code = both.substr(0, 2);
  const std::string_view extra = both.substr(4);
  if (code != " 0" && code != " 1" && code != "-1") return false;
  if (both.substr(2, 2) != "  " || !IsHex(extra)) return false;
  line.code = WithoutBlanks(code);
  line.extra = extra;
  return true;
}

bool ReadDigits(std::string_view text, std::int64_t& number) {
  number = 0;
  for (const char c : text) {
    if (!IsDigit(c)) return false;
    number = number * 10 + (c - '0');
  }
  return true;
}

std::int64_t TimeOfDay(std::string_view time) {
  std::int64_t hour, minute, second, milli;
  if (time[2] != ':' || time[5] != ':' || time[8] != ',') return -1;
  if (!ReadDigits(time.substr(0, 2), hour) || !ReadDigits(time.substr(3, 2), minute) ||
      !ReadDigits(time.substr(6, 2), second) || !ReadDigits(time.substr(9), milli)) {
    return -1;
  }
  // A second may be the 60th: the clock of the machine may know leap seconds.
  if (hour > 23 || minute > 59 || second > 60) return -1;
  return (((hour * 60 + minute) * 60 + second) * 1000 + milli) * 1000;
}

/// Twelve characters, the last of a longer number: "00012.345678".
std::int64_t CounterTime(std::string_view time) {
  constexpr std::size_t kPoint = 5;
  std::int64_t seconds, micros;
  if (time[kPoint] != '.' || !ReadDigits(time.substr(0, kPoint), seconds) ||
      !ReadDigits(time.substr(kPoint + 1), micros)) {
    return -1;
  }
  return seconds * 1000000 + micros;
}

/// "file,line": the name may hold commas itself, the number never is shorter than five digits.
bool TakePlace(Columns& columns, TraceLine& line) {
  const std::string_view rest = columns.rest();
  for (std::size_t comma = 0; comma <= kFileWidth && comma < rest.size(); ++comma) {
    if (rest[comma] != ',') continue;
    Columns behind(rest.substr(comma + 1));
    if (!behind.TakeNumber(kLineDigits, line.line) || !behind.Take(' ')) continue;
    line.file = rest.substr(0, comma);
    columns = behind;
    return true;
  }
  return false;
}

/// Names of functions hold no blank inside, so the name is the first word. One blank parts it from
/// the text; where the name ends in a colon, a second one is the name's own ("Reg_SetValue: "
/// against "Reg_DelKey:"). The few texts that begin with a blank belong to names of the first kind.
void SplitFunction(std::string_view both, TraceLine& line) {
  const std::size_t end = std::min(both.find(' '), both.size());
  std::string_view name = both.substr(0, end);
  std::string_view text = both.substr(std::min(end + 1, both.size()));
  if (!name.empty() && name.back() == ':') {
    name.remove_suffix(1);
    if (!text.empty() && text[0] == ' ') text.remove_prefix(1);
  }
  line.function = name;
  line.text = text;
}

bool TakeTime(Columns& columns, Layout layout, TraceLine& line) {
  std::string_view time;
  if (!columns.Take(kTimeWidth, time) || !columns.Take(' ')) return false;
  line.time = time;
  line.microseconds = layout == Layout::kLong ? TimeOfDay(time) : CounterTime(time);
  return line.microseconds >= 0 || layout == Layout::kTime;
}

bool ParseRecord(std::string_view raw, char letter, Layout layout, TraceLine& line) {
  Columns columns(raw);
  std::string_view traceId, level, component;
  if (!columns.Take(letter) || !columns.Take(' ')) return false;
  if (!columns.Take(kTraceIdWidth, traceId) || !columns.Take(' ')) return false;
  if (layout == Layout::kLong) {
    constexpr std::size_t kDigits = 9;
    if (!columns.Take('P') || !columns.TakeNumber(kDigits, line.process)) return false;
    if (!columns.Take('T') || !columns.TakeNumber(kDigits, line.thread)) return false;
    if (!columns.Take(' ')) return false;
  }
  if (!columns.Take(kLevelWidth, level) || !columns.Take(' ')) return false;
  if (!columns.Take(kComponentWidth, component) || !columns.Take(' ')) return false;
  if (!TakeCodeAndExtra(columns, line) || !columns.Take(' ')) return false;
  if (layout != Layout::kShort && !TakeTime(columns, layout, line)) return false;
  if (layout == Layout::kLong && !TakePlace(columns, line)) return false;

  line.layout = layout;
  line.traceId = WithoutBlanks(traceId);
  line.level = level;
  line.component = WithoutBlanks(component);
  SplitFunction(columns.rest(), line);
  return true;
}

/// The text layout has nothing to know it by but the blank at its end, and the colon that most
/// names of functions end in.
bool ParseText(std::string_view raw, TraceLine& line) {
  const std::size_t blank = raw.find(' ');
  if (blank == std::string_view::npos || blank == 0) return false;
  if (raw.back() == ' ' && blank + 1 < raw.size()) {
    raw.remove_suffix(1);
  } else if (raw[blank - 1] != ':') {
    return false;
  }
  line.layout = Layout::kText;
  SplitFunction(raw, line);
  return true;
}

constexpr LevelCodeInfo kLevels[] = {
    {"##", 0, "none"},
    {"PA", 1, "bit 0"},
    {"PX", 2, "bit 1"},
    {"PE", 4, "bit 2"},
    {"FA", 8, "entry"},
    {"FR", 16, "error"},
    {"FW", 32, "bit 5"},
    {"FM", 64, "progress"},
    {"FE", 128, "result"},
    {"L7", 0x01000000, "bit 24"},
    {"AI", 0x10000000, "bit 28"},
    {"L2", 0x20000000, "bit 29"},
    {"L4", 0x40000000, "bit 30"},
    {"--", 0xFFFFFFFF, "all"},
    {"??", 0xFFFFFFFF, "several"},
};

}  // namespace

TraceLine ParseTraceLine(std::string_view raw) {
  static constexpr struct {
    char letter;
    Layout layout;
  } kRecords[] = {{'S', Layout::kShort}, {'L', Layout::kLong}, {'T', Layout::kTime}};
  for (const auto& record : kRecords) {
    TraceLine line;
    if (ParseRecord(raw, record.letter, record.layout, line)) return line;
  }
  TraceLine line;
  if (raw.starts_with("E ")) {
    line.layout = Layout::kError;
    line.text = raw.substr(2);
  } else if (!ParseText(raw, line)) {
    line.text = raw;
  }
  return line;
}

std::span<const LevelCodeInfo> LevelCodes() { return kLevels; }

std::string_view LevelName(std::string_view code) {
  const auto* const found = std::find_if(std::begin(kLevels), std::end(kLevels),
                                         [=](const auto& known) { return known.code == code; });
  return found == std::end(kLevels) ? code : found->name;
}

}  // namespace traceview
