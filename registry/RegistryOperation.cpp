#include "registry/RegistryOperation.h"

#include <windows.h>

#include <shlwapi.h>

#include <cstring>

#include "platform/WinHandles.h"
#include "server/SrvResult.h"
#include "trace/Zqotrc.h"

namespace {

std::uint32_t Code(LSTATUS status) { return static_cast<std::uint32_t>(status); }

std::uint32_t OpenKey(const char* path, REGSAM access, UniqueRegKey& key) {
  return Code(RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, /*ulOptions=*/0, access, key.put()));
}

// The policy, for the primitives that change something.
class ApprovedPath {
 public:
  explicit ApprovedPath(const char* path) : permitted_(IsPermittedRegKey(path, canonical_)) {}
  explicit operator bool() const { return permitted_; }
  const char* get() const { return canonical_.text; }

 private:
  CanonicalPath canonical_;
  const bool permitted_;
};

}  // namespace

bool RegKeyExists(const char* path) {
  UniqueRegKey key;
  return OpenKey(path, KEY_READ, key) == ERROR_SUCCESS;
}

std::uint32_t RegDeleteLiteralKey(const char* name) {
  return Code(RegDeleteKeyA(HKEY_LOCAL_MACHINE, name));
}

std::uint32_t RegQueryValueLeavingKeyOpen(const char* path, const char* name, void* buffer,
                                          std::uint32_t& size) {
  UniqueRegKey key;
  const std::uint32_t opened = OpenKey(path, KEY_READ, key);
  if (opened != ERROR_SUCCESS) return opened;
  if (key.get() == nullptr) return SRV_ERR_NO_KEY_HANDLE;

  DWORD bytes = size;
  const std::uint32_t result =
      Code(RegQueryValueExA(key.get(), name, /*lpReserved=*/nullptr, /*lpType=*/nullptr,
                            static_cast<BYTE*>(buffer), &bytes));
  size = bytes;
  // Kept: only an open that fails closes anything.
  (void)key.release();
  return result;
}

bool CanonicalisePath(const char* path, CanonicalPath& canonical) {
  static_assert(CanonicalPath::kCapacity == MAX_PATH);
  if (PathCanonicalizeA(canonical.text, path) == FALSE) return false;
  // On a double-byte code page the result may fill the buffer to the last byte.
  return std::memchr(canonical.text, '\0', sizeof(canonical.text)) != nullptr;
}

std::uint32_t RegCreateKeyBL(const char* path) {
  if (path == nullptr) return ERROR_INVALID_PARAMETER;
  const ApprovedPath approved(path);
  if (!approved) return ERROR_ACCESS_DENIED;

  UniqueRegKey key;
  return Code(RegCreateKeyExA(HKEY_LOCAL_MACHINE, approved.get(), /*Reserved=*/0,
                              /*lpClass=*/nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                              /*lpSecurityAttributes=*/nullptr, key.put(),
                              /*lpdwDisposition=*/nullptr));
}

std::uint32_t RegDelKeyBL(const char* path) {
  static constexpr char kFct[] = "RegDelKeyBL: ";
  if (path == nullptr) return ERROR_INVALID_PARAMETER;
  const ApprovedPath approved(path);
  if (!approved) return ERROR_ACCESS_DENIED;

  UniqueRegKey key;
  std::uint32_t result = OpenKey(approved.get(), KEY_SET_VALUE, key);
  if (result == ERROR_SUCCESS) {
    // Kept: the path names the key that is opened and again the subtree below it, so what goes is
    // path\path. A client that expects the key itself to vanish gets the registry's own code.
    result = Code(RegDeleteTreeA(key.get(), approved.get()));
  }
  key.reset();
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< Reg_DelKey result = 0x%x", result);
  return result;
}

std::uint32_t RegSetValueBL(const char* path, const char* name, const char* text) {
  if (path == nullptr || name == nullptr || text == nullptr) return ERROR_INVALID_PARAMETER;
  const ApprovedPath approved(path);
  if (!approved) return ERROR_ACCESS_DENIED;

  UniqueRegKey key;
  const std::uint32_t result = OpenKey(approved.get(), KEY_WRITE, key);
  if (result != ERROR_SUCCESS) return result;
  return Code(RegSetValueExA(key.get(), name, /*Reserved=*/0, REG_SZ,
                             reinterpret_cast<const BYTE*>(text),
                             static_cast<DWORD>(std::strlen(text) + 1)));
}

std::uint32_t RegGetValueBL(const char* path, const char* name, void* buffer, std::uint32_t& size) {
  if (path == nullptr || name == nullptr || buffer == nullptr || size == 0) {
    return ERROR_INVALID_PARAMETER;
  }
  UniqueRegKey key;
  const std::uint32_t result = OpenKey(path, KEY_READ, key);
  if (result != ERROR_SUCCESS) return result;

  DWORD cbData = size;
  const LSTATUS status = RegGetValueA(key.get(), /*lpSubKey=*/nullptr, name, RRF_RT_ANY,
                                      /*pdwType=*/nullptr, buffer, &cbData);
  size = cbData;
  return Code(status);
}

std::uint32_t RegDelValueBL(const char* path, const char* name) {
  if (path == nullptr || name == nullptr) return ERROR_INVALID_PARAMETER;
  const ApprovedPath approved(path);
  if (!approved) return ERROR_ACCESS_DENIED;

  UniqueRegKey key;
  const std::uint32_t result = OpenKey(approved.get(), KEY_WRITE, key);
  if (result != ERROR_SUCCESS) return result;
  return Code(RegDeleteValueA(key.get(), name));
}

std::uint32_t RegEnumKeyBL(const char* path, std::int32_t index, char* name,
                           std::uint32_t& length) {
  if (path == nullptr || name == nullptr || index < 0 || length == 0) {
    return ERROR_INVALID_PARAMETER;
  }
  UniqueRegKey key;
  const std::uint32_t result = OpenKey(path, KEY_ALL_ACCESS, key);
  if (result != ERROR_SUCCESS) return result;

  DWORD cchName = length;
  const LSTATUS status = RegEnumKeyExA(key.get(), static_cast<DWORD>(index), name, &cchName,
                                       /*lpReserved=*/nullptr, /*lpClass=*/nullptr,
                                       /*lpcchClass=*/nullptr, /*lpftLastWriteTime=*/nullptr);
  length = cchName;
  return Code(status);
}

std::uint32_t RegEnumValueBL(const char* path, std::int32_t index, char* name,
                             std::uint32_t& nameLength, void* data, std::uint32_t& dataLength) {
  if (path == nullptr || name == nullptr || data == nullptr || index < 0 || nameLength == 0 ||
      dataLength == 0) {
    return ERROR_INVALID_PARAMETER;
  }
  UniqueRegKey key;
  const std::uint32_t result = OpenKey(path, KEY_QUERY_VALUE, key);
  if (result != ERROR_SUCCESS) return result;

  DWORD cchName = nameLength;
  DWORD cbData = dataLength;
  const LSTATUS status =
      RegEnumValueA(key.get(), static_cast<DWORD>(index), name, &cchName,
                    /*lpReserved=*/nullptr, /*lpType=*/nullptr, static_cast<BYTE*>(data), &cbData);
  nameLength = cchName;
  dataLength = cbData;
  return Code(status);
}
