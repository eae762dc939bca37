#ifndef BOARD_LOGDEVICELIST_H_
#define BOARD_LOGDEVICELIST_H_

#include <string_view>

/// Whether a logical name's devices are those of an external USB programmer, several in one value.
inline bool IsUsbProgrammer(std::string_view devices) {
  return devices.find("KWTUSB") != std::string_view::npos;
}

/// Takes the names off a list that commas separate, one by one; empty ones are skipped.
///
/// The text is split in place: the comma behind a name that was taken becomes its terminator, so
/// from the first name on the text itself reads as that name alone.
class LogDeviceList {
 public:
  explicit LogDeviceList(char* text) : next_(text) {}

  /// \returns the next name, or null behind the last.
  char* Next() {
    while (*next_ == ',') ++next_;
    if (*next_ == '\0') return nullptr;
    char* const name = next_;
    while (*next_ != ',' && *next_ != '\0') ++next_;
    if (*next_ == ',') *next_++ = '\0';
    return name;
  }

 private:
  char* next_;
};

#endif  // BOARD_LOGDEVICELIST_H_
