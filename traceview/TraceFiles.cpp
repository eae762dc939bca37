#include "traceview/TraceFiles.h"

#include <algorithm>

#include "platform/AsciiCase.h"

namespace traceview {
namespace {

constexpr std::uint32_t kPiece = 1 << 20;
constexpr std::uint64_t kLargestFile = 512u << 20;
/// Enough to tell one file from another that took its place: a whole line of the long layout.
constexpr std::size_t kKnownBehind = 420;

constexpr std::int64_t kDay = 24ll * 60 * 60 * 1000000;
/// The counter's column has room for five digits of seconds.
constexpr std::int64_t kCounterRange = 100000ll * 1000000;

bool EndsIgnoringCase(std::string_view text, std::string_view end) {
  return text.size() >= end.size() &&
         platform::EqualsIgnoringCase(text.substr(text.size() - end.size()), end);
}

std::string_view WithoutCarriageReturn(std::string_view line) {
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

const TraceLine* FirstWithTime(const std::vector<TraceLine>& lines) {
  const auto found = std::find_if(lines.begin(), lines.end(),
                                  [](const TraceLine& line) { return line.microseconds >= 0; });
  return found != lines.end() ? &*found : nullptr;
}

const TraceLine* LastWithTime(const std::vector<TraceLine>& lines) {
  const auto found = std::find_if(lines.rbegin(), lines.rend(),
                                  [](const TraceLine& line) { return line.microseconds >= 0; });
  return found != lines.rend() ? &*found : nullptr;
}

/// From the end of one file to the start of the other, across midnight if need be.
std::int64_t Gap(const TraceLine& end, const TraceLine& start) {
  const std::int64_t range = start.layout == Layout::kTime ? kCounterRange : kDay;
  const std::int64_t gap = (start.microseconds - end.microseconds) % range;
  return gap < 0 ? gap + range : gap;
}

/// \returns a sentence when the file cannot be read.
std::string ReadWhole(const std::string& path, std::uint32_t source, ReadFile& file) {
  file.state = StateOf(path);
  if (!file.state.exists) return "there is no file " + path;
  if (file.state.size > kLargestFile) return path + " is too large to be read: above 512 MiB";
  std::string text;
  std::string piece;
  do {
    const std::uint32_t error = ReadPart(path, text.size(), kPiece, piece);
    if (error != 0) return path + " cannot be read: error " + std::to_string(error);
    text += piece;
  } while (!piece.empty() && text.size() <= kLargestFile);
  SplitLines(text, source, file.lines);
  return {};
}

bool SameName(const std::string& one, const std::string& other) {
  return platform::EqualsIgnoringCase(one, other);
}

/// The files to read, pairs as neighbours. A twin that was not named may be missing.
struct Wanted {
  std::string path;
  bool mayBeMissing;
  bool hasTwin;  ///< the next one in the list
  bool named;    ///< somebody asked for it
};

std::vector<Wanted> InPairs(const std::vector<std::string>& paths, bool withTwin) {
  std::vector<Wanted> wanted;
  std::vector<bool> done(paths.size(), false);
  for (std::size_t i = 0; i < paths.size(); ++i) {
    if (done[i]) continue;
    const std::vector<std::string> pair = PairOf(paths[i]);
    std::size_t twin = paths.size();
    for (std::size_t j = i + 1; j < paths.size() && pair.size() == 2 && twin == paths.size(); ++j) {
      const std::string& other = SameName(pair[0], paths[i]) ? pair[1] : pair[0];
      if (!done[j] && SameName(paths[j], other)) twin = j;
    }
    if (twin < paths.size()) done[twin] = true;
    if (twin < paths.size() || (withTwin && pair.size() == 2)) {
      const bool first = StateOf(pair[0]).exists;
      const bool second = StateOf(pair[1]).exists;
      const bool named = twin < paths.size();
      wanted.push_back({pair[0], /*mayBeMissing=*/second, /*hasTwin=*/true, named});
      wanted.push_back({pair[1], /*mayBeMissing=*/first || !second, /*hasTwin=*/false, named});
    } else {
      wanted.push_back({paths[i], /*mayBeMissing=*/false, /*hasTwin=*/false, /*named=*/true});
    }
  }
  return wanted;
}

bool HasNoColumns(const TraceLine& line) {
  return line.layout == Layout::kText || line.layout == Layout::kUnknown;
}

void Append(std::vector<TraceLine>& lines, ReadFile& file) {
  std::move(file.lines.begin(), file.lines.end(), std::back_inserter(lines));
}

}  // namespace

std::vector<std::string> PairOf(const std::string& path) {
  constexpr std::size_t kEnd = sizeof("1.TRC") - 1;
  if (!EndsIgnoringCase(path, "1.TRC") && !EndsIgnoringCase(path, "2.TRC")) return {path};
  std::string first = path;
  std::string second = path;
  first[path.size() - kEnd] = '1';
  second[path.size() - kEnd] = '2';
  return {first, second};
}

void SplitLines(std::string_view text, std::uint32_t source, std::vector<TraceLine>& lines) {
  const std::size_t first = lines.size();
  const bool endsInside = !text.empty() && text.back() != '\n';
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.push_back(ParseTraceLine(WithoutCarriageReturn(text.substr(0, end))));
    lines.back().source = source;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  if (lines.size() > first) lines.back().torn = endsInside;
  if (lines.size() - first < 2) return;
  lines[first].torn =
      lines[first].layout == Layout::kUnknown && lines[first + 1].layout != Layout::kUnknown;
}

bool LooksForeign(std::span<const TraceLine> lines) {
  std::size_t texts = 0;
  for (const TraceLine& line : lines) {
    if (!HasNoColumns(line)) return false;
    texts += line.layout == Layout::kText ? 1 : 0;
  }
  return !lines.empty() && texts * 2 < lines.size();
}

bool IsOlder(const ReadFile& one, const ReadFile& other) {
  if (one.state.written != other.state.written) return one.state.written < other.state.written;
  const TraceLine* const start = FirstWithTime(one.lines);
  const TraceLine* const otherStart = FirstWithTime(other.lines);
  if (start == nullptr || otherStart == nullptr) return false;
  return Gap(*LastWithTime(one.lines), *otherStart) < Gap(*LastWithTime(other.lines), *start);
}

bool ReadTraceFiles(const std::vector<std::string>& paths, bool withTwin,
                    std::vector<TraceLine>& lines, std::string& error,
                    std::vector<std::string>* notes) {
  const auto note = [&](const std::string& text) {
    if (notes != nullptr) notes->push_back(text);
  };
  const std::vector<Wanted> wanted = InPairs(paths, withTwin);
  std::vector<ReadFile> files(wanted.size());
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (wanted[i].mayBeMissing && !StateOf(wanted[i].path).exists) {
      if (wanted[i].named) note("there is no file " + wanted[i].path + "; its twin is read alone");
      continue;
    }
    error = ReadWhole(wanted[i].path, static_cast<std::uint32_t>(i), files[i]);
    if (!error.empty()) return false;
    if (LooksForeign(files[i].lines)) note(wanted[i].path + " does not look like a trace");
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (!wanted[i].hasTwin) {
      Append(lines, files[i]);
      continue;
    }
    const bool inOrder = IsOlder(files[i], files[i + 1]);
    Append(lines, files[inOrder ? i : i + 1]);
    Append(lines, files[inOrder ? i + 1 : i]);
    ++i;
  }
  return true;
}

FileFollower::FileFollower(std::span<const std::string> paths) {
  for (const std::string& path : paths) {
    places_.emplace_back();
    places_.back().path = path;
  }
  // From the older file on to the newer one.
  if (places_.size() == 2 && StateOf(paths[1]).written < StateOf(paths[0]).written) current_ = 1;
}

void FileFollower::SkipToEnd() {
  for (std::size_t i = 0; i < places_.size(); ++i) {
    Place& place = places_[i];
    const FileState state = StateOf(place.path);
    if (!state.exists) continue;
    const std::uint64_t from = state.size - std::min<std::uint64_t>(state.size, kKnownBehind);
    std::string bytes;
    if (ReadPart(place.path, from, kKnownBehind, bytes) != 0) continue;
    place.identity = state.identity;
    place.offset = from + bytes.size();
    place.behind = bytes;
    // The end of a line that is still being written belongs to what comes.
    place.partial = bytes.substr(bytes.rfind('\n') + 1);
  }
  current_ =
      places_.size() == 2 && StateOf(places_[1].path).written > StateOf(places_[0].path).written
          ? 1
          : 0;
}

std::vector<std::string> FileFollower::Poll() {
  error_ = 0;
  std::vector<std::string> lines;
  const std::size_t first = current_;
  // The file that the lines came from goes on first, unless it was made anew: then the rest of the
  // other one is older.
  if (places_.size() == 2) {
    const FileState state = StateOf(places_[first].path);
    const bool goesOn = state.exists && IsSameFile(places_[first], state);
    if (goesOn) (void)ReadNews(places_[first], lines);
    if (ReadNews(places_[1 - first], lines)) current_ = 1 - first;
  }
  if (ReadNews(places_[first], lines)) current_ = first;
  return lines;
}

bool FileFollower::IsSameFile(const Place& place, const FileState& state) {
  if (place.offset == 0) return true;
  if (state.identity != place.identity || state.size < place.offset) return false;
  std::string bytes;
  const auto length = static_cast<std::uint32_t>(place.behind.size());
  return ReadPart(place.path, place.offset - length, length, bytes) == 0 && bytes == place.behind;
}

bool FileFollower::ReadNews(Place& place, std::vector<std::string>& lines) {
  const FileState state = StateOf(place.path);
  if (!state.exists) return false;
  if (!IsSameFile(place, state)) {
    if (!place.partial.empty()) lines.push_back(place.partial);
    place = {place.path, /*offset=*/0, /*identity=*/0, /*behind=*/{}, /*partial=*/{}};
  }
  place.identity = state.identity;
  bool any = false;
  std::string bytes;
  for (;;) {
    const std::uint32_t error = ReadPart(place.path, place.offset, kPiece, bytes);
    if (error != 0) error_ = error;
    if (error != 0 || bytes.empty()) return any;
    any = true;
    place.offset += bytes.size();
    place.behind = (place.behind + bytes);
    if (place.behind.size() > kKnownBehind) {
      place.behind.erase(0, place.behind.size() - kKnownBehind);
    }
    TakeLines(place, bytes, lines);
  }
}

void FileFollower::TakeLines(Place& place, std::string_view bytes,
                             std::vector<std::string>& lines) {
  for (;;) {
    const std::size_t end = bytes.find('\n');
    if (end == std::string_view::npos) break;
    place.partial += bytes.substr(0, end);
    lines.emplace_back(WithoutCarriageReturn(place.partial));
    place.partial.clear();
    bytes.remove_prefix(end + 1);
  }
  place.partial += bytes;
}

}  // namespace traceview
