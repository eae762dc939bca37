#include "fuzz/FuzzedPipe.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "fuzz/FuzzedRequests.h"
#include "server/PipeInstance.h"
#include "server/PipeIo.h"

namespace {

using pipe_io::Outcome;

constexpr int kCount = 64;
constexpr std::uint32_t kBufferSize = 8192;
constexpr std::uintptr_t kPending = 0x103;
constexpr std::uintptr_t kFailed = 0xC0000000;
constexpr std::uint32_t kBrokenPipe = 109;
constexpr std::uint32_t kWaitFailed = 0xFFFFFFFF;

// The instances that clients come to; the others stay offered.
constexpr int kUsed[] = {0, 1, 32, 63};

// Calls without a wait or a decision of the script in between; a pass over all 64 has some hundred.
constexpr int kMostCalls = 3000;
// Waits until every instance has served, once everything goes well.
constexpr int kMostCalmWaits = 200;

void Require(bool holds) {
  if (!holds) std::abort();
}

enum class Op { kNone, kConnect, kRead, kWrite };
enum class Proof { kNone, kAsked, kServed };

struct Instance {
  bool isOpen = false;
  bool isSignalled = true;
  bool isUnderOverlapped = false;  // the block belongs to the operation
  Op op = Op::kNone;
  OVERLAPPED* block = nullptr;
  Outcome completion = {};
  std::uint8_t* buffer = nullptr;
  std::uint32_t size = 0;                             // of the buffer or of what is written
  const fuzzed_requests::Request* request = nullptr;  // the one that was read last
  std::size_t writes = 0;                             // of its reply, so far
  Bytes answer;                                       // read since the client asked for a proof
  Proof proof = Proof::kNone;
};

struct State {
  std::span<const std::uint8_t> script;
  Instance instances[kCount];
  int events = 0;
  int pipes = 0;
  int failedCreation = 0;  // 1 to 128: which of the creations of the pool fails
  std::uint64_t now = 1000;
  int calls = 0;
  int calmWaits = 0;
  bool isClosing = false;
  bool mayEnd = false;
} g;

// Handles are numbers.
constexpr int kEventBase = 1001;
constexpr int kPipeBase = 2001;

HANDLE AsHandle(int number) {
  return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(number));
}
HANDLE EventOf(int index) { return AsHandle(kEventBase + index); }

Instance* At(HANDLE handle, int base) {
  const std::uintptr_t index =
      reinterpret_cast<std::uintptr_t>(handle) - static_cast<std::uintptr_t>(base);
  return index < kCount ? &g.instances[index] : nullptr;
}
// Null for a handle that is closed.
Instance* PipeAt(HANDLE handle) {
  Instance* const instance = At(handle, kPipeBase);
  return instance != nullptr && instance->isOpen ? instance : nullptr;
}
int IndexOf(const Instance& instance) { return static_cast<int>(&instance - g.instances); }
bool IsUsed(const Instance& instance) {
  return std::find(std::begin(kUsed), std::end(kUsed), IndexOf(instance)) != std::end(kUsed);
}

// --- The script ---

bool IsCalm() { return g.script.empty(); }

// The next byte of the script; once it is used up, the one that means "as usual".
std::uint8_t Next() {
  if (g.script.empty()) return 0;
  const std::uint8_t byte = g.script.front();
  g.script = g.script.subspan(1);
  g.calls = 0;
  return byte;
}

void CountCall() { Require(++g.calls < kMostCalls); }

// --- What becomes of an operation ---

void Settle(Instance& instance, bool success, std::uint32_t count, std::uint32_t error) {
  Require(instance.isUnderOverlapped);
  instance.isUnderOverlapped = false;
  instance.completion = {success, success ? 0 : error, count};
  instance.isSignalled = true;
  instance.block->Internal = success ? 0 : kFailed;
  instance.block->InternalHigh = count;
}

// Hands a request of the script's choice to the read. \returns its size.
std::uint32_t Deliver(Instance& instance, std::uint8_t choice) {
  const fuzzed_requests::Request& request = fuzzed_requests::Pick(choice);
  Require(request.bytes.size() <= instance.size);
  std::copy(request.bytes.begin(), request.bytes.end(), instance.buffer);
  instance.request = &request;
  instance.writes = 0;
  return static_cast<std::uint32_t>(request.bytes.size());
}

