#include "client/Result.h"

#include "client/PipeTransport.h"
#include "client/ResultCodes.h"

namespace client {
namespace {

const char* RequestText(std::uint32_t code) {
  if (code == kCallUnderway) return "another call of this client is still under way";
  if (code == kNoCallUnderway) return "no call of this client is under way";
  if (code == kBadArgument) return "an argument of the function is null, or has no meaning";
  return "the request is longer than the 8192 bytes that the server reads at once";
}

const char* ConnectText(std::uint32_t code) {
  switch (code) {
    case kPipeNotFound:
      return "the server is not running: its pipe does not exist";
    case kPipeBusy:
      return "the server is busy: all its connections stayed in use until the time ran out";
    case kPipeAccessDenied:
      return "the pipe does not admit this user";
    case kCancelled:
      return "the call was cancelled before there was a connection";
    default:
      return ResultText(code);
  }
}

const char* SendText(std::uint32_t code) {
  if (IsPipeBroken(code)) return "the server closed the connection before the request was through";
  if (code == kTimedOut) return "the server did not take the request before the time ran out";
  if (code == kCancelled) return "the call was cancelled before the request was through";
  return ResultText(code);
}

const char* ReceiveText(std::uint32_t code) {
  if (IsPipeBroken(code)) return "the server closed the connection without a whole reply";
  if (code == kTimedOut) return "no whole reply came before the time ran out";
  if (code == kCancelled) {
    return "the call was cancelled; the server may carry it out all the same";
  }
  if (code == kInvalidReply) return "what came back is not a reply of the server";
  if (code == kStillUnderway) return "the call is under way: its reply has not come yet";
  return ResultText(code);
}

}  // namespace

const char* Result::name() const noexcept { return ResultName(code_); }

const char* Result::text() const noexcept {
  switch (origin_) {
    case Origin::Server:
      return ResultText(code_);
    case Origin::Request:
      return RequestText(code_);
    case Origin::Verify:
      return "the pipe belongs to another user, who is neither the system nor the administrators";
    case Origin::Connect:
      return ConnectText(code_);
    case Origin::Send:
      return SendText(code_);
    case Origin::Receive:
      return ReceiveText(code_);
  }
  return ResultText(code_);
}

}  // namespace client
