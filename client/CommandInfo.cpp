#include "client/CommandInfo.h"

#include <algorithm>
#include <iterator>

#include "codec/Wire.h"

namespace client {
namespace {

constexpr std::uint32_t kRegistryText = 8160;
constexpr std::uint32_t kPathText = 260;

constexpr CommandInfo kCommands[] = {
    {CommandCode::Reg_DelKey, "Reg_DelKey", "text key", "", "", "", kRegistryText},
    {CommandCode::Reg_CreateKey, "Reg_CreateKey", "text key", "", "", "", kRegistryText},
    {CommandCode::Reg_SetValue, "Reg_SetValue", "text key; text name; text value", "", "", "",
     kRegistryText},
    {CommandCode::Install, "Install", "text deviceId; text languageExtension", "", "", "",
     kPathText},
    {CommandCode::Deinstall, "Deinstall", "text deviceId; text languageExtension; text board", "",
     "", "", kPathText},
    {.code = CommandCode::AddIpAddress,
     .name = "AddIpAddress",
     .request = "long address; long mask; long interfaceIndex",
     .success = "long nteContext; long nteInstance",
     .tooLong = "",
     .failure = "",
     .doubling = Doubling::OnFailure,
     .fixedShape = true},
    {CommandCode::DelIpAddress, "DelIpAddress", "long nteContext", "", "", ""},
    {.code = CommandCode::InstallWdmDriver_32,
     .name = "InstallWdmDriver_32",
     .request = "text service; text infFile; text third; long mode",
     .success = "",
     .tooLong = "",
     .failure = "",
     .textRoom = kPathText,
     .doubling = Doubling::OnceItsLibraryIsLoaded},
    {CommandCode::NoOperation, "NoOperation", "", "", "", ""},
    {.code = CommandCode::RunOnlinePanel_32,
     .name = "RunOnlinePanel_32",
     .request = "",
     .success = "",
     .tooLong = "",
     .failure = "",
     .doubling = Doubling::OnceItsLibraryIsLoaded},
    {CommandCode::Reg_DelValue, "Reg_DelValue", "text key; text name", "", "", "", kRegistryText},
    {CommandCode::Reg_EnumKey, "Reg_EnumKey", "text key; long index", "text name; long nameLength",
     "long nameLength", "long nameLength", kRegistryText},
    {CommandCode::Reg_GetValue, "Reg_GetValue", "text key; text name", "text data; long dataLength",
     "long dataLength", "long dataLength", kRegistryText},
    {CommandCode::Reg_EnumValue, "Reg_EnumValue", "text key; long index",
     "text name; long nameLength; text data; long dataLength", "long nameLength; long dataLength",
     "long nameLength; long dataLength", kRegistryText},
    {CommandCode::Reg_SetValueBase, "Reg_SetValueBase",
     "long rootKey; text key; text name; text value", "", "", "", kRegistryText},
    {CommandCode::Reg_CreateKeyBase, "Reg_CreateKeyBase", "long rootKey; text key", "", "", "",
     kRegistryText},
    {CommandCode::Reg_DelKeyBase, "Reg_DelKeyBase", "long rootKey; text key", "", "", "",
     kRegistryText},
    {.code = CommandCode::BC_HasUninitializedInstances,
     .name = "BC_HasUninitializedInstances",
     .request = "",
     .success = "",
     .tooLong = "",
     .failure = "",
     .note = "what a result other than 0 means is the board library's"},
    {CommandCode::BC_BoardGetMap, "BC_BoardGetMap",
     "text deviceId; text adapter; text hardwareId; long boardMapRoom",
     "text boardMap; long boardMapLength", "long boardMapLength", "long boardMapLength"},
    {.code = CommandCode::GetBoardInformation,
     .name = "GetBoardInformation",
     .request = "buffer data1; buffer value1; buffer value2; buffer value3; buffer data2; buffer "
                "area1Size; "
                "buffer area2Size; buffer lastValue",
     .success = "buffer area1; buffer value; buffer area2; long result1; long result2",
     .tooLong = "",
     .failure = "",
     .note = "the areas come back with the sizes that were asked for"},
    {.code = CommandCode::BC_EnumInstBoard,
     .name = "BC_EnumInstBoard",
     .request =
         "long index; long boardRoom; long deviceIdRoom; long netTypeRoom; long hardwareIdRoom; "
         "long hardwareInstanceIdRoom; long boardMapRoom",
     .success =
         "text board; long boardLength; text deviceId; long deviceIdLength; text netType; "
         "long netTypeLength; text hardwareId; long hardwareIdLength; text hardwareInstanceId; "
         "long hardwareInstanceIdLength; text boardMap; long boardMapLength; long state",
     .tooLong = "long boardLength; long deviceIdLength; long netTypeLength; long hardwareIdLength; "
                "long hardwareInstanceIdLength; long boardMapLength",
     .failure = "long boardLength; long deviceIdLength; long netTypeLength; long boardMapLength",
     .note = "of a failure, the lengths of hardware id and hardware instance id are not told"},
    {.code = CommandCode::BC_EnumBoard,
     .name = "BC_EnumBoard",
     .request = "text deviceId; long index; long boardRoom; long boardMapRoom; long adapterRoom",
     .success = "text board; long boardLength; text boardMap; long boardMapLength; text adapter; "
                "long adapterLength",
     .tooLong = "long boardLength; long boardMapLength; long adapterLength",
     .failure = "long boardLength; long capacity; long boardMapLength",
     .note =
         "of a failure, capacity is the room of the server's adapter buffer, always 8192, and no "
         "length; the board map's length stands last"},
    {CommandCode::BC_EnumAvailableBoard, "BC_EnumAvailableBoard",
     "long index; long boardRoom; long deviceIdRoom",
     "text board; long boardLength; text deviceId; long deviceIdLength; long value",
     "long boardLength; long deviceIdLength", "long boardLength; long deviceIdLength"},
    {CommandCode::BC_GetBoardInfo, "BC_GetBoardInfo",
     "long infoType; text board; text boardMap; text deviceId; text hardwareInstanceId; "
     "long valueRoom",
     "text value; long valueLength", "long valueLength", "long valueLength"},
    {CommandCode::BC_EnumConfiguration, "BC_EnumConfiguration",
     "long index; text board; text boardMap; text deviceId; text hardwareInstanceId; "
     "long configurationRoom; long protocolTypeRoom; long layer4ProtocolRoom; long unitRoom",
     "text configuration; long configurationLength; text protocolType; long protocolTypeLength; "
     "text layer4Protocol; long layer4ProtocolLength; text unit; long unitLength",
     "long configurationLength; long protocolTypeLength; long layer4ProtocolLength; "
     "long unitLength",
     "long configurationLength; long protocolTypeLength; long layer4ProtocolLength; "
     "long unitLength"},
    {.code = CommandCode::BC_EnumAdapters,
     .name = "BC_EnumAdapters",
     .request = "long index; long adapterNameRoom; long boardMapRoom",
     .success =
         "text adapterName; long adapterNameLength; text boardMap; long boardMapLength; byte value",
     .tooLong = "",
     .failure = "long adapterNameLength; long boardMapLength",
     .note = "an answer that is too long comes without its lengths"},
    {CommandCode::BC_Scan, "BC_Scan", "", "", "", ""},
    {CommandCode::BC_UpdateLogDevicesForDevice, "BC_UpdateLogDevicesForDevice",
     "text deviceId; text hardwareId", "", "", ""},
    {CommandCode::BC_CreateAllLogdevices, "BC_CreateAllLogdevices", "", "", "", ""},
    {.code = CommandCode::BC_GetBoardInfoEx,
     .name = "BC_GetBoardInfoEx",
     .request =
         "long infoType; text board; text boardMap; text hardwareInstanceId; long bufferRoom",
     .success = "buffer data",
     .tooLong = "long dataLength",
     .failure = "long dataLength",
     .note = "a room from 0x80000000 on reaches the board library as it is, not as 8192"},
    {.code = CommandCode::TestFunction,
     .name = "TestFunction",
     .request = "text text",
     .success = "text text",
     .tooLong = "",
     .failure = "",
     .textRoom = kPathText,
     .done = 999},
    {.code = CommandCode::StopServer,
     .name = "StopServer",
     .request = "long confirmation",
     .success = "",
     .tooLong = "",
     .failure = "",
     .doubling = Doubling::OnUnreadable},
    {CommandCode::RegisterForDeviceChangeNotifications, "RegisterForDeviceChangeNotifications",
     "text deviceId; guid interfaceClass", "", "", "", kPathText},
    {CommandCode::UnregisterForDeviceChangeNotifications, "UnregisterForDeviceChangeNotifications",
     "text deviceId; guid interfaceClass", "", "", "", kPathText},
    {.code = CommandCode::GetDeviceChange,
     .name = "GetDeviceChange",
     .request = "text deviceId",
     .success = "byte kind; text change; long changeLength; guid interfaceClass",
     .tooLong = "long changeLength; long guidSize",
     .failure = "",
     .textRoom = kPathText,
     .note = "change may hold several texts, each with its zero; guidSize is always 16"},
    {CommandCode::SilentRestart, "SilentRestart", "text logDevice; text event", "", "", "",
     kPathText},
    {CommandCode::GetSilentRestartResult, "GetSilentRestartResult", "text event", "", "", ""},
    {.code = CommandCode::GetDeviceStateEx,
     .name = "GetDeviceStateEx",
     .request = "text hardwareId; long option",
     .success = "long status; long problem",
     .tooLong = "",
     .failure = "",
     .note = "status and problem are 0 also for a device that nobody knows"},
    {.code = CommandCode::BC_PlausibilitaetBL,
     .name = "BC_PlausibilitaetBL",
     .request = "",
     .success = "",
     .tooLong = "",
     .failure = "",
     .note = "the result is that of dropping the abandoned logical devices; a failed scan does not "
             "show"},
};

constexpr std::uint32_t CodeOf(const CommandInfo& command) {
  return static_cast<std::uint32_t>(command.code);
}

constexpr bool IsSound() {
  for (std::size_t i = 0; i < std::size(kCommands); ++i) {
    const CommandInfo& command = kCommands[i];
    if (i != 0 && CodeOf(kCommands[i - 1]) >= CodeOf(command)) return false;
    for (const char* const list :
         {command.request, command.success, command.tooLong, command.failure}) {
      if (!IsFieldList(list)) return false;
    }
  }
  return true;
}
static_assert(IsSound(), "the look-up is a binary search, and every description must be readable");

constexpr char ToLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr std::size_t SmallestSize(FieldKind kind) {
  switch (kind) {
    case FieldKind::Byte:
      return sizeof(std::uint8_t);
    case FieldKind::Short:
      return sizeof(std::uint16_t);
    case FieldKind::Guid:
      return 16;
    case FieldKind::Long:
    case FieldKind::Text:
    case FieldKind::Buffer:
      break;
  }
  return sizeof(std::uint32_t);  // a long, or the length 0
}

}  // namespace

std::span<const CommandInfo> Commands() noexcept { return kCommands; }

const CommandInfo* FindCommand(std::uint32_t code) noexcept {
  const auto* const found = std::lower_bound(
      std::begin(kCommands), std::end(kCommands), code,
      [](const CommandInfo& command, std::uint32_t wanted) { return CodeOf(command) < wanted; });
  return found != std::end(kCommands) && CodeOf(*found) == code ? found : nullptr;
}

const CommandInfo* FindCommandByName(std::string_view name) noexcept {
  const auto* const found =
      std::find_if(std::begin(kCommands), std::end(kCommands), [name](const CommandInfo& command) {
        const std::string_view known = command.name;
        return std::equal(known.begin(), known.end(), name.begin(), name.end(),
                          [](char a, char b) { return ToLower(a) == ToLower(b); });
      });
  return found != std::end(kCommands) ? found : nullptr;
}

const CommandInfo* CommandOf(Bytes request) noexcept {
  if (request.size() < sizeof(std::uint16_t)) return nullptr;
  return FindCommand(wire::Load<std::uint16_t>(request.data()));
}

bool IsReadable(const CommandInfo& command, Bytes request) noexcept {
  const Bytes seen = request.first(std::min<std::size_t>(request.size(), kMessageLimit));
  std::uint32_t cursor = sizeof(std::uint16_t);
  FieldList fields(command.request);
  Field field;
  while (fields.Next(field)) {
    FieldValue value;
    const auto limit = static_cast<std::uint32_t>(seen.size());
    if (TakeField(field.kind, seen, limit, /*mayBeAbsent=*/true, cursor, value) !=
        FieldStatus::Taken) {
      return false;
    }
    // The server needs one byte of its buffer for the terminator.
    if (field.kind == FieldKind::Text && value.bytes.size() >= command.textRoom) return false;
  }
  return true;
}

std::vector<std::uint8_t> SmallestRequest(const CommandInfo& command) {
  std::size_t size = sizeof(std::uint16_t);
  FieldList fields(command.request);
  Field field;
  while (fields.Next(field)) size += SmallestSize(field.kind);
  std::vector<std::uint8_t> request(size, 0);
  std::uint32_t cursor = 0;
  (void)wire::Put(request.data(), static_cast<std::uint32_t>(size), cursor,
                  static_cast<std::uint16_t>(command.code));
  return request;
}

}  // namespace client
