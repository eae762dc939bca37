#include "tests/fakes/trace/FakeTrace.h"

#include "trace/TraceShared.h"
#include "trace/TraceWriter.h"
#include "trace/Zqotrc.h"

namespace FakeTrace {
namespace {

constexpr char kMaskName[] = "zqserver_level";

/// Worker threads trace too.
class ProcessLock {
 public:
  ProcessLock() { zqotrc::EnterProcessLock(); }
  ~ProcessLock() { zqotrc::LeaveProcessLock(); }
  ProcessLock(const ProcessLock&) = delete;
  ProcessLock& operator=(const ProcessLock&) = delete;
};

std::vector<Line>& Collected() {
  static auto* const lines = new std::vector<Line>;
  return *lines;
}

bool g_isCollecting = false;

}  // namespace

Machine& TheMachine() {
  static auto* const machine = new Machine;
  return *machine;
}

/// Called where the driver would take a line: nothing but lines goes there.
void CollectLine() {
  if (!g_isCollecting) return;
  const zqotrc::TraceRecord& record = zqotrc::LastRecord();
  const std::string component = record.component;
  Collected().push_back(
      {component.substr(component.find_first_not_of(' ')), record.function, record.text});
}

void Collect(std::uint32_t mask) {
  const ProcessLock lock;
  Collected().clear();
  g_isCollecting = mask != 0;
  SetText("Level", "0xFFFFFFFF");
  SetText(kMaskName, std::to_string(mask));
  SetText("Output", "VXD");
  zqotrc::Initialise(/*security=*/nullptr, kMaskName);
  TheMachine().driver.clear();
}

std::vector<Line> Lines() {
  const ProcessLock lock;
  return Collected();
}

std::vector<std::string> Texts() {
  std::vector<std::string> texts;
  for (const Line& line : Lines()) texts.push_back(line.function + line.text);
  return texts;
}

void SetText(const std::string& name, const std::string& text) {
  TheMachine().parameters[name] = {1, text + '\0'};
}

void Reset() {
  const ProcessLock lock;
  zqotrc::ShutDown();
  Collected().clear();
  g_isCollecting = false;
  TheMachine() = Machine{};
  zqotrc::Initialise(/*security=*/nullptr, /*programMaskName=*/nullptr);
  zqotrc::ShutDown();
  TheMachine() = Machine{};
}

}  // namespace FakeTrace
