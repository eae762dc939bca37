#include "server/RequestLog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using request_log::kRecords;
using request_log::Record;

class RequestLogTest : public testing::Test {
 protected:
  RequestLogTest() { request_log::Reset(); }
  ~RequestLogTest() override { request_log::Reset(); }

  static void Serve(std::uint32_t n) {
    request_log::Begin(static_cast<std::uint16_t>(n), static_cast<int>(n % 64), n * 4);
    request_log::End(n + 1);
  }

  std::uint32_t Latest() { return request_log::Latest(records_); }

  Record records_[kRecords];
};

TEST_F(RequestLogTest, ANewOneHoldsNothing) {
  EXPECT_EQ(Latest(), 0u);
  EXPECT_FALSE(request_log::BeingServed(records_[0]));
}

TEST_F(RequestLogTest, ARequestBeingServedShowsWhoAskedForWhat) {
  request_log::Begin(0x121, 63, 0x80000004);
  Record record;
  ASSERT_TRUE(request_log::BeingServed(record));
  EXPECT_EQ(record.number, 1u);
  EXPECT_EQ(record.command, 0x121);
  EXPECT_EQ(record.connection, 63);
  EXPECT_EQ(record.client, 0x80000004u);
  EXPECT_TRUE(record.beingServed);

  ASSERT_EQ(Latest(), 1u);
  EXPECT_TRUE(records_[0].beingServed);
  EXPECT_EQ(records_[0].command, 0x121);
}

TEST_F(RequestLogTest, AServedOneHasItsResultAndIsNotServedAnyMore) {
  request_log::Begin(5, 1, 996);
  request_log::End(0x21AC);
  Record record;
  EXPECT_FALSE(request_log::BeingServed(record));
  ASSERT_EQ(Latest(), 1u);
  EXPECT_FALSE(records_[0].beingServed);
  EXPECT_EQ(records_[0].result, 0x21ACu);
}

TEST_F(RequestLogTest, AResultOfAnEarlierRequestIsNotThatOfTheOneBeingServed) {
  for (std::uint32_t i = 0; i < kRecords; ++i) Serve(7);
  request_log::Begin(5, 1, 996);
  Record record;
  ASSERT_TRUE(request_log::BeingServed(record));
  EXPECT_EQ(record.result, 0u);
}

TEST_F(RequestLogTest, TheLast256AreKeptOldestFirst) {
  for (std::uint32_t n = 1; n <= 1000; ++n) Serve(n);
  ASSERT_EQ(Latest(), kRecords);
  for (std::uint32_t i = 0; i < kRecords; ++i) {
    const std::uint32_t n = 1000 - kRecords + 1 + i;
    EXPECT_EQ(records_[i].number, n);
    EXPECT_EQ(records_[i].command, n);
    EXPECT_EQ(records_[i].connection, n % 64);
    EXPECT_EQ(records_[i].client, n * 4);
    EXPECT_EQ(records_[i].result, n + 1);
    EXPECT_FALSE(records_[i].beingServed);
  }
}

TEST_F(RequestLogTest, TheOneBeingServedIsTheLastOfA256) {
  for (std::uint32_t n = 1; n <= kRecords; ++n) Serve(n);
  request_log::Begin(5, 0, 0);
  ASSERT_EQ(Latest(), kRecords);
  EXPECT_EQ(records_[0].number, 2u);
  EXPECT_TRUE(records_[kRecords - 1].beingServed);
  EXPECT_FALSE(records_[kRecords - 2].beingServed);
}

// The parts of a record all name the same request, or the reader gets none.
TEST_F(RequestLogTest, AReaderNeverSeesTwoRequestsInOne) {
  std::atomic<bool> stop = false;
  std::thread writer([&] {
    for (std::uint32_t n = 1; !stop; ++n) Serve(n & 0xFFFF);
  });
  while (Latest() == 0) std::this_thread::yield();
  for (int i = 0; i < 2000; ++i) {
    Record one;
    if (request_log::BeingServed(one)) {
      EXPECT_EQ(one.client, one.command * 4u);
      EXPECT_EQ(one.connection, one.command % 64);
    }
    const std::uint32_t count = Latest();
    for (std::uint32_t r = 0; r < count; ++r) {
      EXPECT_EQ(records_[r].client, records_[r].command * 4u);
      EXPECT_TRUE(records_[r].result == 0 || records_[r].result == records_[r].command + 1u);
    }
  }
  stop = true;
  writer.join();
}

}  // namespace
