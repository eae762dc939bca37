#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "client/CommandInfo.h"
#include "client/testing/FunctionsFixture.h"

namespace client {
namespace {

class MessagesTest : public FunctionsFixture {
 protected:
  static std::string BytesOf(const qorlix_request* request) {
    std::uint32_t size = 0;
    const std::uint8_t* const bytes = qorlix_request_bytes(request, &size);
    return bytes != nullptr ? ToHex(bytes, size) : "unusable";
  }
  std::string LastReply() const {
    std::uint32_t size = 0;
    const std::uint8_t* const bytes = qorlix_last_reply(client_, &size);
    return bytes != nullptr ? ToHex(bytes, size) : "none";
  }
  qorlix_status WaitForEnd() {
    for (int i = 0; i < 1000; ++i) {
      const qorlix_status status = qorlix_wait(client_, 20, nullptr, 0, nullptr);
      if (status != QORLIX_PENDING) return status;
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return QORLIX_PENDING;
  }
};

TEST_F(MessagesTest, ACommandIsSentWithItsFieldsAndItsReplyIsHandedOver) {
  server_.Answers({"0400 00000000 01000000 41 01000000"});
  const std::vector<std::uint8_t> fields = FromHex("010000004B 010000004E");
  std::uint8_t reply[64];
  std::uint32_t size = 0;
  EXPECT_EQ(qorlix_call(client_, QORLIX_REG_GET_VALUE, fields.data(),
                        static_cast<std::uint32_t>(fields.size()), reply, sizeof(reply), &size),
            QORLIX_OK);
  EXPECT_EQ(LastRequest(), "1600010000004B010000004E");
  EXPECT_EQ(ToHex(reply, size),
            "0400000000000100000041"
            "01000000");
  EXPECT_EQ(LastReply(), ToHex(reply, size));
}

TEST_F(MessagesTest, AReplyThatIsLongerThanItsRoomLeavesTheRoomAlone) {
  server_.Answers({"0400 1F000000"});
  std::uint8_t reply[5] = {1, 2, 3, 4, 5};
  std::uint32_t size = 0;
  EXPECT_EQ(qorlix_call(client_, QORLIX_NO_OPERATION, nullptr, 0, reply, sizeof(reply), &size),
            QORLIX_ERR_ROOM);
  EXPECT_EQ(size, 6u);
  EXPECT_EQ(qorlix_code(client_), 31u);
  EXPECT_EQ(ToHex(reply, sizeof(reply)), "0102030405");
  EXPECT_EQ(LastReply(), "04001F000000");
}

TEST_F(MessagesTest, ACommandThatNobodyKnowsIsSentToo) {
  server_.Answers({"0400 AC210000"});
  EXPECT_EQ(qorlix_call(client_, 4711, "ab", 2, nullptr, 0, nullptr), QORLIX_ANSWERED);
  EXPECT_EQ(LastRequest(), "67126162");
  EXPECT_EQ(qorlix_code(client_), 8620u);
}

TEST_F(MessagesTest, FieldsThatDoNotFitARequestAreNotSent) {
  const std::vector<std::uint8_t> fields(8191);
  EXPECT_EQ(qorlix_call(client_, 16, fields.data(), 8191, nullptr, 0, nullptr), QORLIX_ERR_REQUEST);
  EXPECT_EQ(qorlix_begin(client_, 16, fields.data(), 0xFFFFFFFF, 100), QORLIX_ERR_REQUEST);
  EXPECT_EQ(qorlix_code(client_), 8602u);
  EXPECT_EQ(server_.Connections(), 0);
}

TEST_F(MessagesTest, ARequestIsBuiltFieldByField) {
  qorlix_request* const request = qorlix_request_create(QORLIX_GET_DEVICE_CHANGE);
  ASSERT_NE(request, nullptr);
  const qorlix_guid guid = {0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};
  qorlix_add_byte(request, 0xAA);
  qorlix_add_short(request, 0xBBCC);
  qorlix_add_long(request, 0x01020304);
  qorlix_add_text(request, "A");
  qorlix_add_text(request, nullptr);
  qorlix_add_buffer(request, "xy", 2);
  qorlix_add_buffer(request, nullptr, 0);
  qorlix_add_guid(request, &guid);
  EXPECT_EQ(BytesOf(request),
            "0201AACCBB040302010100000041FFFF0000020000007879FFFF0000"
            "0403020106050807090A0B0C0D0E0F10");
  server_.Answers({"0400 1F000000"});
  EXPECT_EQ(qorlix_call_request(client_, request), QORLIX_ANSWERED);
  EXPECT_EQ(LastRequest(), BytesOf(request));
  qorlix_request_free(request);
}

TEST_F(MessagesTest, ARequestThatOutgrewItsLimitIsToldWhenItIsUsed) {
  qorlix_request* const request = qorlix_request_create(16);
  const std::string text(8180, 't');
  qorlix_add_text(request, text.c_str());
  EXPECT_NE(qorlix_request_bytes(request, nullptr), nullptr);
  qorlix_add_text(request, text.c_str());
  EXPECT_EQ(BytesOf(request), "unusable");
  EXPECT_EQ(qorlix_call_request(client_, request), QORLIX_ERR_REQUEST);
  EXPECT_EQ(qorlix_begin_request(client_, request, 100), QORLIX_ERR_REQUEST);
  EXPECT_EQ(server_.Connections(), 0);
  qorlix_request_free(request);
}

TEST_F(MessagesTest, AReplyIsTakenApartAndNothingIsReadBehindItsEnd) {
  const std::vector<std::uint8_t> reply =
      FromHex("0400 05000000 07 08000000 02000000 4142 01000000 43 00000000");
  const auto size = static_cast<std::uint32_t>(reply.size());
  EXPECT_EQ(qorlix_reply_result(reply.data(), size), 5u);
  qorlix_reader reader;
  qorlix_read(&reader, reply.data(), size);
  EXPECT_EQ(qorlix_take_byte(&reader), 7);
  EXPECT_EQ(qorlix_take_long(&reader), 8u);
  std::uint32_t length = 0;
  const char* text = qorlix_take_text(&reader, &length);
  EXPECT_EQ(std::string(text, length), "AB");
  text = qorlix_take_text(&reader, &length);
  EXPECT_EQ(std::string(text, length), "C");
  EXPECT_STREQ(qorlix_take_text(&reader, &length), "");
  EXPECT_EQ(reader.failed, 0);
  EXPECT_EQ(qorlix_take_long(&reader), 0u);
  EXPECT_EQ(reader.failed, 1);
}

TEST_F(MessagesTest, ALengthThatLiesAndAReaderThatWasTamperedWithReadNothing) {
  const std::vector<std::uint8_t> reply = FromHex("0400 00000000 FEFFFFFF 41");
  qorlix_reader reader;
  qorlix_read(&reader, reply.data(), static_cast<std::uint32_t>(reply.size()));
  std::uint32_t length = 9;
  EXPECT_STREQ(qorlix_take_text(&reader, &length), "");
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(reader.failed, 1);
  qorlix_read(&reader, reply.data(), static_cast<std::uint32_t>(reply.size()));
  reader.cursor = 0xFFFFFFFE;
  EXPECT_EQ(qorlix_take_long(&reader), 0u);
  EXPECT_EQ(reader.failed, 1);
  qorlix_read(&reader, reply.data(), 5);
  EXPECT_EQ(reader.failed, 1);
  qorlix_guid guid;
  qorlix_take_guid(&reader, &guid);
  EXPECT_EQ(guid.data1, 0u);
  EXPECT_EQ(qorlix_reply_result(reply.data(), 5), 0xFFFFFFFFu);
  EXPECT_EQ(qorlix_reply_result("\5\0\0\0\0\0", 6), 0xFFFFFFFFu);
}

TEST_F(MessagesTest, ACallThatWasBegunIsFetchedLater) {
  server_.Answers({"0400 1F000000"});
  EXPECT_EQ(qorlix_begin(client_, QORLIX_NO_OPERATION, nullptr, 0, 5000), QORLIX_OK);
  EXPECT_EQ(qorlix_no_operation(client_), QORLIX_ERR_REQUEST);
  EXPECT_EQ(qorlix_code(client_), 170u);
  EXPECT_EQ(WaitForEnd(), QORLIX_ANSWERED);
  EXPECT_EQ(qorlix_code(client_), 31u);
  EXPECT_EQ(LastReply(), "04001F000000");
  EXPECT_EQ(qorlix_wait(client_, 0, nullptr, 0, nullptr), QORLIX_ERR_REQUEST);
  EXPECT_EQ(qorlix_code(client_), 1168u);
}

// Natively a busy pipe takes no time in any case.
TEST_F(MessagesTest, TheDeadlineOfACallHoldsForTheConnectionToo) {
  server_.IsBusy();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(qorlix_begin(client_, QORLIX_NO_OPERATION, nullptr, 0, 100), QORLIX_ERR_CONNECT);
  EXPECT_EQ(qorlix_code(client_), 231u);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2500));
}

TEST_F(MessagesTest, ACallIsCancelledOrRunsOutOfTime) {
  server_.StaysSilent();
  ASSERT_EQ(qorlix_begin(client_, QORLIX_NO_OPERATION, nullptr, 0, 60000), QORLIX_OK);
  EXPECT_EQ(qorlix_wait(client_, 0, nullptr, 0, nullptr), QORLIX_PENDING);
  EXPECT_EQ(qorlix_code(client_), 996u);
  EXPECT_STREQ(qorlix_text(client_), "the call is under way: its reply has not come yet");
  while (server_.Requests().empty()) std::this_thread::yield();
  qorlix_cancel(client_);
  EXPECT_EQ(qorlix_wait(client_, 60000, nullptr, 0, nullptr), QORLIX_ERR_RECEIVE);
  EXPECT_EQ(qorlix_code(client_), 1223u);

  server_.StaysSilent();
  qorlix_request* const request = qorlix_request_create(QORLIX_NO_OPERATION);
  ASSERT_EQ(qorlix_begin_request(client_, request, 30), QORLIX_OK);
  qorlix_request_free(request);
  EXPECT_EQ(WaitForEnd(), QORLIX_ERR_RECEIVE);
  EXPECT_EQ(qorlix_code(client_), 258u);
}

TEST(CommandListTest, TheListIsTheTableAndEveryCommandHasItsConstant) {
  const std::set<std::uint32_t> constants = {
      QORLIX_REG_DEL_KEY,
      QORLIX_REG_CREATE_KEY,
      QORLIX_REG_SET_VALUE,
      QORLIX_INSTALL,
      QORLIX_DEINSTALL,
      QORLIX_ADD_IP_ADDRESS,
      QORLIX_DEL_IP_ADDRESS,
      QORLIX_INSTALL_WDM_DRIVER_32,
      QORLIX_NO_OPERATION,
      QORLIX_RUN_ONLINE_PANEL_32,
      QORLIX_REG_DEL_VALUE,
      QORLIX_REG_ENUM_KEY,
      QORLIX_REG_GET_VALUE,
      QORLIX_REG_ENUM_VALUE,
      QORLIX_REG_SET_VALUE_BASE,
      QORLIX_REG_CREATE_KEY_BASE,
      QORLIX_REG_DEL_KEY_BASE,
      QORLIX_BC_HAS_UNINITIALIZED_INSTANCES,
      QORLIX_BC_BOARD_GET_MAP,
      QORLIX_GET_BOARD_INFORMATION,
      QORLIX_BC_ENUM_INST_BOARD,
      QORLIX_BC_ENUM_BOARD,
      QORLIX_BC_ENUM_AVAILABLE_BOARD,
      QORLIX_BC_GET_BOARD_INFO,
      QORLIX_BC_ENUM_CONFIGURATION,
      QORLIX_BC_ENUM_ADAPTERS,
      QORLIX_BC_SCAN,
      QORLIX_BC_UPDATE_LOG_DEVICES_FOR_DEVICE,
      QORLIX_BC_CREATE_ALL_LOGDEVICES,
      QORLIX_BC_GET_BOARD_INFO_EX,
      QORLIX_TEST_FUNCTION,
      QORLIX_STOP_SERVER,
      QORLIX_REGISTER_FOR_DEVICE_CHANGE_NOTIFICATIONS,
      QORLIX_UNREGISTER_FOR_DEVICE_CHANGE_NOTIFICATIONS,
      QORLIX_GET_DEVICE_CHANGE,
      QORLIX_SILENT_RESTART,
      QORLIX_GET_SILENT_RESTART_RESULT,
      QORLIX_GET_DEVICE_STATE_EX,
      QORLIX_BC_PLAUSIBILITAET_BL,
  };
  std::set<std::uint32_t> listed;
  qorlix_command command;
  for (std::uint32_t i = 0; qorlix_get_command(i, &command) == QORLIX_OK; ++i) {
    listed.insert(command.code);
    EXPECT_STREQ(command.name, FindCommand(command.code)->name);
    EXPECT_STREQ(command.request, FindCommand(command.code)->request);
  }
  EXPECT_EQ(qorlix_command_count(), 39u);
  EXPECT_EQ(listed, constants);
  EXPECT_STREQ(command.name, "");
}

}  // namespace
}  // namespace client
