#include "tests/fakes/FakePipeIo.h"

#include <algorithm>
#include <deque>
#include <list>
#include <map>
#include <optional>
#include <utility>

#include "server/PipeInstance.h"
#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/NotOurs.h"

namespace {

using fake_pipe_io::Op;
using pipe_io::Outcome;

constexpr std::uintptr_t kPending = 0x103;

struct Instance {
  std::map<Op, std::list<Outcome>> script;
  std::list<Bytes> scriptedReads;
  bool signalled = false;
  bool outstanding = false;
  Op operation = Op::Connect;  // begun last
  int disconnects = 0;
  Outcome completion = {};
  void* readBuffer = nullptr;
  Bytes writing;
  Bytes written;
  std::optional<std::uint32_t> client;
  int clientQuestions = 0;
};

struct State {
  Instance instances[kPipeInstances];
  std::deque<std::function<void()>> steps;
  std::function<void()> beforeUnsignal;
  std::vector<std::string> calls;
  int waits = 0;
  int polls = 0;
  int events = 0;
  int pipes = 0;
  bool nameIsTaken = false;
  std::uint64_t now = 1000;
} g_state;

// Handles are numbers: events from 1001, pipes from 2001.
constexpr std::uintptr_t kEventBase = 1001;
constexpr std::uintptr_t kPipeBase = 2001;

HANDLE AsHandle(std::uintptr_t number) { return reinterpret_cast<HANDLE>(number); }

int ConIdOf(HANDLE handle, std::uintptr_t base) {
  return static_cast<int>(reinterpret_cast<std::uintptr_t>(handle) - base);
}

bool IsPipe(HANDLE handle) {
  const int conId = ConIdOf(handle, kPipeBase);
  return conId >= 0 && conId < kPipeInstances;
}

void Log(const std::string& call) { g_state.calls.push_back(call); }

// What the plan makes of a call that moves up to `size` bytes; nothing when it goes well.
std::optional<Outcome> FaultOf(const char* function, std::uint32_t size = 0) {
  const std::uint32_t code = fault_plan::CodeFor(function);
  if (code == 0) return std::nullopt;
  if (code == fault_plan::kAtOnce || code == fault_plan::kEmpty) return Outcome{true, 0, 0};
  if (code == fault_plan::kShort) return Outcome{true, 0, size - 1};
  return Outcome{false, code, 0};
}

// Begins an operation and settles at once what the script says; otherwise `fallback`.
Outcome Begin(Op op, HANDLE pipe, OVERLAPPED& overlapped, Outcome fallback,
              const std::optional<Outcome>& fault) {
  if (!IsPipe(pipe)) return {false, ERROR_INVALID_HANDLE, 0};
  Instance& instance = g_state.instances[ConIdOf(pipe, kPipeBase)];
  const bool wasSignalled = instance.signalled;
  instance.signalled = false;
  instance.operation = op;
  overlapped.Internal = kPending;
  auto& script = instance.script[op];
  Outcome outcome = fallback;
  if (fault) {
    outcome = *fault;
  } else if (!script.empty()) {
    outcome = script.front();
    script.pop_front();
  }
  instance.outstanding = !outcome.success && outcome.error == ERROR_IO_PENDING;
  // Refused before the pipe is reached, and with it the event.
  if (outcome.error == ERROR_INVALID_HANDLE) instance.signalled = wasSignalled;
  if (outcome.success) {
    instance.signalled = true;
    overlapped.Internal = 0;
    overlapped.InternalHigh = outcome.count;
  }
  return outcome;
}

}  // namespace

namespace fake_pipe_io {

void Reset() { g_state = {}; }

void Script(Op op, int conId, Outcome outcome) {
  g_state.instances[conId].script[op].push_back(outcome);
}

void ScriptRead(int conId, const Bytes& request) {
  g_state.instances[conId].scriptedReads.push_back(request);
}

void Complete(int conId, bool success, std::uint32_t count, std::uint32_t error) {
  Instance& instance = g_state.instances[conId];
  instance.outstanding = false;
  instance.completion = {success, success ? 0 : error, count};
  instance.signalled = true;
  Pipe[conId].overlapped.Internal = success ? 0 : 0xC0000000;
  Pipe[conId].overlapped.InternalHigh = count;
  if (success && !instance.writing.empty()) {
    instance.written =
        instance.written + Bytes(instance.writing.begin(), instance.writing.begin() + count);
  }
  instance.writing.clear();
}

void CompleteRead(int conId, const Bytes& request) {
  std::copy(request.begin(), request.end(),
            static_cast<std::uint8_t*>(g_state.instances[conId].readBuffer));
  Complete(conId, /*success=*/true, static_cast<std::uint32_t>(request.size()));
}

void OnWait(std::function<void()> step) { g_state.steps.push_back(std::move(step)); }
void BeforeUnsignal(std::function<void()> step) { g_state.beforeUnsignal = std::move(step); }
const std::vector<std::string>& Calls() { return g_state.calls; }
int Waits() { return g_state.waits; }
int Polls() { return g_state.polls; }
Bytes Written(int conId) { return g_state.instances[conId].written; }
int Disconnects(int conId) { return g_state.instances[conId].disconnects; }
std::optional<Op> Outstanding(int conId) {
  const Instance& instance = g_state.instances[conId];
  return instance.outstanding ? std::optional<Op>(instance.operation) : std::nullopt;
}
std::uint32_t BytesInWrite(int conId) {
  return static_cast<std::uint32_t>(g_state.instances[conId].writing.size());
}
bool IsSignalled(int conId) { return g_state.instances[conId].signalled; }
void SetClientProcess(int conId, std::uint32_t id) { g_state.instances[conId].client = id; }
int ClientQuestions(int conId) { return g_state.instances[conId].clientQuestions; }
void TakeName() { g_state.nameIsTaken = true; }
void AdvanceClock(std::uint64_t milliseconds) { g_state.now += milliseconds; }

}  // namespace fake_pipe_io

