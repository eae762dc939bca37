#include "codec/Wire.h"
#include "server/CommandCode.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

template <typename T>
bool TakeFixed(PipeInstance& pipe, T& value) {
  return wire::Take(pipe.RequestBuffer, pipe.ReceivePointer, pipe.CurrentPointer, value);
}

bool TakeBytes(PipeInstance& pipe, void* destination, std::uint32_t length) {
  return wire::TakeBytes(pipe.RequestBuffer, pipe.ReceivePointer, pipe.CurrentPointer, destination,
                         length);
}

// The text that all three length-prefixed kinds share.
void TraceStringOverflow(const char* function) {
  ZQ_TRACE(TRC_ERROR, function, "ReadString exit with BUFFER_OVERFLOW");
}

// Takes the text behind its length; `text` becomes null for an absent one.
SrvResult TakeText(PipeInstance& pipe, const char* function, char*& text, std::uint32_t capacity,
                   std::uint32_t length) {
  if (length == kAbsentLength) {
    text = nullptr;
    return SRV_OK;
  }
  // One byte of the buffer belongs to the terminator.
  if (length >= capacity || !TakeBytes(pipe, text, length)) {
    TraceStringOverflow(function);
    return BUFFER_OVERFLOW;
  }
  text[length] = '\0';
  return SRV_OK;
}

}  // namespace

SrvResult CQorlixSRVPipe::ReadByte(int conId, std::uint8_t& value) {
  static constexpr char kFct[] = "ReadByte: ";
  PipeInstance& pipe = PipeOf(conId);
  ZQ_TRACE(TRC_PROGRESS, kFct, "Pipe[conId].CurrentPointer 0x%x", pipe.CurrentPointer);
  ZQ_TRACE(TRC_PROGRESS, kFct, "Pipe[conId].ReceivePointer 0x%x", pipe.ReceivePointer);
  if (TakeFixed(pipe, value)) return SRV_OK;
  ZQ_TRACE(TRC_ERROR, kFct, "ReadByte exit with BUFFER_OVERFLOW");
  return BUFFER_OVERFLOW;
}

SrvResult CQorlixSRVPipe::ReadShort(int conId, std::uint16_t& value) {
  static constexpr char kFct[] = "ReadShort: ";
  if (TakeFixed(PipeOf(conId), value)) return SRV_OK;
  ZQ_TRACE(TRC_ERROR, kFct, "ReadShort exit with BUFFER_OVERFLOW");
  return BUFFER_OVERFLOW;
}

SrvResult CQorlixSRVPipe::ReadLong(int conId, std::uint32_t& value) {
  static constexpr char kFct[] = "ReadLong: ";
  if (TakeFixed(PipeOf(conId), value)) return SRV_OK;
  ZQ_TRACE(TRC_ERROR, kFct, "ReadLong exit with BUFFER_OVERFLOW");
  return BUFFER_OVERFLOW;
}

SrvResult CQorlixSRVPipe::ReadLongLong(int conId, std::uint64_t& value) {
  static constexpr char kFct[] = "ReadLongLong: ";
  if (TakeFixed(PipeOf(conId), value)) return SRV_OK;
  ZQ_TRACE(TRC_ERROR, kFct, "ReadLongLong exit with BUFFER_OVERFLOW");
  return BUFFER_OVERFLOW;
}

SrvResult CQorlixSRVPipe::ReadString(int conId, char*& text, std::uint32_t capacity) {
  static constexpr char kFct[] = "ReadString: ";
  std::uint32_t length = 0;
  const SrvResult result = ReadLong(conId, length);
  if (result != SRV_OK) return result;
  return TakeText(PipeOf(conId), kFct, text, capacity, length);
}

SrvResult CQorlixSRVPipe::ReadMultiString(int conId, char*& text, std::uint32_t capacity,
                                          std::uint32_t& length) {
  static constexpr char kFct[] = "ReadMultiString: ";
  std::uint32_t announced = 0;
  SrvResult result = ReadLong(conId, announced);
  if (result != SRV_OK) return result;
  result = TakeText(PipeOf(conId), kFct, text, capacity, announced);
  if (result != SRV_OK) return result;

  length = text == nullptr ? 0 : announced;
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< CQorlixSRVPipe::ReadMultiString DataLength=%d",
           static_cast<int>(length));
  return SRV_OK;
}

SrvResult CQorlixSRVPipe::ReadBuffer(int conId, void* destination, std::uint32_t capacity,
                                     std::uint32_t& length) {
  static constexpr char kFct[] = "ReadBuffer: ";
  PipeInstance& pipe = PipeOf(conId);
  std::uint32_t announced = 0;
  const SrvResult result = ReadLong(conId, announced);
  if (result != SRV_OK) return result;

  if (announced == kAbsentLength) {
    length = 0;
    return SRV_OK;
  }
  if (announced > capacity || !TakeBytes(pipe, destination, announced)) {
    TraceStringOverflow(kFct);
    return BUFFER_OVERFLOW;
  }
  length = announced;
  return SRV_OK;
}
