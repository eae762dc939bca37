#ifndef TESTS_FAKES_FAKEMESSAGEBOX_H_
#define TESTS_FAKES_FAKEMESSAGEBOX_H_

#include <string>
#include <vector>

#include "platform/MessageBox.h"

/// Message boxes that close by themselves, behind platform/MessageBox.h.
namespace fake_message_box {

struct Box {
  std::string text;
  std::string caption;
  platform::BoxStyle style;
};

/// The boxes shown since they were last cleared.
std::vector<Box>& Shown();

}  // namespace fake_message_box

#endif  // TESTS_FAKES_FAKEMESSAGEBOX_H_
