#include "bench/RegistryWork.h"

#include <windows.h>

#include <cstdlib>

namespace bench {
namespace {

void MustSucceed(LSTATUS status) {
  if (status != ERROR_SUCCESS) std::abort();
}

HKEY OpenKey(REGSAM access) {
  HKEY key = nullptr;
  MustSucceed(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kKeyPath, /*ulOptions=*/0, access, &key));
  return key;
}

void GetValue(RegistryAnswer& answer) {
  const HKEY key = OpenKey(KEY_READ);
  DWORD size = kAnswerRoom;
  MustSucceed(RegGetValueA(key, /*lpSubKey=*/nullptr, kValueName, RRF_RT_ANY, /*pdwType=*/nullptr,
                           answer.text[0], &size));
  (void)RegCloseKey(key);
  answer.length[0] = size - 1;
  answer.count = 1;
}

void SetValue(RegistryAnswer& answer) {
  const HKEY key = OpenKey(KEY_WRITE);
  MustSucceed(RegSetValueExA(key, kWrittenName, /*Reserved=*/0, REG_SZ,
                             reinterpret_cast<const BYTE*>(kValueText),
                             static_cast<DWORD>(sizeof(kValueText))));
  (void)RegCloseKey(key);
  answer.count = 0;
}

void DelValue(RegistryAnswer& answer) {
  const HKEY key = OpenKey(KEY_WRITE);
  MustSucceed(RegDeleteValueA(key, kWrittenName));
  (void)RegCloseKey(key);
  answer.count = 0;
}

void EnumKey(RegistryAnswer& answer) {
  const HKEY key = OpenKey(KEY_ALL_ACCESS);
  DWORD length = kAnswerRoom;
  MustSucceed(RegEnumKeyExA(key, /*dwIndex=*/0, answer.text[0], &length, /*lpReserved=*/nullptr,
                            /*lpClass=*/nullptr, /*lpcchClass=*/nullptr,
                            /*lpftLastWriteTime=*/nullptr));
  (void)RegCloseKey(key);
  answer.length[0] = length;
  answer.count = 1;
}

void EnumValue(RegistryAnswer& answer) {
  const HKEY key = OpenKey(KEY_QUERY_VALUE);
  DWORD nameLength = kAnswerRoom;
  DWORD dataLength = kAnswerRoom;
  MustSucceed(RegEnumValueA(key, /*dwIndex=*/0, answer.text[0], &nameLength,
                            /*lpReserved=*/nullptr, /*lpType=*/nullptr,
                            reinterpret_cast<BYTE*>(answer.text[1]), &dataLength));
  (void)RegCloseKey(key);
  answer.length[0] = nameLength;
  answer.length[1] = dataLength;
  answer.count = 2;
}

void CreateKey(RegistryAnswer& answer) {
  HKEY key = nullptr;
  MustSucceed(RegCreateKeyExA(HKEY_LOCAL_MACHINE, kNestedKeyPath, /*Reserved=*/0,
                              /*lpClass=*/nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                              /*lpSecurityAttributes=*/nullptr, &key,
                              /*lpdwDisposition=*/nullptr));
  (void)RegCloseKey(key);
  answer.count = 0;
}

// The path names the key that is opened and again the tree below it, as in the product.
void DelKey(RegistryAnswer& answer) {
  const HKEY key = OpenKey(KEY_SET_VALUE);
  MustSucceed(RegDeleteTreeA(key, kKeyPath));
  (void)RegCloseKey(key);
  answer.count = 0;
}

}  // namespace

RegistryWork FindRegistryWork(CommandCode code) {
  switch (code) {
    case CommandCode::Reg_GetValue:
      return GetValue;
    case CommandCode::Reg_SetValue:
      return SetValue;
    case CommandCode::Reg_DelValue:
      return DelValue;
    case CommandCode::Reg_EnumKey:
      return EnumKey;
    case CommandCode::Reg_EnumValue:
      return EnumValue;
    case CommandCode::Reg_CreateKey:
      return CreateKey;
    case CommandCode::Reg_DelKey:
      return DelKey;
    default:
      return nullptr;
  }
}

}  // namespace bench
