#ifndef CLIENT_QORLIXCLIENT_H_
#define CLIENT_QORLIXCLIENT_H_

#include <cstdint>
#include <string_view>

#include "client/Deadline.h"
#include "client/PipeTransport.h"
#include "client/ReplyDecoder.h"
#include "client/RequestBuilder.h"
#include "client/Result.h"
#include "client/ServerIdentity.h"

namespace client {

inline constexpr char kServerPipeName[] = R"(\\.\pipe\QorlixSRVPIPE32)";

/// The one root key that the Base commands accept: HKEY_LOCAL_MACHINE.
inline constexpr std::uint32_t kRootLocalMachine = 0x80000002;

/// A reply as it came in. It points into the client and holds until the client's next call.
struct Reply {
  Bytes bytes;         ///< the whole reply; after a failure, what had arrived
  ReplyLayout layout;  ///< what the bytes are
};

/// A registry value's data. The text points into the client and holds until its next call.
struct RegistryData {
  /// What the server sends of the data: everything in front of its first zero byte.
  std::string_view text;
  /// Bytes of the data, less one if there are any: of a text, its length without the terminator.
  /// With the result 234 (more than 8160 bytes) the needed size, less one.
  std::uint32_t length = 0;
};

/// One entry of an enumeration. The texts point into the client and hold until its next call.
struct RegistryEntry {
  std::string_view name;
  std::uint32_t nameLength = 0;  ///< bytes, without terminator
  std::string_view data;         ///< of a value: its data in front of the first zero byte
  std::uint32_t dataLength = 0;  ///< of a value: bytes of its data
  /// The server said something about the entry at this index: with the results 234 and 8602 it does
  /// not fit a reply, and only the lengths are known.
  bool told = false;
};

/// A client of the server: connects on the first call, and keeps the connection for further ones.
///
/// All texts are in the ANSI code page; a null text is sent as absent, which registry commands
/// answer with 87. Times are in milliseconds. Nothing throws and nothing is allocated. The object
/// is large (80 KiB, for the longest replies that it must tell apart) and belongs to one thread at
/// a time, Cancel() apart.
///
/// An error of the transport closes the connection, because a late reply would be taken for that of
/// the next request; the next call connects anew. No call is ever repeated by itself. A connection
/// that turns out to be dead before anything of a request was taken, as it is after the server was
/// restarted, is replaced at once, and the request is sent on the new one: nobody has seen it.
class QorlixClient {
 public:
  /// \param pipeName must outlive the client
  explicit QorlixClient(const char* pipeName = kServerPipeName) noexcept : pipeName_(pipeName) {}

  /// How long to wait for a connection, and for request and reply together. The server serves one
  /// request at a time, so a reply may have to wait for what others have asked for.
  void SetTimeouts(std::uint32_t connectMs, std::uint32_t exchangeMs) noexcept;

  /// Whether to ask who serves the pipe, before anything is sent on a new connection. By default a
  /// pipe that belongs to another user is refused (Origin::Verify), and one of which the platform
  /// does not tell is used; Server() says so.
  void SetVerification(Verification verification) noexcept { verification_ = verification; }
  /// Who serves the pipe of this connection, or of the last one. Another process than before says
  /// that the server was restarted meanwhile.
  const ServerIdentity& Server() const noexcept { return server_; }

  /// Connects, unless there is a connection. Its text tells a server that is not running from one
  /// that is busy and from one that does not admit the user.
  Result Connect() noexcept;
  /// Also gives up a call that was begun.
  void Disconnect() noexcept;

  // --- Commands ---

  /// Command 16. Does nothing: proves that the server answers.
  Result NoOperation() noexcept;

  /// Command 253. With the confirmation the server closes every connection, without a reply, and
  /// ends: the connection that breaks is the success, 0. With any other value it answers 1255 and
  /// goes on serving.
  Result StopServer(std::uint32_t confirmation = kStopConfirmation) noexcept;

  // Registry commands work below HKEY_LOCAL_MACHINE, on paths without a leading backslash. Reading
  // works everywhere; changes are answered with 5 outside SOFTWARE\Vesmark\NORVA and its
  // SOFTWARE\Wow6432Node twin. Texts have at most 8159 bytes, and the texts of one request some
  // 8180 together. Windows codes come back unchanged: 2 for what does not exist.

