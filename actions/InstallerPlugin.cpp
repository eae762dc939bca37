#include <cstdint>

#include "actions/PluginName.h"
#include "codec/FieldReader.h"
#include "platform/DynamicLibrary.h"
#include "platform/SystemPath.h"
#include "platform/WinTypes.h"
#include "registry/RegistryOperation.h"
#include "server/QorlixSRVPipe.h"
#include "server/StrictProfile.h"
#include "trace/Zqotrc.h"

namespace {

using Installer = std::uint32_t(ENTRY_CDECL*)(char* hardwareId, const char* deviceId,
                                              char* languageExt, std::uint32_t zero);
using Deinstaller = std::uint32_t(ENTRY_CDECL*)(char* hardwareId, const char* deviceId,
                                                char* languageExt, std::uint32_t zero, char* board);

using ShortText = RequestText<platform::kMaxPath>;

// A plug-in may look behind the texts it is given, and finds zeros there.
template <typename... Texts>
void ClearAll(Texts&... texts) {
  (texts.Clear(), ...);
}

// A value as the registry holds it, which may lack its terminator.
struct DeviceValue {
  char text[platform::kMaxPath + 1] = {};
};

std::uint32_t get_reg_device_value(const char* deviceID, const char* valueName, DeviceValue& out) {
  ZQ_TRACE(TRC_PROGRESS, "get_reg_device_value: ", ">> deviceID=%s valueName=%s ", deviceID,
           valueName);
  platform::PathBuffer path = "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID\\";
  const std::uint32_t appended = platform::AppendToPath(path, deviceID);
  if (appended != 0) return appended;
  std::uint32_t size = platform::kMaxPath;
  return RegQueryValueLeavingKeyOpen(path, valueName, out.text, size);
}

// What differs between the two commands until the entry point is there.
struct PluginKind {
  const char* function;
  const char* valueName;
  const char* valueStep;  ///< how a failure to read the value is traced
  bool tracesSystemDirectory;
};

constexpr PluginKind kInstall = {"Install", "Installer", "Read Installer Info", false};
constexpr PluginKind kDeinstall = {"Deinstall", "Deinstaller", "Read Deinstaller Info", true};

// A path that the platform cannot resolve is one that leads elsewhere.
bool LeadsOutOfSystemDirectory(const char* path) {
  platform::PathBuffer directory = {};
  platform::PathBuffer full;
  return !platform::IsSystemDirectory(platform::SystemDirectory(directory)) ||
         !platform::FullPath(path, full) || !platform::LiesBelow(full, directory);
}

bool StrictProfileRefuses(int conId, const char* path) {
  return strict_profile::IsOn() && LeadsOutOfSystemDirectory(path) &&
         strict_profile::Refuses(strict_profile::Threat::PluginPath, conId, path);
}

// A device's plug-in, up to its entry point.
class Plugin {
 public:
  Plugin(const PluginKind& kind, int conId) : kind_(kind), conId_(conId) {}

  // 0, or the code of the step that failed, whose line is traced. That may be 0 as well, when the
  // system says of a failure that there was none; then there is no entry.
  std::uint32_t Load(const char* deviceID) {
    std::uint32_t result = get_reg_device_value(deviceID, "HardwareID", hardwareId_);
    if (result != SRV_OK) return Failed(result, "Read HardwareID");
    result = get_reg_device_value(deviceID, kind_.valueName, value_);
    if (result != SRV_OK) return Failed(result, kind_.valueStep);

    const PluginName name = SplitPluginName(value_.text);
    ZQ_TRACE(TRC_PROGRESS, kind_.function, " Read Param SUCCESS: pDllName=%s pFuncName=%s",
             name.library, name.function);
    // Kept: this is said and nothing more; what confines a plug-in is the directory in front of
    // its name.
    if (!IsPlainFileName(name.library)) {
      ZQ_TRACE(TRC_ERROR, kind_.function, "Filename for Installer %s is invalid. No load possible",
               name.library);
    }

    platform::PathBuffer path = {};
    result = BuildPath(name.library, path);
    if (result != SRV_OK) return result;
    if (StrictProfileRefuses(conId_, path)) return Failed(ERROR_ACCESS_DENIED, "StrictProfile");
    if (!library_.Load(path)) return Failed(platform::LastError(), "LoadLibrary");
    entry_ = library_.Find(name.function);
    if (entry_ != nullptr) return SRV_OK;
    const std::uint32_t error = platform::LastError();
    library_.Free();
    return Failed(error, "GetProcAddress");
  }

