#include <cstring>

#include "codec/HexDump.h"
#include "codec/Wire.h"
#include "server/CommandCode.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

constexpr char kSendFct[] = "Send: ";

template <typename T>
SrvResult PutFixed(int conId, T value) {
  PipeInstance& pipe = PipeOf(conId);
  const bool fits = wire::Put(pipe.ReplyBuffer, kPipeBufferSize, pipe.cbToWrite, value);
  return fits ? SRV_OK : BUFFER_OVERFLOW;
}

// Copies the bytes behind their length; false, with nothing copied, when they do not fit.
bool PutBytes(PipeInstance& pipe, const void* data, std::uint32_t size) {
  return wire::PutBytes(pipe.ReplyBuffer, kPipeBufferSize, pipe.cbToWrite, data, size);
}

// Appends the fields of one reply in order; the first that fails makes the rest no-ops.
class Reply {
 public:
  Reply(CQorlixSRVPipe& srv, int conId, std::uint32_t sendResult) : srv_(srv), conId_(conId) {
    result_ = srv_.AddShort(conId_, REPLY_MARK);
    Long(sendResult);
  }

  Reply& Long(std::uint32_t value) {
    if (result_ == SRV_OK) result_ = srv_.AddLong(conId_, value);
    return *this;
  }
  Reply& Text(const char* text) {
    if (result_ == SRV_OK) result_ = srv_.AddString(conId_, text);
    return *this;
  }
  Reply& Special(const void* data, std::uint32_t size) {
    if (result_ == SRV_OK) result_ = srv_.AddString(conId_, data, size);
    return *this;
  }
  Reply& Buffer(const void* data, std::uint32_t size) {
    if (result_ == SRV_OK) result_ = srv_.AddBuffer(conId_, data, size);
    return *this;
  }

  bool Complete() const { return result_ == SRV_OK; }
  SrvResult Result() const { return result_; }

  // Writes the reply if it is complete, with the closing line that most shapes share.
  SrvResult Write() {
    if (!Complete()) return result_;
    const std::uint32_t writeResult = srv_.WriteReply(conId_);
    ZQ_TRACE(TRC_PROGRESS, kSendFct, "<< CQorlixSRVPipe::Send DataLength=%d writeResult=0x%x",
             static_cast<int>(PipeOf(conId_).cbToWrite), writeResult);
    return SRV_OK;
  }

 private:
  CQorlixSRVPipe& srv_;
  const int conId_;
  SrvResult result_;
};

}  // namespace

SrvResult CQorlixSRVPipe::AddByte(int conId, std::uint8_t value) { return PutFixed(conId, value); }
SrvResult CQorlixSRVPipe::AddShort(int conId, std::uint16_t value) {
  return PutFixed(conId, value);
}
SrvResult CQorlixSRVPipe::AddLong(int conId, std::uint32_t value) { return PutFixed(conId, value); }
SrvResult CQorlixSRVPipe::AddLongLong(int conId, std::uint64_t value) {
  return PutFixed(conId, value);
}

SrvResult CQorlixSRVPipe::AddString(int conId, const char* text) {
  static constexpr char kFct[] = "AddString: ";
  PipeInstance& pipe = PipeOf(conId);
  const auto size = static_cast<std::uint32_t>(std::strlen(text));
  ZQ_TRACE(TRC_PROGRESS, kFct, "AddSizeInBytes=%d", static_cast<int>(size));

  const SrvResult result = AddLong(conId, size);
  if (result != SRV_OK) return result;
  if (PutBytes(pipe, text, size)) return SRV_OK;
  ZQ_TRACE(TRC_ERROR, kFct, ">> BUFFER_OVERFLOW in AddString , Size = %d",
           static_cast<int>(pipe.cbToWrite + size));
  return BUFFER_OVERFLOW;
}

SrvResult CQorlixSRVPipe::AddString(int conId, const void* data, std::uint32_t size) {
  static constexpr char kFct[] = "AddString: ";
  PipeInstance& pipe = PipeOf(conId);
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Begin CQorlixSRVPipe::AddString(%d, Spezial)",
           static_cast<int>(size));

  const SrvResult result = AddLong(conId, size);
  if (result != SRV_OK) return result;
  if (!PutBytes(pipe, data, size)) {
    ZQ_TRACE(TRC_ERROR, kFct, ">> BUFFER_OVERFLOW in AddString , Size = %d",
             static_cast<int>(pipe.cbToWrite + size));
    return BUFFER_OVERFLOW;
  }
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< CQorlixSRVPipe::AddString(Spezial)");
  return SRV_OK;
}

SrvResult CQorlixSRVPipe::AddBuffer(int conId, const void* data, std::uint32_t size) {
  static constexpr char kFct[] = "AddBuffer: ";
  PipeInstance& pipe = PipeOf(conId);
  ZQ_TRACE(TRC_PROGRESS, kFct, "BufferLength=%d", static_cast<int>(size));

  const SrvResult result = AddLong(conId, size);
  if (result != SRV_OK) return result;
  if (PutBytes(pipe, data, size)) return SRV_OK;
  ZQ_TRACE(TRC_ERROR, kFct, ">> BUFFER_OVERFLOW in AddBuffer , Size = %d",
           static_cast<int>(pipe.cbToWrite + size));
  return BUFFER_OVERFLOW;
}

