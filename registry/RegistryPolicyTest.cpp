#include "registry/RegistryPolicy.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const std::string kRoot = "SOFTWARE\\Vesmark\\NORVA";

bool Permits(const std::string& path) { return IsPermittedRegKey(path.c_str()); }

TEST(RegistryPolicyTest, TheTreeItselfAndItsTwinArePermittedInAnyCase) {
  EXPECT_TRUE(Permits(kRoot));
  EXPECT_TRUE(Permits("software\\VESMARK\\norva\\x"));
  EXPECT_TRUE(Permits("SOFTWARE\\Wow6432Node\\Vesmark\\NORVA\\x"));
  EXPECT_TRUE(Permits("SOFTWARE\\WOW6432NODE\\vesmark\\norva"));
}

TEST(RegistryPolicyTest, APrefixWithoutSeparatorIsPermitted) {
  EXPECT_TRUE(Permits("SOFTWARE\\Vesmark\\NORVAX"));
  EXPECT_TRUE(Permits("SOFTWARE\\Vesmark\\NORVA2\\Other"));
  EXPECT_TRUE(Permits("software\\vesmark\\norvaX"));
}

TEST(RegistryPolicyTest, WhatLiesOutsideIsRefused) {
  for (const char* path :
       {"", "\\", "SOFTWARE", "SOFTWARE\\Vesmark", "SOFTWARE\\Vesmark\\NORV",
        "\\SOFTWARE\\Vesmark\\NORVA", "SOFTWARE\\Microsoft", "SOFTWARE/Vesmark/NORVA",
        "SYSTEM\\CurrentControlSet", "SOFTWARE\\Wow6432Node\\Vesmark\\NORV",
        "SOFTWARE\\Vesmark\\Shared Tools\\MIREL", " SOFTWARE\\Vesmark\\NORVA"}) {
    EXPECT_FALSE(Permits(path)) << path;
  }
}

TEST(RegistryPolicyTest, DotElementsAreResolvedBeforeThePathIsJudged) {
  EXPECT_FALSE(Permits(kRoot + "\\..\\Other"));
  EXPECT_FALSE(Permits(kRoot + "\\..\\..\\Microsoft"));
  EXPECT_FALSE(Permits(kRoot + "\\X\\..\\..\\Other"));
  EXPECT_TRUE(Permits(kRoot + "\\X\\..\\Y"));
  EXPECT_TRUE(Permits("SOFTWARE\\Other\\..\\Vesmark\\NORVA\\X"));
  EXPECT_TRUE(Permits("SOFTWARE\\.\\Vesmark\\NORVA"));
}

TEST(RegistryPolicyTest, APathThatLeavesItsFirstElementAgainIsRefused) {
  EXPECT_FALSE(Permits("X\\..\\SOFTWARE\\Vesmark\\NORVA\\Y"));
}

TEST(RegistryPolicyTest, TheApprovedFormIsTheCanonicalOne) {
  CanonicalPath canonical;
  ASSERT_TRUE(IsPermittedRegKey((kRoot + "\\X\\..\\Y").c_str(), canonical));
  EXPECT_EQ(canonical.text, kRoot + "\\Y");
}

TEST(RegistryPolicyTest, APathWithoutDotElementsIsApprovedAsItStands) {
  for (const std::string& path :
       {kRoot, kRoot + "\\x\\Y z\\\xE4", kRoot + "\\a.b\\c", kRoot + "\\x\\"}) {
    CanonicalPath canonical;
    ASSERT_TRUE(IsPermittedRegKey(path.c_str(), canonical)) << path;
    EXPECT_EQ(canonical.text, path);
  }
}

TEST(RegistryPolicyTest, APathOf259BytesIsServedAndALongerOneIsRefused) {
  const std::string filler(300, 'x');
  EXPECT_TRUE(Permits((kRoot + "\\" + filler).substr(0, 259)));
  // The canonicaliser has no room for the terminator of 260 bytes; longer ones it never sees.
  EXPECT_FALSE(Permits((kRoot + "\\" + filler).substr(0, 260)));
  EXPECT_FALSE(Permits((kRoot + "\\" + filler).substr(0, 261)));
}

TEST(RegistryPolicyTest, ALongPathThatWouldResolveToAShortOneIsRefused) {
  std::string path = kRoot;
  while (path.size() <= 260) path += "\\x\\..";
  EXPECT_FALSE(Permits(path));
}

TEST(RegistryPolicyTest, TheLongestTextOfARequestIsRefusedWithoutHarm) {
  EXPECT_FALSE(Permits(std::string(8159, 'a')));
}

}  // namespace
