#include <cstdint>

#include "codec/FieldReader.h"
#include "platform/EventLog.h"
#include "platform/GuardedCall.h"
#include "registry/RegistryOperation.h"
#include "registry/StrictRegistry.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

constexpr std::uint32_t RegValueBufferSize = 8160;

/// The only root key that the base commands take, as a client writes it.
constexpr std::uint32_t kLocalMachine = 0x80000002;

using RegistryText = RequestText<RegValueBufferSize>;

/// Room for what an enumeration or a read fills in.
///
/// One byte longer than the registry is told, so that data which fills it still ends somewhere;
/// only that end is cleared, for nobody looks behind it.
class AnswerText {
 public:
  AnswerText() { bytes_[0] = '\0'; }

  char* Bytes() { return bytes_; }

  /// The text up to the first zero byte of the bytes that were stored.
  const char* Cut(std::uint32_t stored) {
    bytes_[stored < RegValueBufferSize ? stored : RegValueBufferSize] = '\0';
    return bytes_;
  }

  std::uint32_t length = RegValueBufferSize;  ///< in: capacity; out: what was stored or is needed

 private:
  char bytes_[RegValueBufferSize + 1];
};

enum class Root { LocalMachine, Other };

// Tells the root keys apart and reports every one but HKEY_LOCAL_MACHINE, without the path.
Root RootOf(std::uint32_t rootKey) {
  if (rootKey == kLocalMachine) return Root::LocalMachine;
  ReportErrorEvent(kRegistryEventSource, "Only operations to HKEY_LOCAL_MACHINE are allowed!");
  return Root::Other;
}

// --- What a command and its sibling with a root key share, once their fields are read ---

SrvResult FinishCreateKey(CQorlixSRVPipe& srv, int conId, const char* function, Root root,
                          const char* key) {
  std::uint32_t result = ERROR_ACCESS_DENIED;
  if (root == Root::LocalMachine &&
      !StrictProfileRefuses(conId, {RegistryChange::CreateKey, key})) {
    if (GuardedCall(result, [&] { return RegCreateKeyBL(key); })) {
      ZQ_TRACE(TRC_PROGRESS, function, "<< RegCreateKeyBL result = 0x%x", result);
    } else {
      ZQ_TRACE(TRC_ERROR, function, "Exception: RegCreateKeyEx");
      result = SRV_ERR_EXCEPTION_OCCURED;
    }
  }

  const SrvResult sendResult = srv.Send(conId, result);
  ZQ_TRACE(TRC_PROGRESS, function, "<< Reg_CreateKey result = 0x%x", sendResult);
  return sendResult;
}

SrvResult FinishDelKey(CQorlixSRVPipe& srv, int conId, const char* function, Root root,
                       const char* key) {
  std::uint32_t result = ERROR_ACCESS_DENIED;
  if (root == Root::LocalMachine &&
      !StrictProfileRefuses(conId, {RegistryChange::DeleteKey, key})) {
    if (GuardedCall(result, [&] { return RegDelKeyBL(key); })) {
      ZQ_TRACE(TRC_PROGRESS, function, "<< RegDelKeyBL result = 0x%x", result);
    } else {
      ZQ_TRACE(TRC_ERROR, function, "Exception: SHDeleteKey");
      result = SRV_ERR_EXCEPTION_OCCURED;
    }
  }

  const SrvResult sendResult = srv.Send(conId, result);
  ZQ_TRACE(TRC_PROGRESS, function, "<< Reg_DelKey result = 0x%x", sendResult);
  return sendResult;
}

SrvResult FinishSetValue(CQorlixSRVPipe& srv, int conId, const char* function, Root root,
                         const char* key, const char* name, const char* value) {
  std::uint32_t result = ERROR_ACCESS_DENIED;
  // Without a text nothing changes, and the primitive says so.
  if (root == Root::LocalMachine &&
      (value == nullptr ||
       !StrictProfileRefuses(conId, {RegistryChange::ChangeValue, key, name}))) {
    if (GuardedCall(result, [&] { return RegSetValueBL(key, name, value); })) {
      ZQ_TRACE(TRC_PROGRESS, function, "<< RegSetValueBL result = 0x%x", result);
    } else {
      ZQ_TRACE(TRC_ERROR, function, "Exception: RegSetValueBL");
      result = SRV_ERR_EXCEPTION_OCCURED;
    }
  }

  const SrvResult sendResult = srv.Send(conId, result);
  ZQ_TRACE(TRC_PROGRESS, function, "<< Reg_SetValue result = 0x%x", sendResult);
  return sendResult;
}

}  // namespace

