#include "client/QorlixClient.h"

#include <algorithm>
#include <cstring>

#include "client/Deadline.h"
#include "codec/Wire.h"

namespace client {
namespace {

// A second reply is written as soon as the first one has been taken; this long is ample for a
// server that is not held up, and bearable where no second one comes.
constexpr std::uint32_t kLingerMs = 500;

bool IsConfirmedStop(Bytes request) {
  const CommandInfo* const command = CommandOf(request);
  return command != nullptr && command->code == CommandCode::StopServer &&
         IsReadable(*command, request) &&
         wire::Load<std::uint32_t>(request.data() + sizeof(std::uint16_t)) == kStopConfirmation;
}

}  // namespace

void QorlixClient::SetTimeouts(std::uint32_t connectMs, std::uint32_t exchangeMs) noexcept {
  connectMs_ = connectMs;
  exchangeMs_ = exchangeMs;
}

Result QorlixClient::Connect() noexcept {
  if (pipe_.IsOpen()) return {};
  received_ = 0;
  consumed_ = 0;
  const std::uint32_t code = pipe_.Open(pipeName_, connectMs_);
  return code == 0 ? Result() : Result(Origin::Connect, code);
}

void QorlixClient::Disconnect() noexcept { pipe_.Close(); }

Result QorlixClient::Send(Bytes bytes) noexcept {
  const Result connected = Connect();
  if (!connected.ok()) return connected;
  const std::uint32_t code =
      pipe_.Write(bytes.data(), static_cast<std::uint32_t>(bytes.size()), exchangeMs_);
  if (code == 0) return {};
  Disconnect();
  return {Origin::Send, code};
}

void QorlixClient::DropReply() noexcept {
  received_ -= consumed_;
  if (received_ != 0 && consumed_ != 0) std::memmove(buffer_, buffer_ + consumed_, received_);
  consumed_ = 0;
}

std::uint32_t QorlixClient::ReadMore(std::uint32_t timeoutMs) noexcept {
  // No reply is nearly as long as the buffer.
  if (received_ == kReceiveBuffer) return kInvalidReply;
  std::uint32_t arrived = 0;
  const std::uint32_t code =
      pipe_.Read(buffer_ + received_, kReceiveBuffer - received_, timeoutMs, arrived);
  received_ += arrived;
  return code;
}

Result QorlixClient::Accept(const ReplyLayout& layout, Reply& reply) noexcept {
  consumed_ = layout.size;
  reply = {{buffer_, layout.size}, layout};
  return Result::FromServer(layout.result);
}

Result QorlixClient::Fail(std::uint32_t code, Reply& reply) noexcept {
  Disconnect();
  reply.bytes = {buffer_, received_};
  return {Origin::Receive, code};
}

Result QorlixClient::Receive(Bytes request, Reply& reply) noexcept {
  reply = {};
  if (!pipe_.IsOpen()) return {Origin::Receive, kPipeNotConnected};
  DropReply();
  const Deadline deadline(exchangeMs_);
  for (;;) {
    const ReplyLayout layout = ExamineReply(request, {buffer_, received_});
    reply.layout = layout;
    switch (layout.state) {
      case ReplyState::Complete:
        return Accept(layout, reply);
      case ReplyState::Malformed:
        return Fail(kInvalidReply, reply);
      case ReplyState::MayGrow:
        if (ReadMore(std::min(kLingerMs, deadline.LeftMs())) == 0) break;
        // Nothing more came in time. Should it come later, it must not meet the next request.
        Disconnect();
        return Accept(layout, reply);
      case ReplyState::Incomplete: {
        const std::uint32_t code = ReadMore(deadline.LeftMs());
        if (code == 0) break;
        const Result failure = Fail(code, reply);
        const bool stopped = IsPipeBroken(code) && received_ == 0 && IsConfirmedStop(request);
        return stopped ? Result() : failure;
      }
    }
  }
}

Result QorlixClient::Exchange(Bytes request, Reply& reply) noexcept {
  reply = {};
  // Bytes that nobody asked for would be taken for the beginning of this reply.
  if (received_ != consumed_) Disconnect();
  const Result sent = Send(request);
  if (!sent.ok()) return sent;
  return Receive(request, reply);
}

Result QorlixClient::Call(const RequestBuilder& request, Reply& reply) noexcept {
  reply = {};
  if (!request.Complete()) return {Origin::Request, BUFFER_OVERFLOW};
  return Exchange(request.Request(), reply);
}

Result QorlixClient::Call(const RequestBuilder& request) noexcept {
  Reply reply;
  return Call(request, reply);
}

Result QorlixClient::NoOperation() noexcept {
  return Call(RequestBuilder(CommandCode::NoOperation));
}

Result QorlixClient::StopServer(std::uint32_t confirmation) noexcept {
  return Call(RequestBuilder(CommandCode::StopServer).Long(confirmation));
}

Result QorlixClient::Reg_CreateKey(const char* key) noexcept {
  return Call(RequestBuilder(CommandCode::Reg_CreateKey).Text(key));
}

Result QorlixClient::Reg_DelKey(const char* key) noexcept {
  return Call(RequestBuilder(CommandCode::Reg_DelKey).Text(key));
}

Result QorlixClient::Reg_SetValue(const char* key, const char* name, const char* text) noexcept {
  return Call(RequestBuilder(CommandCode::Reg_SetValue).Text(key).Text(name).Text(text));
}

Result QorlixClient::Reg_GetValue(const char* key, const char* name, RegistryData& data) noexcept {
  data = {};
  Reply reply;
  const Result result = Call(RequestBuilder(CommandCode::Reg_GetValue).Text(key).Text(name), reply);
  ReplyReader fields(reply.bytes);
  if (result.ok()) data.text = fields.Text();
  if (result.fromServer()) data.length = fields.Long();
  return result;
}

Result QorlixClient::Reg_DelValue(const char* key, const char* name) noexcept {
  return Call(RequestBuilder(CommandCode::Reg_DelValue).Text(key).Text(name));
}

Result QorlixClient::Reg_EnumKey(const char* key, std::uint32_t index,
                                 RegistryEntry& entry) noexcept {
  return Enumerate(CommandCode::Reg_EnumKey, key, index, entry);
}

Result QorlixClient::Reg_EnumValue(const char* key, std::uint32_t index,
                                   RegistryEntry& entry) noexcept {
  return Enumerate(CommandCode::Reg_EnumValue, key, index, entry);
}

Result QorlixClient::Enumerate(CommandCode command, const char* key, std::uint32_t index,
                               RegistryEntry& entry) noexcept {
  entry = {};
  Reply reply;
  const Result result = Call(RequestBuilder(command).Text(key).Long(index), reply);
  if (!result.fromServer()) return result;

  ReplyReader fields(reply.bytes);
  if (result.ok()) entry.name = fields.Text();
  entry.nameLength = fields.Long();
  if (command == CommandCode::Reg_EnumValue) {
    if (result.ok()) entry.data = fields.Text();
    entry.dataLength = fields.Long();
  }
  entry.told = !fields.Failed();
  return result;
}

Result QorlixClient::Reg_CreateKeyBase(std::uint32_t root, const char* key) noexcept {
  return Call(RequestBuilder(CommandCode::Reg_CreateKeyBase).Long(root).Text(key));
}

Result QorlixClient::Reg_DelKeyBase(std::uint32_t root, const char* key) noexcept {
  return Call(RequestBuilder(CommandCode::Reg_DelKeyBase).Long(root).Text(key));
}

Result QorlixClient::Reg_SetValueBase(std::uint32_t root, const char* key, const char* name,
                                      const char* text) noexcept {
  return Call(
      RequestBuilder(CommandCode::Reg_SetValueBase).Long(root).Text(key).Text(name).Text(text));
}

}  // namespace client
