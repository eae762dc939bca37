#ifndef PLATFORM_MESSAGEBOX_H_
#define PLATFORM_MESSAGEBOX_H_

namespace platform {

enum class BoxStyle {
  kError,     ///< the error icon and OK
  kOkCancel,  ///< no icon, OK and Cancel
};

/// Shows a message box without an owner on the process's desktop and waits until it is closed,
/// however that is done.
void ShowMessageBox(const char* text, const char* caption, BoxStyle style);

}  // namespace platform

#endif  // PLATFORM_MESSAGEBOX_H_
