#include "standins/ipcfgx/AddressList.h"

#include <algorithm>
#include <bit>
#include <thread>

namespace standin {

namespace {

constexpr std::uint32_t kDone = 0;
constexpr std::uint32_t kInvalidParameter = 87;       // ERROR_INVALID_PARAMETER
constexpr std::uint32_t kNotFound = 1168;             // ERROR_NOT_FOUND
constexpr std::uint32_t kNoSystemResources = 1450;    // ERROR_NO_SYSTEM_RESOURCES
constexpr std::uint32_t kObjectAlreadyExists = 5010;  // ERROR_OBJECT_ALREADY_EXISTS

constexpr std::uint32_t kInstancesBehind = 1000;

// The mask comes in network order: its first byte is the lowest one of the number.
bool IsMask(std::uint32_t mask) {
  const std::uint32_t bits =
      (mask << 24) | ((mask & 0xFF00) << 8) | ((mask >> 8) & 0xFF00) | (mask >> 24);
  return std::countl_one(bits) + std::countr_zero(bits) >= 32;
}

}  // namespace

// Held for a few steps only, and by nobody who may fault.
class AddressList::Lock {
 public:
  explicit Lock(AddressList& list) : list_(list) {
    while (list_.locked_.exchange(1) != 0) std::this_thread::yield();
  }
  ~Lock() { list_.locked_ = 0; }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  AddressList& list_;
};

std::uint32_t AddressList::Add(std::uint32_t address, std::uint32_t mask, std::uint32_t ifIndex,
                               std::uint32_t& context, std::uint32_t& instance) {
  context = 0;
  instance = 0;
  if (address == 0 || !IsMask(mask)) return kInvalidParameter;

  const Lock lock(*this);
  const auto same = [&](const Entry& entry) {
    return entry.context != 0 && entry.address == address && entry.ifIndex == ifIndex;
  };
  if (std::any_of(entries_.begin(), entries_.end(), same)) return kObjectAlreadyExists;
  const auto free = std::find_if(entries_.begin(), entries_.end(),
                                 [](const Entry& entry) { return entry.context == 0; });
  if (free == entries_.end()) return kNoSystemResources;

  context = ++given_;
  instance = kInstancesBehind + context;
  *free = {context, address, ifIndex};
  return kDone;
}

std::uint32_t AddressList::Delete(std::uint32_t context) {
  if (context == 0) return kNotFound;
  const Lock lock(*this);
  const auto found = std::find_if(entries_.begin(), entries_.end(), [context](const Entry& entry) {
    return entry.context == context;
  });
  if (found == entries_.end()) return kNotFound;
  *found = {};
  return kDone;
}

}  // namespace standin
