#include "doctor/Findings.h"

namespace doctor {
namespace {

constexpr char kKeepOut[] =
    "leave writing to administrators and the system: whoever may write there decides what runs "
    "elevated";

bool IsThere(const FileFacts& file) { return file.kind != ImageKind::Missing; }

// What is wrong with a file that is there, or that nothing is.
Finding StateOf(const char* check, const FileFacts& file) {
  switch (file.kind) {
    case ImageKind::Missing:
    case ImageKind::Unreadable:
      return {Severity::Warning, check, file.path + " cannot be read",
              "see who may read it: 'icacls' with its path"};
    case ImageKind::NoImage:
      return {Severity::Error, check, file.path + " is no program or library of Windows",
              "put the stack's own file there"};
    case ImageKind::Other:
      return {Severity::Error, check,
              file.path + " is not for 32-bit x86: the server cannot load it (193)",
              "put the stack's 32-bit file there"};
    case ImageKind::Fitting:
      break;
  }
  const std::string writers = FileWriters(file.access);
  if (!writers.empty()) {
    return {Severity::Error, check, file.path + " can be changed by " + writers, kKeepOut};
  }
  if (file.error != 0) {
    return {Severity::Note, check,
            file.path + " is there, but who may change it cannot be seen: code " +
                std::to_string(file.error),
            "run doctor in an elevated command prompt"};
  }
  if (file.isStandIn) {
    return {Severity::Note, check, file.path + " is a stand-in, not the vendor's",
            "put the vendor's there, unless this machine is for trials"};
  }
  return {Severity::Ok, check, file.path + " is there", ""};
}

void ExamineFolder(const FolderFacts& folder, Findings& findings) {
  const std::string writers = FolderWriters(folder.access);
  if (!writers.empty()) {
    findings.push_back({Severity::Error, "folder",
                        folder.path + ": libraries can be put there by " + writers, kKeepOut});
  } else if (folder.error != 0) {
    findings.push_back(
        {Severity::Note, "folder",
         folder.path + ": who may write there cannot be seen: code " + std::to_string(folder.error),
         "run doctor in an elevated command prompt"});
  } else {
    findings.push_back(
        {Severity::Ok, "folder", folder.path + ": ordinary users cannot write there", ""});
  }
}

// A server that has no instance to spare runs, too.
bool ServerRuns(const PipeFacts& pipe) {
  constexpr std::uint32_t kBusy = 231;
  return pipe.error == 0 || pipe.error == kBusy;
}

Finding Missing(const LibraryNeed& need, const Facts& facts) {
  const std::string name = need.name;
  if (need.without == Severity::Error && ServerRuns(facts.pipe)) {
    return {Severity::Note, "library",
            name + " is neither in " + facts.serverFolder.path + " nor in " +
                facts.systemFolder.path + ", but the server runs: it comes from elsewhere",
            "put it beside QorlixSRV.exe, so that no other one can be taken"};
  }
  const std::string places = need.besideServer
                                 ? " is neither in " + facts.serverFolder.path + " nor in "
                                 : std::string(" is not in ");
  return {need.without, "library", name + places + facts.systemFolder.path + ": " + need.otherwise,
          need.besideServer ? "put it beside QorlixSRV.exe, or into the system directory"
                            : "put it into the system directory"};
}

void ExamineLibrary(const LibraryNeed& need, const LibraryFacts& library, const Facts& facts,
                    Findings& findings) {
  const bool isBeside = IsThere(library.besideServer);
  const bool isInSystem = IsThere(library.inSystem);
  if (need.besideServer && isBeside) {
    findings.push_back(StateOf("library", library.besideServer));
    if (isInSystem) {
      findings.push_back({Severity::Note, "library",
                          library.inSystem.path + " is passed over: the one beside the server is "
                                                  "taken",
                          "remove the one that is not meant"});
    }
  } else if (isInSystem) {
    findings.push_back(StateOf("library", library.inSystem));
  } else if (isBeside) {
    findings.push_back(
        {need.without, "library",
         library.besideServer.path + " lies where it is not looked for: " + need.otherwise,
         "move it to " + facts.systemFolder.path});
  } else {
    findings.push_back(Missing(need, facts));
  }
}

}  // namespace

const std::vector<LibraryNeed>& Libraries() {
  static const std::vector<LibraryNeed> libraries = {
      {"boardsvc32.dll", true, Severity::Error, "the server does not start"},
      {"drvinstx.dll", true, Severity::Warning,
       "'driver install' shows a box, and nobody is served until it is closed"},
      {"onlpanelx.cpl", true, Severity::Warning,
       "'panel' shows a box, and nobody is served until it is closed"},
      {"rstagent9.dll", false, Severity::Warning, "a silent restart ends with 8603"},
      {"ringdiag.dll", false, Severity::Note, "the ring is not looked at after a silent restart"},
      {"ipcfgx.dll", false, Severity::Warning, "'ip add' and 'ip delete' answer 8603"},
  };
  return libraries;
}

void ExamineServer(const Facts& facts, Findings& findings) {
  if (IsThere(facts.server)) {
    findings.push_back(StateOf("server", facts.server));
    return;
  }
  findings.push_back({Severity::Warning, "server", facts.server.path + " is not there",
                      "run doctor beside QorlixSRV.exe, or while the server runs"});
}

void ExamineFolders(const Facts& facts, Findings& findings) {
  ExamineFolder(facts.serverFolder, findings);
  ExamineFolder(facts.systemFolder, findings);
}

void ExamineLibraries(const Facts& facts, Findings& findings) {
  for (std::size_t i = 0; i < Libraries().size() && i < facts.libraries.size(); ++i) {
    ExamineLibrary(Libraries()[i], facts.libraries[i], facts, findings);
  }
}

void ExamineEngine(const Facts& facts, Findings& findings) {
  const bool isUsed = facts.trace.configuration.config.output == zqotrc::TraceOutput::kEngine;
  if (isUsed && IsThere(facts.engine)) {
    findings.push_back(StateOf("library", facts.engine));
  } else if (isUsed) {
    findings.push_back({Severity::Warning, "library",
                        facts.engine.path + " is not there: the trace is configured to go to it, "
                                            "so its lines are lost",
                        "install the trace engine, or 'qorlixctl trace set Output FILE'"});
  } else {
    findings.push_back({Severity::Ok, "library",
                        facts.engine.path +
                            (IsThere(facts.engine) ? " is there" : " is not there") +
                            "; the trace does not use it",
                        ""});
  }
}

}  // namespace doctor
