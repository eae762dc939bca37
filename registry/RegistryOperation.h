#ifndef REGISTRY_REGISTRYOPERATION_H_
#define REGISTRY_REGISTRYOPERATION_H_

#include <cstdint>

#include "registry/RegistryPolicy.h"

/// The registry primitives: the only road of the server to HKEY_LOCAL_MACHINE on behalf of clients.
///
/// Key paths are relative to HKEY_LOCAL_MACHINE, ANSI, without a leading backslash. All results are
/// Windows error codes: 0; 87 for a missing (null) argument; 5 for a path outside the permitted
/// tree (changes only; reading is not confined); else the registry's own code. An empty text is not
/// missing. Every call opens and closes its own key.

/// Creates or opens a key, missing parents included.
std::uint32_t RegCreateKeyBL(const char* path);

/// Deletes the tree path\path.
///
/// Kept: the path names the key that is opened and again the subtree below it, so the key itself
/// stays, and where nothing is nested the answer is the registry's own code.
std::uint32_t RegDelKeyBL(const char* path);

/// Writes a REG_SZ value, terminator included. The key must exist.
std::uint32_t RegSetValueBL(const char* path, const char* name, const char* text);

/// Reads a value of any type; text types come with their terminator.
/// \param size bytes of `buffer` on entry (0 is an error, 87), bytes stored on return; the bytes
///   that are needed with 234
std::uint32_t RegGetValueBL(const char* path, const char* name, void* buffer, std::uint32_t& size);

std::uint32_t RegDelValueBL(const char* path, const char* name);

/// Name of the subkey at `index`; 259 past the last.
///
/// Kept: asks for all access, so it fails with 5 on keys that the server may read but not change.
/// \param length bytes of `name` on entry, length without terminator on return
std::uint32_t RegEnumKeyBL(const char* path, std::int32_t index, char* name, std::uint32_t& length);

/// Name and data of the value at `index`; 259 past the last.
std::uint32_t RegEnumValueBL(const char* path, std::int32_t index, char* name,
                             std::uint32_t& nameLength, void* data, std::uint32_t& dataLength);

/// Whether a key exists and can be read.
bool RegKeyExists(const char* path);

/// Deletes a key without subkeys directly below HKEY_LOCAL_MACHINE, by its literal name and past
/// the policy: for names that the server itself holds, never for a client's.
std::uint32_t RegDeleteLiteralKey(const char* name);

/// Reads a value of any type as it is stored, without a terminator of its own.
///
/// Kept: the key stays open once it was opened, for the life of the process.
/// \param size bytes of `buffer` on entry, bytes stored on return
/// \returns the registry's code, or SRV_ERR_NO_KEY_HANDLE when the key opened without a handle
std::uint32_t RegQueryValueLeavingKeyOpen(const char* path, const char* name, void* buffer,
                                          std::uint32_t& size);

/// The platform's path canonicaliser. \returns false for a path that it does not take.
bool CanonicalisePath(const char* path, CanonicalPath& canonical);

#endif  // REGISTRY_REGISTRYOPERATION_H_
