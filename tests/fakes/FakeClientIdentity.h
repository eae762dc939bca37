#ifndef TESTS_FAKES_FAKECLIENTIDENTITY_H_
#define TESTS_FAKES_FAKECLIENTIDENTITY_H_

#include "platform/WinTypes.h"

/// The client of every pipe, behind server/ClientIdentity.h.
namespace fake_client_identity {

/// No administrator, and nobody has asked yet.
void Reset();
void SetAdministrator(bool isAdministrator);
/// How often anything was asked about a client.
int Questions();
/// The pipe that was asked about last.
HANDLE LastPipe();

}  // namespace fake_client_identity

#endif  // TESTS_FAKES_FAKECLIENTIDENTITY_H_