  /// Command 2. Creates the key and those above it; 0 also when it existed.
  Result Reg_CreateKey(const char* key) noexcept;
  /// Command 1. Removes what lies below the key under the key's own path again (key\key); the key
  /// stays. Where there is no such tree the answer is 2.
  Result Reg_DelKey(const char* key) noexcept;
  /// Command 3. Writes a text value (REG_SZ) to a key that exists. The name "" is the default
  /// value.
  Result Reg_SetValue(const char* key, const char* name, const char* text) noexcept;
  /// Command 22. Reads a value of any type.
  Result Reg_GetValue(const char* key, const char* name, RegistryData& data) noexcept;
  /// Command 18.
  Result Reg_DelValue(const char* key, const char* name) noexcept;
  /// Command 21. One subkey; 259 behind the last. See ForEachKey.
  Result Reg_EnumKey(const char* key, std::uint32_t index, RegistryEntry& entry) noexcept;
  /// Command 23. One value; 259 behind the last. See ForEachValue.
  Result Reg_EnumValue(const char* key, std::uint32_t index, RegistryEntry& entry) noexcept;

  /// Commands 29, 30 and 28: as their namesakes, below a root key that is told; every other one
  /// than kRootLocalMachine is answered with 5.
  Result Reg_CreateKeyBase(std::uint32_t root, const char* key) noexcept;
  Result Reg_DelKeyBase(std::uint32_t root, const char* key) noexcept;
  Result Reg_SetValueBase(std::uint32_t root, const char* key, const char* name,
                          const char* text) noexcept;

  // --- Any request ---

  /// Sends one request and reads its whole reply, a doubled one too.
  /// \returns the command's result. `reply` is filled as far as anything arrived.
  Result Exchange(Bytes request, Reply& reply) noexcept;

  /// Sends bytes without waiting for a reply. The server takes what is longer than 8192 bytes as
  /// several requests, and answers each.
  Result Send(Bytes bytes) noexcept;

  /// Reads the reply to one request that was sent.
  Result Receive(Bytes request, Reply& reply) noexcept;

  // --- A call that goes on while its caller does something else ---

  /// Sends one request; its reply is fetched by Wait(). Until then, or until Disconnect(), every
  /// other call is refused with kCallUnderway. Takes as long as a connection takes.
  /// \param deadlineMs for the whole of it, from now on, the connection included; after that the
  ///   call has failed
  Result Begin(Bytes request, std::uint32_t deadlineMs) noexcept;
  bool IsUnderway() const noexcept { return underway_; }
  /// Waits for the reply; with 0 it only looks.
  /// \returns false when it is not there yet. With true the call has ended, and result and reply
  /// are as Exchange() tells them.
  bool Wait(std::uint32_t timeoutMs, Result& result, Reply& reply) noexcept;
  /// Ends the call that is being made, in whatever thread, or that was begun: it fails with
  /// kCancelled, and its connection is closed. Without one nothing happens. What the server has
  /// read it carries out all the same. Any thread may call it as long as the client lives.
  void Cancel() noexcept { pipe_.Interrupt(); }

 private:
  // A reply, the same again and one more, and room to see that something follows them.
  static constexpr std::uint32_t kReceiveBuffer = 65536;

  Result Call(const RequestBuilder& request, Reply& reply) noexcept;
  Result Call(const RequestBuilder& request) noexcept;
  Result Enumerate(CommandCode command, const char* key, std::uint32_t index,
                   RegistryEntry& entry) noexcept;
  // How long a reply is waited for.
  struct Patience {
    Deadline whole;
    bool mayPause = false;  // a wait that ends before `whole` is no failure
    Deadline linger{0};     // for a second reply that may come or not
    bool lingers = false;
  };

  Result EnsureConnected(std::uint32_t timeoutMs) noexcept;
  Result CheckServer() noexcept;
  // Without a deadline for the whole of it, connecting and writing have their own times.
  Result StartOf(Bytes request, const Deadline* whole) noexcept;
  Result Write(Bytes bytes, const Deadline* whole) noexcept;
  bool Advance(Bytes request, Patience& patience, std::uint32_t waitMs, Result& result,
               Reply& reply) noexcept;
  bool AwaitSecond(Patience& patience, const Deadline& now) noexcept;
  bool GivesWay() noexcept;
  void DropReply() noexcept;
  Result Accept(const ReplyLayout& layout, Reply& reply) noexcept;
  Result Fail(std::uint32_t code, Reply& reply) noexcept;
  std::uint32_t ReadMore(std::uint32_t timeoutMs) noexcept;

  const char* const pipeName_;
  std::uint32_t connectMs_ = 5000;
  std::uint32_t exchangeMs_ = 30000;
  Verification verification_ = Verification::Refuse;
  ServerIdentity server_;
  PipeTransport pipe_;
  bool underway_ = false;  // a call that was begun
  Patience patience_{Deadline(0)};
  std::uint32_t requestSize_ = 0;
  std::uint32_t received_ = 0;  // bytes in the buffer
  std::uint32_t consumed_ = 0;  // of these, the reply that was handed out last
  std::uint8_t buffer_[kReceiveBuffer];
  std::uint8_t request_[kMessageLimit];  // that of the call that was begun
};

}  // namespace client

#endif  // CLIENT_QORLIXCLIENT_H_
