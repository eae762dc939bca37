#include "doctor/PluginValue.h"

namespace doctor {

PluginValue ParsePluginValue(std::string_view bytes) {
  const std::string_view text = bytes.substr(0, bytes.find('\0'));
  const std::size_t comma = text.find(',');
  PluginValue value;
  value.library = text.substr(0, comma);
  value.hasComma = comma != std::string_view::npos;
  if (value.hasComma) value.function = text.substr(comma + 1);
  return value;
}

}  // namespace doctor
