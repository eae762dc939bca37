#include "client/ServerIdentity.h"

namespace client {
namespace {

ServerTrust TrustIn(PipeOwner owner) {
  switch (owner) {
    case PipeOwner::Administrators:
    case PipeOwner::System:
    // Nothing is lost to a process that could do all of it in our name anyway.
    case PipeOwner::CurrentUser:
      return ServerTrust::Trusted;
    case PipeOwner::Other:
      return ServerTrust::Foreign;
    case PipeOwner::Unknown:
      break;
  }
  return ServerTrust::Unknown;
}

}  // namespace

ServerIdentity Identify(const PipePeer& peer) noexcept { return {TrustIn(peer.owner), peer}; }

const char* ServerIdentity::text() const noexcept {
  if (trust == ServerTrust::NotChecked) return "nobody asked who serves the pipe";
  switch (peer.owner) {
    case PipeOwner::Administrators:
      return "the pipe belongs to the administrators";
    case PipeOwner::System:
      return "the pipe belongs to the system";
    case PipeOwner::CurrentUser:
      return "the pipe belongs to this user";
    case PipeOwner::Other:
      return "the pipe belongs to another user, who is neither the system nor the administrators";
    case PipeOwner::Unknown:
      break;
  }
  return "the system does not tell who the pipe belongs to";
}

}  // namespace client
