#include "platform/MessageBox.h"

#include <windows.h>

void platform::ShowMessageBox(const char* text, const char* caption, BoxStyle style) {
  const UINT type = style == BoxStyle::kError ? MB_OK | MB_ICONERROR : MB_OKCANCEL;
  (void)MessageBoxA(/*hWnd=*/nullptr, text, caption, type);
}
