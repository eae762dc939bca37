#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/PolicyModel.h"
#include "registry/RegistryPolicy.h"

// The fuzzer judges paths with the tests' canonicaliser; here the platform's own one takes what it
// has found.

namespace {

// The build copies them beside the test program.
std::vector<std::string> CollectedPaths() {
#ifdef _WIN32
  const std::filesystem::path program = _pgmptr;
#else
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
#endif
  std::vector<std::string> paths;
  for (const auto& file :
       std::filesystem::directory_iterator(program.parent_path() / "policy-corpus")) {
    std::ifstream stream(file.path(), std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(stream)), {});
    paths.push_back(bytes.substr(0, bytes.find('\0')));
  }
  return paths;
}

bool IsAscii(const std::string& text) {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  }
  return true;
}

TEST(RegistryPolicyCorpusTest, WhateverTheSpellingAnApprovedPathLiesInTheTree) {
  int approved = 0;
  int refused = 0;
  for (const std::string& path : CollectedPaths()) {
    CanonicalPath canonical;
    const bool isPermitted = IsPermittedRegKey(path.c_str(), canonical);
    (isPermitted ? approved : refused) += 1;
    EXPECT_TRUE(!isPermitted || policy_model::IsInside(canonical.text)) << path;
    // Bytes outside ASCII are read by the code page of the system.
    if (!IsAscii(path)) continue;
    const auto walked = policy_model::Walk(path);
    ASSERT_EQ(isPermitted, walked && policy_model::IsInside(*walked)) << path;
    EXPECT_TRUE(!isPermitted || canonical.text == *walked) << path;
  }
  EXPECT_GT(approved, 10);
  EXPECT_GT(refused, 10);
}

}  // namespace