SrvResult CQorlixSRVPipe::Reg_CreateKey(int conId) {
  static constexpr char kFct[] = "Reg_CreateKey:";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  RegistryText key;
  FieldReader fields(*this, conId, kFct);
  fields.Text(key, "<< result = 0x%x lpszCreateKey=%s");
  if (fields.Failed()) return fields.Result();

  return FinishCreateKey(*this, conId, kFct, Root::LocalMachine, key.get());
}

SrvResult CQorlixSRVPipe::Reg_DelKey(int conId) {
  static constexpr char kFct[] = "Reg_DelKey:";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  RegistryText key;
  FieldReader fields(*this, conId, kFct);
  fields.Text(key, "<< result = 0x%x DelKey");
  if (fields.Failed()) return fields.Result();

  return FinishDelKey(*this, conId, kFct, Root::LocalMachine, key.get());
}

SrvResult CQorlixSRVPipe::Reg_SetValue(int conId) {
  static constexpr char kFct[] = "Reg_SetValue: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  RegistryText key, name, value;
  FieldReader fields(*this, conId, kFct);
  fields.Text(key, "<< result = 0x%x Key");
  fields.Text(name, "<< result = 0x%x Parameter");
  fields.Text(value, "<< result = 0x%x Value");
  if (fields.Failed()) return fields.Result();

  return FinishSetValue(*this, conId, kFct, Root::LocalMachine, key.get(), name.get(), value.get());
}

SrvResult CQorlixSRVPipe::Reg_GetValue(int conId) {
  static constexpr char kFct[] = "Reg_GetValue: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  RegistryText key, name;
  FieldReader fields(*this, conId, kFct);
  fields.Text(key, "<< result = 0x%x Key");
  fields.Text(name, "<< result = 0x%x Parameter");
  if (fields.Failed()) return fields.Result();

  AnswerText data;
  std::uint32_t result = SRV_OK;
  SrvResult sendResult = SRV_OK;
  if (!GuardedCall(result, [&] {
        return RegGetValueBL(key.get(), name.get(), data.Bytes(), data.length);
      })) {
    // Kept: the exception and the closing line name sibling commands, here and below.
    ZQ_TRACE(TRC_ERROR, kFct, "Exception: RegDeleteValue");
    sendResult = Send(conId, SRV_ERR_EXCEPTION_OCCURED);
  } else {
    // Kept: the terminator of a text is not counted, and neither is the last byte of other types.
    const std::uint32_t stored = data.length;
    const std::uint32_t reduced = stored == 0 ? 0 : stored - 1;
    if (result != ERROR_SUCCESS) {
      sendResult = Send(conId, result, reduced);
    } else if (reduced <= RegValueBufferSize) {
      sendResult = Send(conId, SRV_OK, data.Cut(stored), reduced);
    } else {
      sendResult = Send(conId, BUFFER_OVERFLOW, reduced);
    }
  }
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< Reg_SetValue result = 0x%x", sendResult);
  return sendResult;
}

SrvResult CQorlixSRVPipe::Reg_DelValue(int conId) {
  static constexpr char kFct[] = "Reg_DelValue:";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  RegistryText key, name;
  FieldReader fields(*this, conId, kFct);
  fields.Text(key, "<< result = 0x%x Key");
  fields.Text(name, "<< result = 0x%x Value");
  if (fields.Failed()) return fields.Result();

  std::uint32_t result = ERROR_ACCESS_DENIED;
  if (!StrictProfileRefuses(conId, {RegistryChange::ChangeValue, key.get(), name.get()})) {
    if (GuardedCall(result, [&] { return RegDelValueBL(key.get(), name.get()); })) {
      ZQ_TRACE(TRC_PROGRESS, kFct, "<< RegDelValueBL result = 0x%x", result);
    } else {
      ZQ_TRACE(TRC_ERROR, kFct, "Exception: RegDeleteValue");
      result = SRV_ERR_EXCEPTION_OCCURED;
    }
  }

  const SrvResult sendResult = Send(conId, result);
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< Reg_DelValue result = 0x%x", sendResult);
  return sendResult;
}

