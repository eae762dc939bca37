// Stand-in for the IP-configuration library: remembers addresses and leaves the network alone.

#include <windows.h>

#include "standins/ipcfgx/AddressList.h"
#include "standins/script/StandIn.h"

const char standin::kLibraryName[] = "ipcfgx";

namespace {

using standin::AddressList;

static_assert(sizeof(AddressList) <= standin::kOwnMemory);

AddressList* Addresses() { return static_cast<AddressList*>(standin::OwnMemory()); }

}  // namespace

extern "C" DWORD IE_AddIPAddressEx(DWORD address, DWORD mask, DWORD ifIndex, DWORD* nteContext,
                                   DWORD* nteInstance) {
  using namespace standin;
  auto* const context = reinterpret_cast<std::uint32_t*>(nteContext);
  auto* const instance = reinterpret_cast<std::uint32_t*>(nteInstance);
  return Serve(Export::kAddIpAddress,
               Arguments()
                   .Number("address", address)
                   .Number("mask", mask)
                   .Number("ifIndex", ifIndex)
                   .Out("nteContext", context)
                   .Out("nteInstance", instance),
               [=] {
                 if (context == nullptr || instance == nullptr) return kInvalidParameter;
                 return Addresses()->Add(address, mask, ifIndex, *context, *instance);
               });
}

extern "C" DWORD IE_DeleteIPAddressEx(DWORD nteContext) {
  using namespace standin;
  return Serve(Export::kDeleteIpAddress, Arguments().Number("nteContext", nteContext),
               [=] { return Addresses()->Delete(nteContext); });
}
