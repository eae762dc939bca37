#include <gtest/gtest.h>

#include <string>

#include "client/testing/FunctionsFixture.h"

// The plain C functions, natively against a fake of the pipe and on Windows against a real one.

namespace client {
namespace {

class FunctionsTest : public FunctionsFixture {};

TEST_F(FunctionsTest, AnAnswerOfZeroIsOkAndEveryOtherIsToldByItsCode) {
  server_.Answers({"0400 00000000"});
  server_.Answers({"0400 1F000000"});
  EXPECT_EQ(qorlix_no_operation(client_), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "1000");
  EXPECT_EQ(qorlix_code(client_), 0u);
  EXPECT_EQ(qorlix_no_operation(client_), QORLIX_ANSWERED);
  EXPECT_EQ(qorlix_code(client_), 31u);
  EXPECT_STREQ(qorlix_code_name(client_), "ERROR_GEN_FAILURE");
}

TEST_F(FunctionsTest, WhereItFailedIsTheStatusAndWhyIsTheCode) {
  server_.AnswersAndCloses({"0400"});
  EXPECT_EQ(qorlix_no_operation(client_), QORLIX_ERR_RECEIVE);
  EXPECT_NE(qorlix_code(client_), 0u);
  server_.IsGone();
  EXPECT_EQ(qorlix_connect(client_), QORLIX_ERR_CONNECT);
  EXPECT_EQ(qorlix_code(client_), 2u);
  EXPECT_NE(std::string(qorlix_text(client_)).find("not running"), std::string::npos);
}

TEST_F(FunctionsTest, ATextThatNoRequestHoldsIsNotSent) {
  const std::string tooLong(8187, 'k');
  EXPECT_EQ(qorlix_reg_create_key(client_, tooLong.c_str()), QORLIX_ERR_REQUEST);
  EXPECT_EQ(qorlix_code(client_), 8602u);
  EXPECT_EQ(server_.Connections(), 0);
}

TEST_F(FunctionsTest, AValueComesWithItsTerminatorAndHoldsWhileItIsUsedInTheNextCall) {
  server_.Answers({"0400 00000000 03000000 414243 07000000"});
  server_.Answers({"0400 00000000 01000000 5A 01000000"});
  qorlix_text_value data;
  EXPECT_EQ(qorlix_reg_get_value(client_, "K", "N", &data), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "1600010000004B010000004E");
  EXPECT_STREQ(data.text, "ABC");
  EXPECT_EQ(data.size, 3u);
  EXPECT_EQ(data.length, 7u);
  EXPECT_EQ(qorlix_reg_get_value(client_, data.text, data.text, &data), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "16000300000041424303000000414243");
  EXPECT_STREQ(data.text, "Z");
}

TEST_F(FunctionsTest, ATextThatFillsAReplyComesWhole) {
  const std::string text(8178, 'x');
  server_.Answers({"0400 00000000 F21F0000" + ToHex(text.data(), text.size()) + "F21F0000"});
  qorlix_text_value data;
  EXPECT_EQ(qorlix_reg_get_value(client_, "K", "N", &data), QORLIX_OK);
  EXPECT_EQ(data.text, text);
  EXPECT_EQ(data.size, 8178u);
}

TEST_F(FunctionsTest, AFailureLeavesEmptyTextsAndTheLengthsThatAreTold) {
  server_.Answers({"0400 EA000000 E8030000"});
  server_.AnswersAndCloses({});
  qorlix_text_value data;
  EXPECT_EQ(qorlix_reg_get_value(client_, "K", "N", &data), QORLIX_ANSWERED);
  EXPECT_STREQ(data.text, "");
  EXPECT_EQ(data.length, 1000u);
  EXPECT_EQ(qorlix_reg_get_value(client_, "K", "N", &data), QORLIX_ERR_RECEIVE);
  EXPECT_STREQ(data.text, "");
  EXPECT_EQ(data.length, 0u);
}

TEST_F(FunctionsTest, EntriesOfEnumerationsAreTakenApart) {
  server_.Answers({"0400 00000000 02000000 4142 02000000"});
  server_.Answers({"0400 00000000 02000000 4142 02000000 01000000 43 05000000"});
  server_.Answers({"0400 03010000 E01F0000 E01F0000"});
  qorlix_text_value name, data;
  EXPECT_EQ(qorlix_reg_enum_key(client_, "K", 7, &name), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "1500010000004B07000000");
  EXPECT_STREQ(name.text, "AB");
  EXPECT_EQ(qorlix_reg_enum_value(client_, "K", 8, &name, &data), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "1700010000004B08000000");
  EXPECT_STREQ(name.text, "AB");
  EXPECT_STREQ(data.text, "C");
  EXPECT_EQ(data.length, 5u);
  EXPECT_EQ(qorlix_reg_enum_value(client_, "K", 9, &name, &data), QORLIX_ANSWERED);
  EXPECT_EQ(qorlix_code(client_), 259u);
  EXPECT_STREQ(name.text, "");
}

TEST_F(FunctionsTest, TheOtherRegistryFunctionsSendTheirFields) {
  for (int i = 0; i < 7; ++i) server_.Answers({"0400 00000000"});
  EXPECT_EQ(qorlix_reg_create_key(client_, "K"), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "0200010000004B");
  EXPECT_EQ(qorlix_reg_del_key(client_, "K"), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "0100010000004B");
  EXPECT_EQ(qorlix_reg_set_value(client_, "K", "N", nullptr), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "0300010000004B010000004EFFFF0000");
  EXPECT_EQ(qorlix_reg_del_value(client_, "K", "N"), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "1200010000004B010000004E");
  EXPECT_EQ(qorlix_reg_create_key_base(client_, QORLIX_ROOT_LOCAL_MACHINE, "K"), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "1D0002000080010000004B");
  EXPECT_EQ(qorlix_reg_del_key_base(client_, 5, "K"), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "1E0005000000010000004B");
  EXPECT_EQ(qorlix_reg_set_value_base(client_, 5, "K", "N", "V"), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "1C0005000000010000004B010000004E0100000056");
}

TEST_F(FunctionsTest, ActionsSendTheirFields) {
  for (int i = 0; i < 4; ++i) server_.Answers({"0400 00000000"});
  EXPECT_EQ(qorlix_install(client_, "D", "L"), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "05000100000044010000004C");
  EXPECT_EQ(qorlix_deinstall(client_, "D", nullptr, "B"), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "06000100000044FFFF00000100000042");
  EXPECT_EQ(qorlix_silent_restart(client_, "L", "E"), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "2001010000004C0100000045");
  EXPECT_EQ(qorlix_get_silent_restart_result(client_, "E"), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "21010100000045");
}

TEST_F(FunctionsTest, AnAddressIsAddedAndTakenAway) {
  server_.Answers({"0400 00000000 05000000 06000000"});
  server_.Answers({"0400 00000000"});
  std::uint32_t context = 0;
  std::uint32_t instance = 0;
  EXPECT_EQ(qorlix_add_ip_address(client_, qorlix_ip_address(1, 2, 3, 4),
                                  qorlix_ip_address(255, 0, 0, 0), 9, &context, &instance),
            QORLIX_OK);
  EXPECT_EQ(LastRequest(), "0C0001020304FF00000009000000");
  EXPECT_EQ(context, 5u);
  EXPECT_EQ(instance, 6u);
  EXPECT_EQ(qorlix_del_ip_address(client_, context), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "0D0005000000");
}

TEST_F(FunctionsTest, WhetherALibraryRanIsToldByTheSecondReply) {
  server_.Answers({"0400 00000000", "0400 00000000 0400 00000000"});
  server_.Answers({"0400 00000000"});
  std::uint32_t ran = 7;
  EXPECT_EQ(qorlix_run_online_panel(client_, &ran), QORLIX_OK);
  EXPECT_EQ(ran, 1u);
  EXPECT_EQ(qorlix_install_wdm_driver(client_, "S", "I", "T", 3, &ran), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "0F0001000000530100000049010000005403000000");
  EXPECT_EQ(ran, 0u);
}

TEST_F(FunctionsTest, AServerIsStopped) {
  server_.AnswersAndCloses({});
  EXPECT_EQ(qorlix_stop_server(client_, 253), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "FD00FD000000");
}

TEST_F(FunctionsTest, WhoServesThePipeIsTold) {
  server_.Answers({"0400 00000000"});
  qorlix_server server = {99, 99, nullptr};
  EXPECT_EQ(qorlix_get_server(client_, &server), QORLIX_OK);
  EXPECT_EQ(server.trust, static_cast<std::uint32_t>(QORLIX_TRUST_NOT_CHECKED));
  EXPECT_EQ(qorlix_no_operation(client_), QORLIX_OK);
  EXPECT_EQ(qorlix_get_server(client_, &server), QORLIX_OK);
  EXPECT_NE(server.trust, static_cast<std::uint32_t>(QORLIX_TRUST_NOT_CHECKED));
  EXPECT_NE(server.trust, static_cast<std::uint32_t>(QORLIX_TRUST_FOREIGN));
  EXPECT_STRNE(server.reason, "");
  EXPECT_EQ(qorlix_set_verification(client_, QORLIX_VERIFY_OFF), QORLIX_OK);
  EXPECT_EQ(qorlix_set_verification(client_, 3), QORLIX_ERR_ARGUMENT);
  EXPECT_EQ(qorlix_set_verification(client_, -1), QORLIX_ERR_ARGUMENT);
}

// A program may print code and text behind every call, so they are not those of the call before.
TEST_F(FunctionsTest, AnArgumentThatIsMissingIsToldByCodeAndTextToo) {
  std::uint32_t number = 0;
  server_.Answers({"0400 00000000"});
  const auto expectTold = [&](qorlix_status status) {
    EXPECT_EQ(status, QORLIX_ERR_ARGUMENT);
    EXPECT_EQ(qorlix_code(client_), 87u);
    EXPECT_STREQ(qorlix_code_name(client_), "ERROR_INVALID_PARAMETER");
    EXPECT_STREQ(qorlix_text(client_), "an argument of the function is null, or has no meaning");
  };
  expectTold(qorlix_call_request(client_, nullptr));
  EXPECT_EQ(qorlix_no_operation(client_), QORLIX_OK);
  EXPECT_EQ(qorlix_code(client_), 0u);
  expectTold(qorlix_begin_request(client_, nullptr, 0));
  expectTold(qorlix_call(client_, QORLIX_NO_OPERATION, nullptr, 5, nullptr, 0, nullptr));
  expectTold(qorlix_begin(client_, QORLIX_NO_OPERATION, nullptr, 5, 0));
  expectTold(qorlix_set_verification(client_, 3));
  expectTold(qorlix_reg_get_value(client_, "K", "N", nullptr));
  expectTold(qorlix_bc_get_board_info(client_, 0, nullptr, nullptr));
  expectTold(qorlix_add_ip_address(client_, 0, 0, 0, nullptr, &number));
}

TEST(HandleTest, ANameOfAPipeThatIsTooLongIsNoName) {
  EXPECT_EQ(qorlix_open(std::string(260, 'p').c_str()), nullptr);
  qorlix_client* const client = qorlix_open(std::string(259, 'p').c_str());
  EXPECT_NE(client, nullptr);
  qorlix_close(client);
}

TEST(HandleTest, NullIsAnswered) {
  qorlix_text_value text;
  std::uint32_t number = 0;
  EXPECT_EQ(qorlix_no_operation(nullptr), QORLIX_ERR_ARGUMENT);
  EXPECT_EQ(qorlix_reg_get_value(nullptr, "K", "N", &text), QORLIX_ERR_ARGUMENT);
  EXPECT_STREQ(text.text, "");
  EXPECT_EQ(qorlix_call(nullptr, 16, nullptr, 0, nullptr, 0, &number), QORLIX_ERR_ARGUMENT);
  EXPECT_EQ(qorlix_wait(nullptr, 0, nullptr, 0, nullptr), QORLIX_ERR_ARGUMENT);
  EXPECT_EQ(qorlix_get_server(nullptr, nullptr), QORLIX_ERR_ARGUMENT);
  EXPECT_EQ(qorlix_last_reply(nullptr, &number), nullptr);
  EXPECT_EQ(qorlix_code(nullptr), 0u);
  EXPECT_STRNE(qorlix_text(nullptr), "");
  qorlix_cancel(nullptr);
  qorlix_close(nullptr);

  qorlix_client* const client = qorlix_open(nullptr);
  EXPECT_EQ(qorlix_reg_get_value(client, "K", "N", nullptr), QORLIX_ERR_ARGUMENT);
  EXPECT_EQ(qorlix_reg_enum_key(client, "K", 0, nullptr), QORLIX_ERR_ARGUMENT);
  EXPECT_EQ(qorlix_reg_enum_value(client, "K", 0, &text, nullptr), QORLIX_ERR_ARGUMENT);
  EXPECT_EQ(qorlix_add_ip_address(client, 0, 0, 0, &number, nullptr), QORLIX_ERR_ARGUMENT);
  EXPECT_EQ(qorlix_get_server(client, nullptr), QORLIX_ERR_ARGUMENT);
  EXPECT_EQ(qorlix_call(client, 16, nullptr, 5, nullptr, 0, nullptr), QORLIX_ERR_ARGUMENT);
  EXPECT_EQ(qorlix_call_request(client, nullptr), QORLIX_ERR_ARGUMENT);
  qorlix_close(client);
}

}  // namespace
}  // namespace client
