#ifndef STANDINS_BOARDSVC32_TESTING_SAMPLEPATH_H_
#define STANDINS_BOARDSVC32_TESTING_SAMPLEPATH_H_

#include <cstdlib>
#include <filesystem>
#include <string>

/// The path of a sample inventory; the build copies them beside the test program.
inline std::string SamplePath(const std::string& name) {
#ifdef _WIN32
  const std::filesystem::path program = _pgmptr;
#else
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
#endif
  return (program.parent_path() / "board-samples" / name).string();
}

#endif  // STANDINS_BOARDSVC32_TESTING_SAMPLEPATH_H_
