#include "server/StrictProfile.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "platform/AsciiCase.h"
#include "platform/EventLog.h"
#include "platform/MachineSetting.h"
#include "registry/RegistryPolicy.h"
#include "server/ClientIdentity.h"
#include "server/PipeInstance.h"
#include "trace/Zqotrc.h"

namespace strict_profile {
namespace {

constexpr char kFct[] = "StrictProfile: ";

struct Rule {
  const char* text;
  Threat threat;
  bool sparesAdministrators;
};

constexpr Rule kRules[] = {
    {"a change of the plug-in value ", Threat::PluginValue, true},
    {"a deletion below the keys of the devices: ", Threat::DeviceTree, true},
    {"a change of the trace key: ", Threat::TraceKey, true},
    {"a stop request", Threat::Stop, true},
    {"a plug-in from outside the system directory: ", Threat::PluginPath, false},
    {"to serve a pipe without its access list: ", Threat::PipeDescriptor, false},
    {"to serve a pipe whose name is taken already: ", Threat::FirstInstance, false},
};

consteval bool StandAtTheirNumbers() {
  std::size_t number = 0;
  for (const Rule& rule : kRules) {
    if (static_cast<std::size_t>(rule.threat) != number++) return false;
  }
  return true;
}
static_assert(StandAtTheirNumbers(), "a rule is found by the number of its threat");

void Report(const Rule& rule, int conId, const char* object, const char* name) {
  char client[48] = "";
  if (conId != kNoClient) {
    (void)std::snprintf(client, sizeof(client), ", asked for by process %lu",
                        static_cast<unsigned long>(PipeOf(conId).clientProcess));
  }
  // Room for a permitted path and the longest text that a request can carry.
  char text[kPipeBufferSize + 512];
  (void)std::snprintf(text, sizeof(text), "Strict profile %s: %s%s%s%s%s",
                      g_mode == Mode::Enforce ? "refuses" : "would refuse", rule.text, object,
                      name == nullptr ? "" : "\\", name == nullptr ? "" : name, client);
  ReportErrorEvent(kRegistryEventSource, text);
  ZQ_TRACE(TRC_ERROR, kFct, "%s", text);
}

}  // namespace

Mode g_mode = Mode::Off;

void Read() {
  g_mode = Mode::Off;
  char text[16];
  if (!platform::ReadMachineText("StrictProfile", text, sizeof(text))) return;
  if (platform::EqualsIgnoringCase(text, "report")) g_mode = Mode::Report;
  if (platform::EqualsIgnoringCase(text, "enforce")) g_mode = Mode::Enforce;
}

bool Refuses(Threat threat, int conId, const char* object, const char* name) {
  const Rule& rule = kRules[static_cast<std::size_t>(threat)];
  if (rule.sparesAdministrators && conId != kNoClient &&
      client_identity::IsAdministrator(PipeOf(conId).hPipe)) {
    return false;
  }
  Report(rule, conId, object, name);
  return g_mode == Mode::Enforce;
}

bool RefusesPipe(const SECURITY_ATTRIBUTES& attributes) {
  return IsOn() && attributes.lpSecurityDescriptor == nullptr &&
         Refuses(Threat::PipeDescriptor, kNoClient, kPipeName);
}

}  // namespace strict_profile