SrvResult CQorlixSRVPipe::Send(int conId, std::uint32_t result) {
  ZQ_TRACE(TRC_PROGRESS, kSendFct, ">> Begin CQorlixSRVPipe::Send(long)");
  const Reply reply(*this, conId, result);
  if (!reply.Complete()) return reply.Result();

  const std::uint32_t writeResult = WriteReply(conId);
  ZQ_TRACE(TRC_PROGRESS, kSendFct,
           "<< CQorlixSRVPipe::Send SendResult=0x%x writeResult=0x%x  DataLength=%d", result,
           writeResult, static_cast<int>(PipeOf(conId).cbToWrite));
  return SRV_OK;
}

SrvResult CQorlixSRVPipe::Send(int conId, std::uint32_t result, std::uint32_t v1) {
  ZQ_TRACE(TRC_PROGRESS, kSendFct, ">> Begin CQorlixSRVPipe::Send(long, long)");
  return Reply(*this, conId, result).Long(v1).Write();
}

SrvResult CQorlixSRVPipe::Send(int conId, std::uint32_t result, std::uint32_t v1,
                               std::uint32_t v2) {
  ZQ_TRACE(TRC_PROGRESS, kSendFct, ">> Begin CQorlixSRVPipe::Send(long, long, long)");
  return Reply(*this, conId, result).Long(v1).Long(v2).Write();
}

SrvResult CQorlixSRVPipe::Send(int conId, std::uint32_t result, std::uint32_t v1, std::uint32_t v2,
                               std::uint32_t v3) {
  ZQ_TRACE(TRC_PROGRESS, kSendFct, ">> Begin CQorlixSRVPipe::Send(long, long, long, long)");
  return Reply(*this, conId, result).Long(v1).Long(v2).Long(v3).Write();
}

SrvResult CQorlixSRVPipe::Send(int conId, std::uint32_t result, std::uint32_t v1, std::uint32_t v2,
                               std::uint32_t v3, std::uint32_t v4) {
  ZQ_TRACE(TRC_PROGRESS, kSendFct, ">> Begin CQorlixSRVPipe::Send(long, long, long, long, long)");
  return Reply(*this, conId, result).Long(v1).Long(v2).Long(v3).Long(v4).Write();
}

SrvResult CQorlixSRVPipe::Send(int conId, std::uint32_t result, std::uint32_t v1, std::uint32_t v2,
                               std::uint32_t v3, std::uint32_t v4, std::uint32_t v5,
                               std::uint32_t v6) {
  // Kept: the seven-long shape announces itself as the one with five.
  ZQ_TRACE(TRC_PROGRESS, kSendFct, ">> Begin CQorlixSRVPipe::Send(long, long, long, long, long)");
  return Reply(*this, conId, result).Long(v1).Long(v2).Long(v3).Long(v4).Long(v5).Long(v6).Write();
}

SrvResult CQorlixSRVPipe::Send(int conId, std::uint32_t result, const char* text) {
  ZQ_TRACE(TRC_PROGRESS, kSendFct, ">> Begin CQorlixSRVPipe::Send(long, TCHAR)");
  return Reply(*this, conId, result).Text(text).Write();
}

SrvResult CQorlixSRVPipe::Send(int conId, std::uint32_t result, const char* text,
                               std::uint32_t v1) {
  ZQ_TRACE(TRC_PROGRESS, kSendFct, ">> Begin CQorlixSRVPipe::Send(long, TCHAR, long)");
  return Reply(*this, conId, result).Text(text).Long(v1).Write();
}

SrvResult CQorlixSRVPipe::Send(int conId, std::uint32_t result, const char* text1, std::uint32_t v1,
                               const char* text2, std::uint32_t v2) {
  ZQ_TRACE(TRC_PROGRESS, kSendFct, ">> Begin CQorlixSRVPipe::Send(long, TCHAR, long, TCHAR, long)");
  return Reply(*this, conId, result).Text(text1).Long(v1).Text(text2).Long(v2).Write();
}

SrvResult CQorlixSRVPipe::SendMultiByteString(int conId, std::uint32_t result, const void* data,
                                              std::uint32_t size) {
  static constexpr char kFct[] = "SendMultiByteString: ";
  // Kept: the length counts bytes, whatever its name says.
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Begin CQorlixSRVPipe::SendMultiByteString LengthInDW=%d",
           static_cast<int>(size));
  const Reply reply = Reply(*this, conId, result).Special(data, size).Long(size);
  if (!reply.Complete()) return reply.Result();

  const PipeInstance& pipe = PipeOf(conId);
  TraceHexDump(kFct, pipe.ReplyBuffer, pipe.cbToWrite);
  const std::uint32_t writeResult = WriteReply(conId);
  ZQ_TRACE(TRC_PROGRESS, kFct,
           "<< CQorlixSRVPipe::SendMultiByteString DataLength=%d writeResult=0x%x",
           static_cast<int>(pipe.cbToWrite), writeResult);
  return SRV_OK;
}

SrvResult CQorlixSRVPipe::SendBuffer(int conId, std::uint32_t result, const void* data,
                                     std::uint32_t size) {
  static constexpr char kFct[] = "SendBuffer: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Begin CQorlixSRVPipe::SendBuffer");
  const Reply reply = Reply(*this, conId, result).Buffer(data, size);
  if (!reply.Complete()) return reply.Result();

  const std::uint32_t writeResult = WriteReply(conId);
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< CQorlixSRVPipe::SendBuffer DataLength=%d writeResult=0x%x",
           static_cast<int>(PipeOf(conId).cbToWrite), writeResult);
  return SRV_OK;
}
