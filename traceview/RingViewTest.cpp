#include "traceview/RingView.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "trace/TraceRing.h"

// Rings are written by the facility's own arithmetic and read back.

namespace traceview {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RingViewTest : public testing::Test {
 protected:
  void MakeRing(std::uint32_t size) {
    words_.assign((size + zqotrc::kRingOverhead + 3) / 4, 0);
    ring_ = zqotrc::RingAt(words_.data(), size);
    zqotrc::BeginRing(ring_);
  }
  void Store(const std::string& line) { zqotrc::StoreInRing(ring_, line + "\r\n"); }

  std::span<const std::uint8_t> Mapped() const {
    return {reinterpret_cast<const std::uint8_t*>(words_.data()), words_.size() * 4};
  }
  std::string Read() {
    problem_.clear();
    content_ = {};
    return ReadRing(Mapped(), content_, problem_) ? content_.text : "failed";
  }
  RingFollower::News Poll(RingFollower& follower) {
    RingFollower::News news;
    EXPECT_TRUE(follower.Poll(Mapped(), news, problem_)) << problem_;
    return news;
  }

  std::vector<std::uint32_t> words_;
  zqotrc::Ring ring_;
  RingContent content_;
  std::string problem_;
};

TEST_F(RingViewTest, ARingThatNeverWrappedIsReadFromItsStart) {
  MakeRing(100);
  EXPECT_EQ(Read(), "");
  Store("one");
  Store("two");
  EXPECT_EQ(Read(), "one\r\ntwo\r\n");
  EXPECT_FALSE(content_.beginsLate);
  EXPECT_EQ(content_.state.offset, 10u);
  EXPECT_EQ(content_.state.attached, 1u);
}

TEST_F(RingViewTest, AWrappedRingBeginsAtItsOldestWholeLine) {
  MakeRing(12);
  Store("aaa");
  Store("bbb");
  Store("ccc");
  EXPECT_EQ(content_.state.wraps, 0u);
  EXPECT_EQ(Read(), "bbb\r\nccc\r\n");
  EXPECT_TRUE(content_.beginsLate);
  EXPECT_EQ(content_.state.wraps, 1u);
}

TEST_F(RingViewTest, ARingThatEndsExactlyAtItsEndIsReadWhole) {
  MakeRing(10);
  Store("aaa");
  Store("bbb");
  EXPECT_EQ(content_.state.wraps, 0u);
  EXPECT_EQ(Read(), "aaa\r\nbbb\r\n");
}

TEST_F(RingViewTest, AWrappedRingWithoutALineEndHasNoLine) {
  MakeRing(10);
  zqotrc::StoreInRing(ring_, "aaaaaaaaaabbbb");
  EXPECT_EQ(Read(), "");
}

TEST_F(RingViewTest, HostileHeadersAreRefused) {
  MakeRing(100);
  Store("one");
  const auto refused = [this](std::uint32_t word, std::uint32_t value) {
    const std::uint32_t before = words_[word];
    words_[word] = value;
    const std::string text = Read();
    words_[word] = before;
    return text == "failed" ? problem_ : "was read";
  };
  EXPECT_THAT(refused(zqotrc::kRingLayout, 2), HasSubstr("layout 2"));
  EXPECT_THAT(refused(zqotrc::kRingSize, 0), HasSubstr("0 bytes"));
  EXPECT_THAT(refused(zqotrc::kRingSize, 0xFFFFFFFF), HasSubstr("4294967295 bytes"));
  EXPECT_THAT(refused(zqotrc::kRingSize, 105), HasSubstr("105 bytes"));
  EXPECT_THAT(refused(zqotrc::kRingOffset, 101), HasSubstr("beyond its size"));
  EXPECT_EQ(Read(), "one\r\n");
  words_.resize(16);
  EXPECT_EQ(Read(), "failed");
  words_.clear();
  EXPECT_EQ(Read(), "failed");
}

using RingFollowerTest = RingViewTest;

TEST_F(RingFollowerTest, NewLinesComeOnceAcrossTheWrap) {
  MakeRing(22);
  Store("old");
  (void)Read();
  RingFollower follower(content_);
  EXPECT_THAT(Poll(follower).lines, IsEmpty());
  Store("aaaaaa");
  EXPECT_THAT(Poll(follower).lines, ElementsAre("aaaaaa"));
  Store("bbbbbb");
  Store("cccccc");
  const RingFollower::News news = Poll(follower);
  EXPECT_THAT(news.lines, ElementsAre("bbbbbb", "cccccc"));
  EXPECT_EQ(news.lost, 0u);
  EXPECT_THAT(Poll(follower).lines, IsEmpty());
}

TEST_F(RingFollowerTest, WhatWasOverwrittenIsCountedAndHalfALineIsNotShown) {
  MakeRing(20);
  (void)Read();
  RingFollower follower(content_);
  for (const char* const line : {"aaaaaa", "bbbbbb", "cccccc", "dddddd"}) Store(line);
  const RingFollower::News news = Poll(follower);
  EXPECT_THAT(news.lines, ElementsAre("cccccc", "dddddd"));
  // 32 bytes were written; the last 16 are the two lines that are shown, but for a "\n".
  EXPECT_GE(news.lost, 32u - 20u);
  Store("eeeeee");
  EXPECT_THAT(Poll(follower).lines, ElementsAre("eeeeee"));
}

TEST_F(RingFollowerTest, AnExactlyFullTurnIsSeen) {
  MakeRing(16);
  Store("aaaaaa");
  (void)Read();
  RingFollower follower(content_);
  Store("bbbbbb");
  Store("cccccc");
  EXPECT_THAT(Poll(follower).lines, ElementsAre("bbbbbb", "cccccc"));
}

TEST_F(RingFollowerTest, AWrapCountAtItsLargestStillLetsLinesThrough) {
  MakeRing(20);
  words_[zqotrc::kRingWraps] = UINT32_MAX;
  (void)Read();
  RingFollower follower(content_);
  Store("aaaaaa");
  EXPECT_THAT(Poll(follower).lines, ElementsAre("aaaaaa"));
  Store("bbbbbb");
  Store("c");
  EXPECT_THAT(Poll(follower).lines, ElementsAre("bbbbbb", "c"));
  Store("dddddd");
  const RingFollower::News news = Poll(follower);
  EXPECT_THAT(news.lines, ElementsAre("dddddd"));
  EXPECT_EQ(news.lost, 0u);
}

TEST_F(RingFollowerTest, ARingThatWasSetBackIsReadFromItsStart) {
  MakeRing(40);
  Store("aaaaaa");
  Store("bbbbbb");
  (void)Read();
  RingFollower follower(content_);
  zqotrc::BeginRing(ring_);
  Store("c");
  EXPECT_THAT(Poll(follower).lines, ElementsAre("c"));
}

TEST_F(RingFollowerTest, ARingThatIsNoneAnyMoreIsSaid) {
  MakeRing(40);
  (void)Read();
  RingFollower follower(content_);
  words_[zqotrc::kRingLayout] = 7;
  RingFollower::News news;
  EXPECT_FALSE(follower.Poll(Mapped(), news, problem_));
  EXPECT_THAT(problem_, HasSubstr("layout 7"));
}

TEST_F(RingFollowerTest, HalfALineWaitsForItsEnd) {
  MakeRing(40);
  (void)Read();
  RingFollower follower(content_);
  zqotrc::StoreInRing(ring_, "half");
  EXPECT_THAT(Poll(follower).lines, IsEmpty());
  zqotrc::StoreInRing(ring_, " line\r\n");
  EXPECT_THAT(Poll(follower).lines, ElementsAre("half line"));
}

}  // namespace
}  // namespace traceview
