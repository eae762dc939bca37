#include <algorithm>
#include <chrono>
#include <csignal>
#include <optional>
#include <thread>

#include "cli/Actions.h"
#include "cli/Report.h"
#include "cli/TextEncoding.h"
#include "cli/TraceView.h"
#include "traceview/FileAccess.h"
#include "traceview/RingView.h"
#include "traceview/TraceAccess.h"
#include "traceview/TraceFiles.h"

namespace cli {
namespace {

using traceview::TraceLine;

constexpr std::chrono::milliseconds kPause(100);

volatile std::sig_atomic_t g_interrupted = 0;

void Interrupt(int /*signal*/) { g_interrupted = 1; }

/// Ctrl-C ends the following, not the program, so that what is collected is written.
class InterruptGuard {
 public:
  InterruptGuard() : before_(std::signal(SIGINT, Interrupt)) { g_interrupted = 0; }
  ~InterruptGuard() { (void)std::signal(SIGINT, before_); }
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

 private:
  void (*before_)(int);
};

class Follower {
 public:
  Follower(const Invocation& invocation, Output& output, const TraceRequest& request)
      : invocation_(invocation), output_(output), request_(request), printer_(invocation, output) {}

  /// \returns an empty text when the time was up or it was interrupted, else what went wrong.
  template <typename Look>
  std::string Run(Look look) {
    const InterruptGuard guard;
    const auto start = std::chrono::steady_clock::now();
    const std::chrono::milliseconds most(invocation_.trace.forMs);
    for (;;) {
      // The last look comes behind the end, so that nothing of the time is missed.
      const bool last = g_interrupted != 0 ||
                        (most.count() != 0 && std::chrono::steady_clock::now() - start >= most);
      std::string error = look();
      output_.Write();
      if (!error.empty() || last) return error;
      std::this_thread::sleep_for(kPause);
    }
  }

  void Show(const TraceLine& line) {
    if (!Passes(request_.query, line)) return;
    if (!invocation_.json) {
      output_.out += printer_.Text(line);
      return;
    }
    JsonWriter json;
    AddTraceLine(json, line);
    output_.out += json.Written() + '\n';
  }

  void ShowLost(std::uint64_t bytes) {
    if (bytes == 0) return;
    if (invocation_.json) {
      JsonWriter json;
      json.Open('{').Name("lostBytes").Number(bytes).Close('}');
      output_.out += json.Written() + '\n';
    } else {
      output_.out += "--- " + ByteCount(bytes) + " of the ring were overwritten unread ---\n";
    }
  }

  /// The lines that are there already, if they were asked for.
  std::string ShowEarlier(std::vector<TraceLine>& lines) {
    std::string error = DropOlder(request_, lines);
    for (const TraceLine& line : lines) Show(line);
    return error;
  }

 private:
  const Invocation& invocation_;
  Output& output_;
  const TraceRequest& request_;
  LinePrinter printer_;
};

// Somebody who waits wants to know for what, and whether it can come at all.
void TellWhatIsAwaited(const Invocation& invocation, const TraceRequest& request, Output& output) {
  if (invocation.json) return;
  const auto tell = [&](const std::string& text) {
    output.err += "note: " + Printable(Utf8FromAnsi(text)) + '\n';
  };
  if (request.ring) {
    tell("waiting for lines of the ring in shared memory; Ctrl-C ends it");
    return;
  }
  const std::vector<std::string> pair = traceview::PairOf(request.files[0]);
  tell("waiting for lines of " + pair[0] + (pair.size() == 2 ? " and " + pair[1] : "") +
       "; Ctrl-C ends it");
  const bool some = std::any_of(pair.begin(), pair.end(), [](const std::string& path) {
    return traceview::StateOf(path).exists;
  });
  if (some) return;
  const std::string folder = pair[0].substr(0, pair[0].find_last_of("\\/") + 1);
  if (!folder.empty() && !traceview::FolderExists(folder)) {
    tell("the folder " + folder +
         " does not exist, so nothing can come: create it; 'qorlixctl trace show' tells the rest");
  } else {
    tell(
        "there is no such file yet; nothing comes until a process that traces writes it: "
        "'qorlixctl trace show' tells what is missing");
  }
}

std::string FollowFiles(Follower& follower, const TraceRequest& request) {
  traceview::FileFollower files(traceview::PairOf(request.files[0]));
  if (!request.since.has_value()) files.SkipToEnd();
  bool first = request.since.has_value();
  return follower.Run([&]() -> std::string {
    std::vector<TraceLine> lines;
    for (const std::string& raw : files.Poll()) lines.push_back(traceview::ParseTraceLine(raw));
    if (files.error() == 5) return "the file cannot be read: access is denied";
    if (!first) {
      for (const TraceLine& line : lines) follower.Show(line);
      return {};
    }
    first = false;
    return follower.ShowEarlier(lines);
  });
}

std::string FollowRing(Follower& follower, const TraceRequest& request) {
  traceview::SharedRing ring;
  const std::uint32_t code = ring.Attach();
  if (code != 0) return NoRing(code);
  traceview::RingContent content;
  std::string problem;
  if (!traceview::ReadRing(ring.mapped(), content, problem)) return problem;
  if (request.since.has_value()) {
    std::vector<TraceLine> lines;
    traceview::SplitLines(content.text, /*source=*/0, lines);
    problem = follower.ShowEarlier(lines);
    if (!problem.empty()) return problem;
  }
  traceview::RingFollower news(content);
  return follower.Run([&]() -> std::string {
    traceview::RingFollower::News come;
    std::string error;
    if (!news.Poll(ring.mapped(), come, error)) return error;
    follower.ShowLost(come.lost);
    for (const std::string& raw : come.lines) follower.Show(traceview::ParseTraceLine(raw));
    return {};
  });
}

}  // namespace

int TraceFollowAction(const Invocation& invocation, Output& output) {
  TraceRequest request;
  const std::string wrong = ReadTraceRequest(invocation, request);
  if (!wrong.empty()) return UsageError(output, invocation, wrong);
  TellWhatIsAwaited(invocation, request, output);
  Follower follower(invocation, output, request);
  const std::string why =
      request.ring ? FollowRing(follower, request) : FollowFiles(follower, request);
  if (why.empty()) return kExitOk;
  Report report(invocation, output);
  return FinishNotThere(report, request, why);
}

}  // namespace cli
