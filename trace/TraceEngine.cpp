#include "trace/TraceEngine.h"

#include "trace/TraceConfig.h"
#include "trace/TraceOutputs.h"
#include "trace/TraceText.h"

namespace zqotrc {
namespace {

constexpr std::uint32_t kEventLoadFailed = 0xC0001400;
constexpr std::uint32_t kEventExportMissing = 0xC0001401;
constexpr std::uint32_t kEventCallFailed = 0x80001402;

constexpr std::string_view kLibrary = "\\Vesmark\\Automation\\TraceEngine\\bin\\ZqTraceEngineX.dll";
constexpr std::string_view kSettingsFolder = "\\mirel\\meta\\trace\\Settings\\";
constexpr char kSettingsFile[] = "Zqsdd_TraceSettings.xml";
constexpr char kMetaFile[] = "Zqsdd_TraceMetaInfo.xml";
constexpr char kVersion[] = "1.0.0.0";

constexpr std::uint32_t kCommandRefresh = 2;
constexpr wchar_t kTraceWriter[] = L"Zqsdd_TraceWriterFile";

/// A path below the common program files folder.
using CommonPath = char[kParameterCapacity + 64];

/// What an event takes of each text.
using EventText = char[256];

}  // namespace

void EngineRoute::Prepare() {
  if (usable_) return;
  CommonPath path;
  const std::string_view folder = CommonProgramFiles();
  (void)CutText(path).Add(folder).Add(kLibrary);
  // Without the folder the path would name whatever lies on the current drive.
  if (folder.empty() || !LoadEngine(path)) {
    EventText text;
    (void)CutText(text).Add(path);
    ReportTraceEvent(kEventLoadFailed, {text});
    return;
  }

  usable_ = true;
  for (const EngineExport which : kEngineExports) {
    if (HasEngineExport(which)) continue;
    ReportTraceEvent(kEventExportMissing, {NameOfEngineExport(which)});
    usable_ = false;
  }
}

void EngineRoute::Deliver(std::string_view line) {
  if (!usable_) return;
  if (handle_ == 0) Open(line);
  if (handle_ == 0) return;
  if (EngineWrite(handle_, BuildRecord(line)) != 0) {
    ReportFailure(NameOfEngineExport(EngineExport::kWrite), line);
  }
}

void EngineRoute::Refresh() const {
  if (usable_) (void)EngineCommand(kCommandRefresh, kTraceWriter);
}

void EngineRoute::Close() {
  if (handle_ == 0) return;
  (void)EngineClose(handle_);
  handle_ = 0;
}

void EngineRoute::Open(std::string_view line) {
  CommonPath folder;
  (void)CutText(folder).Add(CommonProgramFiles()).Add(kSettingsFolder);
  if (EngineOpen(kMetaFile, kSettingsFile, folder, kVersion, handle_) == 0) return;
  handle_ = 0;
  ReportFailure(NameOfEngineExport(EngineExport::kOpen), line);
}

/// Two fixed bytes, the length in 16 bits, low byte first, and the line without its terminator.
std::string_view EngineRoute::BuildRecord(std::string_view line) {
  CutText record(record_);
  record.Add('\x00').Add('\x47');
  record.Add(static_cast<char>(line.size() & 0xFF)).Add(static_cast<char>(line.size() >> 8));
  return record.Add(line).view();
}

void EngineRoute::ReportFailure(const char* exportName, std::string_view line) {
  if (failureReported_) return;
  failureReported_ = true;
  EventText text;
  (void)CutText(text).Add(line);
  ReportTraceEvent(kEventCallFailed, {exportName, text});
}

}  // namespace zqotrc
