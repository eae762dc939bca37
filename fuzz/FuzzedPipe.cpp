#include "fuzz/FuzzedPipe.h"

#include <cstring>

#include "fuzz/FuzzedClients.h"
#include "fuzz/FuzzedRequests.h"
#include "server/PipeInstance.h"
#include "server/PipeIo.h"

namespace {

using fuzzed_clients::CountCall;
using fuzzed_clients::Deliver;
using fuzzed_clients::g;
using fuzzed_clients::IndexOf;
using fuzzed_clients::Instance;
using fuzzed_clients::IsUsed;
using fuzzed_clients::kBrokenPipe;
using fuzzed_clients::kCount;
using fuzzed_clients::kFailed;
using fuzzed_clients::kPending;
using fuzzed_clients::Meanwhile;
using fuzzed_clients::Next;
using fuzzed_clients::NoteStop;
using fuzzed_clients::Op;
using fuzzed_clients::ProcessOf;
using fuzzed_clients::Proof;
using fuzzed_clients::Require;
using fuzzed_clients::Settle;
using pipe_io::Outcome;

constexpr std::uint32_t kBufferSize = 8192;

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
  ++instance->connects;
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
  // The process is that of this connection, not of an earlier one.
  Require(Pipe[IndexOf(*instance)].clientProcess == ProcessOf(*instance));
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
  return fuzzed_clients::Wait(milliseconds, error);
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

std::uint32_t ClientProcess(HANDLE pipe) {
  CountCall();
  const Instance* const instance = PipeAt(pipe);
  Require(instance != nullptr);
  return ProcessOf(*instance);
}

void GiveWay() { CountCall(); }
std::uintptr_t ErrorQueryAddress() { return 4711; }

}  // namespace pipe_io