SrvResult CQorlixSRVPipe::Reg_EnumKey(int conId) {
  static constexpr char kFct[] = "Reg_EnumKey: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  RegistryText key;
  std::uint32_t index = 0;
  FieldReader fields(*this, conId, kFct);
  fields.Text(key, "<< result = 0x%x CopyFromKeyKey");
  fields.Long(index, "<< result = 0x%x CopyToKey");
  if (fields.Failed()) return fields.Result();

  AnswerText name;
  std::uint32_t result = SRV_OK;
  SrvResult sendResult = SRV_OK;
  if (!GuardedCall(result, [&] {
        return RegEnumKeyBL(key.get(), static_cast<std::int32_t>(index), name.Bytes(), name.length);
      })) {
    ZQ_TRACE(TRC_ERROR, kFct, "Exception: RegEnumKeyEx");
    sendResult = Send(conId, SRV_ERR_EXCEPTION_OCCURED);
  } else {
    ZQ_TRACE(TRC_PROGRESS, kFct, "<< RegEnumKeyBL result = 0x%x", result);
    if (result != ERROR_SUCCESS) {
      sendResult = Send(conId, result, name.length);
    } else if (name.length <= RegValueBufferSize) {
      sendResult = Send(conId, SRV_OK, name.Cut(name.length), name.length);
    } else {
      sendResult = Send(conId, BUFFER_OVERFLOW, name.length);
    }
  }
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< Reg_EnumKey result = 0x%x", sendResult);
  return sendResult;
}

SrvResult CQorlixSRVPipe::Reg_EnumValue(int conId) {
  static constexpr char kFct[] = "Reg_EnumValue: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  RegistryText key;
  std::uint32_t index = 0;
  FieldReader fields(*this, conId, kFct);
  fields.Text(key, "<< result = 0x%x CopyFromKeyKey");
  fields.Long(index, "<< result = 0x%x CopyFromKeyKey");
  if (fields.Failed()) return fields.Result();

  AnswerText name, data;
  std::uint32_t result = SRV_OK;
  SrvResult sendResult = SRV_OK;
  if (!GuardedCall(result, [&] {
        return RegEnumValueBL(key.get(), static_cast<std::int32_t>(index), name.Bytes(),
                              name.length, data.Bytes(), data.length);
      })) {
    ZQ_TRACE(TRC_ERROR, kFct, "Exception: RegEnumKeyEx");
    sendResult = Send(conId, SRV_ERR_EXCEPTION_OCCURED);
  } else {
    ZQ_TRACE(TRC_PROGRESS, kFct, "<< RegEnumValueBL result = 0x%x", result);
    const std::uint64_t sum = std::uint64_t{name.length} + data.length;
    if (result != ERROR_SUCCESS) {
      sendResult = Send(conId, result, name.length, data.length);
    } else if (sum <= RegValueBufferSize) {
      sendResult = Send(conId, SRV_OK, name.Cut(name.length), name.length, data.Cut(data.length),
                        data.length);
    } else {
      sendResult = Send(conId, BUFFER_OVERFLOW, name.length, data.length);
    }
  }
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< Reg_EnumKey result = 0x%x", sendResult);
  return sendResult;
}

SrvResult CQorlixSRVPipe::Reg_SetValueBase(int conId) {
  static constexpr char kFct[] = "Reg_SetValueBase: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  std::uint32_t baseKey = 0;
  RegistryText key, name, value;
  FieldReader fields(*this, conId, kFct);
  fields.Long(baseKey, "<< result = 0x%x  baseKey=0x%x");
  fields.Text(key, "<< result = 0x%x Key");
  fields.Text(name, "<< result = 0x%x Parameter");
  fields.Text(value, "<< result = 0x%x Value");
  if (fields.Failed()) return fields.Result();

  return FinishSetValue(*this, conId, kFct, RootOf(baseKey), key.get(), name.get(), value.get());
}

SrvResult CQorlixSRVPipe::Reg_CreateKeyBase(int conId) {
  static constexpr char kFct[] = "Reg_CreateKeyBase:";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  std::uint32_t baseKey = 0;
  RegistryText key;
  FieldReader fields(*this, conId, kFct);
  fields.Long(baseKey, "<< result = 0x%x baseKey=0x%x");
  fields.Text(key, "<< result = 0x%x lpszCreateKey=%s");
  if (fields.Failed()) return fields.Result();

  return FinishCreateKey(*this, conId, kFct, RootOf(baseKey), key.get());
}

SrvResult CQorlixSRVPipe::Reg_DelKeyBase(int conId) {
  // Kept: traces as its sibling without a root key.
  static constexpr char kFct[] = "Reg_DelKey:";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  std::uint32_t baseKey = 0;
  RegistryText key;
  FieldReader fields(*this, conId, kFct);
  fields.Long(baseKey, "<< result = 0x%x baseKey=0x%x");
  fields.Text(key, "<< result = 0x%x DelKey");
  if (fields.Failed()) return fields.Result();

  return FinishDelKey(*this, conId, kFct, RootOf(baseKey), key.get());
}
