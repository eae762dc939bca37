#include <gmock/gmock.h>

#include "tests/e2e/RegistryCommandTest.h"

namespace e2e {
namespace {

using testing::ElementsAre;

class RequestSizeTest : public RegistryCommandTest {
 protected:
  const Bytes kServed = Wire("0400 00000000");
  const Bytes kUnknown = Wire("0400 AC210000");
};

TEST_F(RequestSizeTest, LongestRequestIsOneRequest) {
  EXPECT_TRUE(client_.Answers(Padded(Wire("1000")), kServed));
}

TEST_F(RequestSizeTest, WhatIsAboveTheLongestRequestIsTheNextOne) {
  EXPECT_TRUE(client_.Answers(Padded(Wire("1000")) + Wire("0400"), kServed + kUnknown));
}

TEST_F(RequestSizeTest, OneByteAboveTheLongestRequestIsARequestOfOneByte) {
  EXPECT_TRUE(client_.Answers(Padded(Wire("1000")) + Wire("10"),
                              kServed + kUnknown + kUnknown + Wire("0400 9A210000")));
}

TEST_F(RequestSizeTest, VeryLongWriteIsAsManyRequests) {
  EXPECT_TRUE(client_.Answers(Padded(Wire("1000")) + Padded(Wire("0400")) + Padded(Wire("1000")) +
                                  Padded(Wire("FFFF")) + Wire("1000"),
                              kServed + kUnknown + kServed + kUnknown + kServed));
}

TEST_F(RequestSizeTest, RequestThatIsCutAtTheLongestLengthDoesNotGoOnInTheNext) {
  // The text would end two bytes behind the first 8192; they are a request of their own.
  EXPECT_TRUE(client_.Answers(Wire("0200 FC1F0000") + Bytes(8186, 'x') + Wire("1000"),
                              Wire("0400 9A210000") + kServed));
}

TEST_F(RequestSizeTest, TwoRequestsInOneWriteAreOneRequest) {
  EXPECT_TRUE(client_.Answers(Wire("1000 1000"), kServed));
  EXPECT_TRUE(client_.Answers(Wire("0200 1C000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\A'"
                                   "0200 1C000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\B'"),
                              kServed));
  EXPECT_THAT(scratch_.Subkeys(kKey), ElementsAre("A"));
}

TEST_F(RequestSizeTest, ShortRequestDoesNotSeeTheFieldsOfTheLongOneBeforeIt) {
  EXPECT_TRUE(client_.Answers(Wire("0200 1C000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\A'"), kServed));
  EXPECT_TRUE(client_.Answers(Wire("0200 1C000000"), Wire("0400 9A210000")));
  EXPECT_TRUE(client_.Answers(Wire("0200"), Wire("0400 9A210000")));
}

}  // namespace
}  // namespace e2e
