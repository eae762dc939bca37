#include "fuzz/FuzzedClients.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "server/PipeIo.h"

namespace fuzzed_clients {

State g;

namespace {

constexpr std::uint32_t kWaitFailed = 0xFFFFFFFF;

// The instances that clients come to; the others stay offered.
constexpr int kUsed[] = {0, 1, 32, 63};

// Calls without a wait or a decision of the script in between; a pass over all 64 has some hundred.
constexpr int kMostCalls = 3000;
// Waits until every instance has served, once everything goes well.
constexpr int kMostCalmWaits = 200;

}  // namespace

void Require(bool holds) {
  if (!holds) std::abort();
}

int IndexOf(const Instance& instance) { return static_cast<int>(&instance - g.instances); }

bool IsUsed(const Instance& instance) {
  return std::find(std::begin(kUsed), std::end(kUsed), IndexOf(instance)) != std::end(kUsed);
}

std::uint32_t ProcessOf(const Instance& instance) {
  return (static_cast<std::uint32_t>(IndexOf(instance)) + instance.connects) % 4 * 4;
}

// --- The script ---

bool IsCalm() { return g.script.empty(); }

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

std::uint32_t Deliver(Instance& instance, std::uint8_t choice) {
  const fuzzed_requests::Request& request = fuzzed_requests::Pick(choice);
  Require(request.bytes.size() <= instance.size);
  std::copy(request.bytes.begin(), request.bytes.end(), instance.buffer);
  instance.request = &request;
  instance.writes = 0;
  return static_cast<std::uint32_t>(request.bytes.size());
}

void NoteStop(const Instance& instance, std::uint32_t count) {
  if (fuzzed_requests::IsConfirmedStop({instance.buffer, instance.buffer + count})) g.mayEnd = true;
}

namespace {

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

}  // namespace

void Meanwhile() {
  CountCall();
  const std::uint8_t what = Next();
  if (what < 0xC0) return;
  CompleteOne(g.instances[kUsed[what % std::size(kUsed)]], Next());
}

// --- When everything goes well ---

namespace {

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

}  // namespace

std::uint32_t Wait(std::uint32_t milliseconds, std::uint32_t& error) {
  for (;;) {
    for (std::uint32_t i = 0; i < kCount; ++i) {
      if (g.instances[i].isSignalled) return i;
    }
    if (IsCalm()) return WaitCalmly(milliseconds, error);
    std::uint32_t result = 0;
    if (WaitScripted(milliseconds, result, error)) return result;
  }
}

}  // namespace fuzzed_clients
