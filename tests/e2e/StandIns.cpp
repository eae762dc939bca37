#include "tests/e2e/StandIns.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "tests/e2e/ServerProcess.h"
#include "tests/e2e/WireClient.h"

namespace e2e {
namespace {

constexpr char kAside[] = ".put_aside_by_a_test";
constexpr DWORD kPollMs = 2;

void Environment(const char* name, const std::string& value) {
  (void)SetEnvironmentVariableA(name, value.empty() ? nullptr : value.c_str());
}

bool Exists(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void DeleteIfThere(const std::string& path) {
  if (!Exists(path)) return;
  EXPECT_NE(DeleteFileA(path.c_str()), FALSE) << path << ": error " << GetLastError();
}

std::string ServerFolder() {
  const std::string server = ServerProcess::Path();
  return server.substr(0, server.rfind('\\') + 1);
}

std::string BuildFolder() { return ServerFolder() + "standins\\"; }

std::vector<std::string> LinesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

// Takes " name=NUMBER" away.
void Erase(std::string& line, const std::string& name) {
  const std::size_t at = line.rfind(' ' + name + '=');
  if (at == std::string::npos) return;
  line.erase(at, std::min(line.find(' ', at + 1), line.size()) - at);
}

std::vector<std::string> CallsIn(const std::string& path) {
  std::vector<std::string> calls = LinesOf(path);
  for (std::string& call : calls) {
    call.erase(0, call.find(' ') + 1);
    for (const char* const name : {"thread", "answer", "fault"}) Erase(call, name);
  }
  return calls;
}

}  // namespace

const std::vector<std::string>& StandIns::All() {
  static const std::vector<std::string> all = {"drvinstx.dll", "ipcfgx.dll",    "onlpanelx.cpl",
                                               "ringdiag.dll", "rstagent9.dll", "sampledev.dll"};
  return all;
}

StandIns::StandIns() {
  char temporary[MAX_PATH] = "";
  (void)GetTempPathA(sizeof(temporary), temporary);
  folder_ = std::string(temporary) + "qorlix_e2e_standins_" + std::to_string(GetCurrentProcessId());
  EXPECT_NE(CreateDirectoryA(folder_.c_str(), nullptr), FALSE) << folder_;
  script_ = folder_ + "\\script.ini";
  log_ = folder_ + "\\calls.log";
  boardLog_ = folder_ + "\\board.log";
  Script("");
  Environment("QORLIX_STANDIN_SCRIPT", script_);
  Environment("QORLIX_STANDIN_LOG", log_);
  // A machine without boards, whatever lies beside the server.
  const std::string inventory = folder_ + "\\boards.ini";
  std::ofstream(inventory) << "; no boards\n";
  Environment("QORLIX_BOARD_INVENTORY", inventory);
  Environment("QORLIX_BOARD_LOG", boardLog_);
}

StandIns::~StandIns() {
  for (const char* const name : {"QORLIX_STANDIN_SCRIPT", "QORLIX_STANDIN_LOG",
                                 "QORLIX_BOARD_INVENTORY", "QORLIX_BOARD_LOG"}) {
    Environment(name, "");
  }
  for (const std::string& path : placed_) {
    DeleteIfThere(path);
    const std::string aside = path + kAside;
    if (Exists(aside)) {
      EXPECT_NE(MoveFileA(aside.c_str(), path.c_str()), FALSE) << aside;
    }
  }
  for (const std::string& file : {script_, log_, boardLog_, folder_ + "\\boards.ini"}) {
    (void)DeleteFileA(file.c_str());
  }
  (void)RemoveDirectoryA(folder_.c_str());
}

std::string StandIns::InSystemDirectory(const std::string& name) {
  char directory[MAX_PATH] = "";
  (void)GetSystemDirectoryA(directory, sizeof(directory));
  return std::string(directory) + '\\' + name;
}

// A program that was ended by force has left its own file in the place; what it put aside is the
// machine's.
void StandIns::PutAside(const std::string& path) {
  if (std::find(placed_.begin(), placed_.end(), path) == placed_.end()) {
    placed_.push_back(path);
    const std::string aside = path + kAside;
    if (Exists(path) && !Exists(aside)) {
      ASSERT_NE(MoveFileA(path.c_str(), aside.c_str()), FALSE) << path;
    }
  }
  DeleteIfThere(path);
}

void StandIns::PlaceAll() {
  for (const std::string& file : All()) Place(file);
}

void StandIns::Place(const std::string& file, const std::string& as) {
  Copy(file, InSystemDirectory(as.empty() ? file : as));
}

void StandIns::Copy(const std::string& file, const std::string& to) {
  PutAside(to);
  const std::string from = BuildFolder() + file;
  ASSERT_NE(CopyFileA(from.c_str(), to.c_str(), TRUE), FALSE) << from << GetLastError();
}

void StandIns::PlaceBesideServer(const std::string& file) { Copy(file, ServerFolder() + file); }
void StandIns::RemoveBesideServer(const std::string& file) { PutAside(ServerFolder() + file); }

void StandIns::PlaceTwin(const std::string& file) { Place("noexport\\" + file, file); }

void StandIns::PlaceBytes(const std::string& as, const Bytes& content) {
  const std::string to = InSystemDirectory(as);
  PutAside(to);
  std::ofstream(to, std::ios::binary) << content;
}

void StandIns::Remove(const std::string& name) { PutAside(InSystemDirectory(name)); }

void StandIns::Script(const std::string& text) const {
  std::ofstream(script_, std::ios::binary) << text;
}

void StandIns::Answer(const std::string& entryPoint, const std::string& lines) const {
  Script("[answer " + entryPoint + "]\ncall = *\n" + lines + "\n");
}

std::vector<std::string> StandIns::Calls() const { return CallsIn(log_); }

std::vector<std::string> StandIns::CallsOnceThereAre(std::size_t count) const {
  const ULONGLONG end = GetTickCount64() + kPatienceMs;
  std::vector<std::string> calls = Calls();
  while (calls.size() < count && GetTickCount64() < end) {
    Sleep(kPollMs);
    calls = Calls();
  }
  return calls;
}

std::vector<std::string> StandIns::BoardCalls() const { return CallsIn(boardLog_); }

void StandIns::ForgetCalls() const {
  (void)DeleteFileA(log_.c_str());
  (void)DeleteFileA(boardLog_.c_str());
}

void StandIns::NoteNothing() const { Environment("QORLIX_STANDIN_LOG", ""); }

}  // namespace e2e
