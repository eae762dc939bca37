#include "client/Result.h"
#include "doctor/Findings.h"
#include "platform/AsciiCase.h"

namespace doctor {
namespace {

constexpr std::uint32_t kNotFound = 2;
constexpr std::uint32_t kAccessDenied = 5;
constexpr std::uint32_t kBusy = 231;
constexpr std::uint32_t kInstances = 64;

Finding Unreached(const PipeFacts& pipe) {
  switch (pipe.error) {
    case kNotFound:
      return {Severity::Warning, "pipe", "there is no pipe " + pipe.name + ": no server is running",
              "'qorlixctl start', in an elevated command prompt"};
    case kBusy:
      return {Severity::Error, "pipe",
              "all instances of " + pipe.name + " are in use: nobody else is served",
              "close clients that keep their connections"};
    case kAccessDenied:
      return {Severity::Error, "pipe",
              pipe.name + " does not admit you: another program may have taken the name",
              "log on at this computer; stop the other program, then start the server"};
    default:
      return {Severity::Error, "pipe",
              pipe.name + " cannot be opened: code " + std::to_string(pipe.error),
              "see what the code means: 'net helpmsg " + std::to_string(pipe.error) + "'"};
  }
}

std::string Process(const PipeFacts& pipe) {
  std::string text = "process " + std::to_string(pipe.process);
  if (!pipe.program.empty()) text += ", " + pipe.program;
  return text;
}

void ExamineOwner(const PipeFacts& pipe, Findings& findings) {
  const std::size_t slash = pipe.program.find_last_of("\\/");
  const std::string file = pipe.program.substr(slash == std::string::npos ? 0 : slash + 1);
  if (!pipe.program.empty() && !platform::EqualsIgnoringCase(file, "QorlixSRV.exe")) {
    findings.push_back({Severity::Error, "pipe",
                        pipe.name + " belongs to " + Process(pipe) + ", which is not QorlixSRV.exe",
                        "end that program, then start the server"});
  } else if (pipe.process == 0 || pipe.program.empty()) {
    findings.push_back({Severity::Note, "pipe",
                        pipe.name + " is there, but whose it is cannot be seen",
                        "run doctor in an elevated command prompt"});
  } else {
    findings.push_back({Severity::Ok, "pipe", pipe.name + " belongs to " + Process(pipe), ""});
  }
}

// How many are free is told to nobody; that one was, shows by the connection.
void ExamineInstances(const PipeFacts& pipe, Findings& findings) {
  if (pipe.limit == 0 || pipe.instances == 0) {
    findings.push_back({Severity::Note, "pipe",
                        "how many instances the pipe has cannot be seen; one was free", ""});
  } else if (pipe.limit != kInstances) {
    findings.push_back({Severity::Error, "pipe",
                        "the pipe was made for " + std::to_string(pipe.limit) +
                            " instances, QorlixSRV makes it for 64: it is another program's",
                        "end that program, then start the server"});
  } else if (pipe.instances < kInstances) {
    findings.push_back({Severity::Warning, "pipe",
                        "only " + std::to_string(pipe.instances) +
                            " of 64 instances exist: the server is starting or stopping",
                        "run doctor again; if it stays so, stop the server and start it"});
  } else {
    findings.push_back({Severity::Ok, "pipe", "all 64 instances exist, and one was free", ""});
  }
}

Finding Answer(const PipeFacts& pipe) {
  if (pipe.answer == 0) return {Severity::Ok, "pipe", "the server answers", ""};
  if (pipe.answer == client::kForeignServer) {
    return {Severity::Error, "pipe",
            pipe.name +
                " belongs to another user, who is neither the system nor the administrators: "
                "nothing was asked of it",
            "find out who started that program; end it, then start the server elevated"};
  }
  return {Severity::Error, "pipe",
          "the server does not answer as it should: code " + std::to_string(pipe.answer),
          "look for a message box on its desktop, and for a plug-in that does not return; "
          "--timeout waits longer"};
}

Finding Rights(const PipeFacts& pipe) {
  switch (pipe.elevation) {
    case PipeFacts::Elevation::Yes:
      return {Severity::Ok, "pipe", "the server has administrator's rights", ""};
    case PipeFacts::Elevation::No:
      return {Severity::Error, "pipe",
              "the server has no administrator's rights: every change answers 5",
              "'qorlixctl stop', then 'qorlixctl start' in an elevated command prompt"};
    case PipeFacts::Elevation::Unknown:
      break;
  }
  return {Severity::Note, "pipe", "whether the server has administrator's rights cannot be seen",
          "run doctor in an elevated command prompt"};
}

}  // namespace

void ExaminePipe(const PipeFacts& pipe, Findings& findings) {
  if (pipe.error != 0) {
    findings.push_back(Unreached(pipe));
    return;
  }
  ExamineOwner(pipe, findings);
  ExamineInstances(pipe, findings);
  findings.push_back(Answer(pipe));
  findings.push_back(Rights(pipe));
}

}  // namespace doctor
