#include "trace/TraceOutputs.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

using zqotrc::AppendFile;
using zqotrc::ModificationTime;
using zqotrc::RemoveFile;

constexpr char kName[] = "TraceOutputsTest.TRC";
constexpr char kOther[] = "TraceOutputsTest2.TRC";

/// What the files of the platform and their stand-in have in common.
class TraceOutputsTest : public testing::Test {
 protected:
  TraceOutputsTest() { RemoveBoth(); }
  ~TraceOutputsTest() override { RemoveBoth(); }

  static void RemoveBoth() {
    RemoveFile(kName);
    RemoveFile(kOther);
  }
};

TEST_F(TraceOutputsTest, AFileThatIsMissingIsCreatedEmpty) {
  AppendFile file;
  EXPECT_FALSE(ModificationTime(kName).has_value());
  EXPECT_EQ(file.Open(kName), 0u);
  file.Close();
  EXPECT_TRUE(ModificationTime(kName).has_value());
}

TEST_F(TraceOutputsTest, BytesAreAddedAtTheEnd) {
  AppendFile file;
  (void)file.Open(kName);
  file.Append("abc");
  EXPECT_EQ(file.Size(), 3u);
  EXPECT_EQ(file.Open(kName), 3u);
  file.Append("defg");
  EXPECT_EQ(file.Size(), 7u);
}

TEST_F(TraceOutputsTest, TwoWhoHaveTheFileOpenAddBehindEachOther) {
  AppendFile one;
  AppendFile other;
  (void)one.Open(kName);
  (void)other.Open(kName);
  one.Append("abc");
  other.Append("de");
  one.Append("f");
  EXPECT_EQ(other.Size(), 6u);
}

TEST_F(TraceOutputsTest, AFileThatIsNotOpenHasNoSize) {
  AppendFile file;
  EXPECT_FALSE(file.Size().has_value());
  (void)file.Open(kName);
  file.Close();
  file.Close();
  EXPECT_FALSE(file.Size().has_value());
}

TEST_F(TraceOutputsTest, OpeningAnotherFileClosesTheFirst) {
  AppendFile file;
  (void)file.Open(kName);
  EXPECT_EQ(file.Open(kOther), 0u);
  file.Append("abc");
  RemoveFile(kName);
  EXPECT_FALSE(ModificationTime(kName).has_value());
  EXPECT_TRUE(ModificationTime(kOther).has_value());
}

TEST_F(TraceOutputsTest, ARemovedFileIsGone) {
  {
    AppendFile file;
    (void)file.Open(kName);
    file.Append("abc");
  }
  RemoveFile(kName);
  EXPECT_FALSE(ModificationTime(kName).has_value());
  AppendFile file;
  EXPECT_EQ(file.Open(kName), 0u);
}

TEST_F(TraceOutputsTest, TheFileThatWasWrittenLaterIsYounger) {
  AppendFile file;
  (void)file.Open(kOther);
  file.Append("a");
  (void)file.Open(kName);
  file.Append("a");
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  (void)file.Open(kOther);
  file.Append("b");
  file.Close();
  EXPECT_GT(ModificationTime(kOther).value_or(0), ModificationTime(kName).value_or(0));
}

}  // namespace
