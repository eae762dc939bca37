#ifndef CLIENT_CAPI_HANDLE_H_
#define CLIENT_CAPI_HANDLE_H_

#include <array>
#include <cstdint>
#include <string_view>

#include "client/QorlixClient.h"
#include "client/RequestBuilder.h"
#include "client/capi/qorlixclient.h"

namespace client::capi {

/// Texts with a zero behind each, which those of a reply do not have. Holds all texts of one reply.
class TextStore {
 public:
  void Clear() noexcept { used_ = 0; }
  /// \returns a copy that holds until Clear(); an empty text when there is no room.
  qorlix_text_value Keep(std::string_view text, std::uint32_t length) noexcept;

 private:
  static constexpr std::uint32_t kMostTexts = 16;
  std::array<char, kMessageLimit + kMostTexts> bytes_;
  std::uint32_t used_ = 0;
};

inline constexpr std::size_t kPipeNameRoom = 260;

}  // namespace client::capi

/// What a client's handle stands for.
struct qorlix_client {
  explicit qorlix_client(std::string_view name) noexcept;

  /// Remembers what a call came to. \returns its status.
  qorlix_status Note(const client::Result& ended) noexcept;
  /// The same, and copies the reply to the caller's room, if there is any.
  qorlix_status NoteReply(const client::Result& ended, void* room, std::uint32_t capacity,
                          std::uint32_t* size) noexcept;
  /// Remembers that the call could not even begin. \returns QORLIX_ERR_ARGUMENT.
  qorlix_status NoteBadArgument() noexcept;
  /// Forgets what the last call has handed out.
  void Forget() noexcept;

  std::array<char, client::capi::kPipeNameRoom> pipeName;
  client::QorlixClient connection;
  client::Result result;
  client::Reply reply;
  client::capi::TextStore texts;
};

struct qorlix_request {
  explicit qorlix_request(std::uint16_t command) noexcept
      : builder(static_cast<CommandCode>(command)) {}
  client::RequestBuilder builder;
};

namespace client::capi {

/// What a call with a missing or meaningless argument comes to; the client itself may be missing.
inline qorlix_status BadArgument(qorlix_client* client) noexcept {
  return client != nullptr ? client->NoteBadArgument() : QORLIX_ERR_ARGUMENT;
}

/// Makes one call with a client. \param call takes the connection and returns a Result; `then`
/// takes the handle and puts out what the call has told, and is made also when the call has failed.
template <typename Call, typename Then>
qorlix_status Run(qorlix_client* client, Call call, Then then) noexcept {
  if (client == nullptr) return QORLIX_ERR_ARGUMENT;
  client->Forget();
  const Result ended = call(client->connection);
  then(*client);
  return client->Note(ended);
}

template <typename Call>
qorlix_status Run(qorlix_client* client, Call call) noexcept {
  return Run(client, call, [](qorlix_client&) {});
}

}  // namespace client::capi

#endif  // CLIENT_CAPI_HANDLE_H_
