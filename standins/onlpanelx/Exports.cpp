// Stand-in for the panel's applet: answers as if somebody had opened the panel and closed it.

#include <windows.h>

#include "standins/script/StandIn.h"

const char standin::kLibraryName[] = "onlpanelx";

extern "C" DWORD WINAPI RunEpromPanelAsAdmin(DWORD first, DWORD second) {
  using namespace standin;
  constexpr std::uint32_t kShown = 1;  // other than its siblings, the panel says success by not 0
  return Serve(Export::kRunEpromPanel, Arguments().Number("first", first).Number("second", second),
               [=] { return kShown; });
}
