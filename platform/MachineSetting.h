#ifndef PLATFORM_MACHINESETTING_H_
#define PLATFORM_MACHINESETTING_H_

#include <cstddef>
#include <cstdint>

/// Settings of the server that only an administrator may change: values of a key outside the tree
/// that clients can write. All are optional, and are read when the server starts.
namespace platform {

/// Below HKEY_LOCAL_MACHINE.
inline constexpr char kMachineSettingKey[] = "SOFTWARE\\Vesmark\\Shared Tools\\MIREL";

/// Reads a REG_SZ value.
/// \param text receives it, terminated; empty when there is none
/// \returns false when there is none, it has another type, or it does not fit
bool ReadMachineText(const char* name, char* text, std::size_t capacity);

/// Reads a REG_DWORD value. \returns false, with `value` as it was, when there is none or it has
/// another type.
bool ReadMachineNumber(const char* name, std::uint32_t& value);

}  // namespace platform

#endif  // PLATFORM_MACHINESETTING_H_
