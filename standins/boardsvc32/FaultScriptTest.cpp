#include "standins/boardsvc32/FaultScript.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "standins/boardsvc32/InventoryFile.h"

namespace boardsim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;

Fault FaultOf(std::string_view text) {
  InventoryFile file = ParseInventory(text);
  for (const InventoryError& error : file.errors) ADD_FAILURE() << error.line << ": " << error.text;
  return file.faults.empty() ? Fault() : file.faults[0];
}

std::string ErrorOf(std::string_view text) {
  const InventoryFile file = ParseInventory(text);
  return file.errors.size() == 1 ? std::to_string(file.errors[0].line) + ": " + file.errors[0].text
                                 : std::to_string(file.errors.size()) + " errors";
}

TEST(FaultScriptTest, EveryKeyArrives) {
  const Fault fault = FaultOf(
      "\n[fault BRDX_EnumBoardExBL]\ncall = 2-0x4\nresult=31\ndelay=250\nraise=cxx\nfill=capacity\n"
      "length=8161 - 0xFFFFFFFF\n");
  EXPECT_EQ(fault.line, 2u);
  EXPECT_EQ(fault.operation, Operation::kEnumBoard);
  EXPECT_EQ(fault.first, 2u);
  EXPECT_EQ(fault.last, 4u);
  EXPECT_THAT(fault.result, Optional(31u));
  EXPECT_EQ(fault.delay, 250u);
  EXPECT_EQ(fault.raised, Raised::kCxx);
  EXPECT_EQ(fault.fill, Fill::kCapacity);
  EXPECT_THAT(fault.lengths, ElementsAre(8161u, std::nullopt, 0xFFFFFFFFu));
}

TEST(FaultScriptTest, OneLengthIsForAll) {
  const Fault fault = FaultOf("[fault BRDX_EnumAdaptersBL]\ncall=*\nlength=8160\n");
  EXPECT_THAT(fault.lengths, ElementsAre(8160u, 8160u));
  EXPECT_EQ(fault.result, std::nullopt);
}

TEST(FaultScriptTest, WordsAreTheirOwnNames) {
  const std::string head = "[fault BRDX_ScanBL]\ncall=1\nraise=";
  for (const char* const word :
       {"access-violation", "cxx", "divide-by-zero", "int-overflow", "stack-overflow"}) {
    EXPECT_EQ(NameOf(FaultOf(head + word + "\n").raised), word);
  }
  EXPECT_EQ(FaultOf("[fault BRDX_BoardGetMapBL]\ncall=1\nfill=unterminated\n").fill,
            Fill::kUnterminated);
}

TEST(FaultScriptTest, WhatDoesNotFitIsAnError) {
  EXPECT_EQ(ErrorOf("[fault]\ncall=1\n"), "1: no operation has the name \"\"");
  EXPECT_EQ(ErrorOf("[fault BRDX_Scan]\ncall=1\n"), "1: no operation has the name \"BRDX_Scan\"");
  const std::string scan = "[fault BRDX_ScanBL]\n";
  EXPECT_EQ(ErrorOf(scan + "result=1\n"), "1: [fault] needs the key call");
  for (const char* const calls : {"0", "-", "2-1", "a", "1-", "1-2-3", "**"}) {
    EXPECT_THAT(ErrorOf(scan + "call=" + calls + "\n"), HasSubstr("2: calls are")) << calls;
  }
  EXPECT_THAT(ErrorOf(scan + "call=1\nraise=panic\n"),
              "3: one of these is wanted: access-violation, cxx, divide-by-zero, int-overflow, "
              "stack-overflow");
  EXPECT_THAT(ErrorOf(scan + "call=1\nfill=all\n"), HasSubstr("3: one of these"));
  EXPECT_THAT(ErrorOf(scan + "call=1\nlength=1\n"), HasSubstr("3: one number, or 0"));
  EXPECT_THAT(ErrorOf(scan + "call=1\ndelay=600001\n"), HasSubstr("3: a number from 0 to 600000"));
  EXPECT_THAT(ErrorOf("[fault BRDX_EnumAdaptersBL]\ncall=1\nlength=1 2 3\n"),
              HasSubstr("3: one number, or 2"));
  EXPECT_THAT(ErrorOf("[fault BRDX_EnumAdaptersBL]\ncall=1\nlength=\"\"\n"),
              HasSubstr("3: one number, or 2"));
}

TEST(FaultScriptTest, CallsAreCountedByOperationAndTheFirstFaultInTheFileCounts) {
  FaultScript script(ParseInventory("[fault BRDX_ScanBL]\ncall=2\nresult=1\n"
                                    "[fault BRDX_ScanBL]\ncall=2-3\nresult=2\n"
                                    "[fault BRDX_UpdateRoute]\ncall=*\nresult=3\n")
                         .faults);
  const auto result = [&](Operation operation) {
    const Fault* const fault = script.NextCall(operation);
    return fault != nullptr ? *fault->result : 0;
  };
  EXPECT_EQ(result(Operation::kScan), 0u);
  EXPECT_EQ(result(Operation::kUpdateRoute), 3u);
  EXPECT_EQ(result(Operation::kScan), 1u);
  EXPECT_EQ(result(Operation::kScan), 2u);
  EXPECT_EQ(result(Operation::kScan), 0u);
  EXPECT_EQ(result(Operation::kUpdateRoute), 3u);
  EXPECT_EQ(result(Operation::kEnumBoard), 0u);
}

TEST(FaultScriptTest, EveryOperationCanBeNamed) {
  for (const OperationRow& row : kOperations) {
    const InventoryFile file =
        ParseInventory("[fault " + std::string(row.name) + "]\ncall=*\nresult=1\n");
    EXPECT_THAT(file.errors, IsEmpty()) << row.name;
    EXPECT_EQ(RowOf(file.faults.at(0).operation).name, row.name);
  }
}

}  // namespace
}  // namespace boardsim
