#ifndef CLIENT_ACTIONCALLS_H_
#define CLIENT_ACTIONCALLS_H_

#include <cstdint>
#include <string_view>

#include "client/QorlixClient.h"

namespace client {

/// Bytes of a text that the server takes in these commands at most.
inline constexpr std::uint32_t kActionTextLimit = 259;

/// What TestFunction answers when the text was shown.
inline constexpr SrvResult kTextShown = 999;

/// No restart has ended under that event name, or its result is not there any more.
inline constexpr SrvResult kNoRestartResult = 259;

/// What the server's second write for one request told. The first part of it, which repeats the
/// first write, has been compared: a reply in which the two differ is none (kInvalidReply).
struct SecondSend {
  bool came = false;
  SrvResult result = SRV_OK;  ///< of the last part; it should be that of the call

  /// Whether the two writes told different results.
  bool Contradicts(const Result& first) const noexcept {
    return came && first.fromServer() && result != first.code();
  }
};

/// An address that was added. Both are 0 when the library was not called.
struct AddedAddress {
  std::uint32_t nteContext = 0;  ///< names it to DelIpAddress
  std::uint32_t nteInstance = 0;
  SecondSend second;  ///< comes with every failure
};

/// An IPv4 address as the wire has it: the four numbers are its bytes in this order.
std::uint32_t IpAddress(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) noexcept;

/// The commands that have something installed, restarted or changed on the machine.
///
/// They run for as long as the library or plug-in behind them does, and some show a message box on
/// the server's desktop; the server answers nobody meanwhile. A call whose time runs out is not
/// undone: the server goes on with it. Texts are as for QorlixClient, with at most 259 bytes;
/// longer ones are answered with 8602. Results are the server's, 8601 to 8606 and codes of Windows,
/// or those of the library or plug-in, which look no different.
class ActionCalls {
 public:
  /// \param client must outlive this object
  explicit ActionCalls(QorlixClient& client) noexcept : client_(client) {}

  /// Command 5. Runs the device's installer plug-in, then the plausibility check. A null language
  /// extension reaches the plug-in as none, which not every plug-in bears.
  Result Install(const char* deviceId, const char* languageExtension) noexcept;
  /// Command 6. Runs the device's deinstaller plug-in.
  Result Deinstall(const char* deviceId, const char* languageExtension, const char* board) noexcept;

  /// Command 15. 0 is also the answer when the library, or its function, is not there. Without the
  /// library there is no second send; with it there always is.
  Result InstallWdmDriver_32(const char* service, const char* infFile, const char* third,
                             std::uint32_t mode, SecondSend& second) noexcept;
  /// Command 17. Returns when the panel does. 0 and the second send as above.
  Result RunOnlinePanel_32(SecondSend& second) noexcept;

  /// Command 288. Starts a restart in the background: 0 says no more than that. When it ends, the
  /// server sets the event. If no program has an event of that name then, the result is dropped.
  Result SilentRestart(const char* logDevice, const char* eventName) noexcept;
  /// Command 289. The restart's result, once; kNoRestartResult before and after.
  Result GetSilentRestartResult(const char* eventName) noexcept;

  /// Command 12. \param address, mask as IpAddress makes them
  Result AddIpAddress(std::uint32_t address, std::uint32_t mask, std::uint32_t interfaceIndex,
                      AddedAddress& added) noexcept;
  /// Command 13.
  Result DelIpAddress(std::uint32_t nteContext) noexcept;

  /// Command 240. Shows the text in a box on the server's desktop and returns when it is closed.
  /// \param shown receives the text as the server saw it; holds until the client's next call
  /// \returns kTextShown as the server's code, which is no success in the sense of Result::ok()
  Result TestFunction(const char* text, std::string_view& shown) noexcept;

 private:
  Result Call(const RequestBuilder& request, Reply& reply) noexcept;
  Result Call(const RequestBuilder& request) noexcept;
  Result CallTwice(const RequestBuilder& request, SecondSend& second) noexcept;

  QorlixClient& client_;
};

}  // namespace client

#endif  // CLIENT_ACTIONCALLS_H_
