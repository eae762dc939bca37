#include "actions/RestartResults.h"

#include <new>

bool RestartResults::File(const char* eventName, std::uint32_t result) {
  const std::lock_guard<std::mutex> lock(mutex_);
  try {
    entries_.push_back({eventName, result});
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool RestartResults::Take(const char* eventName, std::uint32_t& result) {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (auto entry = entries_.begin(); entry != entries_.end(); ++entry) {
    if (entry->eventName != eventName) continue;
    result = entry->result;
    entries_.erase(entry);
    return true;
  }
  return false;
}

int RestartResults::Remove(const char* eventName) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<int>(
      entries_.remove_if([&](const Entry& entry) { return entry.eventName == eventName; }));
}
