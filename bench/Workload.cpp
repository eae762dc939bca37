#include "bench/Workload.h"

#include <windows.h>

#include <cstring>

#include "bench/BenchRegistry.h"
#include "bench/Support.h"
#include "server/CommandCode.h"

namespace bench {
namespace {

constexpr std::size_t kLargestRequest = 8192;

template <typename T>
void AddValue(Bytes& bytes, T value) {
  const std::size_t end = bytes.size();
  bytes.resize(end + sizeof(T));
  std::memcpy(&bytes[end], &value, sizeof(T));
}

void AddText(Bytes& bytes, const char* text) {
  const std::size_t length = std::strlen(text);
  AddValue(bytes, static_cast<std::uint32_t>(length));
  bytes.insert(bytes.end(), text, text + length);
}

Bytes Request(CommandCode code) {
  Bytes bytes;
  AddValue(bytes, static_cast<std::uint16_t>(code));
  return bytes;
}

Bytes Success() {
  Bytes bytes;
  AddValue(bytes, REPLY_MARK);
  AddValue(bytes, std::uint32_t{0});
  return bytes;
}

void AddTextAndLength(Bytes& bytes, const char* text, std::size_t length) {
  AddText(bytes, text);
  AddValue(bytes, static_cast<std::uint32_t>(length));
}

Bytes TextReply(const char* text) {
  Bytes bytes = Success();
  AddTextAndLength(bytes, text, std::strlen(text));
  return bytes;
}

HKEY MakeKey(HKEY parent, const char* path) {
  HKEY key = nullptr;
  const LSTATUS status = RegCreateKeyExA(parent, path, /*Reserved=*/0, /*lpClass=*/nullptr,
                                         REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                                         /*lpSecurityAttributes=*/nullptr, &key,
                                         /*lpdwDisposition=*/nullptr);
  if (status != ERROR_SUCCESS) Die("the key %s cannot be created: %ld", path, status);
  return key;
}

}  // namespace

Workload NoOperation() { return {"NoOperation", Request(CommandCode::NoOperation), Success()}; }

Workload LargeRequest() {
  Bytes request = Request(CommandCode::NoOperation);
  request.resize(kLargestRequest, 0x20);
  return {"8192-byte request", request, Success()};
}

Workload GetValue() {
  Bytes request = Request(CommandCode::Reg_GetValue);
  AddText(request, kKeyPath);
  AddText(request, kValueName);
  return {"Reg_GetValue", request, TextReply(kValueText)};
}

Workload SetValue() {
  Bytes request = Request(CommandCode::Reg_SetValue);
  AddText(request, kKeyPath);
  AddText(request, kWrittenName);
  AddText(request, kValueText);
  return {"Reg_SetValue", request, Success()};
}

Workload DelValue() {
  Bytes request = Request(CommandCode::Reg_DelValue);
  AddText(request, kKeyPath);
  AddText(request, kWrittenName);
  return {"Reg_DelValue", request, Success()};
}

Workload EnumKey() {
  Bytes request = Request(CommandCode::Reg_EnumKey);
  AddText(request, kKeyPath);
  AddValue(request, std::uint32_t{0});
  return {"Reg_EnumKey", request, TextReply(kSubkeyName)};
}

Workload EnumValue() {
  Bytes request = Request(CommandCode::Reg_EnumValue);
  AddText(request, kKeyPath);
  AddValue(request, std::uint32_t{0});
  Bytes reply = Success();
  AddTextAndLength(reply, kValueName, sizeof(kValueName) - 1);
  AddTextAndLength(reply, kValueText, sizeof(kValueText));  // as stored, with its terminator
  return {"Reg_EnumValue", request, reply};
}

Workload CreateKey() {
  Bytes request = Request(CommandCode::Reg_CreateKey);
  AddText(request, kNestedKeyPath);
  return {"Reg_CreateKey", request, Success()};
}

Workload DelKey() {
  Bytes request = Request(CommandCode::Reg_DelKey);
  AddText(request, kKeyPath);
  return {"Reg_DelKey", request, Success()};
}

Bytes StopRequest() {
  Bytes request = Request(CommandCode::StopServer);
  AddValue(request, kStopConfirmation);
  return request;
}

RegistryFixture::RegistryFixture() {
  const HKEY key = MakeKey(HKEY_LOCAL_MACHINE, kKeyPath);
  const LSTATUS status = RegSetValueExA(key, kValueName, /*Reserved=*/0, REG_SZ,
                                        reinterpret_cast<const BYTE*>(kValueText),
                                        static_cast<DWORD>(sizeof(kValueText)));
  if (status != ERROR_SUCCESS) Die("the value %s cannot be written: %ld", kValueName, status);
  (void)RegCloseKey(MakeKey(key, kSubkeyName));
  (void)RegCloseKey(key);
}

RegistryFixture::~RegistryFixture() { (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, kKeyPath); }

}  // namespace bench
