#include "client/RequestBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "client/testing/ScriptedServer.h"

namespace client {
namespace {

std::string Hex(const RequestBuilder& request) {
  return ToHex(request.Request().data(), request.Request().size());
}

TEST(RequestBuilderTest, ARequestBeginsWithItsCodeInTwoBytes) {
  EXPECT_EQ(Hex(RequestBuilder(CommandCode::NoOperation)), "1000");
  EXPECT_EQ(Hex(RequestBuilder(CommandCode::BC_PlausibilitaetBL)), "2401");
}

TEST(RequestBuilderTest, FieldsFollowWithoutPaddingLowestByteFirst) {
  RequestBuilder request(CommandCode::Reg_SetValue);
  request.Text("AB").Byte(0x11).Short(0x2233).Long(0x44556677).LongLong(0x8899AABBCCDDEEFF);
  EXPECT_EQ(Hex(request), "030002000000414211332277665544FFEEDDCCBBAA9988");
  EXPECT_TRUE(request.Complete());
}

TEST(RequestBuilderTest, EmptyAndAbsentTextsDiffer) {
  EXPECT_EQ(Hex(RequestBuilder(CommandCode::Reg_DelKey).Text("")), "010000000000");
  EXPECT_EQ(Hex(RequestBuilder(CommandCode::Reg_DelKey).AbsentText()), "0100FFFF0000");
  EXPECT_EQ(Hex(RequestBuilder(CommandCode::Reg_DelKey).Text(nullptr)), "0100FFFF0000");
  EXPECT_EQ(Hex(RequestBuilder(CommandCode::Reg_DelKey).AbsentBuffer()), "0100FFFF0000");
}

TEST(RequestBuilderTest, ABufferIsSentWithItsLength) {
  const std::vector<std::uint8_t> bytes = {1, 0, 2};
  EXPECT_EQ(Hex(RequestBuilder(CommandCode::GetBoardInformation).Buffer(bytes)),
            "BF0003000000010002");
}

TEST(RequestBuilderTest, TheLastByteOfTheServersBufferIsUsedAndNoneBehindIt) {
  RequestBuilder fits(CommandCode::Reg_DelKey);
  fits.Text(std::string(8186, 'a'));
  EXPECT_TRUE(fits.Complete());
  EXPECT_EQ(fits.Request().size(), 8192u);

  RequestBuilder tooLong(CommandCode::Reg_DelKey);
  tooLong.Text(std::string(8187, 'a'));
  EXPECT_FALSE(tooLong.Complete());
  EXPECT_LE(tooLong.Request().size(), 8192u);
}

TEST(RequestBuilderTest, ATextOfTheLengthThatMeansAbsentIsRefused) {
  RequestBuilder request(CommandCode::Reg_DelKey);
  request.Text(std::string(65535, 'a'));
  EXPECT_FALSE(request.Complete());
}

TEST(RequestBuilderTest, OnceAFieldDidNotFitNothingIsAddedAnyMore) {
  RequestBuilder request(CommandCode::Reg_DelKey);
  request.Text(std::string(9000, 'a'));
  const std::size_t size = request.Request().size();
  request.Byte(1).Text("short").Long(2);
  EXPECT_FALSE(request.Complete());
  EXPECT_EQ(request.Request().size(), size);
}

}  // namespace
}  // namespace client
