#include "tests/support/RestrictedProcess.h"

#include <windows.h>

void* TokenWithoutAdministrators() {
  HANDLE own = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_ASSIGN_PRIMARY | TOKEN_QUERY,
                       &own) == FALSE) {
    return nullptr;
  }
  BYTE administrators[SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof(administrators);
  SID_AND_ATTRIBUTES disabled = {administrators, 0};
  HANDLE restricted = nullptr;
  if (CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &size) == FALSE ||
      CreateRestrictedToken(own, 0, 1, &disabled, 0, nullptr, 0, nullptr, &restricted) == FALSE) {
    restricted = nullptr;
  }
  CloseHandle(own);
  return restricted;
}
