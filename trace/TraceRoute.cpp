#include "trace/TraceRoute.h"

#include "trace/TraceEngine.h"
#include "trace/TraceOutputs.h"
#include "trace/TraceRing.h"
#include "trace/TraceRotation.h"
#include "trace/TraceShared.h"
#include "trace/TraceText.h"

namespace zqotrc {
namespace {

constexpr char kRingName[] = "Global\\ZqSDD_Trace";
constexpr std::uint32_t kErrorNotSupported = 50;

constinit FilePair g_files;
constinit EngineRoute g_engine;
constinit Ring g_ring;  // header null: detached
constinit Section g_ringSection = nullptr;
/// Room for a line with whatever the output puts behind it.
constinit char g_outgoing[kLineBufferSize + 2] = {};

/// An internal error: past gate, filters and record, straight to the output.
void DeliverError(const TraceConfig& config, std::string_view text) {
  char line[kLineBufferSize];
  Deliver(config, CutText(line).Add("E ").Add(text).view());
}

void PrepareDriver(const TraceConfig& config) {
  const std::uint32_t error = OpenDriver();
  if (error == ERROR_SUCCESS) return;
  DeliverError(config, error == kErrorNotSupported
                           ? "Unable to open VxD, device does not support DeviceIOCTL"
                           : "Unable to open VxD, got error code !");
}

std::uint32_t SizeOfExistingRing(Section section) {
  void* const header = MapSection(section, kRingOverhead);
  if (header == nullptr) return 0;
  const std::uint32_t size = AnnouncedRingSize(header);
  UnmapSection(header);
  return size;
}

/// \returns a detached ring if the section cannot be used as one.
Ring MapRing(const OpenedSection& opened, std::uint32_t configuredSize) {
  const std::uint32_t size = opened.existed ? SizeOfExistingRing(opened.section) : configuredSize;
  void* const view = size != 0 ? MapSection(opened.section, size + kRingOverhead) : nullptr;
  if (view == nullptr) return {};

  const Ring ring = RingAt(view, size);
  if (!opened.existed) {
    BeginRing(ring);
  } else if (!JoinRing(ring)) {
    UnmapSection(view);
    return {};
  }
  return ring;
}

/// A ring that is attached stays so, whatever size is configured meanwhile.
void AttachRing(std::uint32_t configuredSize, SECURITY_ATTRIBUTES* security) {
  if (g_ring.header != nullptr) return;
  const OpenedSection opened = OpenSection(kRingName, security, configuredSize + kRingOverhead);
  if (opened.section == nullptr) return;

  g_ring = MapRing(opened, configuredSize);
  g_ringSection = opened.section;
  if (g_ring.header == nullptr) CloseSection(opened.section);
}

void DetachRing() {
  if (g_ring.header == nullptr) return;
  LeaveRing(g_ring);
  UnmapSection(g_ring.header);
  CloseSection(g_ringSection);
  g_ring = {};
}

}  // namespace

void PrepareOutput(const TraceConfig& config, SECURITY_ATTRIBUTES* security) {
  switch (config.output) {
    case TraceOutput::kDriver:
      PrepareDriver(config);
      break;
    case TraceOutput::kFile:
      g_files.Choose(config.filePrefix);
      break;
    case TraceOutput::kRing:
      AttachRing(config.ringSize, security);
      break;
    case TraceOutput::kEngine:
      g_engine.Prepare();
      break;
    case TraceOutput::kCom1:
    case TraceOutput::kCom2:
    case TraceOutput::kDebugger:
      break;
    case TraceOutput::kPipe:
      DeliverError(config,
                   "Fehler im KALIX-Tracesystem, bitte wenden Sie sich an den Hersteller !");
      break;
  }
}

void Deliver(const TraceConfig& config, std::string_view line) {
  switch (config.output) {
    case TraceOutput::kDriver:
      SendToDriver({line.data(), line.size() + 1});
      break;
    case TraceOutput::kFile:
      g_files.Append(config.filePrefix, config.fileLimit, line);
      break;
    case TraceOutput::kRing:
      if (g_ring.header == nullptr) break;
      StoreInRing(g_ring, CutText(g_outgoing).Add(line).Add("\r\n").view());
      break;
    case TraceOutput::kDebugger:
      (void)CutText(g_outgoing).Add(line).Add('\n');
      SendToDebugger(g_outgoing);
      break;
    case TraceOutput::kEngine:
      g_engine.Deliver(line);
      break;
    case TraceOutput::kCom1:
    case TraceOutput::kCom2:
    case TraceOutput::kPipe:
      break;
  }
}

void RefreshOutput(const TraceConfig& config) {
  if (config.output == TraceOutput::kEngine) g_engine.Refresh();
}

void ReleaseOutputs() {
  DetachRing();
  g_engine.Close();
  CloseDriver();
}

}  // namespace zqotrc
