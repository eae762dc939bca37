#ifndef TESTS_FAULTS_SESSION_H_
#define TESTS_FAULTS_SESSION_H_

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/fakes/FakeEventLog.h"
#include "tests/fakes/FaultPlan.h"
#include "tests/support/WireHex.h"

/// A server's life from start to stop, always the same: start-up maintenance, clients that ask for
/// everything, clients that go away, traces that are switched on and over, and the end.
namespace fault_session {

enum class How : std::uint8_t {
  Start,         ///< everything before the loop serves anybody
  Ask,           ///< the client sends a request and reads the reply
  AskSlowly,     ///< the same, and the server's writes stay pending for a while
  Leave,         ///< the client goes without a request
  LeaveWithout,  ///< it sends a request and goes while the reply is being written
  Aside,         ///< something happens on the machine
  Stop,          ///< the client ends the server
  End,           ///< everything behind the loop
};

struct Step {
  std::string name;
  How how = How::Ask;
  int conId = 0;
  Bytes request;
  std::function<void()> action;  ///< of Aside
  int restart = -1;              ///< of a fetched result: the step that started the restart
};

/// What a step came to.
struct Outcome {
  bool reached = false;   ///< the server lived long enough
  bool lost = false;      ///< the client was dropped after its request
  bool unserved = false;  ///< the client never came to its turn
  Bytes reply;
  std::vector<fake_event_log::Event> events;
  std::vector<std::string> boxes;
  std::vector<fault_plan::Hit> hits;
  bool operator==(const Outcome&) const = delete;
};

struct Result {
  std::vector<Outcome> outcomes;      ///< one for each step
  std::vector<std::string> leftOver;  ///< what should not be there after the end
  bool stopped = false;               ///< the loop ended because a client said so
  std::map<std::string, fault_plan::Count> counts;
};

const std::vector<Step>& Script();

/// Where it stands in the script: one of the steps above. -1 outside.
int CurrentStep();

Result Run(const fault_plan::Plan& plan);

/// Puts the machine into the state in which every session begins.
void ArrangeWorld();

/// Points the trace of all processes to this output, or switches it off.
void TraceTo(const char* output);

}  // namespace fault_session

#endif  // TESTS_FAULTS_SESSION_H_
