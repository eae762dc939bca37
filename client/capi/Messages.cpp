#include <algorithm>
#include <cstring>
#include <new>

#include "client/CommandInfo.h"
#include "client/capi/Handle.h"
#include "codec/Wire.h"

// Any command: requests that are built field by field, replies that are taken apart, calls that go
// on meanwhile.

namespace {

using client::Bytes;
using client::Result;
using client::capi::BadArgument;

static_assert(QORLIX_MESSAGE_LIMIT == client::kMessageLimit);

constexpr std::uint32_t kNoResult = 0xFFFFFFFF;

// Code and fields in one piece. Whatever does not fit has no room either.
struct RawRequest {
  RawRequest(std::uint16_t command, const void* fields, std::uint32_t count) noexcept {
    fits = wire::Put(bytes, client::kMessageLimit, size, command) &&
           (count == 0 || wire::PutBytes(bytes, client::kMessageLimit, size, fields, count));
  }
  Bytes Get() const noexcept { return {bytes, size}; }

  std::uint32_t size = 0;
  bool fits = false;
  std::uint8_t bytes[client::kMessageLimit];
};

constexpr Result TooLong() { return {client::Origin::Request, BUFFER_OVERFLOW}; }

bool IsUsable(const void* fields, std::uint32_t size) { return fields != nullptr || size == 0; }

qorlix_status Exchange(qorlix_client& client, Bytes request, void* reply, std::uint32_t capacity,
                       std::uint32_t* size) {
  client.Forget();
  const Result ended = client.connection.Exchange(request, client.reply);
  return client.NoteReply(ended, reply, capacity, size);
}

qorlix_status Begin(qorlix_client& client, Bytes request, std::uint32_t deadlineMs) {
  client.Forget();
  return client.Note(client.connection.Begin(request, deadlineMs));
}

qorlix_status Refuse(qorlix_client& client) {
  client.Forget();
  return client.Note(TooLong());
}

client::FieldValue Take(qorlix_reader* reader, client::FieldKind kind) {
  client::FieldValue value;
  if (reader == nullptr || reader->failed != 0) return value;
  const Bytes bytes(reader->bytes, reader->size);
  // The cursor is the caller's memory: one beyond the end takes nothing, as everywhere.
  if (TakeField(kind, bytes, reader->size, /*mayBeAbsent=*/false, reader->cursor, value) !=
      client::FieldStatus::Taken) {
    reader->failed = 1;
    return {};
  }
  return value;
}

}  // namespace

