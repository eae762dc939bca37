#include "board/DevNodeStatus.h"

#include "platform/DynamicLibrary.h"
#include "platform/GuardedCall.h"
#include "platform/SystemPath.h"
#include "trace/Zqotrc.h"

namespace {

using GetDevNodeStatus = std::uint32_t(ENTRY_STDCALL*)(std::uint32_t* status,
                                                       std::uint32_t* problem,
                                                       std::uint32_t instance, std::uint32_t flags);

constexpr std::uint32_t kNoFlags = 0;

}  // namespace

SrvResult GetWDMStatusHlp(std::uint32_t instance, std::uint32_t& status, std::uint32_t& problem,
                          bool& raised) {
  static constexpr char kFct[] = "GetWDMStatusHlp: ";
  raised = false;

  platform::PathBuffer path = {};
  if (!platform::IsSystemDirectory(platform::SystemDirectory(path))) return BUFFER_OVERFLOW;
  const std::uint32_t appended = platform::AppendToPath(path, "\\cfgmgr32.dll");
  if (appended != 0) return appended;

  platform::DynamicLibrary library;
  std::uint32_t loaded = 0;
  raised = !GuardedCall(loaded, [&] { return library.Load(path) ? 1u : 0u; });
  if (raised) return SRV_ERR_EXCEPTION_OCCURED;
  if (loaded == 0) return SRV_ERR_DLL_NOT_FOUND;
  const auto call = reinterpret_cast<GetDevNodeStatus>(library.Find("CM_Get_DevNode_Status"));
  if (call == nullptr) return SRV_ERR_ENTRY_POINT_MISSING;

  ZQ_TRACE(TRC_PROGRESS, kFct, "--> CM_Get_DevNode_Status()");
  std::uint32_t result = SRV_OK;
  raised = !GuardedCall(result, [&] { return call(&status, &problem, instance, kNoFlags); });
  if (raised) return SRV_ERR_EXCEPTION_OCCURED;
  ZQ_TRACE(TRC_RESULT, kFct, "<-- CM_Get_DevNode_Status: ret=0x%x dwStatus=0x%x dwProblem=%x",
           result, status, problem);
  return result;
}