namespace pipe_io {

HANDLE CreateInstanceEvent() {
  const NotOurs notOurs;
  if (fault_plan::Fails("pipe_io::CreateInstanceEvent")) return nullptr;
  const int conId = g_state.events++;
  auto& script = g_state.instances[conId].script[Op::CreateEvent];
  if (!script.empty() && !script.front().success) return nullptr;
  g_state.instances[conId].signalled = true;
  return AsHandle(kEventBase + static_cast<std::uintptr_t>(conId));
}

HANDLE CreateInstance(const char* name, SECURITY_ATTRIBUTES*, Claim claim, std::uint32_t& error) {
  const NotOurs notOurs;
  error = fault_plan::CodeFor("pipe_io::CreateInstance");
  if (error != 0) return nullptr;
  const int conId = g_state.pipes;
  Log("create " + std::to_string(conId) + " " + name + (claim == Claim::First ? " as first" : ""));
  if (claim == Claim::First && g_state.nameIsTaken) {
    error = ERROR_ACCESS_DENIED;
    return nullptr;
  }
  ++g_state.pipes;
  auto& script = g_state.instances[conId].script[Op::CreatePipe];
  if (!script.empty() && !script.front().success) {
    error = script.front().error;
    return nullptr;
  }
  error = 0;
  return AsHandle(kPipeBase + static_cast<std::uintptr_t>(conId));
}

Outcome Connect(HANDLE pipe, OVERLAPPED& overlapped) {
  const NotOurs notOurs;
  Log("connect " + std::to_string(ConIdOf(pipe, kPipeBase)));
  return Begin(Op::Connect, pipe, overlapped, {false, ERROR_IO_PENDING, 0},
               FaultOf("pipe_io::Connect"));
}

Outcome Disconnect(HANDLE pipe) {
  const NotOurs notOurs;
  Log("disconnect " + std::to_string(ConIdOf(pipe, kPipeBase)));
  ++g_state.instances[ConIdOf(pipe, kPipeBase)].disconnects;
  if (const std::optional<Outcome> fault = FaultOf("pipe_io::Disconnect")) return *fault;
  auto& script = g_state.instances[ConIdOf(pipe, kPipeBase)].script[Op::Disconnect];
  if (script.empty()) return {true, 0, 0};
  const Outcome outcome = script.front();
  script.pop_front();
  return outcome;
}

Outcome Read(HANDLE pipe, void* buffer, std::uint32_t size, OVERLAPPED& overlapped) {
  const NotOurs notOurs;
  const int conId = ConIdOf(pipe, kPipeBase);
  Log("read " + std::to_string(conId));
  Outcome outcome =
      Begin(Op::Read, pipe, overlapped, {false, ERROR_IO_PENDING, 0}, FaultOf("pipe_io::Read"));
  if (!IsPipe(pipe)) return outcome;
  Instance& instance = g_state.instances[conId];
  instance.readBuffer = buffer;
  if (instance.outstanding && !instance.scriptedReads.empty()) {
    Bytes request = instance.scriptedReads.front();
    instance.scriptedReads.pop_front();
    request.resize(std::min<std::size_t>(request.size(), size));
    std::copy(request.begin(), request.end(), static_cast<std::uint8_t*>(buffer));
    instance.outstanding = false;
    instance.signalled = true;
    overlapped.Internal = 0;
    outcome = {true, 0, static_cast<std::uint32_t>(request.size())};
  }
  return outcome;
}

Outcome Write(HANDLE pipe, const void* data, std::uint32_t size, OVERLAPPED& overlapped) {
  const NotOurs notOurs;
  const auto* const bytes = static_cast<const std::uint8_t*>(data);
  const Bytes reply(bytes, bytes + size);
  const int conId = ConIdOf(pipe, kPipeBase);
  Log("write " + std::to_string(conId) + " " + Hex(reply));
  const Outcome outcome =
      Begin(Op::Write, pipe, overlapped, {true, 0, size}, FaultOf("pipe_io::Write", size));
  if (!IsPipe(pipe)) return outcome;
  Instance& instance = g_state.instances[conId];
  if (outcome.success) {
    instance.written.insert(instance.written.end(), reply.begin(), reply.begin() + outcome.count);
  }
  if (instance.outstanding) instance.writing = reply;
  return outcome;
}

Outcome Completion(HANDLE pipe, OVERLAPPED& overlapped) {
  const NotOurs notOurs;
  if (!IsComplete(overlapped)) return {false, ERROR_IO_INCOMPLETE, 0};
  const Instance& instance = g_state.instances[ConIdOf(pipe, kPipeBase)];
  static constexpr const char* kDetails[] = {"", "", "connect", "", "read", "write"};
  if (const std::uint32_t code = fault_plan::CodeFor(
          "pipe_io::Completion", kDetails[static_cast<int>(instance.operation)])) {
    return {false, code, 0};
  }
  return instance.completion;
}

bool IsComplete(const OVERLAPPED& overlapped) {
  const NotOurs notOurs;
  return overlapped.Internal != kPending;
}

bool HasTransferred(const OVERLAPPED& overlapped) {
  const NotOurs notOurs;
  return overlapped.Internal == 0 && overlapped.InternalHigh != 0;
}

void Abandon(HANDLE pipe, OVERLAPPED& overlapped) {
  const NotOurs notOurs;
  const int conId = ConIdOf(pipe, kPipeBase);
  Log("abandon " + std::to_string(conId));
  overlapped.Internal = 0xC0000120;
  g_state.instances[conId].outstanding = false;
  g_state.instances[conId].writing.clear();
}

void Signal(HANDLE event) {
  const NotOurs notOurs;
  if (event == nullptr) return;  // an instance without a pool around it
  const int conId = ConIdOf(event, kEventBase);
  Log("signal " + std::to_string(conId));
  if (fault_plan::Fails("pipe_io::Signal")) return;
  g_state.instances[conId].signalled = true;
}

void Unsignal(HANDLE event) {
  const NotOurs notOurs;
  if (fault_plan::Fails("pipe_io::Unsignal")) return;
  if (g_state.beforeUnsignal) std::exchange(g_state.beforeUnsignal, nullptr)();
  g_state.instances[ConIdOf(event, kEventBase)].signalled = false;
}

std::uint32_t WaitAny(const HANDLE*, std::uint32_t count, std::uint32_t milliseconds,
                      std::uint32_t& error) {
  const NotOurs notOurs;
  error = fault_plan::CodeFor("pipe_io::WaitAny", milliseconds == 0 ? "poll" : "wait");
  if (error != 0) return WAIT_FAILED;
  if (milliseconds == 0) {
    ++g_state.polls;
    return WAIT_TIMEOUT;
  }
  ++g_state.waits;
  if (g_state.steps.empty()) {
    error = ERROR_INVALID_HANDLE;
    return WAIT_FAILED;
  }
  const auto step = g_state.steps.front();
  g_state.steps.pop_front();
  step();
  for (std::uint32_t i = 0; i < count; ++i) {
    if (g_state.instances[i].signalled) return i;
  }
  g_state.now += milliseconds;
  return WAIT_TIMEOUT;
}

void FlushAll(const HANDLE* pipes, std::uint32_t count, std::uint32_t milliseconds) {
  const NotOurs notOurs;
  if (fault_plan::Fails("pipe_io::FlushAll")) return;
  std::string call = "flush for " + std::to_string(milliseconds) + ":";
  for (std::uint32_t i = 0; i < count; ++i) {
    call += " " + std::to_string(ConIdOf(pipes[i], kPipeBase));
  }
  Log(call);
}

void Close(HANDLE pipe) {
  const NotOurs notOurs;
  Log("close " + std::to_string(ConIdOf(pipe, kPipeBase)));
}
std::uint64_t Now() {
  const NotOurs notOurs;
  return g_state.now;
}
std::uint32_t ClientProcess(HANDLE pipe) {
  const NotOurs notOurs;
  constexpr std::uint32_t kFirst = 4000;
  if (!IsPipe(pipe) || fault_plan::Fails("pipe_io::ClientProcess")) return 0;
  const int conId = ConIdOf(pipe, kPipeBase);
  Instance& instance = g_state.instances[conId];
  ++instance.clientQuestions;
  return instance.client.value_or(kFirst + static_cast<std::uint32_t>(conId));
}
void GiveWay() {
  const NotOurs notOurs;
  Log("give way");
}
std::uintptr_t ErrorQueryAddress() { return 4711; }

}  // namespace pipe_io
