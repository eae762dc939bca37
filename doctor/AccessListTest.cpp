#include "doctor/AccessList.h"

#include <gtest/gtest.h>

namespace doctor {
namespace {

constexpr std::uint32_t kAddFile = 0x2;
constexpr std::uint32_t kAddFolder = 0x4;
constexpr std::uint32_t kDeleteChild = 0x40;
constexpr std::uint32_t kReadAndExecute = 0x1200A9;
constexpr std::uint32_t kFullControl = 0x1F01FF;
constexpr std::uint32_t kGenericAll = 0x10000000;
constexpr std::uint32_t kGenericWrite = 0x40000000;

AccessEntry Allow(Who who, std::uint32_t mask) { return {who, true, false, mask}; }
AccessEntry Deny(Who who, std::uint32_t mask) { return {who, false, false, mask}; }

TEST(AccessListTest, WithoutAListEveryoneMayAndWithAnEmptyOneNobody) {
  EXPECT_EQ(FolderWriters({true, {}}), "Everyone");
  EXPECT_EQ(FileWriters({true, {}}), "Everyone");
  EXPECT_EQ(FolderWriters({}), "");
  EXPECT_EQ(FileWriters({}), "");
}

TEST(AccessListTest, EveryGroupThatMayWriteIsNamedOnce) {
  EXPECT_EQ(
      FolderWriters({false,
                     {Allow(Who::Interactive, kAddFile), Allow(Who::Users, kFullControl),
                      Allow(Who::Users, kDeleteChild), Allow(Who::AuthenticatedUsers, kGenericAll),
                      Allow(Who::Everyone, kGenericWrite)}}),
      "Everyone, Authenticated Users, Users, INTERACTIVE");
}

TEST(AccessListTest, ReadingIsNoWritingAndSomeoneIsNoOrdinaryUser) {
  const AccessList access = {
      false, {Allow(Who::Everyone, kReadAndExecute), Allow(Who::Someone, kFullControl)}};
  EXPECT_EQ(FolderWriters(access), "");
  EXPECT_EQ(FileWriters(access), "");
}

TEST(AccessListTest, AFolderThatTakesFoldersOnlyIsNoPlaceForALibrary) {
  const AccessList access = {false, {Allow(Who::Users, kAddFolder)}};
  EXPECT_EQ(FolderWriters(access), "");
  // Of a file the same bit means to add to its end.
  EXPECT_EQ(FileWriters(access), "Users");
}

TEST(AccessListTest, EveryRightThatLeadsToAnotherFileCounts) {
  for (const std::uint32_t mask : {0x2u, 0x10000u, 0x40000u, 0x80000u}) {
    EXPECT_EQ(FolderWriters({false, {Allow(Who::Users, mask)}}), "Users") << mask;
    EXPECT_EQ(FileWriters({false, {Allow(Who::Users, mask)}}), "Users") << mask;
  }
  EXPECT_EQ(FolderWriters({false, {Allow(Who::Users, kDeleteChild)}}), "Users");
}

TEST(AccessListTest, WhatHoldsBelowOnlyDoesNotHoldHere) {
  EXPECT_EQ(FolderWriters({false, {{Who::Users, true, true, kFullControl}}}), "");
}

TEST(AccessListTest, ADenialInFrontTakesAwayWhatItNames) {
  EXPECT_EQ(FolderWriters({false, {Deny(Who::Users, kFullControl), Allow(Who::Users, kAddFile)}}),
            "");
  EXPECT_EQ(FolderWriters({false, {Deny(Who::Everyone, kAddFile), Allow(Who::Users, kAddFile)}}),
            "");
  EXPECT_EQ(FolderWriters(
                {false, {Deny(Who::Users, kAddFile), Allow(Who::Users, kAddFile | kDeleteChild)}}),
            "Users");
  EXPECT_EQ(FolderWriters({false, {Allow(Who::Users, kAddFile), Deny(Who::Users, kAddFile)}}),
            "Users");
  // Not every user who is authenticated need be interactive.
  EXPECT_EQ(
      FolderWriters(
          {false, {Deny(Who::Interactive, kAddFile), Allow(Who::AuthenticatedUsers, kAddFile)}}),
      "Authenticated Users");
}

}  // namespace
}  // namespace doctor
