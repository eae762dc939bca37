#include "server/RequestLog.h"

#include <atomic>

namespace request_log {
namespace {

struct Slot {
  std::atomic<std::uint32_t> number;  // 0: nothing, or being written
  std::atomic<std::uint32_t> commandAndConnection;
  std::atomic<std::uint32_t> client;
  std::atomic<std::uint32_t> result;
};

constinit Slot g_slots[kRecords] = {};

// Numbers of the request that was begun last and of the one that was ended last; the same when none
// is being served.
constinit std::atomic<std::uint32_t> g_begun = 0;
constinit std::atomic<std::uint32_t> g_ended = 0;

// Whoever has a core of his own to read with sees a slot's number last and loses it first.
static_assert(std::atomic<std::uint32_t>::is_always_lock_free);

Slot& SlotOf(std::uint32_t number) { return g_slots[number % kRecords]; }

// \returns false when the slot holds another request by now.
bool Read(std::uint32_t number, Record& record) {
  const Slot& slot = SlotOf(number);
  if (number == 0 || slot.number.load(std::memory_order_acquire) != number) return false;
  const std::uint32_t both = slot.commandAndConnection.load(std::memory_order_relaxed);
  record.number = number;
  record.command = static_cast<std::uint16_t>(both >> 16);
  record.connection = static_cast<std::uint16_t>(both);
  record.client = slot.client.load(std::memory_order_relaxed);
  record.result = slot.result.load(std::memory_order_relaxed);
  record.beingServed = false;
  std::atomic_thread_fence(std::memory_order_acquire);
  return slot.number.load(std::memory_order_relaxed) == number;
}

// The one before it has ended last. That its end has not come would also be so behind a later
// one's.
bool IsBeingServed(std::uint32_t number) {
  return g_ended.load(std::memory_order_acquire) == number - 1;
}

}  // namespace

void Reset() {
  for (Slot& slot : g_slots) slot.number.store(0, std::memory_order_relaxed);
  g_begun.store(0, std::memory_order_relaxed);
  g_ended.store(0, std::memory_order_release);
}

void Begin(std::uint16_t command, int connection, std::uint32_t client) {
  const std::uint32_t number = g_begun.load(std::memory_order_relaxed) + 1;
  Slot& slot = SlotOf(number);
  slot.number.store(0, std::memory_order_relaxed);
  std::atomic_thread_fence(std::memory_order_release);
  slot.commandAndConnection.store(
      static_cast<std::uint32_t>(command) << 16 | static_cast<std::uint16_t>(connection),
      std::memory_order_relaxed);
  slot.client.store(client, std::memory_order_relaxed);
  slot.result.store(0, std::memory_order_relaxed);
  slot.number.store(number, std::memory_order_release);
  g_begun.store(number, std::memory_order_release);
}

void End(std::uint32_t result) {
  const std::uint32_t number = g_begun.load(std::memory_order_relaxed);
  SlotOf(number).result.store(result, std::memory_order_relaxed);
  g_ended.store(number, std::memory_order_release);
}

bool BeingServed(Record& record) {
  const std::uint32_t number = g_begun.load(std::memory_order_acquire);
  if (!IsBeingServed(number) || !Read(number, record)) return false;
  record.beingServed = IsBeingServed(number);
  return record.beingServed;
}

std::uint32_t Latest(Record (&records)[kRecords]) {
  const std::uint32_t last = g_begun.load(std::memory_order_acquire);
  const bool serving = IsBeingServed(last);
  std::uint32_t count = 0;
  for (std::uint32_t back = kRecords; back-- > 0;) {
    if (Read(last - back, records[count])) ++count;
  }
  if (serving && count != 0 && records[count - 1].number == last) {
    records[count - 1].beingServed = true;
  }
  return count;
}

}  // namespace request_log
