#include "tests/e2e/BoardTable.h"

#include <algorithm>
#include <stdexcept>

namespace e2e {
namespace {

constexpr char kDevice[] = "07000000 'HWX7101'";
constexpr char kBoard[] = "06000000 'NB410A'";
constexpr char kMap[] = "01000000 '1'";
constexpr char kAdapter[] = "06000000 'Line 2'";
constexpr char kHardware[] = "15000000 'PCI\\VEN_1F3C&DEV_5101'";
constexpr char kInstance[] = "05000000 'PCI\\3'";
constexpr char kRoom[] = "00200000";
constexpr char kFirst[] = "00000000";

// {cac88484-7515-4c03-82e6-71a87abac361}
constexpr char kGuid[] = "8484C8CA 1575 034C 82E6 71A87ABAC361";
constexpr char kData1[] = "8484C8CA";
constexpr char kData2[] = "1575";
constexpr char kData3[] = "034C";

// The place of the n-th `mark`, or of what follows it.
std::size_t PlaceOf(const std::string& text, const std::string& mark, std::size_t n) {
  std::size_t at = text.find(mark);
  for (; n > 0 && at != std::string::npos; --n) at = text.find(mark, at + 1);
  if (at == std::string::npos) throw std::out_of_range(text);
  return at;
}

RequestRow Request(const char* name, const char* code, const std::vector<const char*>& fields,
                   const std::vector<std::size_t>& texts = {}) {
  return {name, code, fields, texts, ""};
}

std::vector<BoardRow> Enumerations() {
  return {
      {Request("EnumBoard", "C100", {kDevice, kFirst, kRoom, kRoom, kRoom}, {0}),
       "BRDX_EnumBoardExBL",
       "BRDX_EnumBoardExBL deviceId=\"HWX7101\" index=0 board[8192] boardMap[8192] adapter[8192] "
       "zero=0",
       "0 board=6 boardMap=1 adapter=6 lock=held",
       "0400 00000000 06000000 'NB410A' 06000000 01000000 '1' 01000000 06000000 'Line 2' 06000000",
       3,
       "10000000 00200000 11000000",
       {0, 1, 2}},
      {Request("EnumInstBoard", "C000", {kFirst, kRoom, kRoom, kRoom, kRoom, kRoom, kRoom}),
       "BRDX_EnumInstBoardBL",
       "BRDX_EnumInstBoardBL index=0 board[8192] deviceId[8192] netType[8192] hardwareId[8192] "
       "hardwareInstanceId[8192] boardMap[8192]",
       "0 board=6 deviceId=7 netType=4 hardwareId=21 hardwareInstanceId=5 boardMap=1 state=3 "
       "lock=held",
       "0400 00000000 06000000 'NB410A' 06000000 07000000 'HWX7101' 07000000"
       " 04000000 'Ring' 04000000 15000000 'PCI\\VEN_1F3C&DEV_5101' 15000000"
       " 05000000 'PCI\\3' 05000000 01000000 '1' 01000000 03000000",
       6,
       "10000000 11000000 12000000 15000000",
       {0, 1, 2, 3, 4, 5}},
      {Request("EnumAvailableBoard", "C200", {kFirst, kRoom, kRoom}),
       "BRDX_EnumAvailableBoardsBL",
       "BRDX_EnumAvailableBoardsBL index=0 board[8192] deviceId[8192]",
       "0 board=5 deviceId=7 value=16909060 lock=held",
       "0400 00000000 05000000 'NB510' 05000000 07000000 'HWX7104' 07000000 04030201",
       2,
       "10000000 11000000",
       {0, 1}},
      {Request("EnumAdapters", "C500", {kFirst, kRoom, kRoom}),
       "BRDX_EnumAdaptersBL",
       "BRDX_EnumAdaptersBL index=0 adapter[8192] boardMap[8192]",
       "0 adapter=6 boardMap=1 value=200 lock=held",
       "0400 00000000 06000000 'Line 2' 06000000 01000000 '1' 01000000 C8",
       2,
       "10000000 11000000",
       {}},
      {Request("EnumConfiguration", "C400",
               {kFirst, kBoard, kMap, kDevice, kInstance, kRoom, kRoom, kRoom, kRoom},
               {1, 2, 3, 4}),
       "BRDX_EnumConfigurationBL",
       "BRDX_EnumConfigurationBL index=0 board=\"NB410A\" boardMap=\"1\" deviceId=\"HWX7101\" "
       "hardwareInstanceId=\"PCI\\\\3\" configuration[8192] protocolType[8192] "
       "layer4Protocol[8192] unit[8192]",
       "0 configuration=7 protocolType=3 layer4Protocol=8 unit=3 lock=held",
       "0400 00000000 07000000 'Station' 07000000 03000000 'TCP' 03000000"
       " 08000000 'RFC 1006' 08000000 03000000 'CP1' 03000000",
       4,
       "10000000 11000000 12000000 13000000",
       {0, 1, 2, 3}},
  };
}

std::vector<BoardRow> Queries() {
  return {
      {Request("BoardGetMap", "A300", {kDevice, kAdapter, kHardware, kRoom}, {0, 1, 2}),
       "BRDX_BoardGetMapBL",
       "BRDX_BoardGetMapBL deviceId=\"HWX7101\" adapter=\"Line 2\" "
       "hardwareId=\"PCI\\\\VEN_1F3C&DEV_5101\" boardMap[8192]",
       "0 boardMap=1 lock=held",
       "0400 00000000 01000000 '1' 01000000",
       1,
       "10000000",
       {0}},
      {Request("GetBoardInfo", "C300", {"01000000", kBoard, kMap, kDevice, kInstance, kRoom},
               {1, 2, 3, 4}),
       "BRDX_GetBoardInfoBL",
       "BRDX_GetBoardInfoBL infoType=1 board=\"NB410A\" boardMap=\"1\" deviceId=\"HWX7101\" "
       "hardwareInstanceId=\"PCI\\\\3\" value[8192]",
       "0 value=3 lock=held",
       "0400 00000000 03000000 '5.2' 03000000",
       1,
       "10000000",
       {0}},
      {Request("GetBoardInfoEx", "CF00", {"02000000", kBoard, kMap, kInstance, kRoom}, {1, 2, 3}),
       "BRDX_GetBoardInfoExBL",
       "BRDX_GetBoardInfoExBL infoType=2 board=\"NB410A\" boardMap=\"1\" "
       "hardwareInstanceId=\"PCI\\\\3\" buffer[8192]",
       "0 buffer=4 lock=held",
       "0400 00000000 04000000 08000601",
       1,
       "10000000",
       {0}},
      {Request("Scan", "C700", {}), "BRDX_ScanBL", "BRDX_ScanBL", "0 lock=held", "0400 00000000"},
      {Request("CreateAllLogdevices", "C900", {}), "BRDX_CreateAllLogdevicesBL",
       "BRDX_CreateAllLogdevicesBL", "0 lock=held", "0400 00000000"},
      {Request("HasUninitializedInstances", "5800", {}), "BRDX_HasUninitializedInstancesBL",
       "BRDX_HasUninitializedInstancesBL", "7 lock=held", "0400 07000000"},
      {Request("UpdateLogDevicesForDevice", "C800", {kDevice, kHardware}, {0, 1}),
       "BRDX_UpdateLogdevicesForDeviceBL",
       "BRDX_UpdateLogdevicesForDeviceBL deviceId=\"HWX7101\" "
       "hardwareId=\"PCI\\\\VEN_1F3C&DEV_5101\"",
       "0 lock=held", "0400 00000000"},
  };
}

std::vector<BoardRow> Devices() {
  const std::vector<const char*> registration = {kDevice, kData1, kData2, kData3, "82", "E6",
                                                 "71",    "A8",   "7A",   "BA",   "C3", "61"};
  return {
      {Request("Register", "0001", registration, {0}), "BRDX_RegisterForDeviceChangeNotifications",
       "BRDX_RegisterForDeviceChangeNotifications "
       "interfaceClass={cac88484-7515-4c03-82e6-71a87abac361} deviceId=\"HWX7101\"",
       "0 lock=free", "0400 00000000"},
      {Request("GetDeviceChange", "0201", {kDevice}, {0}),
       "BRDX_GetDeviceChange",
       "BRDX_GetDeviceChange deviceId=\"HWX7101\" text[8192]",
       "0 kind=200 guid={cac88484-7515-4c03-82e6-71a87abac361} text=9 lock=free",
       "0400 00000000 C8 09000000 '\\\\?\\pci#3' 09000000"
       " 8484C8CA 1575 034C 82E671A87ABAC361",
       1,
       "",
       {0},
       "10000000"},
      {Request("Unregister", "0101", registration, {0}),
       "BRDX_UnregisterForDeviceChangeNotifications",
       "BRDX_UnregisterForDeviceChangeNotifications "
       "interfaceClass={cac88484-7515-4c03-82e6-71a87abac361} deviceId=\"HWX7101\"",
       "0 lock=free", "0400 00000000"},
      // The instances are none that the configuration manager knows, so nothing is told of them.
      {Request("DeviceStateEx", "2201", {kInstance, "07000000"}, {0}), "BRDX_GetDeviceInstanceOpt",
       "BRDX_GetDeviceInstanceOpt hardwareId=\"PCI\\\\3\" option=7",
       "0 instance=4275878552 lock=free", "0400 00000000 00000000 00000000"},
      {Request("DeviceStateExWithoutOption", "2201", {kInstance, "FFFFFFFF"}, {0}),
       "BRDX_GetDeviceInstance", "BRDX_GetDeviceInstance hardwareId=\"PCI\\\\3\"",
       "0 instance=4275878553 lock=free", "0400 00000000 00000000 00000000"},
      {Request("BoardInformation", "BF00",
               {"03000000 'key'", "04000000 07000000", "04000000 08000000", "04000000 09000000",
                "02000000 ABCD", "04000000 04000000", "04000000 02000000", "04000000 0A000000"}),
       "BRDX_GetBoardInformation",
       "BRDX_GetBoardInformation value1=7 value2=8 value3=9 data=abcd area1[4] area2[2] last=10",
       "0 area1=4 value=4660 area2=2 result1=17 result2=34 lock=free",
       "0400 00000000 04000000 01020304 04000000 34120000 02000000 0506 11000000 22000000"},
  };
}

}  // namespace

const char kBoardMachine[] = R"([machine]
uninitialized-instances = 7
[board]
name = NB410A
device-id = HWX7101
net-type = Ring
hardware-id = PCI\VEN_1F3C&DEV_5101
hardware-instance-id = PCI\3
map = 1
adapter = Line 2
state = 3
logical-device = E2E CP
[available-board]
name = NB510
device-id = HWX7104
value = 0x01020304
[adapter]
name = Line 2
map = 1
value = 200
[configuration]
configuration = Station
protocol-type = TCP
layer4-protocol = RFC 1006
unit = CP1
[info]
type = 1
text = 5.2
[info-ex]
type = 2
bytes = 08 00 06 01
[instance]
hardware-id = PCI\3
instance = 0xFEDCBA98
option = 7
[instance]
hardware-id = PCI\3
instance = 0xFEDCBA99
[change]
device-id = HWX7101
kind = 200
guid = {cac88484-7515-4c03-82e6-71a87abac361}
text = \\?\pci#3
[board-information]
value1 = 7
value2 = 8
value3 = 9
last = 10
value = 0x1234
area1 = 01 02 03 04
area2 = 05 06
result1 = 0x11
result2 = 0x22
)";

