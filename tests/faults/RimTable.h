#ifndef TESTS_FAULTS_RIMTABLE_H_
#define TESTS_FAULTS_RIMTABLE_H_

#include <cstdint>
#include <string>
#include <vector>

/// Every function of the server's rim, and the ways in which it can fail.
namespace rim_table {

struct Failure {
  const char* name;
  std::uint32_t code = 0;  ///< what the call reports
  bool raises = false;     ///< it raises instead, as far as its callers guard it
  bool passes = false;     ///< it cannot happen again and again
};

struct Function {
  const char* header;  ///< empty for what a library that is loaded at run time exports
  const char* name;    ///< as the fakes ask the plan; behind the last colon, as the header says
  std::vector<Failure> failures;
  const char* why = "";  ///< why it has none
  /// Not called any more once it has gone well in a process, and how often until then.
  int oncePerProcess = 0;
};

const std::vector<Function>& Functions();

/// Which header a file that calls the platform stands behind.
struct PlatformFile {
  const char* file;
  const char* header;
};
const std::vector<PlatformFile>& PlatformFiles();

/// Headers of that kind that no native program has.
const std::vector<std::string>& NotNative();

}  // namespace rim_table

#endif  // TESTS_FAULTS_RIMTABLE_H_
