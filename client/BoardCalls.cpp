#include "client/BoardCalls.h"

#include <algorithm>

#include "codec/Wire.h"

namespace client {
namespace {

constexpr std::size_t kMostTexts = 6;

std::string_view TextOf(Bytes bytes) {
  if (bytes.empty()) return {};
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// "boardLength" is the length of "board".
bool IsLengthOf(std::string_view field, std::string_view text) {
  return field.size() == text.size() + sizeof("Length") - 1 && field.starts_with(text) &&
         field.ends_with("Length");
}

// Puts one field of a reply where it belongs. What belongs nowhere, such as the capacity in a
// failure of BC_EnumBoard, says nothing of the answer.
void Store(const Field& field, const FieldValue& value, std::span<const NamedText> texts,
           BoardAnswer& answer) {
  const bool isText = field.kind == FieldKind::Text || field.kind == FieldKind::Buffer;
  for (const NamedText& known : texts) {
    if (isText && field.name == known.name) {
      known.text->text = TextOf(value.bytes);
      known.text->length = static_cast<std::uint32_t>(value.bytes.size());
      return;
    }
    if (!isText && IsLengthOf(field.name, known.name)) {
      known.text->length = value.number;
      return;
    }
  }
  if (field.name == "state" || field.name == "value") answer.value = value.number;
}

// Takes a reply's fields by their names, as far as they are there.
void TakeAnswer(const Reply& reply, std::span<const NamedText> texts, BoardAnswer& answer) {
  std::uint32_t cursor = kReplyHead;
  FieldList fields(reply.layout.fields);
  Field field;
  while (fields.Next(field)) {
    FieldValue value;
    if (TakeField(field.kind, reply.bytes, kMessageLimit, /*mayBeAbsent=*/false, cursor, value) !=
        FieldStatus::Taken) {
      return;
    }
    Store(field, value, texts, answer);
  }
}

RequestBuilder& AddNumberAsBuffer(RequestBuilder& request, std::uint32_t number) {
  std::uint8_t bytes[sizeof(number)];
  wire::Store<std::uint32_t>(bytes, number);
  return request.Buffer(bytes);
}

RequestBuilder& AddGuid(RequestBuilder& request, const Guid& guid) {
  request.Long(guid.data1).Short(guid.data2).Short(guid.data3);
  for (const std::uint8_t byte : guid.data4) request.Byte(byte);
  return request;
}

}  // namespace

void FitRooms(std::span<const std::uint32_t> lengths, std::span<std::uint32_t> rooms) noexcept {
  std::array<std::size_t, kMostTexts> order{};
  const std::size_t count = std::min({lengths.size(), rooms.size(), order.size()});
  for (std::size_t i = 0; i < count; ++i) order[i] = i;
  // The shortest first, so that what it leaves is there for the others; the unknown last.
  const auto wanted = [&](std::size_t i) {
    return lengths[i] == 0 || lengths[i] > kBoardRoom ? kBoardRoom : lengths[i] + 1;
  };
  std::sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(count),
            [&](std::size_t a, std::size_t b) { return wanted(a) < wanted(b); });
  std::uint32_t left = kBoardAnswerLimit;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t share = left / static_cast<std::uint32_t>(count - i);
    rooms[order[i]] = std::min(wanted(order[i]), share);
    left -= rooms[order[i]];
  }
}

Result BoardCalls::Call(const RequestBuilder& request, Reply& reply) noexcept {
  reply = {};
  if (!request.Complete()) return {Origin::Request, BUFFER_OVERFLOW};
  return client_.Exchange(request.Request(), reply);
}

Result BoardCalls::Call(const RequestBuilder& request) noexcept {
  Reply reply;
  return Call(request, reply);
}

