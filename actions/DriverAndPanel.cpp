#include <cstdint>
#include <cstdio>

#include "codec/FieldReader.h"
#include "platform/DynamicLibrary.h"
#include "platform/GuardedCall.h"
#include "platform/MessageBox.h"
#include "platform/SystemPath.h"
#include "platform/WinTypes.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

// Kept: loaded by their bare names, so the platform's search order applies.
constexpr char kDriverLibrary[] = "drvinstx.dll";
constexpr char kDriverExport[] = "EINST_InstallWdmDriver";
constexpr char kPanelLibrary[] = "onlpanelx.cpl";
constexpr char kPanelExport[] = "RunEpromPanelAsAdmin";

using InstallDriver = std::uint32_t(ENTRY_STDCALL*)(char* service, char* infFile, char* third,
                                                    std::uint32_t mode);
using RunPanel = std::uint32_t(ENTRY_STDCALL*)(std::uint32_t zero1, std::uint32_t zero2);

using ShortText = RequestText<platform::kMaxPath>;

enum class Loaded { kYes, kNo, kRaised };

// A library that is missing is told on the server's desktop, and the service waits for it.
Loaded LoadOrComplain(const char* function, const char* name, platform::DynamicLibrary& library) {
  std::uint32_t loaded = 0;
  std::uint32_t error = 0;
  if (!GuardedCall(loaded, [&] {
        const bool done = library.Load(name);
        error = platform::LastError();
        return done ? 1u : 0u;
      })) {
    return Loaded::kRaised;
  }
  ZQ_TRACE(TRC_PROGRESS, function, "sDll=%s hiDll=0x%x", name, HandleNumber(library.Handle()));
  if (loaded != 0) return Loaded::kYes;

  char text[platform::kMaxPath];
  (void)std::snprintf(text, sizeof(text), "Can't load %s  ErrorCode: %d", name,
                      static_cast<int>(error));
  platform::ShowMessageBox(text, "Fatal Error", platform::BoxStyle::kError);
  ZQ_TRACE(TRC_ERROR, function, "<< return FALSE - Can't load %s dwErr=%d", name,
           static_cast<int>(error));
  return Loaded::kNo;
}

}  // namespace

SrvResult CQorlixSRVPipe::InstallWdmDriver_32(int conId) {
  static constexpr char kFct[] = "InstallWdmDriver_32: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  ShortText service, infFile, third;
  std::uint32_t mode = 0;
  service.Clear();
  infFile.Clear();
  third.Clear();
  FieldReader fields(*this, conId, kFct);
  fields.Text(service, "<< result = 0x%x Service");
  fields.Text(infFile, "<< result = 0x%x Inf-File");
  fields.Text(third, "<< result = 0x%x Inf-File");  // Kept: the third text goes by this name, too.
  fields.Long(mode, "<< result = 0x%x mode");
  if (fields.Failed()) return fields.Result();

  platform::DynamicLibrary library;
  const Loaded loaded = LoadOrComplain(kFct, kDriverLibrary, library);
  // Kept: a missing library is answered with success, once; so is a missing export.
  if (loaded == Loaded::kNo) return SRV_OK;

  std::uint32_t result = SRV_OK;
  bool returned = loaded == Loaded::kYes;
  if (returned) {
    const auto install = reinterpret_cast<InstallDriver>(library.Find(kDriverExport));
    if (install != nullptr) {
      returned = GuardedCall(
          result, [&] { return install(service.get(), infFile.get(), third.get(), mode); });
      if (returned) {
        ZQ_TRACE(TRC_RESULT, kFct, "<< %s result = 0x%x", kDriverExport, result);
      }
    }
  }
  if (!returned) {
    ZQ_TRACE(TRC_ERROR, kFct, "Exception in LoadLibrary");
    result = SRV_ERR_EXCEPTION_OCCURED;
  }

  // Kept: the loop sends the same result once more, behind this reply.
  (void)Send(conId, result);
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< result = 0x%x", result);
  // Kept: the library is never unloaded.
  (void)library.Release();
  return result;
}

SrvResult CQorlixSRVPipe::RunOnlinePanel_32(int conId) {
  static constexpr char kFct[] = "RunOnlinePanel_32: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  platform::DynamicLibrary library;
  const Loaded loaded = LoadOrComplain(kFct, kPanelLibrary, library);
  if (loaded == Loaded::kNo) return SRV_OK;

  std::uint32_t result = SRV_OK;
  bool returned = loaded == Loaded::kYes;
  if (returned) {
    platform::SetLastError(ERROR_SUCCESS);
    const auto run = reinterpret_cast<RunPanel>(library.Find(kPanelExport));
    result = platform::LastError();
    ZQ_TRACE(TRC_PROGRESS, kFct, "sFkt=%s lpStartBRDXFkt=0x%x", kPanelExport,
             HandleNumber(reinterpret_cast<HANDLE>(run)));
    if (run != nullptr) {
      ZQ_TRACE(TRC_PROGRESS, kFct, "Vor Aufruf des Panels");
      std::uint32_t succeeded = 0;
      returned = GuardedCall(succeeded, [&] { return run(/*zero1=*/0, /*zero2=*/0); });
      if (succeeded != 0) result = SRV_OK;
    }
  }
  if (!returned) {
    ZQ_TRACE(TRC_ERROR, kFct, "Exception");
    result = SRV_ERR_EXCEPTION_OCCURED;
  }

  library.Free();
  (void)Send(conId, result);
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< RunOnlinePanel() result = 0x%x", result);
  return result;
}
