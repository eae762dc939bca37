#ifndef TRACE_TRACEOUTPUTS_H_
#define TRACE_TRACEOUTPUTS_H_

/// The places outside this process that a line can go to.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>

namespace zqotrc {

/// A trace file that is open for appending. Others may read and write it meanwhile.
class AppendFile {
 public:
  AppendFile() = default;
  ~AppendFile() { Close(); }
  AppendFile(const AppendFile&) = delete;
  AppendFile& operator=(const AppendFile&) = delete;

  /// Opens the file, which is created if it is missing, in place of an earlier one.
  /// \returns its size; nothing when it cannot be opened or measured.
  std::optional<std::uint64_t> Open(const char* name);

  /// \returns the size; nothing when it cannot be found out, or no file is open.
  std::optional<std::uint64_t> Size() const;

  /// Adds the bytes at the end, wherever that is by now.
  void Append(std::string_view bytes);

  void Close();

 private:
  void* file_ = nullptr;
};

/// Removes the file if that is possible.
void RemoveFile(const char* name);

/// \returns when the file was last written, in 100 ns; nothing when it does not exist.
std::optional<std::uint64_t> ModificationTime(const char* name);

/// Shows a text in the debugger.
void SendToDebugger(const char* text);

/// Opens the kernel driver, unless it is open. \returns 0 or the platform's error code.
std::uint32_t OpenDriver();
/// Sends the bytes to the driver, if it is open.
void SendToDriver(std::string_view bytes);
void CloseDriver();

/// The exports of the trace engine's library, in the order in which they are looked up.
enum class EngineExport { kOpen, kWrite, kCommand, kClose };
inline constexpr EngineExport kEngineExports[] = {EngineExport::kOpen, EngineExport::kWrite,
                                                  EngineExport::kCommand, EngineExport::kClose};

constexpr const char* NameOfEngineExport(EngineExport which) {
  constexpr const char* kNames[] = {"TraceOpenA", "TraceWrite", "TraceCommand", "TraceClose"};
  return kNames[static_cast<std::size_t>(which)];
}

/// \returns the common program files folder; empty when there is none.
std::string_view CommonProgramFiles();

/// Loads the library and looks the exports up. \returns whether it could be loaded. It stays
/// loaded.
bool LoadEngine(const char* path);
bool HasEngineExport(EngineExport which);

/// The exports themselves; call one only after HasEngineExport. A call that raises counts as one
/// that failed, with all bits set.
std::uint32_t EngineOpen(const char* metaFile, const char* settingsFile, const char* folder,
                         const char* version, std::uint32_t& handle);
std::uint32_t EngineWrite(std::uint32_t handle, std::string_view record);
std::uint32_t EngineCommand(std::uint32_t command, const wchar_t* text);
std::uint32_t EngineClose(std::uint32_t handle);

/// How many texts an event may have.
inline constexpr std::size_t kMaxEventTexts = 3;

/// Reports an error (category 1) to the event log under the source "Zqotrc".
void ReportTraceEvent(std::uint32_t id, std::initializer_list<const char*> texts);

}  // namespace zqotrc

#endif  // TRACE_TRACEOUTPUTS_H_
