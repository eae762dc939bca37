#include "server/ClientIdentity.h"

#include <windows.h>

#include "platform/WinHandles.h"

namespace client_identity {
namespace {

// The client's token, which outlives the impersonation. Between the two calls around it stands the
// one call that needs the identity, and nothing that could leave early.
void TakeToken(HANDLE pipe, UniqueKernelHandle& token) {
  if (ImpersonateNamedPipeClient(pipe) == FALSE) return;
  // As the process: a client that let itself be identified only could not open its own token.
  (void)OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, /*OpenAsSelf=*/TRUE, token.put());
  if (RevertToSelf() == FALSE) (void)TerminateProcess(GetCurrentProcess(), kCannotPutIdentityOff);
}

}  // namespace

bool IsAdministrator(HANDLE pipe) {
  UniqueKernelHandle token;
  TakeToken(pipe, token);
  if (token.get() == nullptr) return false;

  BYTE administrators[SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof(administrators);
  BOOL isMember = FALSE;
  return CreateWellKnownSid(WinBuiltinAdministratorsSid, /*DomainSid=*/nullptr, administrators,
                            &size) != FALSE &&
         CheckTokenMembership(token.get(), administrators, &isMember) != FALSE && isMember != FALSE;
}

}  // namespace client_identity
