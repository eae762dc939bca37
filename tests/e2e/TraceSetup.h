#ifndef TESTS_E2E_TRACESETUP_H_
#define TESTS_E2E_TRACESETUP_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/e2e/Wire.h"

namespace e2e {

/// Names and texts of trace parameters.
using TraceParameters = std::vector<std::pair<std::string, std::string>>;

/// Everything, in the text layout, into the files of TraceSetup. `more` replaces or adds.
TraceParameters AllLinesWith(const TraceParameters& more = {});

/// The machine's trace configuration, and a folder for files; both are gone when a test ends.
namespace trace_setup {

/// Makes these parameters the whole configuration. No line is written while it happens, and the
/// files of the folder are removed; who traces notices at its next line.
void Replace(const TraceParameters& parameters);

/// The same without telling anybody.
void ReplaceQuietly(const TraceParameters& parameters);

/// Adds or replaces one value of any type, without telling anybody.
void SetRaw(const std::string& name, std::uint32_t type, const Bytes& data);

/// Tells every process that traces to read the configuration again.
void Refresh();

/// Removes configuration, folder and files.
void Clear();

/// The folder, without a backslash at its end.
std::string Folder();

/// A file of the configuration that AllLinesWith makes.
std::string FileName(int index);

/// Every name that lies in the folder, sorted.
std::vector<std::string> NamesIn(const std::string& folder);

bool FileExists(const std::string& name);
Bytes ReadFile(const std::string& name);
void WriteFile(const std::string& name, const Bytes& bytes);

/// Sets when the file was written last, in seconds from an arbitrary moment.
void SetWritten(const std::string& name, std::uint32_t seconds);

}  // namespace trace_setup

/// Keeps every other process from tracing, for less than the ten seconds after which they go on.
class TraceMutex {
 public:
  TraceMutex();
  ~TraceMutex();
  TraceMutex(const TraceMutex&) = delete;
  TraceMutex& operator=(const TraceMutex&) = delete;

 private:
  void* mutex_;
};

/// A named section of 32-bit words that other processes see. Made if there is none.
class SharedWords {
 public:
  static constexpr char kGeneration[] = "Global\\ZqTRACE_SECTION";
  static constexpr char kRing[] = "Global\\ZqSDD_Trace";

  /// Opens what exists; IsThere says whether anything did.
  explicit SharedWords(const char* name);
  /// Makes one of that many bytes.
  SharedWords(const char* name, std::uint32_t bytes);
  ~SharedWords();
  SharedWords(const SharedWords&) = delete;
  SharedWords& operator=(const SharedWords&) = delete;

  bool IsThere() const { return words_ != nullptr; }
  volatile std::uint32_t& operator[](std::size_t index) { return words_[index]; }
  Bytes Data(std::size_t from, std::size_t size) const;

 private:
  void* section_;
  volatile std::uint32_t* words_;
};

}  // namespace e2e

#endif  // TESTS_E2E_TRACESETUP_H_
