#include "traceview/TraceQuery.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "platform/AsciiCase.h"
#include "trace/TraceFilter.h"

namespace traceview {
namespace {

constexpr std::int64_t kSecond = 1000000;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;
/// Lines of several processes may change places by a little; only a longer way back is midnight.
constexpr std::int64_t kDisorder = kHour;

std::string UpperCased(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(), platform::UpperCase);
  return upper;
}

bool ParseLevel(std::string_view word, std::uint32_t& bits) {
  for (const LevelCodeInfo& known : LevelCodes()) {
    if (known.code != "??" && (platform::EqualsIgnoringCase(word, known.name) ||
                               platform::EqualsIgnoringCase(word, known.code))) {
      bits = known.bits;
      return true;
    }
  }
  const bool hex = word.starts_with("0x") || word.starts_with("0X");
  if (hex) word.remove_prefix(2);
  const auto [end, error] =
      std::from_chars(word.data(), word.data() + word.size(), bits, hex ? 16 : 10);
  return error == std::errc() && end == word.data() + word.size();
}

bool MatchesFunction(const std::string& pattern, const std::string& function) {
  return pattern.empty() ||
         zqotrc::MatchesPattern(pattern, UpperCased(function), zqotrc::MatchMode::kWhole);
}

bool MatchesText(const std::string& pattern, const std::string& text) {
  return pattern.empty() ||
         zqotrc::MatchesPattern(pattern, UpperCased(text), zqotrc::MatchMode::kLeadingPart);
}

bool PassesLevel(std::uint32_t levels, const TraceLine& line) {
  if (levels == 0xFFFFFFFF || line.level.empty()) return true;
  for (const LevelCodeInfo& known : LevelCodes()) {
    if (known.code != line.level || known.bits == 0xFFFFFFFF) continue;
    // A level without a bit is asked for by asking for none.
    return known.bits == levels || (known.bits & levels) != 0;
  }
  return true;
}

bool TakeDigits(std::string_view& words, std::size_t digits, std::int64_t most,
                std::int64_t& number) {
  if (words.size() < digits) return false;
  const std::string_view part = words.substr(0, digits);
  if (!std::all_of(part.begin(), part.end(), [](char c) { return c >= '0' && c <= '9'; })) {
    return false;
  }
  (void)std::from_chars(part.data(), part.data() + part.size(), number);
  words.remove_prefix(digits);
  return number <= most;
}

bool ParseTimeOfDay(std::string_view words, std::int64_t& microseconds) {
  std::int64_t hour = 0;
  std::int64_t minute = 0;
  std::int64_t second = 0;
  std::int64_t milli = 0;
  const auto take = [&words](std::string_view separators) {
    if (words.empty() || separators.find(words[0]) == std::string_view::npos) return false;
    words.remove_prefix(1);
    return true;
  };
  if (!TakeDigits(words, 2, 23, hour) || !take(":") || !TakeDigits(words, 2, 59, minute)) {
    return false;
  }
  if (!words.empty()) {
    if (!take(":") || !TakeDigits(words, 2, 59, second)) return false;
    if (!words.empty() && (!take(",.") || !TakeDigits(words, 3, 999, milli))) return false;
  }
  microseconds = ((hour * 60 + minute) * 60 + second) * kSecond + milli * 1000;
  return words.empty();
}

bool ParseSpan(std::string_view words, std::int64_t& microseconds) {
  std::uint32_t count = 0;
  const auto [end, error] = std::from_chars(words.data(), words.data() + words.size(), count);
  if (error != std::errc()) return false;
  const std::string_view unit = words.substr(static_cast<std::size_t>(end - words.data()));
  std::int64_t each = 0;
  if (unit == "s") each = kSecond;
  if (unit == "m") each = kMinute;
  if (unit == "h") each = kHour;
  if (unit == "d") each = kDay;
  microseconds = each * count;
  return each != 0 && count != 0;
}

}  // namespace

bool ParseLevels(std::string_view words, std::uint32_t& levels) {
  levels = 0;
  while (true) {
    const std::size_t end = std::min(words.find(','), words.size());
    std::uint32_t bits = 0;
    if (!ParseLevel(words.substr(0, end), bits)) return false;
    levels |= bits;
    if (end == words.size()) return true;
    words.remove_prefix(end + 1);
  }
}

std::string PatternOf(std::string_view words) { return UpperCased(words); }

bool Passes(const TraceQuery& query, const TraceLine& line) {
  return PassesLevel(query.levels, line) && MatchesFunction(query.function, line.function) &&
         MatchesText(query.text, line.text);
}

bool ParseSince(std::string_view words, Since& since) {
  since.isTimeOfDay = words.find(':') != std::string_view::npos;
  return since.isTimeOfDay ? ParseTimeOfDay(words, since.microseconds)
                           : ParseSpan(words, since.microseconds);
}

std::ptrdiff_t FirstSince(std::span<const TraceLine> lines, const Since& since, std::int64_t now) {
  std::int64_t from = now - since.microseconds;
  if (since.isTimeOfDay) from = since.microseconds - (since.microseconds <= now ? 0 : kDay);

  // Backwards from the last line, whose day is known, over each midnight on the way.
  bool any = false;
  std::int64_t day = 0;
  std::int64_t next = 0;
  auto first = static_cast<std::ptrdiff_t>(lines.size());
  for (auto i = static_cast<std::ptrdiff_t>(lines.size()) - 1; i >= 0; --i) {
    const TraceLine& line = lines[static_cast<std::size_t>(i)];
    if (line.layout != Layout::kLong || line.microseconds < 0) continue;
    if (!any && line.microseconds > now) day = -kDay;
    if (any && line.microseconds > next + kDisorder) day -= kDay;
    any = true;
    next = line.microseconds;
    if (day + line.microseconds >= from) first = i;
  }
  return any ? first : -1;
}

}  // namespace traceview
