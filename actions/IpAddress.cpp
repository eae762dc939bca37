#include <cstdint>

#include "codec/FieldReader.h"
#include "platform/DynamicLibrary.h"
#include "platform/GuardedCall.h"
#include "platform/SystemPath.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

/// The shell's number of the system folder.
constexpr int kSystemFolder = 0x25;

constexpr char kComponent[] = "PST";

using AddAddress = std::uint32_t(ENTRY_CDECL*)(std::uint32_t address, std::uint32_t mask,
                                               std::uint32_t ifIndex, std::uint32_t* nteContext,
                                               std::uint32_t* nteInstance);
using DeleteAddress = std::uint32_t(ENTRY_CDECL*)(std::uint32_t nteContext);

// Loads the library and looks the export up. \returns 0, or the code of what failed.
SrvResult FindExport(const char* function, const char* name, platform::DynamicLibrary& library,
                     platform::EntryPoint& entry) {
  platform::PathBuffer path = {};
  if (platform::SpecialFolder(kSystemFolder, path)) {
    (void)platform::AppendToPath(path, "\\ipcfgx.dll");
  }
  ZQ_TRACE_AS(TRC_PROGRESS, kComponent, function, "LoadLibrary ipcfgx.dll");
  std::uint32_t loaded = 0;
  std::uint32_t error = 0;
  if (!GuardedCall(loaded, [&] {
        const bool done = library.Load(path);
        error = platform::LastError();
        return done ? 1u : 0u;
      })) {
    ZQ_TRACE(TRC_ERROR, function, "Exception: LoadLibrary ipcfgx.dll");
    return SRV_ERR_EXCEPTION_OCCURED;
  }
  if (loaded == 0) {
    ZQ_TRACE_AS(TRC_ERROR, kComponent, function, "LoadLibrary ipcfgx.dll failed: %x", error);
    return SRV_ERR_DLL_NOT_FOUND;
  }
  entry = library.Find(name);
  if (entry == nullptr) {
    error = platform::LastError();
    ZQ_TRACE_AS(TRC_ERROR, kComponent, function, "GetProcAddress %s failed: 0x%x", name, error);
    return SRV_ERR_ENTRY_POINT_MISSING;
  }
  return SRV_OK;
}

// What the call returned, or 8604 when it raised.
template <typename Call>
SrvResult CallGuarded(const char* function, const char* name, Call call) {
  std::uint32_t result = SRV_OK;
  if (!GuardedCall(result, call)) {
    ZQ_TRACE(TRC_ERROR, function, "Exception: %s", name);
    return SRV_ERR_EXCEPTION_OCCURED;
  }
  ZQ_TRACE(TRC_RESULT, function, "<< %s result = 0x%x", name, result);
  return result;
}

}  // namespace

SrvResult CQorlixSRVPipe::AddIpAddress(int conId) {
  static constexpr char kFct[] = "AddIpAddress: ";
  static constexpr char kExport[] = "IE_AddIPAddressEx";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  std::uint32_t address = 0;
  std::uint32_t mask = 0;
  std::uint32_t ifIndex = 0;
  FieldReader fields(*this, conId, kFct);
  fields.Long(address, "<< ReadLong(Address) result = 0x%x ");
  fields.Long(mask, "<< ReadLong(IpMask) result = 0x%x ");
  fields.Long(ifIndex, "<< ReadLong(IfIndex) result = 0x%x ");
  if (fields.Failed()) return fields.Result();

  platform::DynamicLibrary library;
  platform::EntryPoint entry = nullptr;
  const SrvResult found = FindExport(kFct, kExport, library, entry);
  if (found != SRV_OK) return found;
  const auto add = reinterpret_cast<AddAddress>(entry);
  return CallGuarded(kFct, kExport,
                     [&] { return add(address, mask, ifIndex, &outputs_[0], &outputs_[1]); });
}

SrvResult CQorlixSRVPipe::DelIpAddress(int conId) {
  static constexpr char kFct[] = "DelIpAddress: ";
  static constexpr char kExport[] = "IE_DeleteIPAddressEx";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  std::uint32_t nteContext = 0;
  FieldReader fields(*this, conId, kFct);
  fields.Long(nteContext, "<< ReadLong(NTEContext) result = 0x%x ");
  if (fields.Failed()) return fields.Result();

  platform::DynamicLibrary library;
  platform::EntryPoint entry = nullptr;
  const SrvResult found = FindExport(kFct, kExport, library, entry);
  if (found != SRV_OK) return found;
  const auto remove = reinterpret_cast<DeleteAddress>(entry);
  return CallGuarded(kFct, kExport, [&] { return remove(nteContext); });
}
