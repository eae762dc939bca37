#include "standins/boardsvc32/InventoryFile.h"

#include <array>
#include <cstdio>
#include <memory>

namespace boardsim {

namespace {

constexpr std::size_t kLargestFile = 1 << 20;  // bytes
constexpr std::size_t kLongestKeyName = 200;   // bytes; the registry takes 255 letters
constexpr std::uint32_t kLargestByte = 255;

void ReadSelector(SectionReader& reader, BoardSelector& of) {
  reader.Text("board", of.board)
      .Text("map", of.map)
      .Text("hardware-instance-id", of.hardwareInstanceId);
}

void ReadLog(SectionReader& reader, InventoryFile& file) {
  reader.Required("file").Text("file", file.logFile);
}

void ReadMachine(SectionReader& reader, InventoryFile& file) {
  reader.Number("uninitialized-instances", file.inventory.uninitializedInstances);
}

void ReadBoard(SectionReader& reader, InventoryFile& file) {
  Board board;
  reader.Required("name")
      .Text("name", board.name)
      .Required("device-id")
      .Text("device-id", board.deviceId)
      .Text("net-type", board.netType)
      .Text("hardware-id", board.hardwareId)
      .Text("hardware-instance-id", board.hardwareInstanceId)
      .Text("map", board.map)
      .Text("adapter", board.adapter)
      .Number("state", board.state)
      .Number("abandoned-state", board.abandonedState)
      .YesNo("present", board.present)
      .Number("appears-at-scan", board.appearsAtScan)
      .Number("vanishes-at-scan", board.vanishesAtScan);
  board.logicalDevice = board.map.empty() ? board.name : board.name + "." + board.map;
  reader.Text("logical-device", board.logicalDevice);

  if (board.logicalDevice.empty() || board.logicalDevice.size() > kLongestKeyName ||
      board.logicalDevice.find('\\') != std::string::npos) {
    reader.Complain("logical-device",
                    "a logical device is named in 1 to 200 bytes without backslash");
  }
  for (const Board& other : file.inventory.boards) {
    if (EqualIgnoringCase(other.logicalDevice, board.logicalDevice)) {
      reader.Complain("logical-device", "another board has the logical device " +
                                            Quote(board.logicalDevice) + " already");
    }
  }
  file.inventory.boards.push_back(std::move(board));
}

void ReadAvailableBoard(SectionReader& reader, InventoryFile& file) {
  AvailableBoard& board = file.inventory.availableBoards.emplace_back();
  reader.Required("name")
      .Text("name", board.name)
      .Required("device-id")
      .Text("device-id", board.deviceId)
      .Number("value", board.value);
}

void ReadAdapter(SectionReader& reader, InventoryFile& file) {
  Adapter& adapter = file.inventory.adapters.emplace_back();
  reader.Required("name")
      .Text("name", adapter.name)
      .Text("map", adapter.map)
      .Number("value", adapter.value, kLargestByte);
}

void ReadConfiguration(SectionReader& reader, InventoryFile& file) {
  Configuration& entry = file.inventory.configurations.emplace_back();
  ReadSelector(reader, entry.of);
  reader.Text("device-id", entry.of.deviceId)
      .Required("configuration")
      .Text("configuration", entry.configuration)
      .Text("protocol-type", entry.protocolType)
      .Text("layer4-protocol", entry.layer4Protocol)
      .Text("unit", entry.unit);
}

void ReadMap(SectionReader& reader, InventoryFile& file) {
  MapEntry& entry = file.inventory.maps.emplace_back();
  reader.Required("map")
      .Text("map", entry.map)
      .Text("device-id", entry.deviceId)
      .Text("adapter", entry.adapter)
      .Text("hardware-id", entry.hardwareId);
}

void ReadInfo(SectionReader& reader, InventoryFile& file) {
  BoardInfo& info = file.inventory.infos.emplace_back();
  ReadSelector(reader, info.of);
  reader.Text("device-id", info.of.deviceId)
      .Required("type")
      .Number("type", info.type)
      .Required("text")
      .Text("text", info.value);
}

void ReadInfoEx(SectionReader& reader, InventoryFile& file) {
  BoardInfo& info = file.inventory.infosEx.emplace_back();
  ReadSelector(reader, info.of);
  reader.Required("type").Number("type", info.type).Required("bytes").Bytes("bytes", info.value);
}

void ReadInstance(SectionReader& reader, InventoryFile& file) {
  DeviceInstance& entry = file.inventory.instances.emplace_back();
  reader.Required("hardware-id")
      .Text("hardware-id", entry.hardwareId)
      .Number("option", entry.option)
      .Required("instance")
      .Number("instance", entry.instance);
}

void ReadChange(SectionReader& reader, InventoryFile& file) {
  DeviceChange& change = file.inventory.changes.emplace_back();
  reader.Required("device-id")
      .Text("device-id", change.deviceId)
      .Required("kind")
      .Number("kind", change.kind, kLargestByte)
      .Required("guid")
      .Guid("guid", change.guid)
      .Text("text", change.text);
}

void ReadInformation(SectionReader& reader, InventoryFile& file) {
  BoardInformation& entry = file.inventory.informations.emplace_back();
  reader.Number("value1", entry.value1)
      .Number("value2", entry.value2)
      .Number("value3", entry.value3)
      .Number("last", entry.last)
      .Number("result", entry.result)
      .Number("value", entry.value)
      .Bytes("area1", entry.area1)
      .Bytes("area2", entry.area2)
      .Number("result1", entry.result1)
      .Number("result2", entry.result2);
}

struct SectionKind {
  std::string_view name;
  bool once;
  void (*read)(SectionReader&, InventoryFile&);
};

constexpr std::array<SectionKind, 12> kSections{{
    {"log", true, ReadLog},
    {"machine", true, ReadMachine},
    {"board", false, ReadBoard},
    {"available-board", false, ReadAvailableBoard},
    {"adapter", false, ReadAdapter},
    {"configuration", false, ReadConfiguration},
    {"map", false, ReadMap},
    {"info", false, ReadInfo},
    {"info-ex", false, ReadInfoEx},
    {"instance", false, ReadInstance},
    {"change", false, ReadChange},
    {"board-information", false, ReadInformation},
}};

void ReadSection(const InventorySection& section, std::array<bool, kSections.size()>& seen,
                 InventoryFile& file) {
  if (section.name == "fault") {
    file.faults.push_back(ReadFault(section, file.errors));
    return;
  }
  for (std::size_t index = 0; index < kSections.size(); ++index) {
    const SectionKind& kind = kSections[index];
    if (section.name != kind.name) continue;
    if (!section.argument.empty()) {
      file.errors.push_back({section.line, "this section has a name only"});
    }
    if (kind.once && seen[index]) {
      file.errors.push_back({section.line, "a second section [" + section.name + "]"});
    }
    seen[index] = true;
    SectionReader reader(section, file.errors);
    kind.read(reader, file);
    reader.End();
    return;
  }
  file.errors.push_back({section.line, "no section has the name " + Quote(section.name)});
}

}  // namespace

InventoryFile ParseInventory(std::string_view text) {
  InventoryFile file;
  std::array<bool, kSections.size()> seen{};
  for (const InventorySection& section : standin::SplitSections(text, file.errors)) {
    ReadSection(section, seen, file);
  }
  if (!file.errors.empty()) {
    file.inventory = {};
    file.faults.clear();
  }
  return file;
}

InventoryFile LoadInventory(const std::string& path) {
  struct Closer {
    void operator()(std::FILE* stream) const { (void)std::fclose(stream); }
  };
  const std::unique_ptr<std::FILE, Closer> stream(std::fopen(path.c_str(), "rb"));
  InventoryFile failed;
  if (!stream) {
    failed.errors.push_back({0, "the file cannot be opened"});
    return failed;
  }
  std::string text(kLargestFile + 1, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), stream.get()));
  if (std::ferror(stream.get()) != 0) {
    failed.errors.push_back({0, "the file cannot be read"});
  } else if (text.size() > kLargestFile) {
    failed.errors.push_back({0, "the file is above 1 MiB"});
  }
  return failed.errors.empty() ? ParseInventory(text) : failed;
}

}  // namespace boardsim
