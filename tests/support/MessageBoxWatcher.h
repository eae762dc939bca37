#ifndef TESTS_SUPPORT_MESSAGEBOXWATCHER_H_
#define TESTS_SUPPORT_MESSAGEBOXWATCHER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

enum class MessageBoxIcon { kNone, kError, kQuestion, kWarning, kInformation, kUnknown };

/// What a message box shows. Texts are in the system's ANSI code page.
struct MessageBoxSeen {
  std::string caption;
  std::string text;
  MessageBoxIcon icon = MessageBoxIcon::kNone;
  std::vector<int> buttons;  ///< IDOK, IDCANCEL, ... in rising order; those that can be seen
};

/// Finds a message box of one process by its caption, reads it and closes it, as a user would.
///
/// Needs a display: under Wine the program runs with QORLIX_DISPLAY=1 (see docs/testing.md). On
/// Windows the watching program must be elevated where the watched one is.
class MessageBoxWatcher {
 public:
  MessageBoxWatcher(std::uint32_t processId, std::string caption)
      : processId_(processId), caption_(std::move(caption)) {}

  /// Waits until the box is open. \returns nothing if there is none within the time.
  std::optional<MessageBoxSeen> WaitFor(std::uint32_t milliseconds) const;

  /// Waits until the box is open, presses the button and waits until the box is gone.
  ///
  /// \returns false if there is no such box or button, or if the box stays, within the time.
  bool Press(int button, std::uint32_t milliseconds) const;

  bool IsOpen() const { return Find() != nullptr; }

 private:
  void* Find() const;
  void* WaitForWindow(std::uint32_t milliseconds) const;

  std::uint32_t processId_;
  std::string caption_;
};

#endif  // TESTS_SUPPORT_MESSAGEBOXWATCHER_H_