extern "C" {

qorlix_status QORLIX_CALL qorlix_call(qorlix_client* client, std::uint16_t command,
                                      const void* fields, std::uint32_t size, void* reply,
                                      std::uint32_t capacity, std::uint32_t* reply_size) noexcept {
  if (reply_size != nullptr) *reply_size = 0;
  if (client == nullptr || !IsUsable(fields, size)) return BadArgument(client);
  const RawRequest request(command, fields, size);
  if (!request.fits) return Refuse(*client);
  return Exchange(*client, request.Get(), reply, capacity, reply_size);
}

const std::uint8_t* QORLIX_CALL qorlix_last_reply(const qorlix_client* client,
                                                  std::uint32_t* size) noexcept {
  const Bytes bytes = client != nullptr ? client->reply.bytes : Bytes();
  if (size != nullptr) *size = static_cast<std::uint32_t>(bytes.size());
  return bytes.empty() ? nullptr : bytes.data();
}

std::uint32_t QORLIX_CALL qorlix_command_count(void) noexcept {
  return static_cast<std::uint32_t>(client::Commands().size());
}

qorlix_status QORLIX_CALL qorlix_get_command(std::uint32_t index,
                                             qorlix_command* command) noexcept {
  if (command == nullptr) return QORLIX_ERR_ARGUMENT;
  *command = {0, "", "", "", "", "", 0, ""};
  if (index >= client::Commands().size()) return QORLIX_ERR_ARGUMENT;
  const client::CommandInfo& known = client::Commands()[index];
  *command = {static_cast<std::uint32_t>(known.code),
              known.name,
              known.request,
              known.success,
              known.tooLong,
              known.failure,
              known.done,
              known.note};
  return QORLIX_OK;
}

qorlix_request* QORLIX_CALL qorlix_request_create(std::uint16_t command) noexcept {
  return new (std::nothrow) qorlix_request(command);
}

void QORLIX_CALL qorlix_request_free(qorlix_request* request) noexcept { delete request; }

void QORLIX_CALL qorlix_add_byte(qorlix_request* request, std::uint8_t value) noexcept {
  if (request != nullptr) request->builder.Byte(value);
}

void QORLIX_CALL qorlix_add_short(qorlix_request* request, std::uint16_t value) noexcept {
  if (request != nullptr) request->builder.Short(value);
}

void QORLIX_CALL qorlix_add_long(qorlix_request* request, std::uint32_t value) noexcept {
  if (request != nullptr) request->builder.Long(value);
}

void QORLIX_CALL qorlix_add_text(qorlix_request* request, const char* text) noexcept {
  if (request != nullptr) request->builder.Text(text);
}

void QORLIX_CALL qorlix_add_buffer(qorlix_request* request, const void* bytes,
                                   std::uint32_t size) noexcept {
  if (request == nullptr) return;
  if (bytes == nullptr) {
    request->builder.AbsentBuffer();
  } else {
    request->builder.Buffer({static_cast<const std::uint8_t*>(bytes), size});
  }
}

void QORLIX_CALL qorlix_add_guid(qorlix_request* request, const qorlix_guid* guid) noexcept {
  if (request == nullptr || guid == nullptr) return;
  request->builder.Long(guid->data1).Short(guid->data2).Short(guid->data3);
  for (const std::uint8_t byte : guid->data4) request->builder.Byte(byte);
}

const std::uint8_t* QORLIX_CALL qorlix_request_bytes(const qorlix_request* request,
                                                     std::uint32_t* size) noexcept {
  const bool usable = request != nullptr && request->builder.Complete();
  const Bytes bytes = usable ? request->builder.Request() : Bytes();
  if (size != nullptr) *size = static_cast<std::uint32_t>(bytes.size());
  return usable ? bytes.data() : nullptr;
}

qorlix_status QORLIX_CALL qorlix_call_request(qorlix_client* client,
                                              const qorlix_request* request) noexcept {
  if (client == nullptr || request == nullptr) return BadArgument(client);
  if (!request->builder.Complete()) return Refuse(*client);
  return Exchange(*client, request->builder.Request(), /*reply=*/nullptr, /*capacity=*/0,
                  /*size=*/nullptr);
}

void QORLIX_CALL qorlix_read(qorlix_reader* reader, const void* bytes,
                             std::uint32_t size) noexcept {
  if (reader == nullptr) return;
  const bool has = bytes != nullptr && size >= client::kReplyHead;
  *reader = {static_cast<const std::uint8_t*>(bytes), size, client::kReplyHead, has ? 0 : 1};
}

std::uint32_t QORLIX_CALL qorlix_reply_result(const void* bytes, std::uint32_t size) noexcept {
  if (bytes == nullptr || size < client::kReplyHead) return kNoResult;
  const auto* const at = static_cast<const std::uint8_t*>(bytes);
  if (wire::Load<std::uint16_t>(at) != REPLY_MARK) return kNoResult;
  return wire::Load<std::uint32_t>(at + sizeof(REPLY_MARK));
}

std::uint8_t QORLIX_CALL qorlix_take_byte(qorlix_reader* reader) noexcept {
  return static_cast<std::uint8_t>(Take(reader, client::FieldKind::Byte).number);
}

std::uint32_t QORLIX_CALL qorlix_take_long(qorlix_reader* reader) noexcept {
  return Take(reader, client::FieldKind::Long).number;
}

const char* QORLIX_CALL qorlix_take_text(qorlix_reader* reader, std::uint32_t* size) noexcept {
  const Bytes bytes = Take(reader, client::FieldKind::Text).bytes;
  if (size != nullptr) *size = static_cast<std::uint32_t>(bytes.size());
  return bytes.empty() ? "" : reinterpret_cast<const char*>(bytes.data());
}

void QORLIX_CALL qorlix_take_guid(qorlix_reader* reader, qorlix_guid* guid) noexcept {
  if (guid == nullptr) return;
  *guid = {};
  const Bytes bytes = Take(reader, client::FieldKind::Guid).bytes;
  if (!bytes.empty()) std::memcpy(guid, bytes.data(), bytes.size());
}
static_assert(sizeof(qorlix_guid) == 16, "it lies in memory as on the wire");

qorlix_status QORLIX_CALL qorlix_begin(qorlix_client* client, std::uint16_t command,
                                       const void* fields, std::uint32_t size,
                                       std::uint32_t deadline_ms) noexcept {
  if (client == nullptr || !IsUsable(fields, size)) return BadArgument(client);
  const RawRequest request(command, fields, size);
  return request.fits ? Begin(*client, request.Get(), deadline_ms) : Refuse(*client);
}

qorlix_status QORLIX_CALL qorlix_begin_request(qorlix_client* client, const qorlix_request* request,
                                               std::uint32_t deadline_ms) noexcept {
  if (client == nullptr || request == nullptr) return BadArgument(client);
  if (!request->builder.Complete()) return Refuse(*client);
  return Begin(*client, request->builder.Request(), deadline_ms);
}

qorlix_status QORLIX_CALL qorlix_wait(qorlix_client* client, std::uint32_t timeout_ms, void* reply,
                                      std::uint32_t capacity, std::uint32_t* reply_size) noexcept {
  if (reply_size != nullptr) *reply_size = 0;
  if (client == nullptr) return QORLIX_ERR_ARGUMENT;
  client->Forget();
  Result ended;
  if (!client->connection.Wait(timeout_ms, ended, client->reply)) {
    client->result = {client::Origin::Receive, client::kStillUnderway};
    return QORLIX_PENDING;
  }
  return client->NoteReply(ended, reply, capacity, reply_size);
}

void QORLIX_CALL qorlix_cancel(qorlix_client* client) noexcept {
  if (client != nullptr) client->connection.Cancel();
}

}  // extern "C"
