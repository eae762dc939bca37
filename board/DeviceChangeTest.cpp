#include <cstring>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "board/testing/BoardFixture.h"
#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "trace/Zqotrc.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Handler = SrvResult (CQorlixSRVPipe::*)(int);

const Bytes kGuid = Wire("33221100 5544 7766 8899AABBCCDDEEFF");

class DeviceChangeTest : public BoardFixture {
 protected:
  // What a command that was cut short at any place returns: 8602 without a reply or a call.
  void ExpectEveryTruncationRefused(Handler handler, const Bytes& whole) {
    for (std::size_t size = 2; size < whole.size(); ++size) {
      ReceiveCommand(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
      EXPECT_EQ((srv_.*handler)(kConId), BUFFER_OVERFLOW) << size;
      EXPECT_THAT(Reply(), IsEmpty()) << size;
    }
    EXPECT_THAT(fake_board_library::Calls(), IsEmpty());
  }

  Bytes AnswerTo(Handler handler, const Bytes& request) {
    ReceiveCommand(request);
    EXPECT_EQ((srv_.*handler)(kConId), SRV_OK);
    return Reply();
  }

  std::vector<std::string> Trace(Handler handler, const Bytes& request, std::uint32_t mask) {
    FakeTrace::Collect(mask);
    ReceiveCommand(request);
    (void)(srv_.*handler)(kConId);
    std::vector<std::string> lines;
    for (const FakeTrace::Line& line : FakeTrace::Lines()) {
      EXPECT_EQ(line.component, "SRV");
      const bool isCodec = line.function.rfind("Read", 0) == 0 ||
                           line.function.rfind("Send", 0) == 0 ||
                           line.function.rfind("Add", 0) == 0;
      if (!isCodec) lines.push_back(line.text);
    }
    return lines;
  }
};

// --- Registration: two commands that differ in the operation alone ---

struct Registration {
  const char* name;
  Handler handler;
  const char* code;
  std::function<std::uint32_t(BRDX_GUID, char*)> fake_board_library::Library::*operation;
};

class DeviceRegistrationTest : public DeviceChangeTest,
                               public testing::WithParamInterface<Registration> {
 protected:
  DeviceRegistrationTest() {
    fake_board_library::Lib().*GetParam().operation = [this](BRDX_GUID guid, char* deviceId) {
      guid_ = guid;
      deviceId_ = deviceId == nullptr ? std::nullopt : std::optional<std::string>(deviceId);
      if (raises_) throw std::runtime_error("fault");
      return result_;
    };
  }
  Bytes Code() const { return Wire(GetParam().code); }
  Bytes Run(const Bytes& fields) { return AnswerTo(GetParam().handler, Code() + fields); }

  BRDX_GUID guid_ = {};
  std::optional<std::string> deviceId_;
};

using fake_board_library::Library;
INSTANTIATE_TEST_SUITE_P(
    Commands, DeviceRegistrationTest,
    testing::Values(Registration{"Register", &CQorlixSRVPipe::RegisterForDeviceChangeNotifications,
                                 "0001", &Library::registerForChanges},
                    Registration{"Unregister",
                                 &CQorlixSRVPipe::UnregisterForDeviceChangeNotifications, "0101",
                                 &Library::unregisterForChanges}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_P(DeviceRegistrationTest, GuidAndDeviceIdReachTheLibrary) {
  EXPECT_EQ(Run(TextField("dev") + kGuid), Wire("0400 00000000"));
  EXPECT_EQ(deviceId_, "dev");
  EXPECT_EQ(guid_.Data1, 0x00112233u);
  EXPECT_EQ(guid_.Data2, 0x4455u);
  EXPECT_EQ(guid_.Data3, 0x6677u);
  EXPECT_EQ(Hex(Bytes(guid_.Data4, guid_.Data4 + 8)), "8899AABBCCDDEEFF");
}

TEST_P(DeviceRegistrationTest, TheResultIsAnsweredAndTheLockLeftAlone) {
  result_ = 0x80000005;
  EXPECT_EQ(Run(TextField("dev") + kGuid), Wire("0400 05000080"));
  EXPECT_THAT(fake_named_object::Calls(), IsEmpty());
}

TEST_P(DeviceRegistrationTest, AnExceptionAnswers8604) {
  raises_ = true;
  EXPECT_EQ(Run(TextField("dev") + kGuid), Wire("0400 9C210000"));
}

TEST_P(DeviceRegistrationTest, AnAbsentDeviceIdIsANullPointer) {
  deviceId_ = "before";
  EXPECT_EQ(Run(Wire("FFFF0000") + kGuid), Wire("0400 00000000"));
  EXPECT_EQ(deviceId_, std::nullopt);
}

TEST_P(DeviceRegistrationTest, ADeviceIdOf259BytesFitsAndOneMoreDoesNot) {
  EXPECT_EQ(Run(TextField(std::string(259, 'd')) + kGuid), Wire("0400 00000000"));
  EXPECT_EQ(deviceId_, std::string(259, 'd'));
  ReceiveCommand(Code() + TextField(std::string(260, 'd')) + kGuid);
  EXPECT_EQ((srv_.*GetParam().handler)(kConId), BUFFER_OVERFLOW);
  EXPECT_THAT(Reply(), IsEmpty());
}

TEST_P(DeviceRegistrationTest, EveryTruncationIsRefused) {
  ExpectEveryTruncationRefused(GetParam().handler, Code() + TextField("dev") + kGuid);
}

TEST_P(DeviceRegistrationTest, TheTraceNamesEveryFieldAndTheOperation) {
  const std::string operation =
      std::string("BRDX_") + GetParam().name + "ForDeviceChangeNotifications";
  const Bytes whole = Code() + TextField("dev") + kGuid;
  const auto cut = [&](std::ptrdiff_t size) { return Bytes(whole.begin(), whole.begin() + size); };
  const Handler handler = GetParam().handler;
  EXPECT_THAT(Trace(handler, whole, TRC_RESULT), ElementsAre("<< " + operation + " result = 0x0"));
  EXPECT_THAT(Trace(handler, whole, TRC_PROGRESS), ElementsAre(">> Start"));
  EXPECT_THAT(Trace(handler, cut(3), TRC_ERROR),
              ElementsAre("<< ReadString(DeviceId) result = 0x219a "));
  EXPECT_THAT(Trace(handler, cut(9), TRC_ERROR),
              ElementsAre("<< ReadULong(GUID Part1) result = 0x219a "));
  EXPECT_THAT(Trace(handler, cut(13), TRC_ERROR),
              ElementsAre("<< ReadShort(GUID Part2) result = 0x219a "));
  EXPECT_THAT(Trace(handler, cut(15), TRC_ERROR),
              ElementsAre("<< ReadShort(GUID Part3) result = 0x219a "));
  EXPECT_THAT(Trace(handler, cut(24), TRC_ERROR),
              ElementsAre("<< ReadShort(GUID Part4) result = 0x219a "));
  raises_ = true;
  EXPECT_THAT(Trace(handler, whole, TRC_ERROR | TRC_RESULT),
              ElementsAre("Exception: " + operation));
}

// --- Fetching a change ---

class GetDeviceChangeTest : public DeviceChangeTest {
 protected:
  GetDeviceChangeTest() {
    fake_board_library::Lib().getDeviceChange = [this](char* deviceId, std::uint8_t* kind,
                                                       BRDX_GUID* guid, char* text,
                                                       std::uint32_t* length) {
      deviceId_ = deviceId == nullptr ? std::nullopt : std::optional<std::string>(deviceId);
      announced_ = *length;
      wasClear_ = Bytes(text, text + 8193) == Bytes(8193, 0);
      *kind = 0x7E;
      *guid = {0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};
      std::memcpy(text, text_.data(), text_.size());
      *length = length_;
      if (raises_) throw std::runtime_error("fault");
      return result_;
    };
  }
  void Fill(const std::string& text, std::uint32_t length) {
    text_ = text;
    length_ = length;
  }
  Bytes Run(const Bytes& fields = TextField("dev")) { return AnswerTo(kHandler, kCode + fields); }

  static constexpr Handler kHandler = &CQorlixSRVPipe::GetDeviceChange;
  const Bytes kCode = Wire("0201");
  std::optional<std::string> deviceId_;
  std::uint32_t announced_ = 0;
  bool wasClear_ = false;
  std::string text_;
  std::uint32_t length_ = 0;
};

TEST_F(GetDeviceChangeTest, TheChangeIsAnsweredWithItsLengthInFrontAndBehind) {
  Fill("path", 4);
  EXPECT_EQ(Run(), Wire("0400 00000000 7E 04000000 70617468 04000000") + kGuid);
  EXPECT_EQ(deviceId_, "dev");
  EXPECT_EQ(announced_, 8192u);
  EXPECT_TRUE(wasClear_);
}

TEST_F(GetDeviceChangeTest, TheReportedLengthCountsNotTheTerminator) {
  Fill(std::string("a\0b", 3), 5);
  EXPECT_EQ(Run(), Wire("0400 00000000 7E 05000000 6100620000 05000000") + kGuid);
}

TEST_F(GetDeviceChangeTest, NothingOfAnEarlierRequestIsInAReply) {
  for (const char garbage : {'\x5A', '\xA5'}) {
    Fill(std::string(8192, garbage), 10);
    (void)Run();
    DirtyTheStack(garbage);
    Fill("a", 8000);
    EXPECT_EQ(Run(),
              Wire("0400 00000000 7E 401F0000 61") + Bytes(7999, 0) + Wire("401F0000") + kGuid);
    EXPECT_TRUE(wasClear_);
  }
}

TEST_F(GetDeviceChangeTest, AChangeOf8160BytesJustFitsTheReply) {
  // 2 + 4 + 1 + 4 + 8160 + 4 bytes leave 17, and the GUID takes 16 of them.
  Fill(std::string(8160, 'x'), 8160);
  EXPECT_EQ(Run(), Wire("0400 00000000 7E E01F0000") + Bytes(8160, 'x') + Wire("E01F0000") + kGuid);
}

TEST_F(GetDeviceChangeTest, AChangeOf8161BytesIsToldWithItsLengthAnd16) {
  Fill(std::string(8161, 'x'), 8161);
  EXPECT_EQ(Run(), Wire("0400 9A210000 E11F0000 10000000"));
  Fill("", 0xFFFFFFFF);
  EXPECT_EQ(Run(), Wire("0400 9A210000 FFFFFFFF 10000000"));
  Fill("", 0x80000000);
  EXPECT_EQ(Run(), Wire("0400 9A210000 00000080 10000000"));
}

TEST_F(GetDeviceChangeTest, AFailureIsAnsweredAlone) {
  Fill("path", 0xFFFFFFFF);
  result_ = 259;
  EXPECT_EQ(Run(), Wire("0400 03010000"));
}

TEST_F(GetDeviceChangeTest, AnExceptionAnswers8604) {
  Fill("path", 4);
  raises_ = true;
  EXPECT_EQ(Run(), Wire("0400 9C210000"));
}

TEST_F(GetDeviceChangeTest, TheLockIsLeftAlone) {
  (void)Run();
  EXPECT_THAT(fake_named_object::Calls(), IsEmpty());
}

TEST_F(GetDeviceChangeTest, AnAbsentDeviceIdIsANullPointer) {
  deviceId_ = "before";
  (void)Run(Wire("FFFF0000"));
  EXPECT_EQ(deviceId_, std::nullopt);
}

TEST_F(GetDeviceChangeTest, ADeviceIdOf259BytesFitsAndOneMoreDoesNot) {
  (void)Run(TextField(std::string(259, 'd')));
  EXPECT_EQ(deviceId_, std::string(259, 'd'));
  ReceiveCommand(kCode + TextField(std::string(260, 'd')));
  EXPECT_EQ(srv_.GetDeviceChange(kConId), BUFFER_OVERFLOW);
  EXPECT_THAT(Reply(), IsEmpty());
}

TEST_F(GetDeviceChangeTest, EveryTruncationIsRefused) {
  ExpectEveryTruncationRefused(kHandler, kCode + TextField("dev"));
}

TEST_F(GetDeviceChangeTest, KeptTheTraceDoesNotNameTheOperation) {
  Fill("path", 4);
  const Bytes whole = kCode + TextField("dev");
  EXPECT_THAT(Trace(kHandler, whole, TRC_RESULT), ElementsAre("<< Funktionsname und R\xFC"
                                                              "ckgabeparameter result = 0x0"));
  EXPECT_THAT(Trace(kHandler, whole, TRC_PROGRESS),
              ElementsAre(">> Start", "AddString =path", "<< intern Send (len=35)"));
  EXPECT_THAT(Trace(kHandler, kCode, TRC_ERROR),
              ElementsAre("<< ReadString(DeviceId) result = 0x219a "));
  raises_ = true;
  EXPECT_THAT(Trace(kHandler, whole, TRC_ERROR | TRC_RESULT),
              ElementsAre("Exception: Funktionsname"));
}

}  // namespace
