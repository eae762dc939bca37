#ifndef DOCTOR_PLUGINVALUE_H_
#define DOCTOR_PLUGINVALUE_H_

#include <string>
#include <string_view>

namespace doctor {

/// A value "Installer" or "Deinstaller", taken apart as the server does it.
struct PluginValue {
  std::string library;  ///< what is appended to the system directory
  std::string function;
  bool hasComma = false;
};

/// \param bytes the value's data; what stands behind its first zero byte does not count
PluginValue ParsePluginValue(std::string_view bytes);

}  // namespace doctor

#endif  // DOCTOR_PLUGINVALUE_H_
