#include "board/BoardCommand.h"
#include "board/DevNodeStatus.h"
#include "board/boardsvc32.h"
#include "codec/FieldReader.h"
#include "platform/GuardedCall.h"
#include "server/CommandCode.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

/// The option that asks for the look-up without one.
constexpr std::uint32_t kNoOption = 0xFFFFFFFF;

// false when one of the two calls raised. What they return is not looked at: a device that nobody
// knows has the status 0 and no problem.
bool QueryState(char* hardwareId, std::uint32_t option, std::uint32_t& status,
                std::uint32_t& problem) {
  std::uint32_t instance = 0;
  std::uint32_t ignored = SRV_OK;
  const bool returned = GuardedCall(ignored, [&] {
    return option == kNoOption ? BRDX_GetDeviceInstanceBL(hardwareId, &instance)
                               : BRDX_GetDeviceInstanceBL(hardwareId, option, &instance);
  });
  if (!returned) return false;

  bool raised = false;
  (void)GetWDMStatusHlp(instance, status, problem, raised);
  return !raised;
}

}  // namespace

SrvResult CQorlixSRVPipe::GetDeviceStateEx(int conId) {
  static constexpr char kFct[] = "GetDeviceStateEx: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, " >> Start");

  RequestText<kBoardBufferSize> hardwareId;
  hardwareId.Clear();
  std::uint32_t option = 0;
  FieldReader fields(*this, conId, kFct);
  fields.Text(hardwareId, "<< ReadString(HardwareId) result = 0x%x ");
  fields.Long(option, "<< ReadBuffer(DevCpmpOpt) result = 0x%x ");
  if (fields.Failed()) return fields.Result();

  std::uint32_t status = 0;
  std::uint32_t problem = 0;
  if (!QueryState(hardwareId.get(), option, status, problem)) {
    ZQ_TRACE(TRC_ERROR, kFct, "Exception: GetDeviceState");
    const SrvResult sendResult = Send(conId, SRV_ERR_EXCEPTION_OCCURED);
    ZQ_TRACE(TRC_PROGRESS, kFct, "<< GetDeviceState result = 0x%x", sendResult);
    return sendResult;
  }

  ZQ_TRACE(TRC_PROGRESS, kFct, ">> intern Send");
  SrvResult result = AddShort(conId, REPLY_MARK);
  if (result == SRV_OK) result = AddLong(conId, SRV_OK);
  if (result == SRV_OK) result = AddLong(conId, status);
  if (result == SRV_OK) result = AddLong(conId, problem);
  if (result == SRV_OK) (void)WriteReply(conId);
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< intern Send");
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< GetDeviceState result = 0x%x", result);
  return result;
}
