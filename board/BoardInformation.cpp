#include <algorithm>
#include <cstring>

#include "board/boardsvc32.h"
#include "codec/FieldReader.h"
#include "codec/Wire.h"
#include "platform/GuardedCall.h"
#include "server/CommandCode.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

constexpr char kFct[] = "GetBoardInformation: ";
constexpr std::uint32_t kBlockSize = 8160;

/// An output area that is larger could never fit a reply.
constexpr std::uint32_t kAreaSize = kPipeBufferSize;

// The eight fields and what the library is lent. The areas lie in front of the reply that will hold
// them, so they need no more than it has.
struct InformationCall {
  std::uint8_t block1[kBlockSize] = {};
  std::uint8_t block2[kBlockSize] = {};
  std::uint8_t area1[kAreaSize];
  std::uint8_t area2[kAreaSize];
  std::uint32_t values[3] = {};
  std::uint32_t cbBlock1 = 0;
  std::uint32_t cbBlock2 = 0;
  std::uint32_t cbArea1 = 0;
  std::uint32_t cbArea2 = 0;
  std::uint32_t last = 0;
};

// A number that comes as a buffer: its first four bytes count, and what is missing is 0.
void ReadValue(FieldReader& fields, std::uint32_t& value, const ResultTrace& trace) {
  std::uint8_t bytes[kPipeBufferSize];
  std::uint32_t length = 0;
  fields.Buffer(bytes, sizeof(bytes), length, trace);
  if (fields.Failed()) return;
  std::uint8_t number[sizeof(value)] = {};
  std::memcpy(number, bytes, std::min<std::size_t>(length, sizeof(number)));
  value = wire::Load<std::uint32_t>(number);
}

SrvResult ReadRequest(CQorlixSRVPipe& srv, int conId, InformationCall& call) {
  static constexpr ResultTrace kTrace = "<< ReadBuffer result = 0x%x";
  FieldReader fields(srv, conId, kFct);
  fields.Buffer(call.block1, sizeof(call.block1), call.cbBlock1, kTrace);
  for (std::uint32_t& value : call.values) ReadValue(fields, value, kTrace);
  fields.Buffer(call.block2, sizeof(call.block2), call.cbBlock2, kTrace);
  ReadValue(fields, call.cbArea1, kTrace);
  ReadValue(fields, call.cbArea2, kTrace);
  ReadValue(fields, call.last, kTrace);
  if (fields.Failed()) return fields.Result();
  return call.cbArea1 > kAreaSize || call.cbArea2 > kAreaSize ? BUFFER_OVERFLOW : SRV_OK;
}

SrvResult SendInformation(CQorlixSRVPipe& srv, int conId, const InformationCall& call,
                          std::uint32_t value, const BRDX_INFO_OUTPUT& output) {
  SrvResult result = srv.AddShort(conId, REPLY_MARK);
  if (result == SRV_OK) result = srv.AddLong(conId, SRV_OK);
  if (result == SRV_OK) result = srv.AddBuffer(conId, call.area1, call.cbArea1);
  if (result == SRV_OK) result = srv.AddBuffer(conId, &value, sizeof(value));
  if (result == SRV_OK) result = srv.AddBuffer(conId, call.area2, call.cbArea2);
  if (result == SRV_OK) result = srv.AddLong(conId, output.result1);
  if (result == SRV_OK) result = srv.AddLong(conId, output.result2);
  if (result == SRV_OK) (void)srv.WriteReply(conId);
  return result;
}

}  // namespace

SrvResult CQorlixSRVPipe::GetBoardInformation(int conId) {
  ZQ_TRACE(TRC_PROGRESS, kFct, " >> Start");

  InformationCall call;
  const SrvResult readResult = ReadRequest(*this, conId, call);
  if (readResult != SRV_OK) return readResult;
  std::memset(call.area1, 0, call.cbArea1);
  std::memset(call.area2, 0, call.cbArea2);

  std::uint32_t value = 0;
  BRDX_INFO_INPUT input = {call.values[0], call.values[1], call.values[2], call.block2,
                           call.cbBlock2,  call.area1,     call.cbArea1,   &value};
  BRDX_INFO_OUTPUT output = {call.area2, call.cbArea2, 0, 0};
  std::uint32_t result = SRV_OK;
  if (!GuardedCall(result, [&] {
        return BRDX_GetBoardInformation(call.block1, &input, &output, call.last);
      })) {
    ZQ_TRACE(TRC_ERROR, kFct, "Exception: BRDX_GetDeviceDetail");
    return Send(conId, SRV_ERR_EXCEPTION_OCCURED);
  }
  ZQ_TRACE(TRC_RESULT, kFct, "<< BRDX_GetBoardInformation result = 0x%x", result);

  if (result != SRV_OK) return Send(conId, result);
  return SendInformation(*this, conId, call, value, output);
}
