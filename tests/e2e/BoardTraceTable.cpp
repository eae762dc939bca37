#include "tests/e2e/BoardTraceTable.h"

namespace e2e {
namespace {

using lines::SendLong;

std::vector<FieldLine> Named(const std::vector<const char*>& names) {
  std::vector<FieldLine> fields;
  for (const char* const name : names)
    fields.push_back({std::string("<< result = 0x219a ") + name});
  return fields;
}

std::vector<FieldLine> OfARegistration() {
  std::vector<FieldLine> fields = {
      {"<< ReadString(DeviceId) result = 0x219a "},
      {"<< ReadULong(GUID Part1) result = 0x219a "},
      {"<< ReadShort(GUID Part2) result = 0x219a ", "ReadShort"},
      {"<< ReadShort(GUID Part3) result = 0x219a ", "ReadShort"},
  };
  fields.insert(fields.end(), 8, {"<< ReadShort(GUID Part4) result = 0x219a ", "ReadByte"});
  return fields;
}

Lines Texts(const std::vector<std::size_t>& sizes) {
  Lines lines;
  for (const std::size_t size : sizes) {
    lines.push_back("AddString:  AddSizeInBytes=" + std::to_string(size));
  }
  return lines;
}

Lines Composed(const std::string& function, const std::vector<std::size_t>& sizes) {
  return Lines{function + ">> intern Send"} + Texts(sizes);
}

}  // namespace

Lines SendOf(const std::string& shape, std::size_t length, const Lines& inside) {
  if (shape == "long") return SendLong("0x{:x}", static_cast<int>(length));
  return Lines{"Send:  >> Begin CQorlixSRVPipe::Send(" + shape + ")"} + inside +
         Lines{"Send:  << CQorlixSRVPipe::Send DataLength=" + std::to_string(length) +
               " writeResult=0x1"};
}

const std::vector<CommandLines>& BoardCommandLines() {
  static const std::vector<CommandLines> commands = {
      {"EnumBoard", "0xc1", "BC_EnumBoard:  ", ">> Start", "<< BRDX_EnumBoardExBL result = 0x",
       "BRDX_EnumBoardExBL", Named({"DeviceId", "iValue", "BoardLen", "BoardMapLen", "AdapterLen"}),
       Composed("BC_EnumBoard:  ", {6, 1, 6}), "long, long, long, long", "long, long, long, long"},
      // Kept: seven longs are announced as five.
      {"EnumInstBoard", "0xc0", "BC_EnumInstBoard:  ", ">> Start",
       "<< BRDX_EnumInstBoardBL result = 0x", "BRDX_EnumInstBoardBL",
       Named({"iValue", "BoardLen", "DeviceIdLen", "NetTypeLen", "HardwareIdLen",
              "HardwareInstanceIdLen", "BoardMapLen"}),
       Composed("BC_EnumInstBoard:  ", {6, 7, 4, 21, 5, 1}), "long, long, long, long, long",
       "long, long, long, long, long"},
      {"EnumAvailableBoard", "0xc2", "BC_EnumAvailableBoard:  ", ">> Start",
       "<< BRDX_EnumAvailableBoardsBL result = 0x", "BRDX_EnumAvailableBoardsBL",
       Named({"iValue", "BoardLen", "DeviceIdLen"}), Composed("BC_EnumAvailableBoard:  ", {5, 7}),
       "long, long, long", "long, long, long"},
      {"EnumAdapters", "0xc5", "BC_EnumAdapters:  ", ">> Start",
       "<< BRDX_EnumAdaptersBL result = 0x", "BRDX_EnumAdaptersBL",
       Named({"iValue", "pcbAdapterNameLen", "BoardMapLen"}),
       Composed("BC_EnumAdapters:  ", {6, 1}), "long, long, long", "long"},
      {"EnumConfiguration", "0xc4", "BC_EnumConfiguration:  ", ">> Start",
       "<< BRDX_EnumConfigurationBL result = 0x", "BRDX_EnumConfigurationBL",
       Named({"iValue", "BoardName", "BoardMap", "DeviceId", "HardwareInstanceId",
              "ConfigurationLen", "ProtocolTypeLen", "L4ProtocolLen", "UnitLen"}),
       Composed("BC_EnumConfiguration:  ", {7, 3, 8, 3}), "long, long, long, long, long",
       "long, long, long, long, long"},
      {"BoardGetMap", "0xa3", "BC_BoardGetMap:  ", ">> Start",
       "<< BRDX_BoardGetMapBL BoardMapLen=0x{:x} result = 0x", "BRDX_BoardGetMapBL",
       Named({"DeviceID", "Adapter", "HardwareId", "BoardMapIdLen"}),
       SendOf("long, TCHAR, long", 15, Texts({1})), "long, long", "long, long"},
      {"GetBoardInfo", "0xc3", "BC_GetBoardInfo:  ", ">> Start",
       "<< BRDX_GetBoardInfoBL result = 0x", "BRDX_GetBoardInfoBL",
       Named({"InfoType", "BoardName", "BoardMap", "DeviceId", "HardwareInstanceId", "ValueLen"}),
       SendOf("long, TCHAR, long", 17, Texts({3})), "long, long", "long, long"},
      // Kept: its exception goes under the name of its sibling.
      {"GetBoardInfoEx", "0xcf", "BC_GetBoardInfoEx:  ", ">> Start",
       "<< BRDX_GetBoardInfoExBL result = 0x", "BRDX_GetBoardInfoBL",
       Named({"InfoType", "BoardName", "BoardMap", "HardwareInstanceId", "BufferLen"}),
       Lines{"SendBuffer:  >> Begin CQorlixSRVPipe::SendBuffer", "AddBuffer:  BufferLength=4",
             "SendBuffer:  << CQorlixSRVPipe::SendBuffer DataLength=14 writeResult=0x1"},
       "long, long", "long, long"},
      {"Scan",
       "0xc7",
       "BC_Scan:  ",
       ">> Start",
       "<< BRDX_ScanBL result = 0x",
       "BRDX_ScanBL",
       {},
       SendLong("0x0"),
       "long"},
      {"CreateAllLogdevices",
       "0xc9",
       "BC_CreateAllLogdevices:  ",
       ">> Start",
       "<< BRDX_CreateAllLogdevicesBL result = 0x",
       "BRDX_CreateAllLogdevicesBL",
       {},
       SendLong("0x0"),
       "long"},
      {"UpdateLogDevicesForDevice", "0xc8", "BC_UpdateLogDevicesForDevice:  ", ">> Start",
       // Kept: its result goes under the name of another operation.
       "<< BRDX_SetParameterData result = 0x", "BRDX_UpdateLogdevicesForDeviceBL",
       Named({"DeviceId", "HardwareId"}), SendLong("0x0"), "long"},
      {"Register", "0x100", "RegisterForDeviceChangeNotifications:  ", ">> Start",
       "<< BRDX_RegisterForDeviceChangeNotifications result = 0x",
       "BRDX_RegisterForDeviceChangeNotifications", OfARegistration(), SendLong("0x0"), "long"},
      // Kept: neither its result nor its exception names the operation.
      {"GetDeviceChange",
       "0x102",
       "GetDeviceChange:  ",
       ">> Start",
       "<< Funktionsname und R\xFC"
       "ckgabeparameter result = 0x",
       "Funktionsname",
       {{"<< ReadString(DeviceId) result = 0x219a "}},
       Lines{"GetDeviceChange:  AddString =\\\\?\\pci#3",
             "AddString:  >> Begin CQorlixSRVPipe::AddString(9, Spezial)",
             "AddString:  << CQorlixSRVPipe::AddString(Spezial)",
             "GetDeviceChange:  << intern Send (len=40)"},
       "long",
       "long, long, long"},
      {"Unregister", "0x101", "UnregisterForDeviceChangeNotifications:  ", ">> Start",
       "<< BRDX_UnregisterForDeviceChangeNotifications result = 0x",
       "BRDX_UnregisterForDeviceChangeNotifications", OfARegistration(), SendLong("0x0"), "long"},
      {"BoardInformation", "0xbf", "GetBoardInformation:  ", " >> Start",
       "<< BRDX_GetBoardInformation result = 0x", "BRDX_GetDeviceDetail",
       std::vector<FieldLine>(8, {"<< ReadBuffer result = 0x219a", "ReadLong", "ReadBuffer: "}),
       Lines{"AddBuffer:  BufferLength=4", "AddBuffer:  BufferLength=4",
             "AddBuffer:  BufferLength=2"},
       "long"},
  };
  return commands;
}

}  // namespace e2e
