#include "board/BoardCommand.h"
#include "board/BoardCommandTable.h"
#include "platform/FencedBuffer.h"
#include "platform/GuardedCall.h"
#include "server/BCLock.h"
#include "server/CommandCode.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

bool ReadRequest(CQorlixSRVPipe& srv, int conId, const BoardCommand& row, BoardCall& call,
                 SrvResult& result) {
  FieldReader fields(srv, conId, row.function);
  for (const BoardField& field : row.request) {
    switch (field.kind) {
      case BoardField::Kind::kNumber:
        fields.Long(call.number, field.trace);
        break;
      case BoardField::Kind::kText:
        call.texts[field.place].Clear();
        fields.Text(call.texts[field.place], field.trace);
        break;
      case BoardField::Kind::kRoom:
        fields.Long(call.outs[field.place].length, field.trace);
        break;
    }
  }
  result = fields.Result();
  return !fields.Failed();
}

// A client's length never announces more than the buffer has; with the signed bound a length that
// has its top bit set is let through.
bool IsAboveBound(BoardBound bound, std::uint32_t length) {
  return length > kBoardBufferSize && (bound == BoardBound::kUnsigned || length <= INT32_MAX);
}

// Clears the buffers that the command lends. A buffer that is announced with more than it has lies
// between fences: a library that takes the number at its word faults instead of writing on.
bool LendBuffers(const BoardCommand& row, BoardCall& call) {
  for (const BoardField& field : row.request) {
    if (field.kind != BoardField::Kind::kRoom) continue;
    OutBuffer& out = call.outs[field.place];
    if (IsAboveBound(row.bound, out.length)) out.length = kBoardBufferSize;
    if (out.length > kBoardBufferSize) out.data = platform::FencedBuffer();
    if (out.data == nullptr) return false;
    std::memset(out.data, 0, kBoardBufferSize + 1);
  }
  return true;
}

std::uint64_t AnswerSize(const BoardCommand& row, const BoardCall& call) {
  std::uint64_t size = 0;
  for (const BoardField& field : row.request) {
    if (field.kind == BoardField::Kind::kRoom) size += call.outs[field.place].length;
  }
  return size;
}

std::uint32_t LongOf(const BoardReply& element, const BoardCall& call, std::uint32_t result) {
  switch (element.kind) {
    case BoardReply::Kind::kResult:
      return result;
    case BoardReply::Kind::kOverflow:
      return BUFFER_OVERFLOW;
    case BoardReply::Kind::kCapacity:
      return kBoardBufferSize;
    case BoardReply::Kind::kLength:
      return call.outs[element.place].length;
    case BoardReply::Kind::kValue:
      return call.value;
    default:
      return SRV_OK;
  }
}

template <std::size_t Capacity>
SrvResult SendLongs(CQorlixSRVPipe& srv, int conId, const RowList<BoardReply, Capacity>& list,
                    const BoardCall& call, std::uint32_t result) {
  std::uint32_t v[7] = {};
  std::size_t count = 0;
  for (const BoardReply& element : list) v[count++] = LongOf(element, call, result);
  switch (count) {
    case 1:
      return srv.Send(conId, v[0]);
    case 2:
      return srv.Send(conId, v[0], v[1]);
    case 3:
      return srv.Send(conId, v[0], v[1], v[2]);
    case 4:
      return srv.Send(conId, v[0], v[1], v[2], v[3]);
    case 5:
      return srv.Send(conId, v[0], v[1], v[2], v[3], v[4]);
    default:
      return srv.Send(conId, v[0], v[1], v[2], v[3], v[4], v[5], v[6]);
  }
}

SrvResult AddElement(CQorlixSRVPipe& srv, int conId, const BoardReply& element,
                     const BoardCall& call) {
  switch (element.kind) {
    case BoardReply::Kind::kTextAndLength: {
      const SrvResult added = srv.AddString(conId, call.outs[element.place].data);
      if (added != SRV_OK) return added;
      return srv.AddLong(conId, call.outs[element.place].length);
    }
    case BoardReply::Kind::kByte:
      return srv.AddByte(conId, call.byte);
    default:
      return srv.AddLong(conId, LongOf(element, call, SRV_OK));
  }
}

