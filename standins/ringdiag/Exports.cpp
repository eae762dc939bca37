// Stand-in for the ring-diagnostics library: no device is in a ring.

#include <windows.h>

#include "standins/script/StandIn.h"

const char standin::kLibraryName[] = "ringdiag";

extern "C" DWORD WINAPI EpIsCpInRing(char* logDevName, DWORD time, DWORD* out) {
  using namespace standin;
  auto* const word = reinterpret_cast<std::uint32_t*>(out);
  return Serve(Export::kIsCpInRing,
               Arguments().Text("logDevName", logDevName).Number("time", time).Out("out", word),
               [=] {
                 if (logDevName == nullptr || word == nullptr) return kInvalidParameter;
                 *word = 0;
                 return kDone;
               });
}
