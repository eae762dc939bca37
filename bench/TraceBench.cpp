// Measures what a line of the trace facility costs, each kind against its floor
// (bench/TraceFloor.h) and beside a widely used logging library (bench/TracePeers.h), and prints
// the results as Markdown. bench/run.sh starts it with everything it needs.
//
//   trace_bench.exe [--quick]
//   trace_bench.exe --count LINES
//
// The second marks runs of LINES and of 2 * LINES lines of every kind in the debug log of Wine's
// server, for count-requests.sh.

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/Comparison.h"
#include "bench/HeapCalls.h"
#include "bench/Marks.h"
#include "bench/Support.h"
#include "bench/TraceStage.h"

namespace bench {
namespace {

struct Plan {
  unsigned rounds;
  unsigned callRounds;  // in a batch of calls that are not wanted, 16 to a round
  unsigned fileLines;   // in a batch
  unsigned ringLines;
};
constexpr Plan kFull = {31, 40000, 150, 600};
constexpr Plan kQuick = {7, 40000, 100, 300};

constexpr double kGateGoalNs = 3;
constexpr double kLineGoal = 1.15;

const char* Verdict(bool met) { return met ? "met" : "**missed**"; }

// --- Calls that are not wanted ---

double GateBatch(void (*calls)(unsigned), unsigned rounds, std::vector<double>& nanoseconds) {
  const double begin = Now();
  calls(rounds);
  const double seconds = Now() - begin;
  nanoseconds.push_back(seconds * 1e9 / (16.0 * rounds));
  return seconds;
}

void PrintGateRow(const char* name, const std::vector<double>& nanoseconds, double goal) {
  const double least = Quantile(nanoseconds, 0);
  std::printf("| %s | %.2f | %.2f |", name, Quantile(nanoseconds, 0.5), least);
  if (goal > 0) {
    std::printf(" %.2f | %s |\n", goal, Verdict(Quantile(nanoseconds, 0.5) <= goal));
  } else {
    std::printf(" | |\n");
  }
}

void MeasureGate(const Plan& plan, const TraceStage& stage) {
  Peer peer(PeerRoad::kRing, /*file=*/"");
  peer.Disable();
  // The mask holds the errors, the calls are of the progress.
  stage.Configure("FILE", "0x10");

  std::vector<double> product, floor, disabled;
  for (unsigned round = 0; round < 4 * plan.rounds; ++round) {
    (void)GateBatch(UnwantedFloorCalls, plan.callRounds, floor);
    (void)GateBatch(UnwantedProductCalls, plan.callRounds, product);
    (void)GateBatch(UnwantedPeerCalls, plan.callRounds, disabled);
  }
  std::printf(
      "| Call that is not wanted, %u batches | Median ns | Least ns | Goal | |\n"
      "|---|---|---|---|---|\n",
      4 * plan.rounds);
  PrintGateRow("floor: two words, two tests", floor, /*goal=*/0);
  PrintGateRow("trace facility", product, kGateGoalNs);
  PrintGateRow("spdlog, level disabled", disabled, /*goal=*/0);
}

// --- Lines ---

struct Kind {
  const char* name;
  unsigned batch;  // lines
  TraceSubject* floor;
  std::vector<TraceSubject*> subjects;  // the product first
};

struct LineFigures {
  Comparison comparison;
  std::vector<double> floor, subject;  // us for a line
  double floorHeapCalls, subjectHeapCalls;
};

double LineBatch(TraceSubject& subject, unsigned lines, std::vector<double>& microseconds) {
  const double begin = Now();
  subject.Lines(lines);
  const double seconds = Now() - begin;
  microseconds.push_back(seconds * 1e6 / lines);
  return seconds;
}

double HeapCallsOfALine(TraceSubject& subject) {
  constexpr unsigned kCounted = 50;
  return HeapCallsOf([&] { subject.Lines(kCounted); }) / static_cast<double>(kCounted);
}

LineFigures MeasureLines(const Plan& plan, const Kind& kind, TraceSubject& subject) {
  LineFigures figures = {};
  const auto floor = [&] { return LineBatch(*kind.floor, kind.batch, figures.floor); };
  figures.comparison = Compare(plan.rounds, floor, floor,
                               [&] { return LineBatch(subject, kind.batch, figures.subject); });
  figures.floorHeapCalls = HeapCallsOfALine(*kind.floor);
  figures.subjectHeapCalls = HeapCallsOfALine(subject);
  return figures;
}

void PrintLineRow(const char* kind, const char* subject, const LineFigures& figures, double goal) {
  const Ratios& ratios = figures.comparison.product;
  std::printf("| %s | %s | %.2f / %.2f | %.2f / %.2f | %.3f (%.3f to %.3f) | %.3f |", kind, subject,
              Quantile(figures.subject, 0.5), Quantile(figures.floor, 0.5),
              Quantile(figures.subject, 0), Quantile(figures.floor, 0), ratios.Median(),
              ratios.LowerQuartile(), ratios.UpperQuartile(), figures.comparison.noise.Median());
  std::printf(" %.2f / %.2f |", figures.subjectHeapCalls, figures.floorHeapCalls);
  if (goal > 0) {
    const bool met = ratios.Median() <= goal && figures.subjectHeapCalls <= figures.floorHeapCalls;
    std::printf(" %.2f, no more heap calls | %s |\n", goal, Verdict(met));
  } else {
    std::printf(" | |\n");
  }
  std::fflush(stdout);
}

void MeasureKind(const Plan& plan, const Kind& kind) {
  for (TraceSubject* const subject : kind.subjects) {
    const bool isProduct = subject == kind.subjects.front();
    PrintLineRow(kind.name, subject->Name(), MeasureLines(plan, kind, *subject),
                 isProduct ? kLineGoal : 0);
  }
}

void CountKind(unsigned lines, const Kind& kind) {
  std::vector<TraceSubject*> subjects = {kind.floor};
  subjects.insert(subjects.end(), kind.subjects.begin(), kind.subjects.end());
  for (TraceSubject* const subject : subjects) {
    subject->Lines(lines);
    Mark("bench-mark;%s;%s;once;", kind.name, subject->Name());
    subject->Lines(lines);
    EndMark();
    Mark("bench-mark;%s;%s;twice;", kind.name, subject->Name());
    subject->Lines(2 * lines);
    EndMark();
  }
}

void CheckTheHeapCount() {
  const unsigned calls = HeapCallsOf([] {
    const std::unique_ptr<volatile char[]> block(new volatile char[1000]);
    block[0] = 1;
  });
  if (calls == 0) Die("the count of heap calls does not see an allocation");
}

// --- The whole ---

/// Files first, then the ring: the facility stays attached to a ring once it is.
void ForEachKind(const Plan& plan, const TraceStage& stage,
                 const std::function<void(const Kind&)>& handle) {
  ProductSubject product;
  {
    stage.Configure("FILE", "0xFFFFFFFF");
    const std::string floorFile = stage.FloorFile();
    FileFloorSubject floor(floorFile.c_str());
    PeerSubject buffered("spdlog, file kept open, buffered", PeerRoad::kFileBuffered,
                         stage.PeerFile("buffered.txt"));
    PeerSubject flushed("spdlog, file kept open, flushed per line", PeerRoad::kFileFlushed,
                        stage.PeerFile("flushed.txt"));
    PeerSubject reopened("spdlog, file opened per line", PeerRoad::kFileReopened,
                         stage.PeerFile("reopened.txt"));
    handle({"FILE", plan.fileLines, &floor, {&product, &buffered, &flushed, &reopened}});
  }
  {
    stage.Configure("SM", "0xFFFFFFFF");
    RingFloorSubject floor;
    PeerSubject ring("spdlog, ring in the process", PeerRoad::kRing, /*file=*/"");
    handle({"SM", plan.ringLines, &floor, {&product, &ring}});
  }
}

/// A floor that does other work, or a facility that drops lines, would be no comparison.
void CheckWhatIsWritten(const TraceStage& stage) {
  constexpr unsigned kLines = 30000;
  ProductSubject product;
  {
    constexpr unsigned kFileLines = 100;
    const std::string file = stage.FloorFile();
    FileFloorSubject floor(file.c_str());
    stage.Configure("FILE", "0xFFFFFFFF");
    product.Lines(kFileLines);
    floor.Lines(kFileLines);
    CheckFiles(stage);
  }
  RingFloorSubject floor;
  stage.Configure("SM", "0xFFFFFFFF");
  product.Lines(kLines);
  floor.Lines(kLines);
  CheckRings(floor.floor());
}

void MeasureAll(const Plan& plan, const TraceStage& stage) {
  CheckTheHeapCount();
  CheckWhatIsWritten(stage);
  MeasureGate(plan, stage);
  std::printf(
      "\n| Output | Line by, %u rounds | us, median: subject / floor | us, least | "
      "Subject : floor, median (quartiles) | Noise: floor : floor | "
      "Heap calls for a line, subject / floor | Goal | |\n"
      "|---|---|---|---|---|---|---|---|---|\n",
      plan.rounds);
  ForEachKind(plan, stage, [&](const Kind& kind) { MeasureKind(plan, kind); });
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  using namespace bench;
  Plan plan = kFull;
  unsigned counted = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    if (name == "--quick") {
      plan = kQuick;
    } else if (name == "--count" && i + 1 < argc) {
      counted = static_cast<unsigned>(std::strtoul(argv[++i], nullptr, 10));
    } else {
      Die("unknown option, or one without its value: %s", argv[i]);
    }
  }
  const TraceStage stage;
  if (counted > 0) {
    ForEachKind(plan, stage, [&](const Kind& kind) { CountKind(counted, kind); });
  } else {
    MeasureAll(plan, stage);
  }
  return 0;
}
