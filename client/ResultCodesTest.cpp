#include "client/ResultCodes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "client/PipeTransport.h"
#include "client/Result.h"

namespace client {
namespace {

TEST(ResultCodesTest, EveryCodeThatTheServerDefinesOrSendsHasANameAndAText) {
  EXPECT_STREQ(ResultName(0), "SRV_OK");
  EXPECT_STREQ(ResultName(5), "ERROR_ACCESS_DENIED");
  // Not the platform's name, which it gives to 1115 less one word.
  EXPECT_STREQ(ResultName(1255), "SRV_SHUTDOWN_IN_PROGRESS");
  EXPECT_STREQ(ResultName(8602), "BUFFER_OVERFLOW");
  EXPECT_STREQ(ResultName(8603), "SRV_ERR_DLL_NOT_FOUND");
  EXPECT_STREQ(ResultName(8604), "SRV_ERR_EXCEPTION_OCCURED");
  EXPECT_STREQ(ResultName(8620), "SRV_ERR_UNKNOWN_COMMAND");
  for (const std::uint32_t code : {8601u, 8606u}) EXPECT_STRNE(ResultName(code), "") << code;
}

TEST(ResultCodesTest, TheUsualCodesOfThePlatformHaveNames) {
  for (const std::uint32_t code :
       {2u,   3u,   6u,   14u,  31u,  34u,  87u,  109u, 121u, 126u, 127u, 183u,
        193u, 231u, 232u, 233u, 234u, 258u, 259u, 995u, 997u, 998u, 1359u}) {
    EXPECT_STRNE(ResultName(code), "") << code;
  }
}

TEST(ResultCodesTest, TextsAreClausesAndNamesAreUnique) {
  std::set<std::string> names;
  for (const ResultCode& entry : KnownResultCodes()) {
    const std::string text = entry.text;
    ASSERT_FALSE(text.empty()) << entry.code;
    EXPECT_NE(text.back(), '.') << entry.code;
    if (*entry.name != '\0') {
      EXPECT_TRUE(names.insert(entry.name).second) << entry.name;
    }
    EXPECT_STREQ(ResultText(entry.code), entry.text);
  }
}

TEST(ResultCodesTest, AnUnknownCodeHasNoNameButAText) {
  for (const std::uint32_t code : {7u, 8605u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    EXPECT_STREQ(ResultName(code), "");
    EXPECT_STRNE(ResultText(code), "");
  }
}

TEST(ResultCodesTest, TheServersExitCodesHaveMeaningsOfTheirOwn) {
  EXPECT_NE(std::strstr(ServerExitText(183), "another server"), nullptr);
  EXPECT_NE(std::strstr(ServerExitText(0xC0000135), "boardsvc32.dll"), nullptr);
  EXPECT_STREQ(ServerExitText(5), ResultText(5));
}

TEST(ResultTest, OnlyAnAnswerOfZeroIsOk) {
  EXPECT_TRUE(Result().ok());
  EXPECT_TRUE(Result::FromServer(0).ok());
  EXPECT_FALSE(Result::FromServer(2).ok());
  EXPECT_FALSE(Result(Origin::Connect, 0).ok());
  EXPECT_TRUE(Result::FromServer(2).is(2));
  EXPECT_FALSE(Result(Origin::Connect, 2).is(2));
}

TEST(ResultTest, TheSameCodeReadsDifferentlyFromServerAndTransport) {
  EXPECT_STREQ(Result::FromServer(2).text(), ResultText(2));
  EXPECT_NE(std::strstr(Result(Origin::Connect, 2).text(), "not running"), nullptr);
  EXPECT_NE(std::strstr(Result(Origin::Connect, 231).text(), "busy"), nullptr);
  EXPECT_NE(std::strstr(Result(Origin::Connect, 5).text(), "admit"), nullptr);
  EXPECT_NE(std::strstr(Result(Origin::Receive, 109).text(), "closed"), nullptr);
  EXPECT_NE(std::strstr(Result(Origin::Receive, kTimedOut).text(), "no whole reply"), nullptr);
  EXPECT_NE(std::strstr(Result(Origin::Request, 8602).text(), "8192"), nullptr);
}

}  // namespace
}  // namespace client
