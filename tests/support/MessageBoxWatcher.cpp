#include "tests/support/MessageBoxWatcher.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr char kDialogClass[] = "#32770";
constexpr UINT kAnswerTime = 2000;  // milliseconds; a window that hangs is not waited for
constexpr DWORD kPause = 10;        // milliseconds between two looks
constexpr int kButtons[] = {IDOK,  IDCANCEL, IDABORT, IDRETRY,    IDIGNORE,
                            IDYES, IDNO,     IDHELP,  IDTRYAGAIN, IDCONTINUE};

bool HasClass(HWND window, const char* name) {
  std::array<char, 64> found{};
  return GetClassNameA(window, found.data(), found.size()) != 0 &&
         lstrcmpiA(found.data(), name) == 0;
}

std::string TextOf(HWND window) {
  std::array<char, 16384> text{};
  DWORD_PTR length = 0;
  (void)SendMessageTimeoutA(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()),
                            SMTO_ABORTIFHUNG, kAnswerTime, &length);
  return {text.data(), std::min<std::size_t>(length, text.size() - 1)};
}

// A message box has two static controls: the icon, and the text. Their numbers differ between
// systems, their kinds do not.
struct Statics {
  HWND icon = nullptr;
  HWND text = nullptr;
};

BOOL CALLBACK TakeStatic(HWND child, LPARAM raw) {
  auto& statics = *reinterpret_cast<Statics*>(raw);
  if (!HasClass(child, "Static")) return TRUE;
  const bool isIcon = (GetWindowLongA(child, GWL_STYLE) & SS_TYPEMASK) == SS_ICON;
  (isIcon ? statics.icon : statics.text) = child;
  return TRUE;
}

constexpr int kSide = 32;  // of an icon, pixels
using Pixels = std::array<std::uint32_t, kSide * kSide>;

// A picture in memory, and what has been drawn into it.
class Canvas {
 public:
  Canvas() {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(info.bmiHeader), kSide, kSide, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    context_ = CreateCompatibleDC(nullptr);
    bitmap_ = CreateDIBSection(context_, &info, DIB_RGB_COLORS, &bits_, nullptr, 0);
    before_ = SelectObject(context_, bitmap_);
  }
  ~Canvas() {
    (void)SelectObject(context_, before_);
    (void)DeleteObject(bitmap_);
    (void)DeleteDC(context_);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  HDC context() const { return context_; }
  Pixels Colours() const {
    Pixels pixels{};
    (void)GdiFlush();
    if (bits_ != nullptr) std::memcpy(pixels.data(), bits_, sizeof(pixels));
    for (std::uint32_t& pixel : pixels) pixel &= 0xFFFFFF;
    return pixels;
  }

 private:
  HDC context_ = nullptr;
  HBITMAP bitmap_ = nullptr;
  HGDIOBJ before_ = nullptr;
  void* bits_ = nullptr;
};

// The icon on a ground of one colour, 0xRRGGBB.
Pixels PixelsOf(HICON icon, std::uint32_t ground) {
  const Canvas canvas;
  const RECT all{0, 0, kSide, kSide};
  const HBRUSH brush =
      CreateSolidBrush(RGB((ground >> 16) & 0xFF, (ground >> 8) & 0xFF, ground & 0xFF));
  (void)FillRect(canvas.context(), &all, brush);
  (void)DeleteObject(brush);
  (void)DrawIconEx(canvas.context(), 0, 0, icon, kSide, kSide, 0, nullptr, DI_NORMAL);
  return canvas.Colours();
}

// What is on the screen where the control is: another process's icon is no handle of ours.
Pixels PixelsOnScreen(HWND control) {
  const Canvas canvas;
  RECT place{};
  (void)GetWindowRect(control, &place);
  const HDC screen = GetDC(nullptr);
  (void)BitBlt(canvas.context(), 0, 0, kSide, kSide, screen, place.left, place.top, SRCCOPY);
  (void)ReleaseDC(nullptr, screen);
  return canvas.Colours();
}

constexpr struct {
  WORD resource;
  MessageBoxIcon meaning;
} kIcons[] = {{32513, MessageBoxIcon::kError},
              {32514, MessageBoxIcon::kQuestion},
              {32515, MessageBoxIcon::kWarning},
              {32516, MessageBoxIcon::kInformation}};

// Icons are told apart by their look, so that a box which something covers, or which is not drawn
// yet, has an unknown one. The first pixel is ground in all of them.
MessageBoxIcon IconOf(HWND control) {
  DWORD_PTR handle = 0;
  if (control == nullptr || !IsWindowVisible(control) ||
      (SendMessageTimeoutA(control, STM_GETICON, 0, 0, SMTO_ABORTIFHUNG, kAnswerTime, &handle) &&
       handle == 0)) {
    return MessageBoxIcon::kNone;
  }
  const Pixels shown = PixelsOnScreen(control);
  for (const auto& icon : kIcons) {
    if (PixelsOf(LoadIconA(nullptr, MAKEINTRESOURCEA(icon.resource)), shown[0]) == shown) {
      return icon.meaning;
    }
  }
  return MessageBoxIcon::kUnknown;
}

struct Search {
  DWORD processId;
  const std::string& caption;
  HWND found = nullptr;
};

BOOL CALLBACK IsTheOne(HWND window, LPARAM raw) {
  auto& search = *reinterpret_cast<Search*>(raw);
  DWORD processId = 0;
  (void)GetWindowThreadProcessId(window, &processId);
  if (processId != search.processId || !IsWindowVisible(window) ||
      !HasClass(window, kDialogClass) || TextOf(window) != search.caption) {
    return TRUE;
  }
  search.found = window;
  return FALSE;
}

bool HasButton(HWND box, int button) {
  const HWND control = GetDlgItem(box, button);
  return control != nullptr && HasClass(control, "Button") && IsWindowVisible(control);
}

bool IsOver(DWORD begin, std::uint32_t milliseconds) {
  return GetTickCount() - begin >= milliseconds;
}

}  // namespace

