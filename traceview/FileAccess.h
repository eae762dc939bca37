#ifndef TRACEVIEW_FILEACCESS_H_
#define TRACEVIEW_FILEACCESS_H_

/// Trace files, read while others write, rotate and delete them: nothing stays open, and while a
/// file is open for a moment it may be written and deleted all the same.

#include <cstdint>
#include <string>

namespace traceview {

struct FileState {
  bool exists = false;
  std::uint64_t size = 0;
  std::uint64_t written = 0;   ///< when it was last written, in units that grow
  std::uint64_t identity = 0;  ///< another file of the same name most often has another one
};

/// \returns what is known of the file. \param path in the ANSI code page
FileState StateOf(const std::string& path);

bool FolderExists(const std::string& path);

/// Reads up to `most` bytes from `offset` on into `bytes`.
/// \returns 0, or the platform's error code.
std::uint32_t ReadPart(const std::string& path, std::uint64_t offset, std::uint32_t most,
                       std::string& bytes);

/// A time of FileState as people read it, "2026-03-01 14:05:09" of the local clock.
std::string LocalTime(std::uint64_t written);

}  // namespace traceview

#endif  // TRACEVIEW_FILEACCESS_H_
