#include "standins/ipcfgx/AddressList.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>

namespace standin {
namespace {

constexpr std::uint32_t kMask = 0x00FFFFFF;  // 255.255.255.0 in network order

class AddressListTest : public testing::Test {
 protected:
  // As the process's memory is: zero-filled, no constructor.
  AddressListTest() { std::memset(memory_, 0, sizeof(memory_)); }

  AddressList& list() { return *reinterpret_cast<AddressList*>(memory_); }
  std::uint32_t Add(std::uint32_t address, std::uint32_t mask = kMask, std::uint32_t ifIndex = 1) {
    return list().Add(address, mask, ifIndex, context_, instance_);
  }

  std::uint32_t context_ = 77;
  std::uint32_t instance_ = 77;

 private:
  alignas(AddressList) unsigned char memory_[sizeof(AddressList)];
};

TEST_F(AddressListTest, EveryAddressGetsAContextAndAnInstanceOfItsOwn) {
  EXPECT_EQ(Add(0x0100007F), 0u);
  EXPECT_EQ(context_, 1u);
  EXPECT_EQ(instance_, 1001u);
  EXPECT_EQ(Add(0x0200007F), 0u);
  EXPECT_EQ(context_, 2u);
  EXPECT_EQ(instance_, 1002u);
}

TEST_F(AddressListTest, WhatIsDeletedIsGoneAndItsContextIsNotGivenAgain) {
  ASSERT_EQ(Add(0x0100007F), 0u);
  EXPECT_EQ(list().Delete(1), 0u);
  EXPECT_EQ(list().Delete(1), 1168u);
  EXPECT_EQ(Add(0x0100007F), 0u);
  EXPECT_EQ(context_, 2u);
}

TEST_F(AddressListTest, AnUnknownContextIsNotFound) {
  ASSERT_EQ(Add(0x0100007F), 0u);
  EXPECT_EQ(list().Delete(0), 1168u);
  EXPECT_EQ(list().Delete(2), 1168u);
  EXPECT_EQ(list().Delete(1001), 1168u);
}

TEST_F(AddressListTest, AnInterfaceHasAnAddressOnce) {
  ASSERT_EQ(Add(0x0100007F), 0u);
  EXPECT_EQ(Add(0x0100007F), 5010u);
  EXPECT_EQ(context_, 0u);
  EXPECT_EQ(instance_, 0u);
  EXPECT_EQ(Add(0x0100007F, kMask, /*ifIndex=*/2), 0u);
}

TEST_F(AddressListTest, AddressZeroIsInvalid) { EXPECT_EQ(Add(0), 87u); }

TEST_F(AddressListTest, AMaskIsOnesAndThenZerosInNetworkOrder) {
  EXPECT_EQ(Add(1, 0x00FF00FF), 87u);
  EXPECT_EQ(Add(1, 0xFFFFFF00), 87u);
  EXPECT_EQ(Add(1, 0), 0u);
  EXPECT_EQ(Add(2, 0xFFFFFFFF), 0u);
  EXPECT_EQ(Add(3, 0x00F0FFFF), 0u);
}

TEST_F(AddressListTest, AFullListTakesNoMoreUntilOneGoes) {
  for (std::uint32_t address = 1; address <= AddressList::kMost; ++address) {
    ASSERT_EQ(Add(address), 0u) << address;
  }
  EXPECT_EQ(Add(9999), 1450u);
  EXPECT_EQ(list().Delete(100), 0u);
  EXPECT_EQ(Add(9999), 0u);
  EXPECT_EQ(context_, AddressList::kMost + 1);
}

TEST_F(AddressListTest, ThreadsNeverShareAContext) {
  const auto work = [this](std::uint32_t ifIndex) {
    std::uint32_t context = 0;
    std::uint32_t instance = 0;
    for (std::uint32_t round = 1; round <= 2000; ++round) {
      if (list().Add(round, kMask, ifIndex, context, instance) != 0) ADD_FAILURE();
      if (list().Delete(context) != 0) ADD_FAILURE();
    }
  };
  std::thread other(work, 1);
  work(2);
  other.join();
  EXPECT_EQ(Add(1), 0u);
  EXPECT_EQ(context_, 4001u);
}

}  // namespace
}  // namespace standin
