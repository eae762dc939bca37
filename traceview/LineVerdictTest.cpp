#include "traceview/LineVerdict.h"

#include <gtest/gtest.h>

#include <string>

namespace traceview {
namespace {

TraceLine Line(const std::string& function, const std::string& text) {
  TraceLine line;
  line.layout = Layout::kLong;
  line.level = "--";
  line.function = function;
  line.text = text;
  return line;
}

Mark MarkOfText(const char* text) { return MarkOf(Line("Function", text)); }

TEST(LineVerdictTest, WhatTheServerCountsAsAFailureIsAnError) {
  for (const char* text :
       {"Exception: RegDelKeyBL",
        "Exception",
        "Exception in LoadLibrary",
        "<< Error CreateEvent",
        "Error occured : lResult=0x57",
        "ReadShort exit with BUFFER_OVERFLOW",
        ">> BUFFER_OVERFLOW in AddString , Size = 8193",
        "ConnectNamedPipe failed with 2088",
        "Pending: WRITING_STATE: Something is wrong: ->DisconnectAndReconnect",
        "WRITING_STATE: ReceivePointer is wrong: ->DisconnectAndReconnect",
        "PipeSend: sendResult != ERROR_SUCCESS => Reconnect Pipe",
        "<< RunSrvLoop End Invalid pipe state",
        "<< Out of Range dwWait(0x102) or Server-Timeout reached .. Get ErrorCode=0",
        "Couldn't CreateMutex because ERROR_ALREADY_EXISTS",
        "GetProcAddress IE_AddIPAddressEx failed: 0x7f",
        "<< return FALSE - Can't load drvinstx.dll dwErr=126",
        "Filename for Installer x is invalid. No load possible",
        "Loading ringdiag.dll threw SRV_ERR_EXCEPTION_OCCURED!",
        "<< result = 0x219a Key",
        "<< CQorlixSRVPipe::Send SendResult=0x21ac writeResult=0x1  DataLength=6"}) {
    EXPECT_EQ(MarkOfText(text), Mark::kError) << text;
  }
}

TEST(LineVerdictTest, ResultsOtherThanZeroAreNotices) {
  for (const char* text :
       {"<< RegDelKeyBL result = 0x2", "<< BRDX_EnumAdaptersBL result = 0x5",
        "BRDX_Scan result = 0x1f", "<< BRDX_BoardGetMapBL BoardMapLen=0x0 result = 0x2",
        "<< CQorlixSRVPipe::Send SendResult=0x5 writeResult=0x0  DataLength=6",
        "<< Invoke pFunc result 0x7, lpszHardwareID=a lpszDeviceID=b lpszLanguageExt=EN",
        "<< RegSetValueBL result = 0x103", "Couldn't find Event : Global\\X",
        "RegistrySetValue returned with result: 5"}) {
    EXPECT_EQ(MarkOfText(text), Mark::kNotice) << text;
  }
}

TEST(LineVerdictTest, EverythingElseIsPlain) {
  for (const char* text :
       {">> Start", "<< RegDelKeyBL result = 0x0", "<< RegDelKeyBL result = 0x00 ", "opCode 0x3",
        "result = 0x", "result = 0x13 GetSystemDirectoryA Dir=C:\\windows\\system32",
        "CurrentPointer=0x12  fPendingIO=0x1  hPipe=0x1c4  Event=0x0",
        "<< CQorlixSRVPipe::Send DataLength=6 writeResult=0x1",
        "<< CQorlixSRVPipe::Send SendResult=0x0 writeResult=0x1  DataLength=6",
        "<< RegEnumKeyBL result = 0x103", "<< BRDX_EnumBoardExBL result = 0x103",
        "<< CQorlixSRVPipe::Send SendResult=0x103 writeResult=0x1  DataLength=6",
        "AddString =a board that failed with BUFFER_OVERFLOW Error", "checke LogName: ERROR",
        ">> deviceID=Exception valueName=Installer ", "successfully SetEvent: Global\\X", ""}) {
    EXPECT_EQ(MarkOfText(text), Mark::kNone) << text;
  }
}

TEST(LineVerdictTest, AClientThatGoesAwayIsNothingOutOfTheOrdinary) {
  for (const char* text :
       {"fSuccess != Success", "cbRet == 0",
        "READING_STATE: Something is wrong: ->DisconnectAndReconnect",
        "Pending: READING_STATE: Client disconnected ... prepare Pipe for new Client: "
        "->DisconnectAndReconnect",
        "DisconnectAndReconnect for Pipe(3)"}) {
    EXPECT_EQ(MarkOf(Line("RunSrvLoop", text)), Mark::kNone) << text;
  }
}

TEST(LineVerdictTest, LevelCodeAndLayoutCountAsWell) {
  TraceLine line;
  line.level = "FR";
  EXPECT_EQ(MarkOf(line), Mark::kError);
  line.level = "FE";
  line.code = "0";
  EXPECT_EQ(MarkOf(line), Mark::kNone);
  line.code = "8007000e";
  EXPECT_EQ(MarkOf(line), Mark::kNotice);
  line.layout = Layout::kError;
  EXPECT_EQ(MarkOf(line), Mark::kError);
}

TEST(LineVerdictTest, AResultIsOfTheReplyOfALibraryOrOfTheSending) {
  const auto kind = [](const char* function, const char* text) {
    return ResultOf(Line(function, text)).kind;
  };
  EXPECT_EQ(kind("Send", "<< CQorlixSRVPipe::Send SendResult=0x5 writeResult=0x0  DataLength=6"),
            ResultKind::kReply);
  EXPECT_EQ(kind("Reg_SetValueBase", "<< RegSetValueBL result = 0x5"), ResultKind::kLibrary);
  EXPECT_EQ(kind("Reg_SetValueBase", "<< Reg_SetValue result = 0x0"), ResultKind::kSending);
  EXPECT_EQ(kind("Reg_GetValue", "<< Reg_SetValue result = 0x0"), ResultKind::kSending);
  EXPECT_EQ(kind("RegDelKeyBL", "<< Reg_DelKey result = 0x2"), ResultKind::kLibrary);
  EXPECT_EQ(kind("GetDeviceStateEx", "<< GetDeviceState result = 0x0"), ResultKind::kSending);
  EXPECT_EQ(kind("RunOnlinePanel_32", "<< RunOnlinePanel() result = 0x0"), ResultKind::kLibrary);
  EXPECT_EQ(kind("Install", "result = 0x13 GetSystemDirectoryA Dir=C:"), ResultKind::kNone);
  EXPECT_EQ(kind("Install", "<< result = 0x zz"), ResultKind::kNone);
  EXPECT_EQ(ResultOf(Line("BC_Scan", "<< BRDX_ScanBL result = 0xffffffff")).value, 0xFFFFFFFFu);
}

TEST(LineVerdictTest, ACallOpensOnceWhateverStepsFollow) {
  for (const char* text : {">> Start", " >> Start", ">> Begin CQorlixSRVPipe::Send(long)",
                           ">> deviceID=a valueName=b ", ">> Deinstall start", "--> start"}) {
    EXPECT_TRUE(OpensCall(Line("F", text))) << text;
  }
  for (const char* text :
       {">> intern Send", ">> lpszDeviceID=a lpszLanguageExt=b lpszBoard=c",
        ">> BUFFER_OVERFLOW in AddString , Size = 1", "<< End", "--> DllEntryFktSilent(a)", ""}) {
    EXPECT_FALSE(OpensCall(Line("F", text))) << text;
  }
  EXPECT_TRUE(MayCloseCall(Line("F", "<< F result = 0x0")));
  EXPECT_TRUE(MayCloseCall(Line("F", "<-- End")));
  EXPECT_FALSE(MayCloseCall(Line("F", "<-- CM_Get_DevNode_Status: ret=0x0")));
}

}  // namespace
}  // namespace traceview
