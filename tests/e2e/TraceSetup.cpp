#include "tests/e2e/TraceSetup.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace e2e {
namespace {

constexpr char kKey[] = "SOFTWARE\\Vesmark\\NORVA\\TrcParams";
constexpr char kMutex[] = "Global\\ZqTRACE_MUTEX";
constexpr char kName[] = "Lines";
constexpr DWORD kMutexMs = 10000;

void RemoveFilesOf(const std::string& folder) {
  for (const std::string& name : trace_setup::NamesIn(folder)) {
    EXPECT_NE(DeleteFileA((folder + "\\" + name).c_str()), FALSE) << name << GetLastError();
  }
}

}  // namespace

TraceParameters AllLinesWith(const TraceParameters& more) {
  TraceParameters all = {
      {"Level", "0xFFFFFFFF"}, {"zqserver_level", "0xFFFFFFFF"}, {"Output", "FILE"},
      {"Format", "TEXT"},      {"Path", trace_setup::Folder()},  {"FileName", kName},
      {"Byte/File", "2097152"}};
  for (const auto& [name, text] : more) {
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&name = name](const auto& one) { return one.first == name; });
    if (found != all.end()) {
      found->second = text;
    } else {
      all.emplace_back(name, text);
    }
  }
  return all;
}

namespace trace_setup {

void ReplaceQuietly(const TraceParameters& parameters) {
  (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, kKey);
  for (const auto& [name, text] : parameters) SetRaw(name, REG_SZ, text + '\0');
}

void Replace(const TraceParameters& parameters) {
  const TraceMutex nobodyWrites;
  ReplaceQuietly(parameters);
  RemoveFilesOf(Folder());
  Refresh();
}

void SetRaw(const std::string& name, std::uint32_t type, const Bytes& data) {
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyA(HKEY_LOCAL_MACHINE, kKey, &key), ERROR_SUCCESS);
  EXPECT_EQ(RegSetValueExA(key, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(data.data()),
                           static_cast<DWORD>(data.size())),
            ERROR_SUCCESS);
  (void)RegCloseKey(key);
}

void Refresh() {
  SharedWords generation(SharedWords::kGeneration);
  if (generation.IsThere()) generation[0] = generation[0] + 1;
}

void Clear() {
  (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, kKey);
  (void)RegDeleteKeyA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Vesmark\\NORVA");
  (void)RegDeleteKeyA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Vesmark");
  RemoveFilesOf(Folder());
  (void)RemoveDirectoryA(Folder().c_str());
}

std::string Folder() {
  static const std::string folder = [] {
    char temporary[MAX_PATH] = "";
    (void)GetTempPathA(sizeof(temporary), temporary);
    return std::string(temporary) + "qorlix_e2e_trace_" + std::to_string(GetCurrentProcessId());
  }();
  (void)CreateDirectoryA(folder.c_str(), nullptr);
  return folder;
}

std::string FileName(int index) { return Folder() + "\\" + kName + std::to_string(index) + ".TRC"; }

std::vector<std::string> NamesIn(const std::string& folder) {
  std::vector<std::string> names;
  WIN32_FIND_DATAA found;
  const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) names.push_back(found.cFileName);
  } while (FindNextFileA(search, &found) != FALSE);
  (void)FindClose(search);
  std::sort(names.begin(), names.end());
  return names;
}

bool FileExists(const std::string& name) {
  return GetFileAttributesA(name.c_str()) != INVALID_FILE_ATTRIBUTES;
}

Bytes ReadFile(const std::string& name) {
  std::ifstream stream(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void WriteFile(const std::string& name, const Bytes& bytes) {
  std::ofstream(name, std::ios::binary) << bytes;
}

void SetWritten(const std::string& name, std::uint32_t seconds) {
  constexpr std::uint64_t kTicksPerSecond = 10000000;
  constexpr std::uint64_t kSomeMoment = 132000000000000000;
  const std::uint64_t ticks = kSomeMoment + seconds * kTicksPerSecond;
  const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  const HANDLE file = CreateFileA(name.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  EXPECT_NE(SetFileTime(file, nullptr, nullptr, &time), FALSE) << name;
  (void)CloseHandle(file);
}

}  // namespace trace_setup

TraceMutex::TraceMutex() : mutex_(CreateMutexA(nullptr, FALSE, kMutex)) {
  EXPECT_EQ(WaitForSingleObject(mutex_, kMutexMs), WAIT_OBJECT_0);
}

TraceMutex::~TraceMutex() {
  (void)ReleaseMutex(mutex_);
  (void)CloseHandle(mutex_);
}

SharedWords::SharedWords(const char* name)
    : section_(OpenFileMappingA(FILE_MAP_WRITE, FALSE, name)),
      words_(section_ != nullptr
                 ? static_cast<std::uint32_t*>(MapViewOfFile(section_, FILE_MAP_WRITE, 0, 0, 0))
                 : nullptr) {}

SharedWords::SharedWords(const char* name, std::uint32_t bytes)
    : section_(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, bytes, name)),
      words_(static_cast<std::uint32_t*>(MapViewOfFile(section_, FILE_MAP_WRITE, 0, 0, 0))) {
  EXPECT_NE(words_, nullptr) << name;
}

SharedWords::~SharedWords() {
  if (words_ != nullptr) (void)UnmapViewOfFile(const_cast<std::uint32_t*>(words_));
  if (section_ != nullptr) (void)CloseHandle(section_);
}

Bytes SharedWords::Data(std::size_t from, std::size_t size) const {
  return {reinterpret_cast<const char*>(const_cast<const std::uint32_t*>(words_)) + from, size};
}

}  // namespace e2e
