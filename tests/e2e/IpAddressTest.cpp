#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/ActionsTest.h"

// Adding and deleting IP addresses.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// 192.168.7.5 with 255.255.255.0 at interface 9.
const Bytes kAdd = Wire("0C00 C0A80705 FFFFFF00 09000000");

// A failing answer of three longs, then it again with the loop's one long behind it.
Bytes Failed(const Bytes& result, const Bytes& outputs = Wire("00000000 00000000")) {
  const Bytes three = Wire("0400") + result + outputs;
  return three + three + Wire("0400") + result;
}

Bytes Delete(const Bytes& context) { return Wire("0D00") + context; }

class IpAddressTest : public ActionsTest, public testing::WithParamInterface<const char*> {};

TEST_F(IpAddressTest, AnAddressIsAddedAndDeletedWithTheContextThatCame) {
  ASSERT_TRUE(client_.Send(kAdd));
  const Bytes reply = client_.Receive(14);
  ASSERT_EQ(reply.substr(0, 6), Wire("0400 00000000"));
  const Bytes context = reply.substr(6, 4);
  EXPECT_NE(context, Wire("00000000"));
  EXPECT_NE(reply.substr(10), Wire("00000000"));
  EXPECT_TRUE(client_.IsServed()) << "one reply only";

  // 5010: the interface has it.
  EXPECT_TRUE(client_.Answers(kAdd, Failed(Wire("92130000"))));
  EXPECT_TRUE(client_.Answers(Delete(context), Wire("0400 00000000")));
  EXPECT_TRUE(client_.Answers(Delete(context), Wire("0400 90040000"))) << "1168: it is gone";
}

TEST_F(IpAddressTest, TheLibraryIsGivenTheNumbersAsTheyCameAndIsFreed) {
  Libraries().Answer("IE_AddIPAddressEx",
                     "result = 0\nnte-context = 0x80000001\nnte-instance = 0xFFFFFFFF");
  EXPECT_TRUE(client_.Answers(Wire("0C00 FFFFFFFF 00000080 FEFFFFFF"),
                              Wire("0400 00000000 01000080 FFFFFFFF")));
  EXPECT_THAT(Libraries().Calls(),
              ElementsAre("IE_AddIPAddressEx address=4294967295 mask=2147483648 "
                          "ifIndex=4294967294 -> 0 nteContext=2147483649 "
                          "nteInstance=4294967295"));
  EXPECT_FALSE(Server().HasModule("ipcfgx.dll"));
  Libraries().ForgetCalls();
  Libraries().Answer("IE_DeleteIPAddressEx", "result = 32");
  EXPECT_TRUE(client_.Answers(Wire("0D00 EFBEADDE"), Wire("0400 20000000")));
  EXPECT_THAT(Libraries().Calls(), ElementsAre("IE_DeleteIPAddressEx nteContext=3735928559 -> 32"));
  EXPECT_FALSE(Server().HasModule("ipcfgx.dll"));
}

// Kept: the loop answers the failure once more.
TEST_F(IpAddressTest, AFailingAdditionIsAnsweredTwiceWithItsOutputs) {
  Libraries().Answer("IE_AddIPAddressEx", "result = 1168\nnte-context = 5\nnte-instance = 6");
  EXPECT_TRUE(client_.Answers(kAdd, Wire("0400 90040000 05000000 06000000"
                                         "0400 90040000 05000000 06000000"
                                         "0400 90040000")));
}

TEST_F(IpAddressTest, OutputsOfOneRequestAreNotThoseOfTheNext) {
  Libraries().Answer("IE_AddIPAddressEx", "result = 0\nnte-context = 5\nnte-instance = 6");
  EXPECT_TRUE(client_.Answers(kAdd, Wire("0400 00000000 05000000 06000000")));
  EXPECT_TRUE(client_.Answers(Wire("0C00"), Failed(Wire("9A210000"))));
}

TEST_F(IpAddressTest, AMissingLibraryIs8603WithTwoZeroOutputs) {
  Libraries().Remove("ipcfgx.dll");
  EXPECT_TRUE(client_.Answers(kAdd, Wire("0400 9B210000 00000000 00000000"
                                         "0400 9B210000 00000000 00000000"
                                         "0400 9B210000")));
  EXPECT_TRUE(client_.Answers(Wire("0D00 01000000"), Wire("0400 9B210000")));
  Libraries().Place("ipcfgx.dll");
}

TEST_F(IpAddressTest, AMissingExportIs8601WithTwoZeroOutputsAndTheLibraryIsFreed) {
  Libraries().PlaceTwin("ipcfgx.dll");
  EXPECT_TRUE(client_.Answers(kAdd, Failed(Wire("99210000"))));
  EXPECT_TRUE(client_.Answers(Wire("0D00 01000000"), Wire("0400 99210000")));
  EXPECT_FALSE(Server().HasModule("ipcfgx.dll"));
  Libraries().Place("ipcfgx.dll");
}

// Only the system folder counts.
TEST_F(IpAddressTest, ALibraryBesideTheServerIsNotTaken) {
  Libraries().Remove("ipcfgx.dll");
  Libraries().PlaceBesideServer("ipcfgx.dll");
  EXPECT_TRUE(client_.Answers(kAdd, Failed(Wire("9B210000"))));
  EXPECT_THAT(Libraries().Calls(), IsEmpty());
  Libraries().RemoveBesideServer("ipcfgx.dll");
  Libraries().Place("ipcfgx.dll");
}

TEST_P(IpAddressTest, AnExceptionIs8604AndTheLibraryIsFreed) {
  const std::string raise = std::string("raise = ") + GetParam();
  Libraries().Answer("IE_AddIPAddressEx", raise);
  EXPECT_TRUE(client_.Answers(kAdd, Failed(Wire("9C210000"))));
  Libraries().Answer("IE_DeleteIPAddressEx", raise);
  EXPECT_TRUE(client_.Answers(Wire("0D00 01000000"), Wire("0400 9C210000")));
  EXPECT_FALSE(Server().HasModule("ipcfgx.dll"));
}

INSTANTIATE_TEST_SUITE_P(EveryException, IpAddressTest,
                         testing::Values("access-violation", "cxx", "divide-by-zero",
                                         "int-overflow"));

}  // namespace
}  // namespace e2e
