#include "standins/boardsvc32/BoardModel.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "standins/boardsvc32/LogDeviceStore.h"
#include "standins/boardsvc32/ResultCode.h"

namespace boardsim {

namespace {

std::string_view View(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text, strnlen(text, kMostBytes));
}

bool Fits(std::string_view entry, std::string_view asked) {
  return entry.empty() || asked.empty() || EqualIgnoringCase(entry, asked);
}

bool Fits(const std::optional<std::uint32_t>& entry, std::uint32_t asked) {
  return !entry || *entry == asked;
}

bool Fits(const BoardSelector& of, const char* board, const char* map, const char* deviceId,
          const char* hardwareInstanceId) {
  return Fits(of.board, View(board)) && Fits(of.map, View(map)) &&
         Fits(of.deviceId, View(deviceId)) && Fits(of.hardwareInstanceId, View(hardwareInstanceId));
}

bool SameGuid(const BRDX_GUID& left, const BRDX_GUID& right) {
  return std::memcmp(&left, &right, sizeof(left)) == 0;
}

// The n-th element that fits, or nothing.
template <typename List, typename Predicate>
const typename List::value_type* Nth(const List& list, std::uint32_t index, Predicate fits) {
  for (const auto& element : list) {
    if (fits(element) && index-- == 0) return &element;
  }
  return nullptr;
}

bool Any(const auto&) { return true; }

// The first failure of a row of registry accesses is what the caller hears; the row goes on.
void Keep(std::uint32_t& first, std::uint32_t result) {
  if (first == 0) first = result;
}

const log_device_store::Entry* FindDevice(const std::vector<log_device_store::Entry>& devices,
                                          std::string_view name) {
  return Nth(devices, 0, [&](const auto& device) { return EqualIgnoringCase(device.name, name); });
}

}  // namespace

BoardModel::BoardModel(Inventory inventory)
    : inventory_(std::move(inventory)), delivered_(inventory_.changes.size()) {}

bool BoardModel::IsPresent(const Board& board) const {
  return board.present && scans_ >= board.appearsAtScan &&
         (board.vanishesAtScan == 0 || scans_ < board.vanishesAtScan);
}

bool BoardModel::IsPresentDevice(std::string_view logicalDevice) const {
  return std::any_of(inventory_.boards.begin(), inventory_.boards.end(), [&](const Board& board) {
    return IsPresent(board) && EqualIgnoringCase(board.logicalDevice, logicalDevice);
  });
}

Answer BoardModel::Scan() {
  ++scans_;
  Answer answer;
  for (const auto& device : log_device_store::List()) {
    if (device.ours) {
      Keep(answer.result, log_device_store::MarkPresent(device.name, IsPresentDevice(device.name)));
    }
  }
  return answer;
}

Answer BoardModel::CreateAllLogdevices() {
  Answer answer;
  const auto devices = log_device_store::List();
  for (const Board& board : inventory_.boards) {
    if (IsPresent(board) && FindDevice(devices, board.logicalDevice) == nullptr) {
      Keep(answer.result, log_device_store::Write(board));
    }
  }
  return answer;
}

Answer BoardModel::RemoveAbandonLogDevices() {
  Answer answer;
  for (const auto& device : log_device_store::List()) {
    if (device.ours && !IsPresentDevice(device.name)) {
      Keep(answer.result, log_device_store::Remove(device.name));
    }
  }
  return answer;
}

Answer BoardModel::UpdateLogdevicesForDevice(const char* deviceId, const char* hardwareId) {
  if (View(deviceId).empty()) return {.result = kInvalidParameter};
  Answer answer;
  bool found = false;
  const auto devices = log_device_store::List();
  for (const Board& board : inventory_.boards) {
    if (!IsPresent(board) || !EqualIgnoringCase(board.deviceId, View(deviceId)) ||
        !Fits(board.hardwareId, View(hardwareId))) {
      continue;
    }
    found = true;
    const auto* const device = FindDevice(devices, board.logicalDevice);
    if (device == nullptr || device->ours) Keep(answer.result, log_device_store::Write(board));
  }
  if (!found) answer.result = kNotFound;
  return answer;
}

Answer BoardModel::HasUninitializedInstances() const {
  return {.result = inventory_.uninitializedInstances};
}

Answer BoardModel::EnumBoard(const char* deviceId, std::uint32_t index) const {
  const Board* const board = Nth(inventory_.boards, index, [&](const Board& candidate) {
    return IsPresent(candidate) && Fits(candidate.deviceId, View(deviceId));
  });
  if (board == nullptr) return {.result = kNoMoreItems};
  return {.texts = {board->name, board->map, board->adapter}};
}

Answer BoardModel::EnumInstBoard(std::uint32_t index) const {
  const Board* const board = Nth(inventory_.boards, index, Any<Board>);
  if (board == nullptr) return {.result = kNoMoreItems};
  return {.texts = {board->name, board->deviceId, board->netType, board->hardwareId,
                    board->hardwareInstanceId, board->map},
          .numbers = {IsPresent(*board) ? board->state : board->abandonedState}};
}

Answer BoardModel::EnumAvailableBoards(std::uint32_t index) const {
  const AvailableBoard* const board = Nth(inventory_.availableBoards, index, Any<AvailableBoard>);
  if (board == nullptr) return {.result = kNoMoreItems};
  return {.texts = {board->name, board->deviceId}, .numbers = {board->value}};
}

Answer BoardModel::EnumAdapters(std::uint32_t index) const {
  const Adapter* const adapter = Nth(inventory_.adapters, index, Any<Adapter>);
  if (adapter == nullptr) return {.result = kNoMoreItems};
  return {.texts = {adapter->name, adapter->map}, .numbers = {adapter->value}};
}

