#include "traceview/TraceRequests.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <string_view>
#include <utility>

namespace traceview {
namespace {

constexpr std::uint32_t kConnections = 64;
// After so many microseconds the two kinds of time begin again: at midnight, and where the seconds
// of the counter no longer fit their five digits.
constexpr std::int64_t kDay = 24LL * 60 * 60 * 1000000;
constexpr std::int64_t kCounterRange = 100000LL * 1000000;

constexpr std::string_view kLoop = "RunSrvLoop";
constexpr std::string_view kWaits = "while - WaitForMultipleObjects";
constexpr std::string_view kWoken = "WaitForMultipleObjects received Element on dwWait=0x";
constexpr std::string_view kTakesUp = "WRITING_STATE -> GetCommand for Pipe(";
constexpr std::string_view kOpCode = "opCode 0x";

// Texts that name the connection in decimal right behind them.
constexpr std::string_view kNamesConnection[] = {
    kTakesUp,
    "READING_STATE -> ReadFile: Pipe(",
    "DisconnectAndReconnect for Pipe(",
    "Stop-Server-Message from Connection(",
};

// The beginnings of a pass, in case the line that woke the loop was filtered out.
constexpr std::string_view kBeginsPass[] = {"No Pending Operation",
                                            "Pending: ", "READING_STATE -> "};

// The number at the start of a text, or -1.
std::int64_t NumberAt(std::string_view text, int base) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return error == std::errc() && end != text.data() ? static_cast<std::int64_t>(number) : -1;
}

bool StartsWithOneOf(std::string_view text, std::span<const std::string_view> beginnings) {
  return std::any_of(beginnings.begin(), beginnings.end(),
                     [&](std::string_view beginning) { return text.starts_with(beginning); });
}

std::int32_t AsConnection(std::int64_t number) {
  return number >= 0 && number < kConnections ? static_cast<std::int32_t>(number) : kNobody;
}

// What the lines of a request say about it, one after the other.
class RequestVerdict {
 public:
  void Take(const TraceLine& line, Mark mark, TraceRequest& request) {
    // Results behind the reply are about its sending, or about what follows it.
    isSent_ = isSent_ || line.function.starts_with("Send") ||
              line.text.find(" intern Send") != std::string::npos;
    worst_ = std::max(worst_, mark);
    const LineResult result = ResultOf(line);
    const bool replied = result.kind == ResultKind::kReply && !isReply_;
    if (replied || (result.kind == ResultKind::kLibrary && !isSent_)) {
      isReply_ = replied;
      request.result = result.value;
      ofResult_ = mark;
    }
    const bool told = worst_ != Mark::kError && request.result >= 0;
    request.mark = told ? ofResult_ : worst_;
  }

 private:
  bool isSent_ = false;
  bool isReply_ = false;
  Mark worst_ = Mark::kNone;
  Mark ofResult_ = Mark::kNone;
};

// Joins the lines of one thread into passes and requests.
class ThreadStory {
 public:
  void Take(const TraceLine& line, std::uint32_t index, TraceStory& story) {
    if (line.function == kLoop) TakeLoopLine(line.text, index, story);
    const std::int32_t named = NamedConnection(line.text);
    if (named != kNobody) connection_ = named;
    story.connections[index] = connection_;
    story.owners[index] = request_;
    if (request_ == kNobody) return;

    TraceRequest& request = story.requests[static_cast<std::size_t>(request_)];
    request.lastLine = index;
    if (request.connection == kNobody) request.connection = connection_;
    verdict_.Take(line, story.marks[index], request);
  }

