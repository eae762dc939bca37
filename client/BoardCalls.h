#ifndef CLIENT_BOARDCALLS_H_
#define CLIENT_BOARDCALLS_H_

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "client/QorlixClient.h"

namespace client {

/// The room for one text that the server grants at most.
inline constexpr std::uint32_t kBoardRoom = 8192;

/// Bytes that the texts of one answer can have together and fit every command's reply. (The server
/// serves 8160, but of the longest replies such an answer may break off.)
inline constexpr std::uint32_t kBoardAnswerLimit = 8128;

/// Output areas that fit a reply of GetBoardInformation together, and the most of one data block.
inline constexpr std::uint32_t kAreasLimit = 8162;
inline constexpr std::uint32_t kBlockLimit = 8160;

/// The option with which GetDeviceStateEx looks a device up without one.
inline constexpr std::uint32_t kNoOption = 0xFFFFFFFF;

/// A text, or bytes, of the board library. It points into the client and holds until its next call.
struct BoardText {
  std::string_view text;
  /// What the library told of it. With the results 234 and 8602 the text is empty, and this is what
  /// it needs; 0 where the command does not tell.
  std::uint32_t length = 0;
};

/// A text of an answer under the name that its field has in CommandInfo.
struct NamedText {
  const char* name;
  BoardText* text;
};

/// What the answers of the board commands have in common.
struct BoardAnswer {
  std::uint32_t value = 0;  ///< the number behind the texts, where the command has one
  /// The server answered, so that the next entry of an enumeration may be asked for.
  bool told = false;
  /// The texts did not fit a reply; these came when less room was asked for. What the library makes
  /// of that is its own: they may be cut.
  bool askedAgain = false;
};

// The answers; Texts() has them in the order of the wire, kValueName names the number.

struct BoardEntry : BoardAnswer {
  static constexpr char kValueName[] = "";
  BoardText board, boardMap, adapter;
  std::array<NamedText, 3> Texts() noexcept {
    return {{{"board", &board}, {"boardMap", &boardMap}, {"adapter", &adapter}}};
  }
};

struct InstBoardEntry : BoardAnswer {
  static constexpr char kValueName[] = "state";
  BoardText board, deviceId, netType, hardwareId, hardwareInstanceId, boardMap;
  std::array<NamedText, 6> Texts() noexcept {
    return {{{"board", &board},
             {"deviceId", &deviceId},
             {"netType", &netType},
             {"hardwareId", &hardwareId},
             {"hardwareInstanceId", &hardwareInstanceId},
             {"boardMap", &boardMap}}};
  }
};

struct AvailableBoardEntry : BoardAnswer {
  static constexpr char kValueName[] = "value";
  BoardText board, deviceId;
  std::array<NamedText, 2> Texts() noexcept {
    return {{{"board", &board}, {"deviceId", &deviceId}}};
  }
};

struct AdapterEntry : BoardAnswer {
  static constexpr char kValueName[] = "value";
  BoardText adapterName, boardMap;
  std::array<NamedText, 2> Texts() noexcept {
    return {{{"adapterName", &adapterName}, {"boardMap", &boardMap}}};
  }
};

struct ConfigurationEntry : BoardAnswer {
  static constexpr char kValueName[] = "";
  BoardText configuration, protocolType, layer4Protocol, unit;
  std::array<NamedText, 4> Texts() noexcept {
    return {{{"configuration", &configuration},
             {"protocolType", &protocolType},
             {"layer4Protocol", &layer4Protocol},
             {"unit", &unit}}};
  }
};

/// The answer of the commands that have one text, or bytes.
struct BoardValue : BoardAnswer {
  BoardText content;
};

/// Which board is meant; null is sent as absent, which the library sees as no text.
struct BoardSelection {
  const char* board = "";
  const char* boardMap = "";
  const char* deviceId = "";
  const char* hardwareInstanceId = "";
};

/// A device interface class.
struct Guid {
  std::uint32_t data1 = 0;
  std::uint16_t data2 = 0;
  std::uint16_t data3 = 0;
  std::array<std::uint8_t, 8> data4{};
};

struct DeviceChange {
  std::uint8_t kind = 0;
  std::string_view text;     ///< may hold several texts, each with its zero; points into the client
  std::uint32_t length = 0;  ///< of the text; with 8602 what it has, although it cannot be had
  Bytes interfaceClass;      ///< 16 bytes as on the wire; empty unless the result is 0
};

struct DeviceState {
  std::uint32_t status = 0;   ///< DN_ bits
  std::uint32_t problem = 0;  ///< a CM_PROB_ number
};

/// What BRDX_GetBoardInformation is to be asked; its meaning is the library's.
struct InformationRequest {
  Bytes data1, data2;  ///< at most kBlockLimit each
  std::array<std::uint32_t, 3> values{};
  std::uint32_t area1Size = 0, area2Size = 0;  ///< at most kAreasLimit together
  std::uint32_t last = 0;
};

/// The areas point into the client and hold until its next call.
struct Information {
  Bytes area1, area2;
  std::uint32_t value = 0, result1 = 0, result2 = 0;
};

/// The commands on boards and devices.
///
/// Results are those of the board library, unchanged, or 8602 (the answer does not fit a reply) and
/// 8604 (the library raised an exception). Enumerations end with 259; see ForEachEntry. Every text
/// is asked for with the most room there is. An answer of 8602 is asked for once more, with rooms
/// that fit a reply together, before it is returned with the lengths that the server told.
class BoardCalls {
 public:
  /// \param client must outlive this object
  explicit BoardCalls(QorlixClient& client) noexcept : client_(client) {}

