#include "tests/fakes/FakeMessageBox.h"

#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/NotOurs.h"

std::vector<fake_message_box::Box>& fake_message_box::Shown() {
  static std::vector<Box> shown;
  return shown;
}

void platform::ShowMessageBox(const char* text, const char* caption, BoxStyle style) {
  const NotOurs notOurs;
  if (fault_plan::Fails("platform::ShowMessageBox")) return;
  fake_message_box::Shown().push_back({text, caption, style});
}