std::string BoardRow::CallWithText(std::size_t n, const std::string& text) const {
  std::string line = call;
  const std::size_t begin = PlaceOf(line, "=\"", n) + 1;
  return line.replace(begin, line.find('"', begin + 1) + 1 - begin, text);
}

std::string BoardRow::CallWithCapacity(std::size_t n, std::uint32_t capacity) const {
  std::string line = call;
  const std::size_t begin = PlaceOf(line, "[", n) + 1;
  return line.replace(begin, line.find(']', begin) - begin, std::to_string(capacity));
}

const std::vector<BoardRow>& BoardRequests() {
  static const std::vector<BoardRow> rows = [] {
    std::vector<BoardRow> all = Enumerations();
    for (const auto& more : {Queries(), Devices()}) all.insert(all.end(), more.begin(), more.end());
    return all;
  }();
  return rows;
}

const BoardRow& BoardRequest(const std::string& name) {
  const auto& rows = BoardRequests();
  const auto row = std::find_if(rows.begin(), rows.end(),
                                [&](const BoardRow& one) { return one.request.name == name; });
  if (row == rows.end()) throw std::out_of_range(name);
  return *row;
}

bool IsUnderLock(const BoardRow& row) { return std::string(row.answer).ends_with("lock=held"); }

std::string FaultForAll(const std::string& keys) {
  std::string faults;
  for (const BoardRow& row : BoardRequests()) {
    faults += "[fault " + std::string(row.operation) + "]\ncall = *\n" + keys + "\n";
  }
  return faults;
}

}  // namespace e2e
