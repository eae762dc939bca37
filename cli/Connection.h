#ifndef CLI_CONNECTION_H_
#define CLI_CONNECTION_H_

#include <memory>

#include "cli/Subcommands.h"
#include "client/QorlixClient.h"

namespace cli {

/// The client that an invocation asks for; it refers to the invocation's texts.
inline std::unique_ptr<client::QorlixClient> MakeClient(const Invocation& invocation) {
  const char* const name =
      invocation.pipe.empty() ? client::kServerPipeName : invocation.pipe.c_str();
  auto made = std::make_unique<client::QorlixClient>(name);
  if (invocation.anyOwner) made->SetVerification(client::Verification::Warn);
  made->SetTimeouts(invocation.timeoutMs, invocation.timeoutMs);
  return made;
}

}  // namespace cli

#endif  // CLI_CONNECTION_H_
