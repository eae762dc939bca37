#include "board/BoardCommand.h"
#include "board/boardsvc32.h"
#include "codec/FieldReader.h"
#include "platform/GuardedCall.h"
#include "platform/SystemPath.h"
#include "server/CommandCode.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

/// Bytes of a GUID, told beside the length that an answer would need.
constexpr std::uint32_t kGuidSize = 16;

using DeviceId = RequestText<platform::kMaxPath>;

// The two commands that differ in the library operation only.
template <typename Operation>
SrvResult RunRegistration(CQorlixSRVPipe& srv, int conId, const char* function, const char* name,
                          Operation operation) {
  ZQ_TRACE(TRC_PROGRESS, function, ">> Start");

  DeviceId deviceId;
  deviceId.Clear();
  BRDX_GUID guid = {};
  FieldReader fields(srv, conId, function);
  fields.Text(deviceId, "<< ReadString(DeviceId) result = 0x%x ");
  fields.Long(guid.Data1, "<< ReadULong(GUID Part1) result = 0x%x ");
  fields.Short(guid.Data2, "<< ReadShort(GUID Part2) result = 0x%x ");
  fields.Short(guid.Data3, "<< ReadShort(GUID Part3) result = 0x%x ");
  for (std::uint8_t& byte : guid.Data4) {
    fields.Byte(byte, "<< ReadShort(GUID Part4) result = 0x%x ");
  }
  if (fields.Failed()) return fields.Result();

  std::uint32_t result = SRV_OK;
  if (GuardedCall(result, [&] { return operation(guid, deviceId.get()); })) {
    ZQ_TRACE(TRC_RESULT, function, "<< %s result = 0x%x", name, result);
  } else {
    ZQ_TRACE(TRC_ERROR, function, "Exception: %s", name);
    result = SRV_ERR_EXCEPTION_OCCURED;
  }
  return srv.Send(conId, result);
}

SrvResult SendChange(CQorlixSRVPipe& srv, int conId, const char* function, std::uint8_t kind,
                     const OutBuffer& text, const BRDX_GUID& guid) {
  SrvResult result = srv.AddShort(conId, REPLY_MARK);
  if (result == SRV_OK) result = srv.AddLong(conId, SRV_OK);
  if (result == SRV_OK) result = srv.AddByte(conId, kind);
  if (result == SRV_OK) {
    ZQ_TRACE(TRC_PROGRESS, function, "AddString =%s", text.data);
    result = srv.AddString(conId, text.data, text.length);
  }
  if (result == SRV_OK) result = srv.AddLong(conId, text.length);
  if (result == SRV_OK) result = srv.AddLong(conId, guid.Data1);
  if (result == SRV_OK) result = srv.AddShort(conId, guid.Data2);
  if (result == SRV_OK) result = srv.AddShort(conId, guid.Data3);
  for (const std::uint8_t byte : guid.Data4) {
    if (result == SRV_OK) result = srv.AddByte(conId, byte);
  }
  if (result == SRV_OK) (void)srv.WriteReply(conId);
  ZQ_TRACE(TRC_PROGRESS, function, "<< intern Send (len=%d)",
           static_cast<int>(PipeOf(conId).cbToWrite));
  return result;
}

}  // namespace

SrvResult CQorlixSRVPipe::RegisterForDeviceChangeNotifications(int conId) {
  return RunRegistration(*this, conId, "RegisterForDeviceChangeNotifications: ",
                         "BRDX_RegisterForDeviceChangeNotifications",
                         BRDX_RegisterForDeviceChangeNotifications);
}

SrvResult CQorlixSRVPipe::UnregisterForDeviceChangeNotifications(int conId) {
  return RunRegistration(*this, conId, "UnregisterForDeviceChangeNotifications: ",
                         "BRDX_UnregisterForDeviceChangeNotifications",
                         BRDX_UnregisterForDeviceChangeNotifications);
}

SrvResult CQorlixSRVPipe::GetDeviceChange(int conId) {
  static constexpr char kFct[] = "GetDeviceChange: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  DeviceId deviceId;
  deviceId.Clear();
  FieldReader fields(*this, conId, kFct);
  fields.Text(deviceId, "<< ReadString(DeviceId) result = 0x%x ");
  if (fields.Failed()) return fields.Result();

  OutBuffer text;
  std::memset(text.bytes, 0, sizeof(text.bytes));
  std::uint8_t kind = 0;
  BRDX_GUID guid = {};
  std::uint32_t result = SRV_OK;
  if (!GuardedCall(result, [&] {
        return BRDX_GetDeviceChange(deviceId.get(), &kind, &guid, text.data, &text.length);
      })) {
    // Kept: neither this line nor the next names the operation.
    ZQ_TRACE(TRC_ERROR, kFct, "Exception: Funktionsname");
    return Send(conId, SRV_ERR_EXCEPTION_OCCURED);
  }
  ZQ_TRACE(TRC_RESULT, kFct,
           "<< Funktionsname und R\xFC"
           "ckgabeparameter result = 0x%x",
           result);

  if (result != SRV_OK) return Send(conId, result);
  if (text.length > kBoardAnswerLimit) {
    return Send(conId, BUFFER_OVERFLOW, text.length, kGuidSize);
  }
  return SendChange(*this, conId, kFct, kind, text, guid);
}
