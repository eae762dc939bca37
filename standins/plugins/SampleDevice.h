#ifndef STANDINS_PLUGINS_SAMPLEDEVICE_H_
#define STANDINS_PLUGINS_SAMPLEDEVICE_H_

#include <cstdint>

/// What installing the sample device leaves on a machine: two keys of 32-bit programs below
/// "SOFTWARE\Vesmark\NORVA" of HKEY_LOCAL_MACHINE,
///
///   LogDevices\DEVICEID  texts "HardwareId", "Language", "InstalledBy"
///   LogNames\DEVICEID    texts "LogDevice" (DEVICEID), "InstalledBy"
///
/// "InstalledBy" is "sampledev"; a key without it is somebody else's and is never touched.
namespace sample_device {

/// Creates both keys, or rewrites them. Either both are there afterwards, or none that was not
/// there before. An absent hardware id or language is written as an empty text.
///
/// \returns 0, 87 (no device id, or none that can name a key), 183 (a key of that name is somebody
///   else's), or a registry code
std::uint32_t Install(const char* deviceId, const char* hardwareId, const char* language);

/// Deletes both keys; one that is missing already is no failure. The logical name goes first,
/// because it points to the logical device.
///
/// \returns 0, 87, 2 (neither key is ours), or a registry code
std::uint32_t Deinstall(const char* deviceId);

}  // namespace sample_device

#endif  // STANDINS_PLUGINS_SAMPLEDEVICE_H_
