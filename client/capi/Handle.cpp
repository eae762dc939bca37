#include "client/capi/Handle.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace client::capi {
namespace {

qorlix_status StatusOf(const Result& result) {
  switch (result.origin()) {
    case Origin::Server:
      return result.ok() ? QORLIX_OK : QORLIX_ANSWERED;
    case Origin::Request:
      return QORLIX_ERR_REQUEST;
    case Origin::Connect:
      return QORLIX_ERR_CONNECT;
    case Origin::Verify:
      return QORLIX_ERR_VERIFY;
    case Origin::Send:
      return QORLIX_ERR_SEND;
    case Origin::Receive:
      return QORLIX_ERR_RECEIVE;
  }
  return QORLIX_ERR_ARGUMENT;
}

}  // namespace

qorlix_text_value TextStore::Keep(std::string_view text, std::uint32_t length) noexcept {
  // A reply's texts and their zeros always fit.
  if (text.size() >= bytes_.size() - used_) return {"", 0, length};
  char* const copy = bytes_.data() + used_;
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  used_ += static_cast<std::uint32_t>(text.size()) + 1;
  return {copy, static_cast<std::uint32_t>(text.size()), length};
}

}  // namespace client::capi

using client::Result;
using client::capi::Run;

qorlix_client::qorlix_client(std::string_view name) noexcept
    : pipeName{}, connection(pipeName.data()) {
  std::copy_n(name.data(), std::min(name.size(), pipeName.size() - 1), pipeName.data());
}

void qorlix_client::Forget() noexcept {
  result = {};
  reply = {};
  texts.Clear();
}

qorlix_status qorlix_client::Note(const Result& ended) noexcept {
  result = ended;
  return client::capi::StatusOf(ended);
}

qorlix_status qorlix_client::NoteBadArgument() noexcept {
  result = {client::Origin::Request, client::kBadArgument};
  return QORLIX_ERR_ARGUMENT;
}

qorlix_status qorlix_client::NoteReply(const Result& ended, void* room, std::uint32_t capacity,
                                       std::uint32_t* size) noexcept {
  const qorlix_status status = Note(ended);
  const auto arrived = static_cast<std::uint32_t>(reply.bytes.size());
  if (size != nullptr) *size = arrived;
  if (room == nullptr || arrived == 0) return status;
  if (arrived > capacity) return status >= QORLIX_OK ? QORLIX_ERR_ROOM : status;
  std::memcpy(room, reply.bytes.data(), arrived);
  return status;
}

extern "C" {

std::uint32_t QORLIX_CALL qorlix_api_version(void) noexcept { return QORLIX_API_VERSION; }

qorlix_client* QORLIX_CALL qorlix_open(const char* pipe_name) noexcept {
  const std::string_view name = pipe_name != nullptr ? pipe_name : client::kServerPipeName;
  if (name.size() >= client::capi::kPipeNameRoom) return nullptr;
  return new (std::nothrow) qorlix_client(name);
}

void QORLIX_CALL qorlix_close(qorlix_client* client) noexcept { delete client; }

qorlix_status QORLIX_CALL qorlix_set_timeouts(qorlix_client* client, std::uint32_t connect_ms,
                                              std::uint32_t exchange_ms) noexcept {
  if (client == nullptr) return QORLIX_ERR_ARGUMENT;
  client->connection.SetTimeouts(connect_ms, exchange_ms);
  return QORLIX_OK;
}

qorlix_status QORLIX_CALL qorlix_connect(qorlix_client* client) noexcept {
  return Run(client, [](client::QorlixClient& connection) { return connection.Connect(); });
}

qorlix_status QORLIX_CALL qorlix_disconnect(qorlix_client* client) noexcept {
  if (client == nullptr) return QORLIX_ERR_ARGUMENT;
  client->connection.Disconnect();
  return QORLIX_OK;
}

std::uint32_t QORLIX_CALL qorlix_code(const qorlix_client* client) noexcept {
  return client != nullptr ? client->result.code() : 0;
}

const char* QORLIX_CALL qorlix_code_name(const qorlix_client* client) noexcept {
  return client != nullptr ? client->result.name() : "";
}

const char* QORLIX_CALL qorlix_text(const qorlix_client* client) noexcept {
  return client != nullptr ? client->result.text() : "there is no client";
}

qorlix_status QORLIX_CALL qorlix_set_verification(qorlix_client* client,
                                                  std::int32_t verification) noexcept {
  if (client == nullptr || verification < QORLIX_VERIFY_OFF || verification > QORLIX_VERIFY_REFUSE)
    return client::capi::BadArgument(client);
  client->connection.SetVerification(static_cast<client::Verification>(verification));
  return QORLIX_OK;
}

qorlix_status QORLIX_CALL qorlix_get_server(const qorlix_client* client,
                                            qorlix_server* server) noexcept {
  if (server == nullptr) return QORLIX_ERR_ARGUMENT;
  *server = {QORLIX_TRUST_NOT_CHECKED, 0, ""};
  if (client == nullptr) return QORLIX_ERR_ARGUMENT;
  const client::ServerIdentity& identity = client->connection.Server();
  *server = {static_cast<std::uint32_t>(identity.trust), identity.peer.processId, identity.text()};
  return QORLIX_OK;
}

}  // extern "C"

static_assert(static_cast<int>(client::Verification::Off) == QORLIX_VERIFY_OFF &&
              static_cast<int>(client::Verification::Warn) == QORLIX_VERIFY_WARN &&
              static_cast<int>(client::Verification::Refuse) == QORLIX_VERIFY_REFUSE);
static_assert(static_cast<int>(client::ServerTrust::NotChecked) == QORLIX_TRUST_NOT_CHECKED &&
              static_cast<int>(client::ServerTrust::Trusted) == QORLIX_TRUST_TRUSTED &&
              static_cast<int>(client::ServerTrust::Unknown) == QORLIX_TRUST_UNKNOWN &&
              static_cast<int>(client::ServerTrust::Foreign) == QORLIX_TRUST_FOREIGN);