SrvResult SendComposed(CQorlixSRVPipe& srv, int conId, const BoardCommand& row,
                       const BoardCall& call) {
  ZQ_TRACE(TRC_PROGRESS, row.function, ">> intern Send");
  SrvResult result = srv.AddShort(conId, REPLY_MARK);
  for (const BoardReply& element : row.reply) {
    if (result != SRV_OK) break;
    result = AddElement(srv, conId, element, call);
  }
  if (result == SRV_OK) (void)srv.WriteReply(conId);
  return result;
}

SrvResult SendSuccess(CQorlixSRVPipe& srv, int conId, const BoardCommand& row,
                      const BoardCall& call) {
  switch (row.success) {
    case BoardSuccess::kText:
      return srv.Send(conId, SRV_OK, call.outs[0].data, call.outs[0].length);
    case BoardSuccess::kBuffer:
      return srv.SendBuffer(conId, SRV_OK, call.outs[0].data, call.outs[0].length);
    case BoardSuccess::kComposed:
      return SendComposed(srv, conId, row, call);
    default:
      return srv.Send(conId, SRV_OK);
  }
}

// Read, bound the lengths, call under the lock, answer: the one place that knows the steps.
SrvResult RunBoardCommand(CQorlixSRVPipe& srv, int conId, const BoardCommand& row) {
  ZQ_TRACE(TRC_PROGRESS, row.function, ">> Start");

  BoardCall call;
  SrvResult readResult = SRV_OK;
  if (!ReadRequest(srv, conId, row, call, readResult)) return readResult;
  // A client takes 8602 for an answer that is too long, so it comes with the same fields.
  if (!LendBuffers(row, call)) return SendLongs(srv, conId, row.tooLong, call, BUFFER_OVERFLOW);

  std::uint32_t result = SRV_OK;
  bool returned = false;
  {
    const BCLock lock(srv);
    returned = GuardedCall(result, [&] { return row.call(call); });
  }
  if (!returned) {
    ZQ_TRACE(TRC_ERROR, row.function, "Exception: %s", row.raised);
    return srv.Send(conId, SRV_ERR_EXCEPTION_OCCURED);
  }

  if (row.traceResult != nullptr) {
    row.traceResult(row, call, result);
  } else {
    ZQ_TRACE(TRC_RESULT, row.function, "<< %s result = 0x%x", row.operation, result);
  }

  if (result != SRV_OK) return SendLongs(srv, conId, row.failure, call, result);
  if (AnswerSize(row, call) > kBoardAnswerLimit) {
    return SendLongs(srv, conId, row.tooLong, call, result);
  }
  return SendSuccess(srv, conId, row, call);
}

}  // namespace

using namespace board_commands;

SrvResult CQorlixSRVPipe::BC_EnumBoard(int conId) {
  return RunBoardCommand(*this, conId, kEnumBoard);
}
SrvResult CQorlixSRVPipe::BC_EnumInstBoard(int conId) {
  return RunBoardCommand(*this, conId, kEnumInstBoard);
}
SrvResult CQorlixSRVPipe::BC_EnumAvailableBoard(int conId) {
  return RunBoardCommand(*this, conId, kEnumAvailableBoard);
}
SrvResult CQorlixSRVPipe::BC_EnumAdapters(int conId) {
  return RunBoardCommand(*this, conId, kEnumAdapters);
}
SrvResult CQorlixSRVPipe::BC_EnumConfiguration(int conId) {
  return RunBoardCommand(*this, conId, kEnumConfiguration);
}
SrvResult CQorlixSRVPipe::BC_BoardGetMap(int conId) {
  return RunBoardCommand(*this, conId, kBoardGetMap);
}
SrvResult CQorlixSRVPipe::BC_GetBoardInfo(int conId) {
  return RunBoardCommand(*this, conId, kGetBoardInfo);
}
SrvResult CQorlixSRVPipe::BC_GetBoardInfoEx(int conId) {
  return RunBoardCommand(*this, conId, kGetBoardInfoEx);
}
SrvResult CQorlixSRVPipe::BC_Scan(int conId) { return RunBoardCommand(*this, conId, kScan); }
SrvResult CQorlixSRVPipe::BC_CreateAllLogdevices(int conId) {
  return RunBoardCommand(*this, conId, kCreateAllLogdevices);
}
SrvResult CQorlixSRVPipe::BC_HasUninitializedInstances(int conId) {
  return RunBoardCommand(*this, conId, kHasUninitializedInstances);
}
SrvResult CQorlixSRVPipe::BC_UpdateLogDevicesForDevice(int conId) {
  return RunBoardCommand(*this, conId, kUpdateLogDevicesForDevice);
}
