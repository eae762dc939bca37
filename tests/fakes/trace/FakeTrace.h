#ifndef TESTS_FAKES_TRACE_FAKETRACE_H_
#define TESTS_FAKES_TRACE_FAKETRACE_H_

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "trace/TraceOutputs.h"
#include "trace/TraceRecord.h"

/// The machine that native programs trace on. As long as nothing is arranged, tracing is off.
namespace FakeTrace {

// --- For tests that want to see what a piece of code traces ---

struct Line {
  std::string component;
  std::string function;
  std::string text;  ///< cut to 256 characters, as everywhere
  bool operator==(const Line&) const = default;
};

/// Forgets earlier lines and collects, from now on, every line at one of these bits; 0 ends it.
void Collect(std::uint32_t mask);

/// What was collected, in order.
std::vector<Line> Lines();

/// The same, as "function" directly followed by "text".
std::vector<std::string> Texts();

// --- For tests of the facility itself ---

struct Parameter {
  std::uint32_t type = 1;
  std::string data;  ///< raw, with the terminator if it has one
};

struct File {
  std::string content;
  std::uint64_t written = 0;
};

struct Event {
  std::uint32_t id;
  std::vector<std::string> texts;
  bool operator==(const Event&) const = default;
};

/// Everything that the facility can reach. Reset puts all of it back.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order of what belongs together
struct Machine {
  bool keyExists = true;
  std::map<std::string, Parameter> parameters;
  zqotrc::TraceMoment moment = {true, 13, 5, 9, 42, 0, 0, 4711, 815};
  std::int64_t frequency = 1000000;
  std::int64_t seconds = 1000;

  std::uint32_t mutexError = 0;
  bool hasMutex = false;
  void* mutexSecurity = nullptr;
  std::deque<std::uint32_t> waitResults;  ///< 0 when there is none left
  std::vector<std::uint32_t> waits;
  int mutexHolds = 0;

  std::uint32_t generationError = 0;

  struct Section {
    std::vector<std::uint32_t> words;
    bool committed = true;
  };
  std::map<std::string, Section> sections;
  bool sectionsFail = false;
  int openSections = 0;
  int views = 0;

  std::map<std::string, File> files;
  std::set<std::string> unopenable;
  std::set<std::string> unmeasurable;
  std::vector<std::string> fileSteps;  ///< "open C:\x", "append", "close", "remove C:\x"
  int openFiles = 0;

  std::vector<std::string> debugger;

  std::uint32_t driverError = 0;
  bool driverOpen = false;
  std::vector<std::string> driver;
  std::vector<std::string> lostToDriver;  ///< what came while it was not open

  std::string commonProgramFiles = "C:\\Common";
  bool engineLoads = true;
  std::set<zqotrc::EngineExport> missingExports;
  std::uint32_t engineOpenResult = 0;
  std::uint32_t engineWriteResult = 0;
  std::uint32_t engineHandle = 77;
  std::vector<std::string> engineSteps;  ///< "load PATH", "open ...", "write HANDLE", ...
  std::vector<std::string> engineRecords;

  std::vector<Event> events;
};
Machine& TheMachine();

/// The configuration generation that all processes share.
std::atomic<std::uint32_t>& Generation();

/// A text parameter, terminated as regedit would.
void SetText(const std::string& name, const std::string& text);

/// Shuts the facility down and puts the machine back; tracing is off then.
void Reset();

}  // namespace FakeTrace

#endif  // TESTS_FAKES_TRACE_FAKETRACE_H_
