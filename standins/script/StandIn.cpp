#include "standins/script/StandIn.h"

#include <array>
#include <atomic>
#include <new>
#include <string>

#include "standins/script/CallLog.h"
#include "standins/script/CallScript.h"
#include "standins/script/LogFile.h"

namespace standin {

namespace {

constexpr char kScriptVariable[] = "QORLIX_STANDIN_SCRIPT";
constexpr char kLogVariable[] = "QORLIX_STANDIN_LOG";

// Lives as long as the process; all zero at first.
struct ProcessState {
  std::atomic<std::uint32_t> sequence;
  std::array<std::atomic<std::uint32_t>, kExports.size()> calls;
  alignas(8) std::array<std::uint8_t, kOwnMemory> own;
};
static_assert(std::atomic<std::uint32_t>::is_always_lock_free);

ProcessState* State() {
  return static_cast<ProcessState*>(host::ProcessMemory(kLibraryName, sizeof(ProcessState)));
}

// Relative to the script's folder, so that both can be moved together.
std::string LogPath(const std::string& script, const std::string& named) {
  std::string variable = host::Environment(kLogVariable);
  if (!variable.empty()) return variable;
  if (named.empty() || host::IsAbsolute(named)) return named;
  const std::size_t separator = script.find_last_of("\\/");
  return separator == std::string::npos ? named : script.substr(0, separator + 1) + named;
}

void Tell(const std::string& log, const std::string& line) {
  const std::string whole = std::string(kLibraryName) + ": " + line;
  host::Debug(whole);
  if (!log.empty()) (void)AppendLine(log, whole);
}

CallScript CurrentScript(std::string& log) {
  std::string path = host::Environment(kScriptVariable);
  const bool named = !path.empty();
  if (!named) path = host::LibraryFolder() + '/' + kLibraryName + ".ini";
  CallScript script = named || host::FileExists(path) ? LoadScript(path) : CallScript();
  log = LogPath(path, script.logFile);
  for (const ScriptError& error : script.errors) {
    Tell(log, "error " + path + ':' + std::to_string(error.line) + ": " + error.text);
  }
  return script;
}

Outcome PerformOrThrow(Export which, const Arguments& arguments,
                       std::uint32_t (*work)(void* context), void* context) {
  const std::uint32_t lastError = host::LastError();
  ProcessState* const state = State();
  if (state == nullptr) throw std::bad_alloc();
  CallRecord record{.sequence = ++state->sequence, .which = which};
  const std::uint32_t call = ++state->calls[IndexOf(which)];

  std::string log;
  const CallScript script = CurrentScript(log);
  const ScriptAnswer* const found = script.Find(which, call);
  ScriptAnswer answer;
  if (found != nullptr) {
    answer = *found;
  } else if (script.errors.empty()) {
    answer.delay = RowOf(which).usualDelay;
    answer.raised = RowOf(which).usualRaised;
  }
  record.thread = host::ThreadId();
  record.raised = answer.raised;
  record.answerLine = answer.line;
  const std::string in = log.empty() ? std::string() : arguments.In();

  if (answer.delay.value_or(0) != 0) host::Sleep(*answer.delay);
  if (answer.raised == Raised::kNothing) {
    record.result = !script.errors.empty() ? kBadScript
                    : answer.result        ? *answer.result
                                           : work(context);
    arguments.Deliver(answer);
  }
  if (!log.empty() && !AppendLine(log, FormatCall(record, in, arguments.Outs()))) {
    host::Debug(std::string(kLibraryName) + ": error " + log + ":0: the log cannot be written");
  }
  return {record.result, answer.lastError.value_or(lastError), record.raised};
}

}  // namespace

void* OwnMemory() {
  ProcessState* const state = State();
  return state != nullptr ? state->own.data() : nullptr;
}

Outcome Perform(Export which, const Arguments& arguments, std::uint32_t (*work)(void* context),
                void* context) noexcept {
  try {
    return PerformOrThrow(which, arguments, work, context);
  } catch (const std::bad_alloc&) {
    return {.result = kOutOfMemory};
  } catch (...) {
    return {.result = kInternalError};
  }
}

}  // namespace standin
