#include <windows.h>

#include <shlobj.h>

#include <iterator>

#include "doctor/Gather.h"
#include "platform/SystemPath.h"
#include "traceview/FileAccess.h"

namespace doctor {
namespace {

std::string FolderOf(const std::string& path) {
  const std::size_t end = path.find_last_of('\\');
  return end == std::string::npos ? std::string(".") : path.substr(0, end);
}

std::string ProgramBesideThis() {
  char path[MAX_PATH] = "";
  const DWORD length = GetModuleFileNameA(/*hModule=*/nullptr, path, std::size(path));
  const std::string own(path, length < std::size(path) ? length : 0);
  return FolderOf(own) + "\\QorlixSRV.exe";
}

std::string EnginePath() {
  platform::PathBuffer folder = "";
  (void)platform::SpecialFolder(CSIDL_PROGRAM_FILES_COMMON, folder);
  return std::string(folder) + "\\Vesmark\\Automation\\TraceEngine\\bin\\ZqTraceEngineX.dll";
}

TraceFacts GatherTrace() {
  TraceFacts facts;
  facts.configuration = traceview::ReadConfiguration();
  const zqotrc::TraceConfig& config = facts.configuration.config;
  const std::string prefix = config.filePrefix;
  const std::size_t end = prefix.find_last_of("\\/");
  facts.folderIsMissing = config.output == zqotrc::TraceOutput::kFile && end != std::string::npos &&
                          !traceview::FolderExists(prefix.substr(0, end + 1));
  return facts;
}

}  // namespace

Facts GatherFacts(const char* pipe, std::uint32_t timeoutMs) {
  Facts facts;
  facts.pipe = GatherPipe(pipe, timeoutMs);
  facts.server = GatherFile(facts.pipe.program.empty() ? ProgramBesideThis() : facts.pipe.program);
  const std::string serverFolder = FolderOf(facts.server.path);
  const std::string systemFolder = SystemFolder();
  facts.serverFolder = GatherFolder(serverFolder);
  facts.systemFolder = GatherFolder(systemFolder);
  for (const LibraryNeed& need : Libraries()) {
    facts.libraries.push_back(
        {GatherFile(serverFolder + '\\' + need.name), GatherFile(systemFolder + '\\' + need.name)});
  }
  facts.engine = GatherFile(EnginePath());
  GatherRegistry(systemFolder, facts);
  facts.trace = GatherTrace();
  facts.sources = GatherSources();
  return facts;
}

}  // namespace doctor
