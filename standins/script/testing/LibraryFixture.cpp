#include "standins/script/testing/LibraryFixture.h"

#include <windows.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <utility>

namespace {

std::string TempFile(const char* extension) {
  char folder[MAX_PATH];
  (void)GetTempPathA(sizeof(folder), folder);
  return folder + ("qorlix_standin_" + std::to_string(GetCurrentProcessId())) + extension;
}

}  // namespace

LibraryFixture::LibraryFixture(std::string file)
    : file_(std::move(file)), script_(TempFile(".ini")), log_(TempFile(".log")) {
  (void)SetEnvironmentVariableA("QORLIX_STANDIN_SCRIPT", script_.c_str());
  (void)SetEnvironmentVariableA("QORLIX_STANDIN_LOG", log_.c_str());
  Script("");
  Load();
}

LibraryFixture::~LibraryFixture() {
  Free();
  (void)SetEnvironmentVariableA("QORLIX_STANDIN_SCRIPT", nullptr);
  (void)SetEnvironmentVariableA("QORLIX_STANDIN_LOG", nullptr);
  (void)DeleteFileA(script_.c_str());
  (void)DeleteFileA(log_.c_str());
}

std::string LibraryFixture::StandInFolder() {
  char program[MAX_PATH];
  (void)GetModuleFileNameA(nullptr, program, sizeof(program));
  const std::string path = program;
  return path.substr(0, path.rfind('\\')) + "\\standins";
}

void LibraryFixture::Load() {
  const std::string path = StandInFolder() + '\\' + file_;
  library_ = LoadLibraryA(path.c_str());
  EXPECT_NE(library_, nullptr) << path << ": " << GetLastError();
}

void LibraryFixture::Free() {
  if (library_ == nullptr) return;
  EXPECT_TRUE(FreeLibrary(static_cast<HMODULE>(library_)));
  library_ = nullptr;
}

void* LibraryFixture::FindAny(const char* name) const {
  auto* const found = reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library_), name));
  EXPECT_NE(found, nullptr) << name;
  return found;
}

void LibraryFixture::Script(const std::string& text) const {
  std::ofstream(script_, std::ios::binary) << text;
}

std::string LibraryFixture::WholeLog() const {
  std::stringstream text;
  text << std::ifstream(log_, std::ios::binary).rdbuf();
  return text.str();
}

std::string LibraryFixture::Log() const {
  const std::string thread = " thread=" + std::to_string(GetCurrentThreadId());
  std::istringstream lines(WholeLog());
  std::string all;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t at = line.find(thread);
    EXPECT_NE(at, std::string::npos) << line;
    if (at != std::string::npos) line.erase(at, thread.size());
    all += line.substr(line.find(' ') + 1) + '\n';
  }
  return all;
}

unsigned LibraryFixture::LastSequence() const {
  std::istringstream lines(WholeLog());
  unsigned sequence = 0;
  for (std::string line; std::getline(lines, line);) sequence = std::stoul(line);
  return sequence;
}
