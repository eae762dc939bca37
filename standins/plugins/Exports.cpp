// The sample installer plug-in. All functions are cdecl and get what the server passes; nothing
// guards them there, so nothing here may raise, except where that is the purpose.

#include <windows.h>

#include "standins/plugins/SampleDevice.h"
#include "standins/script/StandIn.h"

const char standin::kLibraryName[] = "sampledev";

using standin::Arguments;
using standin::Export;
using standin::Serve;

namespace {

Arguments Given(const char* hardwareId, const char* deviceId, const char* languageExt, DWORD zero) {
  return Arguments()
      .Text("hardwareId", hardwareId)
      .Text("deviceId", deviceId)
      .Text("languageExt", languageExt)
      .Number("zero", zero);
}

}  // namespace

extern "C" {

DWORD SampleInstall(char* hardwareId, const char* deviceId, char* languageExt, DWORD zero) {
  return Serve(Export::kSampleInstall, Given(hardwareId, deviceId, languageExt, zero),
               [=] { return sample_device::Install(deviceId, hardwareId, languageExt); });
}

DWORD SampleDeinstall(char* hardwareId, const char* deviceId, char* languageExt, DWORD zero,
                      char* board) {
  return Serve(Export::kSampleDeinstall,
               Given(hardwareId, deviceId, languageExt, zero).Text("board", board),
               [=] { return sample_device::Deinstall(deviceId); });
}

// The remaining ones look at four arguments only, so they do for installing and for deinstalling.

DWORD SampleRefuse(char* hardwareId, const char* deviceId, char* languageExt, DWORD zero) {
  return Serve(Export::kSampleRefuse, Given(hardwareId, deviceId, languageExt, zero),
               [=] { return static_cast<std::uint32_t>(ERROR_INSTALL_FAILURE); });
}

DWORD SampleFault(char* hardwareId, const char* deviceId, char* languageExt, DWORD zero) {
  return Serve(Export::kSampleFault, Given(hardwareId, deviceId, languageExt, zero),
               [=] { return standin::kDone; });
}

DWORD SampleSlow(char* hardwareId, const char* deviceId, char* languageExt, DWORD zero) {
  return Serve(Export::kSampleSlow, Given(hardwareId, deviceId, languageExt, zero),
               [=] { return standin::kDone; });
}

}  // extern "C"