// A stop counts once the server has read it.
void NoteStop(const Instance& instance, std::uint32_t count) {
  if (fuzzed_requests::IsConfirmedStop({instance.buffer, instance.buffer + count})) g.mayEnd = true;
}

void CompleteConnect(Instance& instance, std::uint8_t how) {
  if (how == 0xFF) {
    g.mayEnd = true;  // one failed pending connect ends the server
    Settle(instance, false, 0, kBrokenPipe);
  } else {
    Settle(instance, true, 0, 0);
  }
}

void CompleteRead(Instance& instance, std::uint8_t how) {
  if (how >= 0xF0) {
    Settle(instance, false, how == 0xF0 ? 3u : 0u, kBrokenPipe);
  } else if (how >= 0xE0) {
    Settle(instance, true, 0, 0);
  } else {
    const std::uint32_t count = Deliver(instance, how);
    NoteStop(instance, count);
    Settle(instance, true, count, 0);
  }
}

void CompleteWrite(Instance& instance, std::uint8_t how) {
  if (how >= 0xF0) {
    Settle(instance, false, 0, kBrokenPipe);
  } else if (how >= 0xE0) {
    Settle(instance, true, instance.size - 1, 0);
  } else {
    Settle(instance, true, instance.size, 0);
  }
}

void CompleteOne(Instance& instance, std::uint8_t how) {
  if (!instance.isOpen || !instance.isUnderOverlapped) return;
  switch (instance.op) {
    case Op::kConnect:
      return CompleteConnect(instance, how);
    case Op::kRead:
      return CompleteRead(instance, how);
    case Op::kWrite:
      return CompleteWrite(instance, how);
    case Op::kNone:
      break;
  }
}

// Clients and the platform act at any moment.
void Meanwhile() {
  CountCall();
  const std::uint8_t what = Next();
  if (what < 0xC0) return;
  CompleteOne(g.instances[kUsed[what % std::size(kUsed)]], Next());
}

// --- When everything goes well ---

bool HasServedAll() {
  return std::all_of(std::begin(kUsed), std::end(kUsed),
                     [](int index) { return g.instances[index].proof == Proof::kServed; });
}

void CompleteWell(Instance& instance) {
  switch (instance.op) {
    case Op::kConnect:
      return Settle(instance, true, 0, 0);
    case Op::kWrite:
      if (instance.proof == Proof::kAsked) {
        instance.answer = instance.answer + Bytes(instance.buffer, instance.buffer + instance.size);
      }
      return Settle(instance, true, instance.size, 0);
    case Op::kRead:
      if (instance.proof == Proof::kAsked) {
        Require(instance.answer == fuzzed_requests::NoOperation().writes[0]);
        instance.proof = Proof::kServed;
        return;
      }
      instance.proof = Proof::kAsked;
      instance.answer.clear();
      return Settle(instance, true, Deliver(instance, 0), 0);
    case Op::kNone:
      break;
  }
}

// What the wait reports when nothing else is going on. An instance that nothing is outstanding on
// would never be heard of again, unless the server looks after it by itself.
std::uint32_t WaitCalmly(std::uint32_t milliseconds, std::uint32_t& error) {
  Require(++g.calmWaits < kMostCalmWaits);
  g.calls = 0;
  for (const int index : kUsed) {
    Instance& instance = g.instances[index];
    if (instance.proof == Proof::kServed) continue;
    if (instance.isUnderOverlapped) CompleteWell(instance);
    if (instance.isSignalled) return static_cast<std::uint32_t>(index);
  }
  if (HasServedAll()) {
    g.mayEnd = true;
    error = ERROR_INVALID_HANDLE;
    return kWaitFailed;
  }
  Require(milliseconds != pipe_io::kForever);
  g.now += milliseconds;
  return WAIT_TIMEOUT;
}

std::uint32_t Odd(std::uint32_t result, std::uint32_t& error) {
  g.mayEnd = true;
  error = ERROR_INVALID_HANDLE;
  return result;
}

// What the wait reports as the script has it; nothing yet to go on with the next step.
bool WaitScripted(std::uint32_t milliseconds, std::uint32_t& result, std::uint32_t& error) {
  const std::uint8_t what = Next();
  Instance& instance = g.instances[kUsed[what % std::size(kUsed)]];
  result = static_cast<std::uint32_t>(IndexOf(instance));
  if (what < 0xC0) {
    CompleteOne(instance, Next());
    return instance.isSignalled;
  }
  if (what < 0xD0) return true;  // woken for nothing
  if (what < 0xE0) {
    g.now += Next();
    return false;
  }
  if (what < 0xF8) {
    if (milliseconds == pipe_io::kForever) return false;
    g.now += milliseconds;
    result = WAIT_TIMEOUT;
    return true;
  }
  static constexpr std::uint32_t kOdd[] = {kWaitFailed, 0x80, 0xBF, 64, WAIT_TIMEOUT};
  result = Odd(kOdd[what % std::size(kOdd)], error);
  return true;
}