 private:
  void TakeLoopLine(std::string_view text, std::uint32_t index, TraceStory& story) {
    if (text.starts_with(kWaits)) {
      connection_ = kNobody;
      EndPass();
    } else if (text.starts_with(kWoken)) {
      connection_ = AsConnection(NumberAt(text.substr(kWoken.size()), 16));
      EndPass();
    } else if (text.starts_with(kTakesUp)) {
      EndPass();
      takenUpAt_ = index;
      takenUp_ = true;
    } else if (text.starts_with(kOpCode)) {
      BeginRequest(NumberAt(text.substr(kOpCode.size()), 16), index, story);
    } else if (StartsWithOneOf(text, kBeginsPass)) {
      EndPass();
    }
  }

  void EndPass() {
    request_ = kNobody;
    takenUp_ = false;
  }

  void BeginRequest(std::int64_t command, std::uint32_t index, TraceStory& story) {
    if (command < 0) return;
    TraceRequest request;
    request.firstLine = takenUp_ ? takenUpAt_ : index;
    request.lastLine = index;
    request.connection = connection_;
    request.command = static_cast<std::uint32_t>(command);
    request_ = static_cast<std::int32_t>(story.requests.size());
    verdict_ = {};
    if (takenUp_) story.owners[takenUpAt_] = request_;
    story.requests.push_back(request);
    takenUp_ = false;
  }

  static std::int32_t NamedConnection(std::string_view text) {
    for (const std::string_view beginning : kNamesConnection) {
      if (text.starts_with(beginning)) {
        return AsConnection(NumberAt(text.substr(beginning.size()), 10));
      }
    }
    return kNobody;
  }

  RequestVerdict verdict_;
  std::int32_t connection_ = kNobody;
  std::int32_t request_ = kNobody;
  bool takenUp_ = false;
  std::uint32_t takenUpAt_ = 0;
};

// Puts the times of all lines on one axis.
class Axis {
 public:
  std::int64_t Place(const TraceLine& line, std::uint32_t index, TraceStory& story) {
    const Clock clock = line.microseconds < 0          ? Clock::kNone
                        : line.layout == Layout::kLong ? Clock::kTimeOfDay
                        : line.layout == Layout::kTime ? Clock::kCounter
                                                       : Clock::kNone;
    if (clock == Clock::kNone) return now_;

    const std::int64_t written = std::min(line.microseconds, kLargest);
    if (clock != clock_ || written < written_) {
      const std::int64_t range = clock == Clock::kTimeOfDay ? kDay : kCounterRange;
      const bool beginsAgain = clock == clock_ && written_ - written > range / 2;
      offset_ = beginsAgain ? offset_ + range : now_ - written;
      clock_ = clock;
      story.segments.push_back({index, clock, offset_});
    }
    written_ = written;
    now_ = written + offset_;
    return now_;
  }

 private:
  // Far beyond every counter, and far below where a sum could overflow or a script lose digits.
  static constexpr std::int64_t kLargest = 1LL << 40;

  Clock clock_ = Clock::kNone;
  std::int64_t written_ = 0;
  std::int64_t offset_ = 0;
  std::int64_t now_ = 0;
};

void MeasureRequests(std::span<const TraceLine> lines, TraceStory& story) {
  for (TraceRequest& request : story.requests) {
    if (lines[request.firstLine].microseconds < 0 || lines[request.lastLine].microseconds < 0) {
      continue;
    }
    request.microseconds = story.times[request.lastLine] - story.times[request.firstLine];
  }
}

}  // namespace

TraceStory TellStory(std::span<const TraceLine> lines) {
  TraceStory story;
  story.connections.resize(lines.size(), kNobody);
  story.owners.resize(lines.size(), kNobody);
  story.marks.resize(lines.size());
  story.times.resize(lines.size());

  std::map<std::pair<std::uint32_t, std::uint32_t>, ThreadStory> threads;
  Axis axis;
  for (std::uint32_t index = 0; index < lines.size(); ++index) {
    const TraceLine& line = lines[index];
    story.marks[index] = MarkOf(line);
    story.times[index] = axis.Place(line, index, story);
    threads[{line.process, line.thread}].Take(line, index, story);
  }
  MeasureRequests(lines, story);
  return story;
}

}  // namespace traceview