Result BoardCalls::AskOnce(const RequestBuilder& head, std::span<const std::uint32_t> rooms,
                           std::span<const NamedText> texts, BoardAnswer& answer) noexcept {
  for (const NamedText& known : texts) *known.text = {};
  answer.value = 0;
  RequestBuilder request = head;
  for (const std::uint32_t room : rooms) request.Long(room);
  Reply reply;
  const Result result = Call(request, reply);
  answer.told = result.fromServer();
  if (!answer.told) return result;
  TakeAnswer(reply, texts, answer);
  if (!result.ok()) {
    // What arrived of an answer that broke off is no answer.
    for (const NamedText& known : texts) known.text->text = {};
  }
  return result;
}

Result BoardCalls::AskFor(const RequestBuilder& head, std::span<const NamedText> texts,
                          BoardAnswer& answer) noexcept {
  answer.askedAgain = false;
  std::array<std::uint32_t, kMostTexts> most;
  most.fill(kBoardRoom);
  const std::span<std::uint32_t> rooms = std::span(most).first(texts.size());
  const Result first = AskOnce(head, rooms, texts, answer);
  if (!first.is(BUFFER_OVERFLOW)) return first;

  std::array<std::uint32_t, kMostTexts> lengths{};
  for (std::size_t i = 0; i < texts.size(); ++i) lengths[i] = texts[i].text->length;
  FitRooms(std::span(lengths).first(texts.size()), rooms);
  const Result second = AskOnce(head, rooms, texts, answer);
  answer.askedAgain = second.ok();
  if (second.ok() || !second.fromServer()) return second;
  // What the first answer told of the lengths is what the texts need.
  for (std::size_t i = 0; i < texts.size(); ++i) *texts[i].text = {{}, lengths[i]};
  return first;
}

Result BoardCalls::BC_EnumBoard(const char* deviceId, std::uint32_t index,
                                BoardEntry& entry) noexcept {
  return AskFor(RequestBuilder(CommandCode::BC_EnumBoard).Text(deviceId).Long(index), entry.Texts(),
                entry);
}

Result BoardCalls::BC_EnumInstBoard(std::uint32_t index, InstBoardEntry& entry) noexcept {
  return AskFor(RequestBuilder(CommandCode::BC_EnumInstBoard).Long(index), entry.Texts(), entry);
}

Result BoardCalls::BC_EnumAvailableBoard(std::uint32_t index, AvailableBoardEntry& entry) noexcept {
  return AskFor(RequestBuilder(CommandCode::BC_EnumAvailableBoard).Long(index), entry.Texts(),
                entry);
}

Result BoardCalls::BC_EnumAdapters(std::uint32_t index, AdapterEntry& entry) noexcept {
  return AskFor(RequestBuilder(CommandCode::BC_EnumAdapters).Long(index), entry.Texts(), entry);
}

Result BoardCalls::BC_EnumConfiguration(std::uint32_t index, const BoardSelection& of,
                                        ConfigurationEntry& entry) noexcept {
  RequestBuilder head(CommandCode::BC_EnumConfiguration);
  head.Long(index).Text(of.board).Text(of.boardMap).Text(of.deviceId).Text(of.hardwareInstanceId);
  return AskFor(head, entry.Texts(), entry);
}

Result BoardCalls::BC_BoardGetMap(const char* deviceId, const char* adapter, const char* hardwareId,
                                  BoardValue& boardMap) noexcept {
  RequestBuilder head(CommandCode::BC_BoardGetMap);
  head.Text(deviceId).Text(adapter).Text(hardwareId);
  const NamedText texts[] = {{"boardMap", &boardMap.content}};
  return AskFor(head, texts, boardMap);
}

Result BoardCalls::BC_GetBoardInfo(std::uint32_t infoType, const BoardSelection& of,
                                   BoardValue& value) noexcept {
  RequestBuilder head(CommandCode::BC_GetBoardInfo);
  head.Long(infoType).Text(of.board).Text(of.boardMap).Text(of.deviceId);
  head.Text(of.hardwareInstanceId);
  const NamedText texts[] = {{"value", &value.content}};
  return AskFor(head, texts, value);
}

