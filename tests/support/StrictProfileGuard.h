#ifndef TESTS_SUPPORT_STRICTPROFILEGUARD_H_
#define TESTS_SUPPORT_STRICTPROFILEGUARD_H_

#include <string>
#include <vector>

#include "server/StrictProfile.h"
#include "tests/fakes/FakeClientIdentity.h"
#include "tests/fakes/FakeEventLog.h"
#include "tests/fakes/FakeMachineSetting.h"

/// The strict profile for as long as a test lives: off at first, and off again behind it. The
/// client is no administrator unless a test says so, and the event log is empty.
class StrictProfileGuard {
 public:
  StrictProfileGuard() { Forget(); }
  ~StrictProfileGuard() { Forget(); }
  StrictProfileGuard(const StrictProfileGuard&) = delete;
  StrictProfileGuard& operator=(const StrictProfileGuard&) = delete;

  void Set(const std::string& text) {
    fake_machine_setting::SetText("StrictProfile", text);
    strict_profile::Read();
  }

  /// Texts of the events since the last call.
  static std::vector<std::string> Reports() {
    std::vector<std::string> texts;
    for (const fake_event_log::Event& event : fake_event_log::Take()) texts.push_back(event.text);
    return texts;
  }

 private:
  static void Forget() {
    fake_machine_setting::Reset();
    strict_profile::Read();
    fake_client_identity::Reset();
    (void)fake_event_log::Take();
  }
};

#endif  // TESTS_SUPPORT_STRICTPROFILEGUARD_H_