Answer BoardModel::EnumConfiguration(std::uint32_t index, const char* board, const char* map,
                                     const char* deviceId, const char* hardwareInstanceId) const {
  const auto* const entry = Nth(inventory_.configurations, index, [&](const auto& candidate) {
    return Fits(candidate.of, board, map, deviceId, hardwareInstanceId);
  });
  if (entry == nullptr) return {.result = kNoMoreItems};
  return {.texts = {entry->configuration, entry->protocolType, entry->layer4Protocol, entry->unit}};
}

Answer BoardModel::BoardGetMap(const char* deviceId, const char* adapter,
                               const char* hardwareId) const {
  const auto fits = [&](const auto& candidate) {
    return Fits(candidate.deviceId, View(deviceId)) && Fits(candidate.adapter, View(adapter)) &&
           Fits(candidate.hardwareId, View(hardwareId));
  };
  const MapEntry* const entry = Nth(inventory_.maps, 0, fits);
  if (entry != nullptr) return {.texts = {entry->map}};
  const Board* const board = Nth(inventory_.boards, 0, [&](const Board& candidate) {
    return IsPresent(candidate) && fits(candidate);
  });
  if (board != nullptr) return {.texts = {board->map}};
  return {.result = kNotFound};
}

Answer BoardModel::GetBoardInfo(std::uint32_t type, const char* board, const char* map,
                                const char* deviceId, const char* hardwareInstanceId) const {
  const BoardInfo* const info = Nth(inventory_.infos, 0, [&](const BoardInfo& candidate) {
    return candidate.type == type && Fits(candidate.of, board, map, deviceId, hardwareInstanceId);
  });
  if (info == nullptr) return {.result = kNotFound};
  return {.texts = {info->value}};
}

Answer BoardModel::GetBoardInfoEx(std::uint32_t type, const char* board, const char* map,
                                  const char* hardwareInstanceId) const {
  const BoardInfo* const info = Nth(inventory_.infosEx, 0, [&](const BoardInfo& candidate) {
    return candidate.type == type && Fits(candidate.of, board, map, nullptr, hardwareInstanceId);
  });
  if (info == nullptr) return {.result = kNotFound};
  return {.texts = {info->value}};
}

bool BoardModel::Knows(std::string_view deviceId) const {
  const auto fits = [&](const auto& entry) { return Fits(entry.deviceId, deviceId); };
  return std::any_of(inventory_.boards.begin(), inventory_.boards.end(), fits) ||
         std::any_of(inventory_.changes.begin(), inventory_.changes.end(), fits);
}

std::vector<BoardModel::Registration>::iterator BoardModel::Find(const BRDX_GUID& guid,
                                                                 std::string_view deviceId) {
  return std::find_if(registrations_.begin(), registrations_.end(), [&](const auto& registration) {
    return SameGuid(registration.guid, guid) && EqualIgnoringCase(registration.deviceId, deviceId);
  });
}

Answer BoardModel::Register(const BRDX_GUID& guid, const char* deviceId) {
  if (!Knows(View(deviceId))) return {.result = kNotFound};
  if (Find(guid, View(deviceId)) == registrations_.end()) {
    registrations_.push_back({guid, std::string(View(deviceId))});
  }
  return {};
}

Answer BoardModel::Unregister(const BRDX_GUID& guid, const char* deviceId) {
  const auto registration = Find(guid, View(deviceId));
  if (registration == registrations_.end()) return {.result = kNotFound};
  registrations_.erase(registration);
  return {};
}

bool BoardModel::IsRegistered(const DeviceChange& change) const {
  return std::any_of(registrations_.begin(), registrations_.end(), [&](const auto& registration) {
    return SameGuid(registration.guid, change.guid) && Fits(registration.deviceId, change.deviceId);
  });
}

Answer BoardModel::GetDeviceChange(const char* deviceId) const {
  for (std::size_t index = 0; index < inventory_.changes.size(); ++index) {
    const DeviceChange& change = inventory_.changes[index];
    if (!delivered_[index] && Fits(change.deviceId, View(deviceId)) && IsRegistered(change)) {
      return {
          .texts = {change.text}, .numbers = {change.kind}, .guid = change.guid, .change = index};
    }
  }
  return {.result = kNoMoreItems};
}

Answer BoardModel::GetBoardInformation(const BRDX_INFO_INPUT& input, std::uint32_t last) const {
  const auto* const entry = Nth(inventory_.informations, 0, [&](const auto& candidate) {
    return Fits(candidate.value1, input.value1) && Fits(candidate.value2, input.value2) &&
           Fits(candidate.value3, input.value3) && Fits(candidate.last, last);
  });
  if (entry == nullptr) return {.result = kNotFound};
  return {.result = entry->result,
          .texts = {entry->area1, entry->area2},
          .numbers = {entry->value, entry->result1, entry->result2}};
}

Answer BoardModel::GetDeviceInstance(const char* hardwareId, const std::uint32_t* option) const {
  const DeviceInstance* found = nullptr;
  for (const DeviceInstance& entry : inventory_.instances) {
    if (!EqualIgnoringCase(entry.hardwareId, View(hardwareId))) continue;
    if (option != nullptr && entry.option == *option) return {.numbers = {entry.instance}};
    if (found == nullptr && !entry.option) found = &entry;
  }
  if (found == nullptr) return {.result = kNotFound};
  return {.numbers = {found->instance}};
}

void BoardModel::Delivered(const Answer& answer) {
  if (answer.change && *answer.change < delivered_.size()) delivered_[*answer.change] = true;
}

}  // namespace boardsim