  Result BC_EnumBoard(const char* deviceId, std::uint32_t index, BoardEntry& entry) noexcept;
  Result BC_EnumInstBoard(std::uint32_t index, InstBoardEntry& entry) noexcept;
  Result BC_EnumAvailableBoard(std::uint32_t index, AvailableBoardEntry& entry) noexcept;
  Result BC_EnumAdapters(std::uint32_t index, AdapterEntry& entry) noexcept;
  Result BC_EnumConfiguration(std::uint32_t index, const BoardSelection& of,
                              ConfigurationEntry& entry) noexcept;

  Result BC_BoardGetMap(const char* deviceId, const char* adapter, const char* hardwareId,
                        BoardValue& boardMap) noexcept;
  Result BC_GetBoardInfo(std::uint32_t infoType, const BoardSelection& of,
                         BoardValue& value) noexcept;
  /// The device id of the selection is not sent.
  Result BC_GetBoardInfoEx(std::uint32_t infoType, const BoardSelection& of,
                           BoardValue& data) noexcept;

  Result BC_Scan() noexcept;
  Result BC_CreateAllLogdevices() noexcept;
  Result BC_HasUninitializedInstances() noexcept;
  Result BC_UpdateLogDevicesForDevice(const char* deviceId, const char* hardwareId) noexcept;
  /// The plausibility check; the result is that of dropping the abandoned logical devices.
  Result BC_PlausibilitaetBL() noexcept;

  /// Device ids have at most 259 bytes here.
  Result RegisterForDeviceChangeNotifications(const char* deviceId, const Guid& guid) noexcept;
  Result UnregisterForDeviceChangeNotifications(const char* deviceId, const Guid& guid) noexcept;
  Result GetDeviceChange(const char* deviceId, DeviceChange& change) noexcept;

  /// 0 also for a device that nobody knows: status and problem are 0 then.
  Result GetDeviceStateEx(const char* hardwareId, std::uint32_t option,
                          DeviceState& state) noexcept;
  Result GetBoardInformation(const InformationRequest& ask, Information& told) noexcept;

 private:
  Result Call(const RequestBuilder& request, Reply& reply) noexcept;
  Result Call(const RequestBuilder& request) noexcept;
  Result Register(CommandCode command, const char* deviceId, const Guid& guid) noexcept;
  Result AskFor(const RequestBuilder& head, std::span<const NamedText> texts,
                BoardAnswer& answer) noexcept;
  Result AskOnce(const RequestBuilder& head, std::span<const std::uint32_t> rooms,
                 std::span<const NamedText> texts, BoardAnswer& answer) noexcept;

  QorlixClient& client_;
};

/// The rooms for texts of these lengths (0: not known) that fit one reply together: a text that
/// needs no more than an even share gets what it needs, and the others share the rest.
void FitRooms(std::span<const std::uint32_t> lengths, std::span<std::uint32_t> rooms) noexcept;

}  // namespace client

#endif  // CLIENT_BOARDCALLS_H_
