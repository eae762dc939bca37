#include "tests/e2e/Evidence.h"

#include <windows.h>

#include <gtest/gtest.h>

#include "tests/e2e/TraceSetup.h"

// A program whose servers crash finds no evidence of others, and brings it back when it ends.

namespace e2e::evidence {
namespace {

std::string Aside() { return Folder() + ".put_aside_by_a_test"; }

class KeepEvidence : public testing::Environment {
 public:
  // One that was ended by force has left the machine's own aside.
  void SetUp() override {
    if (GetFileAttributesA(Aside().c_str()) == INVALID_FILE_ATTRIBUTES) {
      (void)MoveFileA(Folder().c_str(), Aside().c_str());
    }
    Clear();
  }
  void TearDown() override {
    Clear();
    (void)MoveFileA(Aside().c_str(), Folder().c_str());
  }
};

[[maybe_unused]] const testing::Environment* const g_environment =
    testing::AddGlobalTestEnvironment(new KeepEvidence);

}  // namespace

std::string Folder() {
  char windows[MAX_PATH] = "";
  (void)GetSystemWindowsDirectoryA(windows, sizeof(windows));
  return std::string(windows) + "\\QorlixSRV";
}

std::vector<std::string> Names() { return trace_setup::NamesIn(Folder()); }

std::string File(const std::string& name) { return trace_setup::ReadFile(Folder() + "\\" + name); }

void Clear() {
  for (const std::string& name : Names()) {
    EXPECT_NE(DeleteFileA((Folder() + "\\" + name).c_str()), FALSE) << name;
  }
  (void)RemoveDirectoryA(Folder().c_str());
}

}  // namespace e2e::evidence