// --- The operations ---

// Begins an operation on the instance's block. The platform marks the block as pending first, and
// leaves it so when it refuses the operation outright, or does not.
Outcome Start(Instance& instance, Op op, OVERLAPPED& block, Outcome outcome) {
  Require(!instance.isUnderOverlapped);
  instance.op = op;
  instance.block = &block;
  instance.isSignalled = false;
  block.Internal = kPending;
  if (outcome.success) {
    instance.isSignalled = true;
    block.Internal = 0;
    instance.completion = outcome;
  } else if (outcome.error == ERROR_IO_PENDING) {
    instance.isUnderOverlapped = true;
  } else {
    block.Internal = outcome.error % 2 == 0 ? kPending : kFailed;
  }
  return outcome;
}

Outcome Pends() { return {false, ERROR_IO_PENDING, 0}; }
Outcome Fails(std::uint32_t error) { return {false, error, 0}; }
Outcome Succeeds(std::uint32_t count) { return {true, 0, count}; }

}  // namespace

void fuzzed_pipe::Begin(std::span<const std::uint8_t> script) {
  g = {};
  g.script = script;
  const std::uint8_t creation = Next();
  if (creation >= 0x80) g.failedCreation = creation - 0x7F;
}

void fuzzed_pipe::CheckEnd() { Require(g.mayEnd); }