  char* HardwareId() { return hardwareId_.text; }
  platform::EntryPoint Entry() const { return entry_; }
  platform::DynamicLibrary& Library() { return library_; }

 private:
  std::uint32_t BuildPath(const char* library, platform::PathBuffer& path) {
    const std::uint32_t length = platform::SystemDirectory(path);
    if (!platform::IsSystemDirectory(length)) return Failed(BUFFER_OVERFLOW, "GetSystemDirectory");
    if (kind_.tracesSystemDirectory) {
      ZQ_TRACE(TRC_PROGRESS, kind_.function, "result = 0x%x GetSystemDirectoryA Dir=%s", length,
               path);
    }
    std::uint32_t result = platform::AppendToPath(path, "\\");
    if (result == 0) result = platform::AppendToPath(path, library);
    return result == 0 ? SRV_OK : Failed(result, "");
  }

  std::uint32_t Failed(std::uint32_t result, const char* step) const {
    ZQ_TRACE(TRC_ERROR, kind_.function, "<< result = 0x%x %s", result, step);
    return result;
  }

  const PluginKind& kind_;
  const int conId_;
  DeviceValue hardwareId_;
  DeviceValue value_;
  platform::DynamicLibrary library_;
  platform::EntryPoint entry_ = nullptr;
};

}  // namespace

SrvResult CQorlixSRVPipe::Install(int conId) {
  static constexpr const char* kFct = kInstall.function;
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Install start");

  ShortText deviceId, languageExt;
  ClearAll(deviceId, languageExt);
  FieldReader fields(*this, conId, kFct);
  fields.Text(deviceId, "<< result = 0x%x DeviceID");
  fields.Text(languageExt, "<< result = 0x%x LanguageExt");
  if (fields.Failed()) return fields.Result();
  ZQ_TRACE(TRC_PROGRESS, kFct, " Read Param SUCCESS: lpszDeviceID=%s lpszLanguageExt=%s",
           deviceId.get(), languageExt.get());
  if (deviceId.get() == nullptr) return ERROR_INVALID_PARAMETER;

  Plugin plugin(kInstall, conId);
  const std::uint32_t loaded = plugin.Load(deviceId.get());
  if (plugin.Entry() == nullptr) return loaded;

  // Kept: called bare. A fault of a plug-in is a fault of the server.
  const auto installer = reinterpret_cast<Installer>(plugin.Entry());
  const std::uint32_t result =
      installer(plugin.HardwareId(), deviceId.get(), languageExt.get(), /*zero=*/0);
  ZQ_TRACE(TRC_RESULT, kFct,
           "<< Invoke pFunc result 0x%x, lpszHardwareID=%s lpszDeviceID=%s lpszLanguageExt=%s",
           result, plugin.HardwareId(), deviceId.get(), languageExt.get());

  plugin.Library().Free();
  (void)BC_PlausibilitaetBL(kNoConnection);
  return result;
}

SrvResult CQorlixSRVPipe::Deinstall(int conId) {
  static constexpr const char* kFct = kDeinstall.function;
  ZQ_TRACE(TRC_ENTER, kFct, ">> Deinstall start");

  ShortText deviceId, languageExt, board;
  ClearAll(deviceId, languageExt, board);
  FieldReader fields(*this, conId, kFct);
  fields.Text(deviceId, "<< pDeviceID result = 0x%x ");
  fields.Text(languageExt, "<< pLanguageExt result = 0x%x ");
  fields.Text(board, "<< pBoard result = 0x%x ");
  if (fields.Failed()) return fields.Result();
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> lpszDeviceID=%s lpszLanguageExt=%s lpszBoard=%s", deviceId.get(),
           languageExt.get(), board.get());
  if (deviceId.get() == nullptr) return ERROR_INVALID_PARAMETER;

  Plugin plugin(kDeinstall, conId);
  const std::uint32_t loaded = plugin.Load(deviceId.get());
  if (plugin.Entry() == nullptr) return loaded;

  // Kept: called bare, as the installer.
  const auto deinstaller = reinterpret_cast<Deinstaller>(plugin.Entry());
  const std::uint32_t result = deinstaller(plugin.HardwareId(), deviceId.get(), languageExt.get(),
                                           /*zero=*/0, board.get());
  ZQ_TRACE(TRC_RESULT, kFct,
           "<< Invoke pFunc result 0x%x, pHardwareID=%s pDeviceID=%s pLanguageExt=%s pBoard=%s",
           result, plugin.HardwareId(), deviceId.get(), languageExt.get(), board.get());

  // Kept: a deinstaller may leave work running in this process, so its library stays loaded.
  (void)plugin.Library().Release();
  return result;
}
