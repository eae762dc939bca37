#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "trace/TraceOutputs.h"

namespace FakeTrace {
void CollectLine();
}  // namespace FakeTrace

namespace zqotrc {

using FakeTrace::TheMachine;

namespace {

/// Later at every look, so that no two files are equally old by accident.
std::uint64_t NextTick() {
  static std::uint64_t ticks = 1000;
  return ++ticks;
}

using fault_plan::CodeFor;
using fault_plan::Fails;

const std::string& NameOf(void* file) { return *static_cast<std::string*>(file); }

}  // namespace

std::optional<std::uint64_t> AppendFile::Open(const char* name) {
  Close();
  TheMachine().fileSteps.push_back(std::string("open ") + name);
  if (fault_plan::Fails("zqotrc::AppendFile::Open", name)) return std::nullopt;
  if (TheMachine().unopenable.count(name) != 0) return std::nullopt;
  if (TheMachine().files.count(name) == 0) TheMachine().files[name].written = NextTick();
  ++TheMachine().openFiles;
  file_ = new std::string(name);
  return Size();
}

std::optional<std::uint64_t> AppendFile::Size() const {
  if (Fails("zqotrc::AppendFile::Size")) return std::nullopt;
  if (file_ == nullptr || TheMachine().unmeasurable.count(NameOf(file_)) != 0) return std::nullopt;
  return TheMachine().files.at(NameOf(file_)).content.size();
}

void AppendFile::Append(std::string_view bytes) {
  if (Fails("zqotrc::AppendFile::Append")) return;
  FakeTrace::File& file = TheMachine().files.at(NameOf(file_));
  file.content += bytes;
  file.written = NextTick();
  TheMachine().fileSteps.emplace_back("append");
}

void AppendFile::Close() {
  if (file_ == nullptr) return;
  TheMachine().fileSteps.emplace_back("close");
  --TheMachine().openFiles;
  delete static_cast<std::string*>(file_);
  file_ = nullptr;
}

void RemoveFile(const char* name) {
  TheMachine().fileSteps.push_back(std::string("remove ") + name);
  if (Fails("zqotrc::RemoveFile")) return;
  TheMachine().files.erase(name);
}

std::optional<std::uint64_t> ModificationTime(const char* name) {
  const auto found = TheMachine().files.find(name);
  if (Fails("zqotrc::ModificationTime")) return std::nullopt;
  if (found == TheMachine().files.end()) return std::nullopt;
  return found->second.written;
}

void SendToDebugger(const char* text) {
  if (!Fails("zqotrc::SendToDebugger")) TheMachine().debugger.emplace_back(text);
}

std::uint32_t OpenDriver() {
  if (const std::uint32_t code = CodeFor("zqotrc::OpenDriver")) return code;
  TheMachine().driverOpen = TheMachine().driverError == 0;
  return TheMachine().driverError;
}

void SendToDriver(std::string_view bytes) {
  if (Fails("zqotrc::SendToDriver")) return;
  if (!TheMachine().driverOpen) {
    TheMachine().lostToDriver.emplace_back(bytes);
    return;
  }
  TheMachine().driver.emplace_back(bytes);
  FakeTrace::CollectLine();
}

void CloseDriver() { TheMachine().driverOpen = false; }

std::string_view CommonProgramFiles() {
  if (Fails("zqotrc::CommonProgramFiles")) return "";
  return TheMachine().commonProgramFiles;
}

bool LoadEngine(const char* path) {
  TheMachine().engineSteps.push_back(std::string("load ") + path);
  return !Fails("zqotrc::LoadEngine") && TheMachine().engineLoads;
}

bool HasEngineExport(EngineExport which) {
  return !Fails("zqotrc::HasEngineExport") && TheMachine().missingExports.count(which) == 0;
}

std::uint32_t EngineOpen(const char* metaFile, const char* settingsFile, const char* folder,
                         const char* version, std::uint32_t& handle) {
  TheMachine().engineSteps.push_back(std::string("open ") + metaFile + " " + settingsFile + " " +
                                     folder + " " + version);
  if (const std::uint32_t code = CodeFor("zqotrc::EngineOpen")) return code;
  handle = TheMachine().engineHandle;
  return TheMachine().engineOpenResult;
}

std::uint32_t EngineWrite(std::uint32_t handle, std::string_view record) {
  TheMachine().engineSteps.push_back("write " + std::to_string(handle));
  if (const std::uint32_t code = CodeFor("zqotrc::EngineWrite")) return code;
  TheMachine().engineRecords.emplace_back(record);
  return TheMachine().engineWriteResult;
}

std::uint32_t EngineCommand(std::uint32_t command, const wchar_t* text) {
  std::string narrow;
  for (; *text != L'\0'; ++text) narrow += static_cast<char>(*text);
  TheMachine().engineSteps.push_back("command " + std::to_string(command) + " " + narrow);
  return CodeFor("zqotrc::EngineCommand");
}

std::uint32_t EngineClose(std::uint32_t handle) {
  TheMachine().engineSteps.push_back("close " + std::to_string(handle));
  return CodeFor("zqotrc::EngineClose");
}

void ReportTraceEvent(std::uint32_t id, std::initializer_list<const char*> texts) {
  if (Fails("zqotrc::ReportTraceEvent")) return;
  TheMachine().events.push_back({id, {texts.begin(), texts.end()}});
}

}  // namespace zqotrc
