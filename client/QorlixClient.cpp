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
  if (!GivesWay()) return {Origin::Request, kCallUnderway};
  return EnsureConnected(connectMs_);
}

Result QorlixClient::EnsureConnected(std::uint32_t timeoutMs) noexcept {
  if (pipe_.IsOpen()) return {};
  received_ = 0;
  consumed_ = 0;
  const std::uint32_t code = pipe_.Open(pipeName_, timeoutMs);
  return code == 0 ? CheckServer() : Result(Origin::Connect, code);
}

Result QorlixClient::CheckServer() noexcept {
  server_ = {};
  if (verification_ == Verification::Off) return {};
  server_ = Identify(pipe_.Peer());
  if (server_.trust != ServerTrust::Foreign || verification_ == Verification::Warn) return {};
  Disconnect();
  return {Origin::Verify, kForeignServer};
}

void QorlixClient::Disconnect() noexcept {
  pipe_.Close();
  underway_ = false;
}

// Whether a new call may begin. One that was begun and cancelled makes way for it.
bool QorlixClient::GivesWay() noexcept {
  if (underway_ && !pipe_.Interrupted()) return false;
  if (underway_) Disconnect();
  pipe_.ClearInterrupt();
  return true;
}

Result QorlixClient::Write(Bytes bytes, const Deadline* whole) noexcept {
  const Result connected =
      EnsureConnected(whole != nullptr ? std::min(connectMs_, whole->LeftMs()) : connectMs_);
  if (!connected.ok()) return connected;
  const std::uint32_t code = pipe_.Write(bytes.data(), static_cast<std::uint32_t>(bytes.size()),
                                         whole != nullptr ? whole->LeftMs() : exchangeMs_);
  if (code == 0) return {};
  Disconnect();
  return {Origin::Send, code};
}

Result QorlixClient::Send(Bytes bytes) noexcept {
  if (!GivesWay()) return {Origin::Request, kCallUnderway};
  return Write(bytes, /*whole=*/nullptr);
}

// Sends a request that is to be answered, on a connection where nothing else is.
Result QorlixClient::StartOf(Bytes request, const Deadline* whole) noexcept {
  // Bytes that nobody asked for would be taken for the beginning of this reply.
  if (received_ != consumed_) Disconnect();
  const bool wasKept = pipe_.IsOpen();
  const Result sent = Write(request, whole);
  const bool wasDead = wasKept && sent.origin() == Origin::Send && IsPipeBroken(sent.code()) &&
                       pipe_.NothingWasWritten();
  return wasDead ? Write(request, whole) : sent;
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

// Looks whether a reply that is whole is followed by another one. \returns false when that cannot
// be told yet; with true, either more has arrived or the connection was closed, because what might
// still come must not meet the next request.
bool QorlixClient::AwaitSecond(Patience& patience, const Deadline& now) noexcept {
  if (!patience.lingers) {
    patience.linger = Deadline(std::min(kLingerMs, patience.whole.LeftMs()));
    patience.lingers = true;
  }
  const std::uint32_t code = ReadMore(std::min(patience.linger.LeftMs(), now.LeftMs()));
  if (code == 0) return true;
  if (code == kTimedOut && patience.mayPause && patience.linger.LeftMs() != 0) return false;
  Disconnect();
  return true;
}

// Goes on with the reply. \returns false when it is not whole after `waitMs`, and may still be.
bool QorlixClient::Advance(Bytes request, Patience& patience, std::uint32_t waitMs, Result& result,
                           Reply& reply) noexcept {
  const Deadline now(std::min(waitMs, patience.whole.LeftMs()));
  for (;;) {
    const ReplyLayout layout = ExamineReply(request, {buffer_, received_});
    reply.layout = layout;
    switch (layout.state) {
      case ReplyState::Complete:
        result = Accept(layout, reply);
        return true;
      case ReplyState::Malformed:
        result = Fail(kInvalidReply, reply);
        return true;
      case ReplyState::MayGrow:
        if (!AwaitSecond(patience, now)) return false;
        if (pipe_.IsOpen()) break;
        result = Accept(layout, reply);
        return true;
      case ReplyState::Incomplete: {
        const std::uint32_t code = ReadMore(now.LeftMs());
        if (code == 0) break;
        if (code == kTimedOut && patience.mayPause && patience.whole.LeftMs() != 0) return false;
        result = Fail(code, reply);
        if (IsPipeBroken(code) && received_ == 0 && IsConfirmedStop(request)) result = Result();
        return true;
      }
    }
  }
}

Result QorlixClient::Receive(Bytes request, Reply& reply) noexcept {
  reply = {};
  if (underway_) return {Origin::Request, kCallUnderway};
  if (!pipe_.IsOpen()) return {Origin::Receive, kPipeNotConnected};
  DropReply();
  Patience patience{Deadline(exchangeMs_)};
  Result result;
  while (!Advance(request, patience, exchangeMs_, result, reply)) {
  }
  return result;
}

Result QorlixClient::Exchange(Bytes request, Reply& reply) noexcept {
  reply = {};
  if (!GivesWay()) return {Origin::Request, kCallUnderway};
  const Result sent = StartOf(request, /*whole=*/nullptr);
  if (!sent.ok()) return sent;
  return Receive(request, reply);
}

Result QorlixClient::Begin(Bytes request, std::uint32_t deadlineMs) noexcept {
  if (!GivesWay()) return {Origin::Request, kCallUnderway};
  if (request.size() > sizeof(request_)) return {Origin::Request, BUFFER_OVERFLOW};
  patience_ = {Deadline(deadlineMs), /*mayPause=*/true};
  const Result sent = StartOf(request, &patience_.whole);
  if (!sent.ok()) return sent;
  DropReply();
  std::copy(request.begin(), request.end(), request_);
  requestSize_ = static_cast<std::uint32_t>(request.size());
  underway_ = true;
  return sent;
}

bool QorlixClient::Wait(std::uint32_t timeoutMs, Result& result, Reply& reply) noexcept {
  reply = {};
  result = {Origin::Request, kNoCallUnderway};
  if (!underway_) return true;
  if (!Advance({request_, requestSize_}, patience_, timeoutMs, result, reply)) return false;
  underway_ = false;
  return true;
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
