#include "standins/boardsvc32/InventoryFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

namespace boardsim {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// The one error of a file, as "line: text".
std::string ErrorOf(std::string_view text) {
  const InventoryFile file = ParseInventory(text);
  if (file.errors.size() != 1) return std::to_string(file.errors.size()) + " errors";
  return std::to_string(file.errors[0].line) + ": " + file.errors[0].text;
}

constexpr char kBoard[] = "[board]\nname=A\ndevice-id=D\n";

TEST(InventoryFileTest, EveryKeyOfABoardArrives) {
  const InventoryFile file = ParseInventory(
      "[board]\r\nname = NB 410\r\ndevice-id=HWX\r\nnet-type=IE\r\nhardware-id=PCI\\VEN_1&DEV_2\r\n"
      "hardware-instance-id=PCI\\3\r\nmap=7\r\nadapter=LAN\r\nstate=0x10\r\nabandoned-state=45\r\n"
      "present=no\r\nappears-at-scan=2\r\nvanishes-at-scan=3\r\nlogical-device=Dev\r\n");
  ASSERT_THAT(file.errors, IsEmpty());
  ASSERT_THAT(file.inventory.boards, SizeIs(1));
  const Board& board = file.inventory.boards[0];
  EXPECT_EQ(board.name, "NB 410");
  EXPECT_EQ(board.deviceId, "HWX");
  EXPECT_EQ(board.netType, "IE");
  EXPECT_EQ(board.hardwareId, "PCI\\VEN_1&DEV_2");
  EXPECT_EQ(board.hardwareInstanceId, "PCI\\3");
  EXPECT_EQ(board.map, "7");
  EXPECT_EQ(board.adapter, "LAN");
  EXPECT_EQ(board.state, 16u);
  EXPECT_EQ(board.abandonedState, 45u);
  EXPECT_FALSE(board.present);
  EXPECT_EQ(board.appearsAtScan, 2u);
  EXPECT_EQ(board.vanishesAtScan, 3u);
  EXPECT_EQ(board.logicalDevice, "Dev");
}

TEST(InventoryFileTest, ALogicalDeviceIsNamedAfterBoardAndMap) {
  const InventoryFile file =
      ParseInventory("[board]\nname=A\ndevice-id=D\n[board]\nname=A\ndevice-id=D\nmap=2\n");
  ASSERT_THAT(file.errors, IsEmpty());
  EXPECT_EQ(file.inventory.boards[0].logicalDevice, "A");
  EXPECT_EQ(file.inventory.boards[1].logicalDevice, "A.2");
}

TEST(InventoryFileTest, TheOtherSectionsArrive) {
  const InventoryFile file = ParseInventory(
      "[log]\nfile=a.log\n[machine]\nuninitialized-instances=1\n"
      "[available-board]\nname=A\ndevice-id=D\nvalue=9\n[adapter]\nname=L\nmap=1\nvalue=255\n"
      "[configuration]\nboard=A\nmap=1\ndevice-id=D\nhardware-instance-id=I\nconfiguration=C\n"
      "protocol-type=P\nlayer4-protocol=4\nunit=U\n"
      "[map]\nmap=1\ndevice-id=D\nadapter=L\nhardware-id=H\n"
      "[info]\ntype=3\nboard=A\ntext=T\n[info-ex]\ntype=4\nbytes=00 fF 10\n"
      "[instance]\nhardware-id=H\noption=0xFFFFFFFF\ninstance=5\n"
      "[change]\ndevice-id=D\nkind=2\nguid={01234567-89ab-CDEF-0123-456789abcdef}\ntext=X\n"
      "[board-information]\nvalue1=1\nvalue2=2\nvalue3=3\nlast=4\nresult=5\nvalue=6\n"
      "area1=01\narea2=0203\nresult1=7\nresult2=8\n");
  ASSERT_THAT(file.errors, IsEmpty());
  const Inventory& all = file.inventory;
  EXPECT_EQ(file.logFile, "a.log");
  EXPECT_EQ(all.uninitializedInstances, 1u);
  EXPECT_EQ(all.availableBoards.at(0).value, 9u);
  EXPECT_EQ(all.adapters.at(0).value, 255u);
  EXPECT_EQ(all.configurations.at(0).of.hardwareInstanceId, "I");
  EXPECT_EQ(all.configurations.at(0).unit, "U");
  EXPECT_EQ(all.maps.at(0).hardwareId, "H");
  EXPECT_EQ(all.infos.at(0).value, "T");
  EXPECT_EQ(all.infosEx.at(0).value, std::string("\x00\xFF\x10", 3));
  EXPECT_EQ(all.instances.at(0).option, 0xFFFFFFFFu);
  EXPECT_EQ(all.instances.at(0).instance, 5u);
  const DeviceChange& change = all.changes.at(0);
  EXPECT_EQ(change.guid.Data1, 0x01234567u);
  EXPECT_EQ(change.guid.Data3, 0xCDEFu);
  EXPECT_THAT(change.guid.Data4, ElementsAre(0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF));
  EXPECT_EQ(all.informations.at(0).last, 4u);
  EXPECT_EQ(all.informations.at(0).area2, "\x02\x03");
  EXPECT_EQ(all.informations.at(0).result2, 8u);
}

TEST(InventoryFileTest, AnEmptyFileIsAnEmptyMachine) {
  EXPECT_THAT(ParseInventory("").errors, IsEmpty());
  EXPECT_THAT(ParseInventory("; nothing\n\n  # either\n").errors, IsEmpty());
}

TEST(InventoryFileTest, TextInQuotationMarksKeepsBlanksAndTakesEscapes) {
  const InventoryFile file = ParseInventory("[info]\ntype=1\ntext = \" a;\\\\b\\\"\\xe4 \" \n");
  ASSERT_THAT(file.errors, IsEmpty());
  EXPECT_EQ(file.inventory.infos[0].value, " a;\\b\"\xE4 ");
}

TEST(InventoryFileTest, TextWithoutQuotationMarksTakesBackslashesAsTheyAre) {
  const InventoryFile file = ParseInventory("[info]\ntype=1\ntext = \\\\?\\pci#x41=\\x41 \n");
  ASSERT_THAT(file.errors, IsEmpty());
  EXPECT_EQ(file.inventory.infos[0].value, "\\\\?\\pci#x41=\\x41");
}

TEST(InventoryFileTest, QuoteIsTakenBackAsTheSameBytes) {
  const std::string text = "\x01\t\r\n \"\\;#x\x7F\x80\xFF";
  EXPECT_EQ(Quote("a\n\xE4\"\\"), "\"a\\x0a\\xe4\\\"\\\\\"");
  const InventoryFile file = ParseInventory("[info]\ntype=1\ntext=" + Quote(text));
  ASSERT_THAT(file.errors, IsEmpty());
  EXPECT_EQ(file.inventory.infos[0].value, text);
}

TEST(InventoryFileTest, AnErrorNamesItsLine) {
  EXPECT_THAT(ErrorOf("; c\r\n[bord]\r\n"), AllOf(HasSubstr("2: "), HasSubstr("\"bord\"")));
  EXPECT_THAT(ErrorOf("[board]\nname=A\ndevice-id=D\nnettype=X\n"),
              "4: [board] has no key nettype");
  EXPECT_THAT(ErrorOf("\n[board]\nname=A\n"), "2: [board] needs the key device-id");
  EXPECT_THAT(ErrorOf("[info]\ntype=1\ntext=a\ntext=b\n"), HasSubstr("4: this key has a value"));
}

TEST(InventoryFileTest, WhatCannotBeReadIsAnError) {
  EXPECT_THAT(ErrorOf("name=A\n"), HasSubstr("1: a key before"));
  EXPECT_THAT(ErrorOf("[machine\n"), HasSubstr("1: the closing bracket"));
  EXPECT_THAT(ErrorOf("[machine]\nuninitialized-instances\n"), HasSubstr("2: neither"));
  EXPECT_THAT(ErrorOf("[machine]\nUninitialized=1\n"), HasSubstr("2: a key has small letters"));
  EXPECT_THAT(ErrorOf("[map]\nmap=\n"), HasSubstr("2: the value is missing"));
  EXPECT_THAT(ErrorOf("[map]\nmap=1 ; one\n"), HasSubstr("2: a value with ;"));
  EXPECT_THAT(ErrorOf("[map]\nmap=\"1\n"), HasSubstr("2: the closing quotation mark"));
  EXPECT_THAT(ErrorOf("[map]\nmap=\"1\" ; one\n"), HasSubstr("2: something stands behind"));
  EXPECT_THAT(ErrorOf("[map]\nmap=\"\\n\"\n"), HasSubstr("2: after a backslash"));
  EXPECT_THAT(ErrorOf("[map]\nmap=\"\\x0g\"\n"), HasSubstr("2: after a backslash"));
  EXPECT_THAT(ErrorOf("[map]\nmap=\"\\x00\"\n"), HasSubstr("2: after a backslash"));
  EXPECT_THAT(ErrorOf("[map]\nmap=\"\\x4"), HasSubstr("2: after a backslash"));
  EXPECT_THAT(ErrorOf(std::string("[machine]\n;a\0b\n", 15)), HasSubstr("2: a control character"));
  EXPECT_THAT(ErrorOf("\xEF\xBB\xBF[machine]\n"), HasSubstr("1: a byte order mark"));
  EXPECT_THAT(ErrorOf("[machine two]\n"), HasSubstr("1: this section has a name only"));
  EXPECT_THAT(ErrorOf("[machine]\n[machine]\n"), HasSubstr("2: a second section"));
}

TEST(InventoryFileTest, AValueOfTheWrongKindIsAnError) {
  const std::string board = kBoard;
  EXPECT_THAT(ErrorOf(board + "state=4294967296\n"), HasSubstr("4: a number from 0 to 4294967295"));
  EXPECT_THAT(ErrorOf(board + "state=-1\n"), HasSubstr("4: a number"));
  EXPECT_THAT(ErrorOf(board + "state=0x\n"), HasSubstr("4: a number"));
  EXPECT_THAT(ErrorOf(board + "state=1a\n"), HasSubstr("4: a number"));
  EXPECT_THAT(ErrorOf(board + "present=maybe\n"), HasSubstr("4: yes or no"));
  EXPECT_THAT(ErrorOf("[adapter]\nname=L\nvalue=256\n"), HasSubstr("3: a number from 0 to 255"));
  EXPECT_THAT(ErrorOf("[info-ex]\ntype=1\nbytes=012\n"), HasSubstr("3: bytes are pairs"));
  EXPECT_THAT(ErrorOf("[info-ex]\ntype=1\nbytes=0 1\n"), HasSubstr("3: bytes are pairs"));
  EXPECT_THAT(ErrorOf("[info-ex]\ntype=1\nbytes=-1\n"), HasSubstr("3: bytes are pairs"));
  EXPECT_THAT(
      ErrorOf("[change]\ndevice-id=D\nkind=1\nguid={01234567-89ab-cdef-0123+456789abcdef}\n"),
      HasSubstr("4: a GUID"));
  EXPECT_THAT(
      ErrorOf("[change]\ndevice-id=D\nkind=1\nguid={0123456g-89ab-cdef-0123-456789abcdef}\n"),
      HasSubstr("4: a GUID"));
}

TEST(InventoryFileTest, ALogicalDeviceIsAKeyNameAndBelongsToOneBoard) {
  const std::string board = kBoard;
  EXPECT_THAT(ErrorOf(board + "logical-device=a\\b\n"), HasSubstr("4: a logical device"));
  EXPECT_THAT(ErrorOf(board + "logical-device=\"\"\n"), HasSubstr("4: a logical device"));
  EXPECT_THAT(ErrorOf(board + "logical-device=" + std::string(201, 'a') + "\n"),
              HasSubstr("4: a logical device"));
  EXPECT_THAT(ErrorOf(board + "[board]\nname=a\ndevice-id=E\n"), HasSubstr("4: another board"));
}

TEST(InventoryFileTest, AFileWithAnErrorIsNoMachineButKeepsItsLog) {
  const InventoryFile file = ParseInventory(
      "[log]\nfile=x.log\n[board]\nname=A\ndevice-id=D\n[fault BRDX_ScanBL]\ncall=*\nresult=1\n"
      "[oops]\n[machine]\nuninitialised-instances=1\n");
  EXPECT_THAT(file.errors,
              ElementsAre(Field(&InventoryError::line, 9u), Field(&InventoryError::line, 11u)));
  EXPECT_THAT(file.inventory.boards, IsEmpty());
  EXPECT_THAT(file.faults, IsEmpty());
  EXPECT_EQ(file.logFile, "x.log");
}

TEST(InventoryFileTest, AFileThatIsMissingOrTooLargeIsAnError) {
  EXPECT_THAT(LoadInventory("no/such/file.ini").errors,
              ElementsAre(Field(&InventoryError::line, 0u)));

  constexpr char kLarge[] = "inventory_file_test_large.ini";
  std::FILE* const file = std::fopen(kLarge, "wb");
  ASSERT_NE(file, nullptr);
  const std::string blanks(1 << 20, '\n');
  ASSERT_EQ(std::fwrite(blanks.data(), 1, blanks.size(), file), blanks.size());
  ASSERT_EQ(std::fclose(file), 0);
  EXPECT_THAT(LoadInventory(kLarge).errors, IsEmpty());

  std::FILE* const longer = std::fopen(kLarge, "ab");
  ASSERT_NE(longer, nullptr);
  (void)std::fputc('\n', longer);
  ASSERT_EQ(std::fclose(longer), 0);
  EXPECT_THAT(LoadInventory(kLarge).errors, SizeIs(1));
  (void)std::remove(kLarge);
}

}  // namespace
}  // namespace boardsim
