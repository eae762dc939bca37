#include "server/CommandTable.h"
#include "server/PipeIo.h"
#include "server/QorlixSRVPipe.h"
#include "server/StrictProfile.h"
#include "trace/Zqotrc.h"

void CQorlixSRVPipe::Dispatch(int conId, SrvResult& lResult, SrvResult& sendResult) {
  static constexpr char kFct[] = "RunSrvLoop: ";
  std::uint16_t opCode = 0;
  lResult = ReadShort(conId, opCode);
  ZQ_TRACE(TRC_PROGRESS, kFct, "opCode 0x%x", static_cast<unsigned>(opCode));

  // A code that could not be read is 0, and no command has that. Its answer is followed by the
  // reader's result, which the loop sends.
  const CommandRow* const command = FindCommand(opCode);
  if (command == nullptr) {
    sendResult = Send(conId, SRV_ERR_UNKNOWN_COMMAND);
    return;
  }

  outputs_[0] = outputs_[1] = 0;
  const SrvResult result = (this->*command->handler)(conId);
  switch (command->answer) {
    case Answer::Handler:
      lResult = result;
      break;
    case Answer::Loop:
    case Answer::HandlerThenLoop:
      sendResult = Send(conId, result);
      break;
    case Answer::LoopWithOutputs:
      lResult = result;
      sendResult = Send(conId, result, outputs_[0], outputs_[1]);
      break;
    case Answer::Stop:
      if (result == ERROR_ACCESS_DENIED) {
        // Refused by the strict profile; the request itself was in order.
        sendResult = Send(conId, result);
      } else if (result != SRV_OK) {
        lResult = result;
        sendResult = Send(conId, ERROR_ACCESS_DENIED);
      } else {
        sendResult = Send(conId, SRV_SHUTDOWN_IN_PROGRESS);
        pipe_io::GiveWay();
        shutdown_ = true;
      }
      break;
  }
}

SrvResult CQorlixSRVPipe::NoOperation(int) { return SRV_OK; }

SrvResult CQorlixSRVPipe::StopServer(int conId) {
  static constexpr char kFct[] = "StopServer: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, "Stop-Server-Message from Connection(%d) arrived", conId);

  std::uint32_t confirmation = 0;
  const SrvResult result = ReadLong(conId, confirmation);
  if (result != SRV_OK) {
    ZQ_TRACE(TRC_ERROR, kFct, "<< ReadLong(ValueLen) result = 0x%x ", result);
    return result;
  }
  if (strict_profile::IsOn() &&
      strict_profile::Refuses(strict_profile::Threat::Stop, conId, /*object=*/"")) {
    return ERROR_ACCESS_DENIED;
  }
  if (confirmation == kStopConfirmation) CloseSRV();
  return SRV_OK;
}
