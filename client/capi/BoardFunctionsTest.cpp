#include <gtest/gtest.h>

#include <string>

#include "client/testing/FunctionsFixture.h"

namespace client {
namespace {

class BoardFunctionsTest : public FunctionsFixture {};

constexpr char kMost[] = "00200000";  // the room of 8192 bytes

TEST_F(BoardFunctionsTest, ABoardComesWithItsTextsAndLengths) {
  server_.Answers({"0400 00000000 02000000 4142 03000000 01000000 4D 01000000 00000000 05000000"});
  qorlix_board entry;
  EXPECT_EQ(qorlix_bc_enum_board(client_, "D", 7, &entry), QORLIX_OK);
  EXPECT_EQ(LastRequest(), std::string("C100010000004407000000") + kMost + kMost + kMost);
  EXPECT_STREQ(entry.board.text, "AB");
  EXPECT_EQ(entry.board.length, 3u);
  EXPECT_STREQ(entry.board_map.text, "M");
  EXPECT_STREQ(entry.adapter.text, "");
  EXPECT_EQ(entry.adapter.length, 5u);
  EXPECT_EQ(entry.asked_again, 0u);
}

TEST_F(BoardFunctionsTest, AnInstalledBoardHasSixTextsAndItsState) {
  server_.Answers(
      {"0400 00000000 01000000 41 01000000 01000000 42 01000000 01000000 43 01000000 "
       "01000000 44 01000000 01000000 45 01000000 01000000 46 01000000 09000000"});
  qorlix_inst_board entry;
  EXPECT_EQ(qorlix_bc_enum_inst_board(client_, 1, &entry), QORLIX_OK);
  std::string all;
  for (const qorlix_text_value& text :
       {entry.board, entry.device_id, entry.net_type, entry.hardware_id, entry.hardware_instance_id,
        entry.board_map}) {
    all += text.text;
  }
  EXPECT_EQ(all, "ABCDEF");
  EXPECT_EQ(entry.state, 9u);
}

TEST_F(BoardFunctionsTest, TheOtherEnumerationsTakeTheirTextsAndNumbers) {
  server_.Answers({"0400 00000000 01000000 41 01000000 01000000 42 01000000 07000000"});
  server_.Answers({"0400 00000000 01000000 41 01000000 01000000 42 01000000 08"});
  server_.Answers(
      {"0400 00000000 01000000 41 01000000 01000000 42 01000000 01000000 43 01000000 "
       "01000000 44 01000000"});
  qorlix_available_board available;
  EXPECT_EQ(qorlix_bc_enum_available_board(client_, 1, &available), QORLIX_OK);
  EXPECT_STREQ(available.device_id.text, "B");
  EXPECT_EQ(available.value, 7u);
  qorlix_adapter adapter;
  EXPECT_EQ(qorlix_bc_enum_adapters(client_, 1, &adapter), QORLIX_OK);
  EXPECT_STREQ(adapter.adapter_name.text, "A");
  EXPECT_EQ(adapter.value, 8u);
  const qorlix_board_selection of = {"a", "b", nullptr, "d"};
  qorlix_configuration configuration;
  EXPECT_EQ(qorlix_bc_enum_configuration(client_, 1, &of, &configuration), QORLIX_OK);
  EXPECT_EQ(LastRequest(), std::string("C4000100000001000000610100000062FFFF00000100000064") +
                               kMost + kMost + kMost + kMost);
  EXPECT_STREQ(configuration.layer4_protocol.text, "C");
  EXPECT_STREQ(configuration.unit.text, "D");
}

TEST_F(BoardFunctionsTest, AnAnswerThatDoesNotFitIsAskedForAgainAndSaysSo) {
  server_.Answers({"0400 9A210000 09000000"});
  server_.Answers({"0400 00000000 01000000 41 01000000"});
  server_.Answers({"0400 1F000000 09000000"});
  qorlix_text_value value;
  EXPECT_EQ(qorlix_bc_get_board_info(client_, 3, nullptr, &value), QORLIX_OK);
  EXPECT_EQ(server_.Requests().size(), 2u);
  EXPECT_STREQ(value.text, "A");
  EXPECT_EQ(qorlix_bc_board_get_map(client_, "D", "A", "H", &value), QORLIX_ANSWERED);
  EXPECT_STREQ(value.text, "");
  EXPECT_EQ(value.length, 9u);
}

TEST_F(BoardFunctionsTest, BytesMayHaveZeroesWithin) {
  server_.Answers({"0400 00000000 03000000 410042"});
  qorlix_text_value data;
  EXPECT_EQ(qorlix_bc_get_board_info_ex(client_, 3, nullptr, &data), QORLIX_OK);
  EXPECT_EQ(std::string(data.text, data.size), std::string("A\0B", 3));
}

TEST_F(BoardFunctionsTest, CommandsWithoutAnswersSendTheirCodes) {
  for (int i = 0; i < 5; ++i) server_.Answers({"0400 00000000"});
  EXPECT_EQ(qorlix_bc_scan(client_), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "C700");
  EXPECT_EQ(qorlix_bc_create_all_logdevices(client_), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "C900");
  EXPECT_EQ(qorlix_bc_has_uninitialized_instances(client_), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "5800");
  EXPECT_EQ(qorlix_bc_plausibilitaet(client_), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "2401");
  EXPECT_EQ(qorlix_bc_update_log_devices_for_device(client_, "D", "H"), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "C80001000000440100000048");
}

TEST_F(BoardFunctionsTest, NotificationsSendTheGuidAndAChangeBringsIt) {
  constexpr char kGuid[] = "0403020106050807090A0B0C0D0E0F10";
  server_.Answers({"0400 00000000"});
  server_.Answers({"0400 00000000"});
  server_.Answers({std::string("0400 00000000 02 02000000 4100 02000000 ") + kGuid});
  const qorlix_guid guid = {0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};
  EXPECT_EQ(qorlix_register_for_device_change_notifications(client_, "D", &guid), QORLIX_OK);
  EXPECT_EQ(LastRequest(), std::string("00010100000044") + kGuid);
  EXPECT_EQ(qorlix_unregister_for_device_change_notifications(client_, "D", &guid), QORLIX_OK);
  EXPECT_EQ(LastRequest(), std::string("01010100000044") + kGuid);
  qorlix_device_change change;
  EXPECT_EQ(qorlix_get_device_change(client_, "D", &change), QORLIX_OK);
  EXPECT_EQ(change.kind, 2u);
  EXPECT_EQ(change.change.size, 2u);
  EXPECT_EQ(change.interface_class.data1, 0x01020304u);
  EXPECT_EQ(change.interface_class.data4[7], 16);
}

TEST_F(BoardFunctionsTest, TheStateOfADeviceIsTwoNumbers) {
  server_.Answers({"0400 00000000 05000000 06000000"});
  std::uint32_t status = 0;
  std::uint32_t problem = 0;
  EXPECT_EQ(qorlix_get_device_state(client_, "H", QORLIX_NO_OPTION, &status, &problem), QORLIX_OK);
  EXPECT_EQ(LastRequest(), "22010100000048FFFFFFFF");
  EXPECT_EQ(status, 5u);
  EXPECT_EQ(problem, 6u);
}

}  // namespace
}  // namespace client