Result BoardCalls::BC_GetBoardInfoEx(std::uint32_t infoType, const BoardSelection& of,
                                     BoardValue& data) noexcept {
  RequestBuilder head(CommandCode::BC_GetBoardInfoEx);
  head.Long(infoType).Text(of.board).Text(of.boardMap).Text(of.hardwareInstanceId);
  const NamedText texts[] = {{"data", &data.content}};
  return AskFor(head, texts, data);
}

Result BoardCalls::BC_Scan() noexcept { return Call(RequestBuilder(CommandCode::BC_Scan)); }

Result BoardCalls::BC_CreateAllLogdevices() noexcept {
  return Call(RequestBuilder(CommandCode::BC_CreateAllLogdevices));
}

Result BoardCalls::BC_HasUninitializedInstances() noexcept {
  return Call(RequestBuilder(CommandCode::BC_HasUninitializedInstances));
}

Result BoardCalls::BC_UpdateLogDevicesForDevice(const char* deviceId,
                                                const char* hardwareId) noexcept {
  return Call(
      RequestBuilder(CommandCode::BC_UpdateLogDevicesForDevice).Text(deviceId).Text(hardwareId));
}

Result BoardCalls::BC_PlausibilitaetBL() noexcept {
  return Call(RequestBuilder(CommandCode::BC_PlausibilitaetBL));
}

Result BoardCalls::Register(CommandCode command, const char* deviceId, const Guid& guid) noexcept {
  RequestBuilder request(command);
  request.Text(deviceId);
  return Call(AddGuid(request, guid));
}

Result BoardCalls::RegisterForDeviceChangeNotifications(const char* deviceId,
                                                        const Guid& guid) noexcept {
  return Register(CommandCode::RegisterForDeviceChangeNotifications, deviceId, guid);
}

Result BoardCalls::UnregisterForDeviceChangeNotifications(const char* deviceId,
                                                          const Guid& guid) noexcept {
  return Register(CommandCode::UnregisterForDeviceChangeNotifications, deviceId, guid);
}

Result BoardCalls::GetDeviceChange(const char* deviceId, DeviceChange& change) noexcept {
  change = {};
  Reply reply;
  const Result result = Call(RequestBuilder(CommandCode::GetDeviceChange).Text(deviceId), reply);
  ReplyReader fields(reply.bytes);
  if (result.ok()) {
    change.kind = fields.Byte();
    change.text = fields.Text();
    change.length = fields.Long();
    change.interfaceClass = fields.Guid();
  } else if (result.is(BUFFER_OVERFLOW)) {
    change.length = fields.Long();
  }
  return result;
}

Result BoardCalls::GetDeviceStateEx(const char* hardwareId, std::uint32_t option,
                                    DeviceState& state) noexcept {
  state = {};
  Reply reply;
  const Result result =
      Call(RequestBuilder(CommandCode::GetDeviceStateEx).Text(hardwareId).Long(option), reply);
  if (!result.ok()) return result;
  ReplyReader fields(reply.bytes);
  state.status = fields.Long();
  state.problem = fields.Long();
  return result;
}

Result BoardCalls::GetBoardInformation(const InformationRequest& ask, Information& told) noexcept {
  told = {};
  RequestBuilder request(CommandCode::GetBoardInformation);
  request.Buffer(ask.data1);
  for (const std::uint32_t value : ask.values) AddNumberAsBuffer(request, value);
  request.Buffer(ask.data2);
  AddNumberAsBuffer(request, ask.area1Size);
  AddNumberAsBuffer(request, ask.area2Size);
  AddNumberAsBuffer(request, ask.last);
  Reply reply;
  const Result result = Call(request, reply);
  if (!result.ok()) return result;
  ReplyReader fields(reply.bytes);
  told.area1 = fields.Buffer();
  const Bytes value = fields.Buffer();
  if (value.size() == sizeof(told.value)) told.value = wire::Load<std::uint32_t>(value.data());
  told.area2 = fields.Buffer();
  told.result1 = fields.Long();
  told.result2 = fields.Long();
  return result;
}

}  // namespace client
