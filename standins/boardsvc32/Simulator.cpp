#include "standins/boardsvc32/Simulator.h"

#include <memory>
#include <mutex>
#include <new>
#include <optional>

#include "standins/boardsvc32/InventoryFile.h"
#include "standins/boardsvc32/ResultCode.h"
#include "standins/boardsvc32/SimulatorHost.h"

namespace boardsim {

namespace {

constexpr char kInventoryVariable[] = "QORLIX_BOARD_INVENTORY";
constexpr char kLogVariable[] = "QORLIX_BOARD_LOG";
constexpr char kInventoryName[] = "boardsvc32.ini";

// What one load of the inventory gave, and what happened since.
struct Machine {
  BoardModel model;
  FaultScript faults;
  std::string log;  // empty: none
  bool broken = false;
  std::uint32_t calls = 0;
};

std::mutex g_mutex;
std::unique_ptr<Machine> g_machine;  // guarded by g_mutex

// Relative to the inventory's folder, so that both can be moved together.
std::string LogPath(const std::string& inventory, const std::string& named) {
  std::string variable = host::Environment(kLogVariable);
  if (!variable.empty()) return variable;
  if (named.empty() || host::IsAbsolute(named)) return named;
  const std::size_t separator = inventory.find_last_of("\\/");
  return separator == std::string::npos ? named : inventory.substr(0, separator + 1) + named;
}

void Tell(const std::string& log, const std::string& line) {
  host::Debug("boardsvc32: " + line);
  if (!log.empty()) (void)AppendLine(log, line);
}

std::unique_ptr<Machine> Load() {
  auto machine = std::make_unique<Machine>();
  std::string path = host::Environment(kInventoryVariable);
  InventoryFile file;
  const bool named = !path.empty();
  if (!named) path = host::LibraryFolder() + '/' + kInventoryName;
  if (named || host::FileExists(path)) file = LoadInventory(path);

  machine->log = LogPath(path, file.logFile);
  for (const InventoryError& error : file.errors) {
    Tell(machine->log, "error " + path + ':' + std::to_string(error.line) + ": " + error.text);
  }
  machine->broken = !file.errors.empty();
  machine->model = BoardModel(std::move(file.inventory));
  machine->faults = FaultScript(std::move(file.faults));
  return machine;
}

Machine& TheMachine() {
  if (!g_machine) g_machine = Load();
  return *g_machine;
}

struct Beginning {
  CallRecord record;
  std::optional<Fault> fault;
  bool logged = false;
};

Beginning Begin(Operation operation) {
  Beginning beginning;
  const std::lock_guard guard(g_mutex);
  Machine& machine = TheMachine();
  beginning.logged = !machine.log.empty();
  beginning.record.sequence = ++machine.calls;
  beginning.record.operation = operation;
  const Fault* const fault = machine.faults.NextCall(operation);
  if (fault != nullptr) {
    beginning.fault = *fault;
    beginning.record.faultLine = fault->line;
    beginning.record.raised = fault->raised;
  }
  return beginning;
}

Outcome PerformOrThrow(Operation operation, const Arguments& arguments,
                       Answer (*ask)(void* context, BoardModel& model), void* context) {
  Beginning beginning = Begin(operation);
  const Fault* const fault = beginning.fault ? &*beginning.fault : nullptr;
  CallRecord& record = beginning.record;
  const std::string in = beginning.logged ? arguments.In() : std::string();
  if (beginning.logged) {
    record.lock = host::ProbeBoardLock();
    record.thread = host::ThreadId();
  }
  if (fault != nullptr && fault->delay != 0) host::Sleep(fault->delay);

  const std::lock_guard guard(g_mutex);
  Machine& machine = TheMachine();
  if (record.raised == Raised::kNothing) {
    Answer answer;
    if (machine.broken) {
      answer.result = kBadInventory;
    } else if (fault != nullptr && fault->result) {
      answer.result = *fault->result;
    } else {
      answer = ask(context, machine.model);
    }
    record.result = arguments.Deliver(answer, fault);
    if (record.result == kDone) machine.model.Delivered(answer);
  }
  if (beginning.logged && !AppendLine(machine.log, FormatCall(record, in, arguments.Out()))) {
    host::Debug("boardsvc32: error " + machine.log + ":0: the log cannot be written");
  }
  return {record.result, record.raised};
}

}  // namespace

Outcome Perform(Operation operation, const Arguments& arguments,
                Answer (*ask)(void* context, BoardModel& model), void* context) noexcept {
  try {
    return PerformOrThrow(operation, arguments, ask, context);
  } catch (const std::bad_alloc&) {
    return {.result = kOutOfMemory};
  } catch (...) {
    return {.result = kInternalError};
  }
}

void Reset() {
  const std::lock_guard guard(g_mutex);
  g_machine.reset();
}

void RaiseFault(Raised raised) { host::Raise(raised); }

}  // namespace boardsim
