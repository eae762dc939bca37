#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "cli/Ctl.h"
#include "tests/fakes/FakeTraceAccess.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "trace/TraceRing.h"

// Where a report takes its lines from when nobody names a file.

namespace cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class TraceReportPlaceTest : public testing::Test {
 protected:
  TraceReportPlaceTest() {
    FakeTrace::Reset();
    TheTraceAccess() = {};
    fs::create_directories(folder_);
  }
  ~TraceReportPlaceTest() override {
    FakeTrace::Reset();
    TheTraceAccess() = {};
    fs::remove_all(folder_);
  }

  std::string At(const std::string& name) const { return (folder_ / name).string(); }
  std::string Content(const std::string& name) const {
    std::ifstream file(At(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  int Run(const std::vector<std::string>& words) {
    output_ = {};
    return RunCtl(words, output_);
  }

  const fs::path folder_ = fs::path(testing::TempDir()) / "report-place";
  Output output_;
};

TEST_F(TraceReportPlaceTest, WithoutAFileThePlaceComesFromTheConfiguration) {
  FakeTrace::SetText("Path", folder_.string().c_str());
  // The prefix is joined with a backslash, which is a part of the name here.
  FakeTrace::SetText("FileName", "run");
  const std::string prefix = folder_.string() + "\\run";
  std::ofstream(prefix + "2.TRC", std::ios::binary) << "RunSrvLoop:  opCode 0x3 \n";
  EXPECT_EQ(Run({"trace", "report", "-o", At("r.html")}), kExitOk) << output_.err;
  EXPECT_THAT(output_.out, HasSubstr("1 line, 1 request, 0 errors"));
  EXPECT_EQ(output_.err, "");
  fs::remove(prefix + "2.TRC");
  EXPECT_EQ(Run({"trace", "report", "-o", At("r.html")}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("hint: 'qorlixctl trace show' tells"));
}

TEST_F(TraceReportPlaceTest, TheRingMakesAReportToo) {
  EXPECT_EQ(Run({"trace", "report", "--ring", "-o", At("r.html")}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("there is no ring"));
  TheTraceAccess().ring.assign((400 + zqotrc::kRingOverhead + 3) / 4, 0);
  zqotrc::Ring ring = zqotrc::RingAt(TheTraceAccess().ring.data(), 400);
  zqotrc::BeginRing(ring);
  zqotrc::StoreInRing(ring, "RunSrvLoop:  opCode 0x3 \r\n");
  EXPECT_EQ(Run({"trace", "report", "--ring", "-o", At("r.html")}), kExitOk) << output_.err;
  EXPECT_THAT(Content("r.html"), HasSubstr("the ring in shared memory"));
}

}  // namespace
}  // namespace cli
