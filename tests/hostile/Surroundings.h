#ifndef TESTS_HOSTILE_SURROUNDINGS_H_
#define TESTS_HOSTILE_SURROUNDINGS_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/PluginTest.h"
#include "tests/e2e/RestartTest.h"
#include "tests/e2e/StandIns.h"
#include "tests/hostile/ScratchKey.h"
#include "tests/support/RegistryKeyScratch.h"

namespace hostile {

/// Events that clients have made for their restarts.
inline constexpr std::uint32_t kEvents = 4;
std::string EventName(std::uint32_t number);

/// What a server finds on a machine: all the vendor's libraries as stand-ins, two boards, a device
/// with a plug-in, the events of clients.
class Surroundings {
 public:
  /// \param faults what goes wrong in the libraries, again and again: lengths that lie, results,
  /// exceptions; the plug-in alone never raises, because that would end the server
  explicit Surroundings(bool faults);

  const e2e::restart::NamedEvent& Event(std::uint32_t number) const { return *events_[number]; }

 private:
  // The machine's own keys, out of the way.
  RegistryKeyScratch trace_{kTraceKey};
  RegistryKeyScratch defDevices_{"SOFTWARE\\Vesmark\\NORVA\\DefDevices"};
  RegistryKeyScratch logDevices_{"SOFTWARE\\Vesmark\\NORVA\\LogDevices"};
  RegistryKeyScratch logNames_{"SOFTWARE\\Vesmark\\NORVA\\LogNames"};
  e2e::StandIns libraries_;
  e2e::BoardFiles boards_;
  e2e::Devices devices_;
  std::vector<std::unique_ptr<e2e::restart::NamedEvent>> events_;
};

}  // namespace hostile

#endif  // TESTS_HOSTILE_SURROUNDINGS_H_