void* MessageBoxWatcher::Find() const {
  Search search{processId_, caption_};
  (void)EnumWindows(IsTheOne, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

void* MessageBoxWatcher::WaitForWindow(std::uint32_t milliseconds) const {
  const DWORD begin = GetTickCount();
  for (;;) {
    void* const found = Find();
    if (found != nullptr || IsOver(begin, milliseconds)) return found;
    Sleep(kPause);
  }
}

std::optional<MessageBoxSeen> MessageBoxWatcher::WaitFor(std::uint32_t milliseconds) const {
  const DWORD begin = GetTickCount();
  const auto box = static_cast<HWND>(WaitForWindow(milliseconds));
  if (box == nullptr) return std::nullopt;
  Statics statics;
  (void)EnumChildWindows(box, TakeStatic, reinterpret_cast<LPARAM>(&statics));
  MessageBoxSeen seen;
  seen.caption = TextOf(box);
  if (statics.text != nullptr) seen.text = TextOf(statics.text);
  do {
    seen.icon = IconOf(statics.icon);
    if (seen.icon != MessageBoxIcon::kUnknown) break;
    Sleep(kPause);
  } while (!IsOver(begin, std::min<std::uint32_t>(milliseconds, kAnswerTime)));
  std::copy_if(std::begin(kButtons), std::end(kButtons), std::back_inserter(seen.buttons),
               [box](int button) { return HasButton(box, button); });
  return seen;
}

bool MessageBoxWatcher::Press(int button, std::uint32_t milliseconds) const {
  const DWORD begin = GetTickCount();
  const auto box = static_cast<HWND>(WaitForWindow(milliseconds));
  if (box == nullptr || !HasButton(box, button)) return false;
  // What a press tells the dialog. A click at the button itself is lost while its window is
  // inactive.
  if (!PostMessageA(box, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED),
                    reinterpret_cast<LPARAM>(GetDlgItem(box, button)))) {
    return false;
  }
  while (IsWindow(box)) {
    if (IsOver(begin, milliseconds)) return false;
    Sleep(kPause);
  }
  return true;
}