namespace pipe_io {

HANDLE CreateInstanceEvent() {
  const int index = g.events++;
  if (g.failedCreation == 2 * index + 1) {
    g.mayEnd = true;
    return nullptr;
  }
  return EventOf(index);
}

HANDLE CreateInstance(const char* name, SECURITY_ATTRIBUTES*, Claim, std::uint32_t& error) {
  Require(std::strcmp(name, "\\\\.\\pipe\\QorlixSRVPIPE32") == 0);
  const int index = g.pipes++;
  error = 0;
  if (g.failedCreation == 2 * index + 2) {
    g.mayEnd = true;
    error = 231;
    return nullptr;
  }
  g.instances[index].isOpen = true;
  return AsHandle(kPipeBase + index);
}

Outcome Connect(HANDLE pipe, OVERLAPPED& block) {
  Meanwhile();
  Instance* const instance = PipeAt(pipe);
  if (instance == nullptr) return Fails(ERROR_INVALID_HANDLE);
  Require(block.hEvent == EventOf(IndexOf(*instance)));
  const std::uint8_t how = IsUsed(*instance) ? Next() : 0;
  if (how < 0x80) return Start(*instance, Op::kConnect, block, Pends());
  if (how < 0xC0) return Start(*instance, Op::kConnect, block, Fails(ERROR_PIPE_CONNECTED));
  if (how < 0xE0) return Start(*instance, Op::kConnect, block, Fails(ERROR_NO_DATA));
  if (how < 0xF0) return Start(*instance, Op::kConnect, block, Succeeds(0));
  return Start(*instance, Op::kConnect, block, Fails(8));
}

Outcome Disconnect(HANDLE pipe) {
  Meanwhile();
  Instance* const instance = PipeAt(pipe);
  if (instance == nullptr) return Fails(ERROR_INVALID_HANDLE);
  // The completion would go into a block that has the next connect by then.
  Require(g.isClosing || !instance->isUnderOverlapped);
  return Next() >= 0xF0 ? Fails(233) : Succeeds(0);
}

Outcome Read(HANDLE pipe, void* buffer, std::uint32_t size, OVERLAPPED& block) {
  Meanwhile();
  Instance* const instance = PipeAt(pipe);
  if (instance == nullptr) return Fails(ERROR_INVALID_HANDLE);
  Require(buffer == Pipe[IndexOf(*instance)].RequestBuffer && size == kBufferSize);
  instance->buffer = static_cast<std::uint8_t*>(buffer);
  instance->size = size;
  const std::uint8_t how = Next();
  if (how < 0x80) return Start(*instance, Op::kRead, block, Pends());
  if (how >= 0xF0) return Start(*instance, Op::kRead, block, Fails(kBrokenPipe));
  if (how >= 0xE0) return Start(*instance, Op::kRead, block, Succeeds(0));
  Require(!instance->isUnderOverlapped);
  const std::uint32_t count = Deliver(*instance, Next());
  NoteStop(*instance, count);
  return Start(*instance, Op::kRead, block, Succeeds(count));
}

Outcome Write(HANDLE pipe, const void* data, std::uint32_t size, OVERLAPPED& block) {
  Meanwhile();
  Instance* const instance = PipeAt(pipe);
  if (instance == nullptr) return Fails(ERROR_INVALID_HANDLE);
  const auto* const bytes = static_cast<const std::uint8_t*>(data);
  Require(instance->request != nullptr && instance->writes < instance->request->writes.size());
  Require(instance->request->writes[instance->writes++] == Bytes(bytes, bytes + size));
  instance->buffer = const_cast<std::uint8_t*>(bytes);
  instance->size = size;
  const std::uint8_t how = Next();
  if (how >= 0xF0) return Start(*instance, Op::kWrite, block, Fails(how == 0xF0 ? 8 : 232));
  if (how >= 0xE0) return Start(*instance, Op::kWrite, block, Succeeds(size - 1));
  if (how >= 0x40) return Start(*instance, Op::kWrite, block, Pends());
  if (instance->proof == Proof::kAsked)
    instance->answer = instance->answer + Bytes(bytes, bytes + size);
  return Start(*instance, Op::kWrite, block, Succeeds(size));
}

Outcome Completion(HANDLE pipe, OVERLAPPED& block) {
  CountCall();
  Instance* const instance = PipeAt(pipe);
  if (instance == nullptr) return Fails(ERROR_INVALID_HANDLE);
  Require(instance->block == &block);
  if (instance->isUnderOverlapped) return Fails(ERROR_IO_INCOMPLETE);
  return instance->completion;
}

bool IsComplete(const OVERLAPPED& block) { return block.Internal != kPending; }

bool HasTransferred(const OVERLAPPED& block) {
  return block.Internal == 0 && block.InternalHigh != 0;
}

void Abandon(HANDLE pipe, OVERLAPPED& block) {
  CountCall();
  Instance* const instance = PipeAt(pipe);
  Require(instance != nullptr && instance->block == &block);
  if (instance->isUnderOverlapped) Settle(*instance, false, 0, 995);
}

void Signal(HANDLE event) {
  CountCall();
  Instance* const instance = At(event, kEventBase);
  Require(instance != nullptr);
  instance->isSignalled = true;
}

void Unsignal(HANDLE event) {
  CountCall();
  Instance* const instance = At(event, kEventBase);
  Require(instance != nullptr);
  instance->isSignalled = false;
}

std::uint32_t WaitAny(const HANDLE* events, std::uint32_t count, std::uint32_t milliseconds,
                      std::uint32_t& error) {
  Require(count == kCount && events[0] == EventOf(0) && events[63] == EventOf(63));
  error = 0;
  Meanwhile();
  if (milliseconds == 0) return WAIT_TIMEOUT;
  for (;;) {
    for (std::uint32_t i = 0; i < kCount; ++i) {
      if (g.instances[i].isSignalled) return i;
    }
    if (IsCalm()) return WaitCalmly(milliseconds, error);
    std::uint32_t result = 0;
    if (WaitScripted(milliseconds, result, error)) return result;
  }
}

void FlushAll(const HANDLE*, std::uint32_t count, std::uint32_t milliseconds) {
  Require(count <= kCount && milliseconds <= 2000);
  g.isClosing = true;
}

void Close(HANDLE pipe) {
  Instance* const instance = PipeAt(pipe);
  Require(instance != nullptr);
  if (instance->isUnderOverlapped) Settle(*instance, false, 0, kBrokenPipe);
  instance->isOpen = false;
}

std::uint64_t Now() { return g.now; }

// Three processes, and clients of whom the system does not tell.
std::uint32_t ClientProcess(HANDLE pipe) {
  CountCall();
  const Instance* const instance = PipeAt(pipe);
  Require(instance != nullptr);
  return static_cast<std::uint32_t>(IndexOf(*instance)) % 4 * 4;
}

void GiveWay() { CountCall(); }
std::uintptr_t ErrorQueryAddress() { return 4711; }

}  // namespace pipe_io
