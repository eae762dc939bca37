#include "client/ActionCalls.h"

namespace client {
namespace {

// Mark, result and fields; the same once more; mark and result.
constexpr std::uint32_t kDoubledParts = 3;

SecondSend SecondOf(const Reply& reply) {
  const ReplyLayout& layout = reply.layout;
  if (layout.parts != kDoubledParts) return {};
  return {/*came=*/true, layout.part[kDoubledParts - 1].result};
}

}  // namespace

std::uint32_t IpAddress(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) noexcept {
  return a | (std::uint32_t{b} << 8) | (std::uint32_t{c} << 16) | (std::uint32_t{d} << 24);
}

Result ActionCalls::Call(const RequestBuilder& request, Reply& reply) noexcept {
  reply = {};
  if (!request.Complete()) return {Origin::Request, BUFFER_OVERFLOW};
  return client_.Exchange(request.Request(), reply);
}

Result ActionCalls::Call(const RequestBuilder& request) noexcept {
  Reply reply;
  return Call(request, reply);
}

Result ActionCalls::CallTwice(const RequestBuilder& request, SecondSend& second) noexcept {
  second = {};
  Reply reply;
  const Result result = Call(request, reply);
  if (result.fromServer()) second = SecondOf(reply);
  return result;
}

Result ActionCalls::Install(const char* deviceId, const char* languageExtension) noexcept {
  return Call(RequestBuilder(CommandCode::Install).Text(deviceId).Text(languageExtension));
}

Result ActionCalls::Deinstall(const char* deviceId, const char* languageExtension,
                              const char* board) noexcept {
  return Call(
      RequestBuilder(CommandCode::Deinstall).Text(deviceId).Text(languageExtension).Text(board));
}

Result ActionCalls::InstallWdmDriver_32(const char* service, const char* infFile, const char* third,
                                        std::uint32_t mode, SecondSend& second) noexcept {
  RequestBuilder request(CommandCode::InstallWdmDriver_32);
  request.Text(service).Text(infFile).Text(third).Long(mode);
  return CallTwice(request, second);
}

Result ActionCalls::RunOnlinePanel_32(SecondSend& second) noexcept {
  return CallTwice(RequestBuilder(CommandCode::RunOnlinePanel_32), second);
}

Result ActionCalls::SilentRestart(const char* logDevice, const char* eventName) noexcept {
  return Call(RequestBuilder(CommandCode::SilentRestart).Text(logDevice).Text(eventName));
}

Result ActionCalls::GetSilentRestartResult(const char* eventName) noexcept {
  return Call(RequestBuilder(CommandCode::GetSilentRestartResult).Text(eventName));
}

Result ActionCalls::AddIpAddress(std::uint32_t address, std::uint32_t mask,
                                 std::uint32_t interfaceIndex, AddedAddress& added) noexcept {
  added = {};
  Reply reply;
  const Result result =
      Call(RequestBuilder(CommandCode::AddIpAddress).Long(address).Long(mask).Long(interfaceIndex),
           reply);
  // A server that does not have the command answers without the two.
  if (!result.fromServer() || result.is(SRV_ERR_UNKNOWN_COMMAND)) return result;
  ReplyReader fields(reply.bytes);
  added.nteContext = fields.Long();
  added.nteInstance = fields.Long();
  added.second = SecondOf(reply);
  return result;
}

Result ActionCalls::DelIpAddress(std::uint32_t nteContext) noexcept {
  return Call(RequestBuilder(CommandCode::DelIpAddress).Long(nteContext));
}

Result ActionCalls::TestFunction(const char* text, std::string_view& shown) noexcept {
  shown = {};
  Reply reply;
  const Result result = Call(RequestBuilder(CommandCode::TestFunction).Text(text), reply);
  if (result.is(kTextShown)) shown = ReplyReader(reply.bytes).Text();
  return result;
}

}  // namespace client
