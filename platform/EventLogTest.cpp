#include "platform/EventLog.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace {

// The system under test shows reports on the error stream, which the test runner keeps in a file.
std::string ErrorStream() {
  const char* const file = std::getenv("QORLIX_STDERR_FILE");
  if (file == nullptr) return {};
  std::ifstream stream(std::string("Z:") + file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

TEST(EventLogTest, AReportCarriesItsTextOnce) {
  if (std::getenv("QORLIX_STDERR_FILE") == nullptr) GTEST_SKIP() << "run it by tools/wine-run.sh";
  const std::string before = ErrorStream();
  ReportErrorEvent("MIREL RegistryOperation", "a text of this test: 100%s");
  const std::string report = ErrorStream().substr(before.size());
  const std::size_t found = report.find("a text of this test: 100%s");
  ASSERT_NE(found, std::string::npos) << report;
  EXPECT_EQ(report.find("a text of this test", found + 1), std::string::npos);
}

}  // namespace
