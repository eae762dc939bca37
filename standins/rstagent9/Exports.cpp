// Stand-in for the silent-restart library: every device restarts at once.

#include <windows.h>

#include "standins/script/StandIn.h"

const char standin::kLibraryName[] = "rstagent9";

extern "C" DWORD WINAPI DllEntryFktSilent(char* logDevName) {
  using namespace standin;
  return Serve(Export::kSilentRestart, Arguments().Text("logDevName", logDevName),
               [=] { return logDevName != nullptr ? kDone : kInvalidParameter; });
}
