#include "bench/TraceStage.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <utility>

#include "bench/Support.h"
#include "trace/Zqotrc.h"

namespace bench {
namespace {

constexpr char kFct[] = "Reg_SetValue: ";
constexpr char kKey[] = "SOFTWARE\\Vesmark\\NORVA\\DefDevices";
constexpr unsigned kResult = 0x2152;
constexpr char kLongestFile[] = "2147483647";
constexpr std::size_t kSites = 16;

unsigned g_evaluated = 0;

[[gnu::noinline]] unsigned Evaluated() {
  ++g_evaluated;
  return kResult;
}

template <std::size_t kSite>
[[gnu::always_inline]] inline void UnwantedProductCall() {
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< result = 0x%x Key %s", Evaluated(), kKey);
}

template <std::size_t... kAll>
[[gnu::always_inline]] inline void UnwantedProductRound(std::index_sequence<kAll...> /*sites*/) {
  (UnwantedProductCall<kAll>(), ...);
}

template <std::size_t kSite>
[[gnu::always_inline]] inline void UnwantedFloorCall() {
  if (FloorWants(TRC_PROGRESS)) [[unlikely]] {
    FloorNeverLine(kFct, "<< result = 0x%x Key %s", Evaluated(), kKey);
  }
}

template <std::size_t... kAll>
[[gnu::always_inline]] inline void UnwantedFloorRound(std::index_sequence<kAll...> /*sites*/) {
  (UnwantedFloorCall<kAll>(), ...);
}

void NothingMayBeEvaluated() {
  if (g_evaluated != 0) Die("a call that is not wanted has evaluated its arguments");
}

std::string WholeFile(const std::string& name) {
  std::ifstream stream(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// Whoever wrote a line at whatever time, and in whatever line of the source: with its digits made
/// alike, it is the same line.
std::string WithoutDigits(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char letter) { return letter >= '0' && letter <= '9'; }, '0');
  return text;
}

}  // namespace

TraceStage::TraceStage() {
  char temporary[MAX_PATH] = "";
  (void)GetTempPathA(sizeof(temporary), temporary);
  folder_ = std::string(temporary) + "qorlix_trace_bench";
  if (CreateDirectoryA(folder_.c_str(), /*lpSecurityAttributes=*/nullptr) == FALSE &&
      GetLastError() != ERROR_ALREADY_EXISTS) {
    DieOfLastError("CreateDirectoryA");
  }
  (void)DeleteFileA(ProductFile().c_str());
  (void)DeleteFileA(FloorFile().c_str());
}

TraceStage::~TraceStage() {
  zqotrc::ShutDown();
  WIN32_FIND_DATAA found;
  const HANDLE search = FindFirstFileA((folder_ + "\\*").c_str(), &found);
  while (search != INVALID_HANDLE_VALUE) {
    (void)DeleteFileA((folder_ + "\\" + found.cFileName).c_str());
    if (FindNextFileA(search, &found) == FALSE) break;
  }
  (void)FindClose(search);
  (void)RemoveDirectoryA(folder_.c_str());
}

void TraceStage::Configure(const char* output, const char* mask) const {
  key_.SetText("Level", "0xFFFFFFFF");
  key_.SetText("zqserver_level", mask);
  key_.SetText("Output", output);
  key_.SetText("Path", folder_);
  key_.SetText("FileName", "product");
  key_.SetText("Byte/File", kLongestFile);
  key_.SetText("sm_size", std::to_string(kBenchRingSize));
  zqotrc::Initialise(/*security=*/nullptr, "zqserver_level");
}

std::string TraceStage::PeerFile(const char* name) const {
  const std::string file = folder_ + "\\" + name;
  (void)DeleteFileA(file.c_str());
  return file;
}

void ProductSubject::Lines(unsigned count) {
  for (unsigned i = 0; i < count; ++i) {
    ZQ_TRACE(TRC_PROGRESS, kFct, "<< result = 0x%x Key %s", kResult, kKey);
  }
}

void FileFloorSubject::Lines(unsigned count) {
  for (unsigned i = 0; i < count; ++i) {
    floor_.Line(kFct, __FILE_NAME__, __LINE__, "<< result = 0x%x Key %s", kResult, kKey);
  }
}

void RingFloorSubject::Lines(unsigned count) {
  for (unsigned i = 0; i < count; ++i) {
    floor_.Line(kFct, __FILE_NAME__, __LINE__, "<< result = 0x%x Key %s", kResult, kKey);
  }
}

void PeerSubject::Lines(unsigned count) {
  for (unsigned i = 0; i < count; ++i) peer_.Line(kFct, __FILE__, __LINE__, kResult, kKey);
}

void UnwantedProductCalls(unsigned rounds) {
  for (unsigned i = 0; i < rounds; ++i) UnwantedProductRound(std::make_index_sequence<kSites>());
  NothingMayBeEvaluated();
}

void UnwantedFloorCalls(unsigned rounds) {
  for (unsigned i = 0; i < rounds; ++i) UnwantedFloorRound(std::make_index_sequence<kSites>());
  NothingMayBeEvaluated();
}

void UnwantedPeerCalls(unsigned rounds) {
  for (unsigned i = 0; i < rounds; ++i) SixteenDisabledPeerCalls(kResult, kKey);
}

void CheckFiles(const TraceStage& stage) {
  const std::string product = WithoutDigits(WholeFile(stage.ProductFile()));
  const std::string floor = WithoutDigits(WholeFile(stage.FloorFile()));
  if (product.empty() || product != floor) Die("floor and facility have written different files");
}

void CheckRings(const RingFloor& floor) {
  constexpr std::size_t kHeaderWords = 16;
  const HANDLE section =
      OpenFileMappingA(FILE_MAP_READ, /*bInheritHandle=*/FALSE, "Global\\ZqSDD_Trace");
  const auto* const words = static_cast<const std::uint32_t*>(
      MapViewOfFile(section, FILE_MAP_READ, /*dwFileOffsetHigh=*/0, /*dwFileOffsetLow=*/0,
                    /*dwNumberOfBytesToMap=*/0));
  if (words == nullptr) DieOfLastError("looking at the facility's ring");
  const auto* const data = reinterpret_cast<const char*>(words + kHeaderWords);
  const std::uint32_t offset = words[0];
  const std::uint32_t wraps = words[2];
  const std::uint64_t total = std::uint64_t{wraps} * kBenchRingSize + offset;
  if (total == 0 || total != floor.Total() ||
      WithoutDigits({data, offset}) != WithoutDigits({floor.data(), offset})) {
    Die("floor and facility have filled their rings differently");
  }
  (void)UnmapViewOfFile(words);
  (void)CloseHandle(section);
}

}  // namespace bench
