#include "platform/MachineSetting.h"

#include <windows.h>

namespace platform {
namespace {

bool Read(const char* name, DWORD type, void* data, DWORD size) {
  return RegGetValueA(HKEY_LOCAL_MACHINE, kMachineSettingKey, name, type, /*pdwType=*/nullptr, data,
                      &size) == ERROR_SUCCESS;
}

}  // namespace

bool ReadMachineText(const char* name, char* text, std::size_t capacity) {
  // A call that finds too little room leaves part of the text behind.
  const bool read = Read(name, RRF_RT_REG_SZ, text, static_cast<DWORD>(capacity));
  if (!read && capacity != 0) text[0] = '\0';
  return read;
}

bool ReadMachineNumber(const char* name, std::uint32_t& value) {
  DWORD number = 0;
  if (!Read(name, RRF_RT_REG_DWORD, &number, sizeof(number))) return false;
  value = number;
  return true;
}

}  // namespace platform
