#include "trace/Zqotrc.h"

#include <cerrno>
#include <cstdarg>

#include "trace/TraceConfig.h"
#include "trace/TraceHost.h"
#include "trace/TraceLock.h"
#include "trace/TraceOutputs.h"
#include "trace/TraceRoute.h"
#include "trace/TraceShared.h"
#include "trace/TraceText.h"
#include "trace/TraceWriter.h"

namespace zqotrc {
namespace {

constexpr char kTraceId[] = "QORLIXSRV64";
constexpr std::uint32_t kAllLevels = 0xFFFFFFFF;

/// Everything that the lock guards. Nothing in it needs destroying: a thread that outlives main
/// may still trace.
struct Facility {
  SECURITY_ATTRIBUTES* security = nullptr;
  const char* programMaskName = nullptr;
  TraceConfig config;
  std::int64_t counterFrequency = 1;
  bool readingTimeKnown = false;
  std::int64_t readingTime = 0;
  std::atomic<std::uint32_t>* sharedGeneration = nullptr;
  char message[1024] = {};
  TraceRecord record = {};
  char line[kLineBufferSize] = {};
};
constinit Facility g_facility;

/// Stands in for the shared counter until there is one, and when there is none any more.
constinit std::atomic<std::uint32_t> g_ownGeneration = 0;

/// Keeps errno and the thread's last error as a call site had them.
class KeepErrors {
 public:
  KeepErrors() : error_(errno), lastError_(LastErrorCode()) {}
  ~KeepErrors() {
    SetLastErrorCode(lastError_);
    errno = error_;
  }
  KeepErrors(const KeepErrors&) = delete;
  KeepErrors& operator=(const KeepErrors&) = delete;

 private:
  int error_;
  std::uint32_t lastError_;
};

/// A line at no bit is wanted for this reason only.
bool GenerationHasChanged() { return Wanted(/*bit=*/0); }

void EnsureGeneration() {
  if (g_facility.sharedGeneration != nullptr) return;
  std::uint32_t error = ERROR_SUCCESS;
  g_facility.sharedGeneration = OpenGeneration(error);
  if (g_facility.sharedGeneration != nullptr) {
    g_gate.generation.store(g_facility.sharedGeneration, std::memory_order_release);
    return;
  }
  char text[80];
  (void)FormatCut(text, sizeof(text), "ERROR: Can't create ZqTRC_SECTION, GetLastError()=%d \n",
                  static_cast<int>(error));
  SendToDebugger(text);
}

void ReadConfiguration() {
  EnsureTraceMutex(g_facility.security);
  EnsureGeneration();
  // Looked at before the values are: a change that comes while they are read is not lost.
  const std::uint32_t generation = *g_gate.generation.load(std::memory_order_relaxed);

  TraceConfig& config = g_facility.config;
  ReadTraceConfig(config, g_facility.programMaskName);
  const std::int64_t frequency = CounterFrequency();
  g_facility.counterFrequency = frequency != 0 ? frequency : 1;
  PrepareOutput(config, g_facility.security);

  if (config.consult > 0) {
    g_facility.readingTime = SecondsNow();
    g_facility.readingTimeKnown = true;
  }
  g_gate.wanted.store(config.level != 0 ? config.programMask : 0, std::memory_order_relaxed);
  g_gate.readAt.store(generation, std::memory_order_relaxed);
}

bool ConsultIsDue() {
  return g_facility.config.consult > 0 && g_facility.readingTimeKnown &&
         SecondsNow() - g_facility.readingTime >= g_facility.config.consult;
}

bool PassesFilters(const TraceConfig& config, const TraceCall& call) {
  return config.traceId.Passes(kTraceId, MatchMode::kWhole) &&
         config.module.Passes(call.component, MatchMode::kWhole) &&
         config.function.Passes(call.function, MatchMode::kWhole) &&
         config.text.Passes(call.text, MatchMode::kLeadingPart);
}

}  // namespace

constinit Gate g_gate = {0, &g_ownGeneration, 0};

void Initialise(SECURITY_ATTRIBUTES* security, const char* programMaskName) {
  EnterProcessLock();
  g_facility.security = security;
  g_facility.programMaskName = programMaskName;
  ReadConfiguration();
  LeaveProcessLock();
}

void RefreshAll() {
  const TraceLock lock(g_facility.security);
  EnsureGeneration();
  std::atomic<std::uint32_t>* const shared = g_facility.sharedGeneration;
  ++(shared != nullptr ? *shared : g_ownGeneration);
  ReadConfiguration();
  RefreshOutput(g_facility.config);
}

std::uint32_t ReadMask(const char* valueName) { return ReadMaskParameter(valueName); }

void ShutDown() {
  EnterProcessLock();
  ReleaseOutputs();
  CloseTraceMutex();
  // The configuration stays in force. A line that comes later is still written, as far as its
  // output needs nothing that has just been closed.
  g_ownGeneration = g_gate.readAt.load(std::memory_order_relaxed);
  g_gate.generation.store(&g_ownGeneration, std::memory_order_release);
  g_facility.sharedGeneration = nullptr;
  CloseGeneration();
  // Its owner may be gone by the time of a later line.
  g_facility.security = nullptr;
  LeaveProcessLock();
}

void TraceLine(const char* function, const char* component, const char* file, std::uint32_t line,
               const char* format, ...) {
  const KeepErrors keep;
  const TraceLock lock(g_facility.security);
  // Another thread may have read the configuration while this one waited, and found tracing off.
  if (g_gate.wanted.load(std::memory_order_relaxed) == 0 && !GenerationHasChanged()) return;

  std::va_list arguments;
  va_start(arguments, format);
  (void)FormatListCut(g_facility.message, sizeof(g_facility.message), format, arguments);
  va_end(arguments);
  Write({function, kAllLevels, component, /*code=*/0, /*extra=*/0, file, line, g_facility.message});
}

void Write(const TraceCall& call) {
  const TraceConfig& config = g_facility.config;
  if (ConsultIsDue() || GenerationHasChanged()) {
    ReadConfiguration();
    if ((config.level & call.level) == 0) return;
  }
  if (!PassesFilters(config, call)) return;

  TraceMoment moment;
  TakeMoment(moment);
  moment.frequency = g_facility.counterFrequency;
  BuildRecord(g_facility.record, config.format, kTraceId, call, moment);
  Deliver(config, FormatLine(g_facility.line, config.format, g_facility.record, moment));
}

const TraceRecord& LastRecord() { return g_facility.record; }

}  // namespace zqotrc
