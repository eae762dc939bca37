// Stand-in for the driver-installation library: takes every driver and installs none.

#include <windows.h>

#include "standins/script/StandIn.h"

const char standin::kLibraryName[] = "drvinstx";

extern "C" DWORD WINAPI EINST_InstallWdmDriver(char* service, char* infFile, char* third,
                                               DWORD mode) {
  using namespace standin;
  return Serve(
      Export::kInstallWdmDriver,
      Arguments()
          .Text("service", service)
          .Text("infFile", infFile)
          .Text("third", third)
          .Number("mode", mode),
      [=] { return service != nullptr && infFile != nullptr ? kDone : kInvalidParameter; });
}
