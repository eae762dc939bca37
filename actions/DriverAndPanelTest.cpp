#include <optional>
#include <stdexcept>

#include "actions/ActionFixture.h"

namespace {

using fake_dynamic_library::Calls;
using fake_dynamic_library::Export;
using fake_message_box::Shown;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kDriver = &CQorlixSRVPipe::InstallWdmDriver_32;
constexpr auto kPanel = &CQorlixSRVPipe::RunOnlinePanel_32;

struct Ran {
  std::string service, infFile, third;
  std::uint32_t mode = 0;
  std::uint32_t lastError = 0;
};
std::optional<Ran> g_ran;
std::uint32_t g_result = 0;
std::size_t g_textsOf260 = 0;  // texts whose bytes behind the terminator are zero

bool IsZeroFilled(const char* text) {
  if (text == nullptr) return false;
  for (std::size_t i = std::string(text).size(); i < 260; ++i) {
    if (text[i] != '\0') return false;
  }
  return true;
}

std::string OrNull(const char* text) { return text != nullptr ? text : "(null)"; }

std::uint32_t InstallDriver(char* service, char* infFile, char* third, std::uint32_t mode) {
  g_ran = Ran{OrNull(service), OrNull(infFile), OrNull(third), mode, 0};
  g_textsOf260 = 0;
  for (const char* text : {service, infFile, third}) g_textsOf260 += IsZeroFilled(text) ? 1 : 0;
  return g_result;
}
std::uint32_t RunPanel(std::uint32_t zero1, std::uint32_t zero2) {
  g_ran = Ran{"", "", "", zero1 | zero2, platform::LastError()};
  platform::SetLastError(1234);  // what the panel leaves is not looked at
  return g_result;
}
std::uint32_t Throw(char*, char*, char*, std::uint32_t) { throw std::runtime_error("fault"); }
std::uint32_t ThrowPanel(std::uint32_t, std::uint32_t) { throw 7; }

class DriverAndPanelTest : public ActionFixture {
 protected:
  DriverAndPanelTest() {
    g_ran.reset();
    g_result = 0;
  }
  static void AddDriver() {
    fake_dynamic_library::Add("drvinstx.dll", {{"EINST_InstallWdmDriver", Export(InstallDriver)}});
  }
  static void AddPanel() {
    fake_dynamic_library::Add("onlpanelx.cpl", {{"RunEpromPanelAsAdmin", Export(RunPanel)}});
  }
  static Bytes Request() {
    return TextField("svc") + TextField("d.inf") + TextField("3") + Wire("78563412");
  }
};

// --- Driver ---

TEST_F(DriverAndPanelTest, TheDriverLibraryGetsThreeTextsAndTheMode) {
  AddDriver();
  EXPECT_EQ(Do(kDriver, Request()), 0u);
  ASSERT_TRUE(g_ran);
  EXPECT_EQ(g_ran->service, "svc");
  EXPECT_EQ(g_ran->infFile, "d.inf");
  EXPECT_EQ(g_ran->third, "3");
  EXPECT_EQ(g_ran->mode, 0x12345678u);
  EXPECT_EQ(g_textsOf260, 3u);
}

TEST_F(DriverAndPanelTest, ItsResultIsSentAndReturned) {
  AddDriver();
  g_result = 0x80070005;
  EXPECT_EQ(Do(kDriver, Request()), 0x80070005u);
  EXPECT_EQ(Reply(), Wire("0400 05000780"));
}

TEST_F(DriverAndPanelTest, AbsentTextsReachItAsNullPointers) {
  AddDriver();
  EXPECT_EQ(Do(kDriver, Absent() + Absent() + Absent() + Wire("01000000")), 0u);
  ASSERT_TRUE(g_ran);
  EXPECT_EQ(g_ran->service + g_ran->infFile + g_ran->third, "(null)(null)(null)");
}

TEST_F(DriverAndPanelTest, TextsOf259BytesAreServedAndLongerOnesRefused) {
  AddDriver();
  const Bytes x = TextField("x");
  const Bytes mode = Wire("00000000");
  const Bytes fits = TextField(std::string(259, 'x'));
  const Bytes tooLong = TextField(std::string(260, 'x'));
  EXPECT_EQ(Do(kDriver, fits + fits + fits + mode), 0u);
  EXPECT_EQ(g_ran->third, std::string(259, 'x'));
  EXPECT_EQ(g_textsOf260, 3u);
  EXPECT_EQ(Do(kDriver, tooLong + x + x + mode), BUFFER_OVERFLOW);
  EXPECT_EQ(Do(kDriver, x + tooLong + x + mode), BUFFER_OVERFLOW);
  EXPECT_EQ(Do(kDriver, x + x + tooLong + mode), BUFFER_OVERFLOW);
}

TEST_F(DriverAndPanelTest, EveryTruncationIsTheReadersCode) {
  AddDriver();
  ExpectEveryTruncationRefused(kDriver, Request());
  EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(DriverAndPanelTest, KeptTheDriverLibraryIsLoadedByItsBareNameAndNeverUnloaded) {
  AddDriver();
  EXPECT_EQ(Do(kDriver, Request()), 0u);
  EXPECT_EQ(Do(kDriver, Request()), 0u);
  EXPECT_THAT(Calls(), ElementsAre("load drvinstx.dll", "find EINST_InstallWdmDriver",
                                   "load drvinstx.dll", "find EINST_InstallWdmDriver"));
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 2);
}

TEST_F(DriverAndPanelTest, KeptAMissingDriverLibraryIsABoxAndZeroWithoutAReplyOfTheHandler) {
  EXPECT_EQ(Do(kDriver, Request()), 0u);
  EXPECT_TRUE(Reply().empty());
  ASSERT_EQ(Shown().size(), 1u);
  EXPECT_EQ(Shown()[0].text, "Can't load drvinstx.dll  ErrorCode: 126");
  EXPECT_EQ(Shown()[0].caption, "Fatal Error");
  EXPECT_EQ(Shown()[0].style, platform::BoxStyle::kError);
}

TEST_F(DriverAndPanelTest, TheBoxShowsTheErrorOfTheLoad) {
  fake_dynamic_library::RefuseLoad("drvinstx.dll", 193);
  fake_dynamic_library::RefuseLoad("onlpanelx.cpl", 0xFFFFFFFF);
  EXPECT_EQ(Do(kDriver, Request()), 0u);
  EXPECT_EQ(Do(kPanel, {}), 0u);
  ASSERT_EQ(Shown().size(), 2u);
  EXPECT_EQ(Shown()[0].text, "Can't load drvinstx.dll  ErrorCode: 193");
  EXPECT_EQ(Shown()[1].text, "Can't load onlpanelx.cpl  ErrorCode: -1");
}

TEST_F(DriverAndPanelTest, KeptADriverLibraryWithoutItsExportIsSuccess) {
  fake_dynamic_library::Add("drvinstx.dll", {});
  EXPECT_EQ(Do(kDriver, Request()), 0u);
  EXPECT_EQ(Reply(), Wire("0400 00000000"));
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 1);
  EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(DriverAndPanelTest, ADriverLibraryThatRaisesIs8604) {
  fake_dynamic_library::Add("drvinstx.dll", {{"EINST_InstallWdmDriver", Export(Throw)}});
  EXPECT_EQ(Do(kDriver, Request()), SRV_ERR_EXCEPTION_OCCURED);
  EXPECT_EQ(Reply(), Wire("0400 9C210000"));
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 1);
}

TEST_F(DriverAndPanelTest, LoadingThatRaisesIs8604WithoutABox) {
  fake_dynamic_library::OnLoad([](const std::string&) { throw std::runtime_error("fault"); });
  EXPECT_EQ(Do(kDriver, Request()), SRV_ERR_EXCEPTION_OCCURED);
  EXPECT_EQ(Reply(), Wire("0400 9C210000"));
  EXPECT_EQ(Do(kPanel, {}), SRV_ERR_EXCEPTION_OCCURED);
  EXPECT_EQ(Reply(), Wire("0400 9C210000"));
  EXPECT_THAT(Shown(), IsEmpty());
}

// --- Panel ---

TEST_F(DriverAndPanelTest, ThePanelGetsTwoZerosAndNonZeroIsSuccess) {
  AddPanel();
  fake_dynamic_library::LastErrorAfterFind(1400);
  for (const std::uint32_t succeeded : {1u, 0xFFFFFFFFu}) {
    g_ran.reset();
    g_result = succeeded;
    EXPECT_EQ(Do(kPanel, {}), 0u);
    EXPECT_EQ(Reply(), Wire("0400 00000000"));
    ASSERT_TRUE(g_ran);
    EXPECT_EQ(g_ran->mode, 0u);
  }
}

TEST_F(DriverAndPanelTest, ThePanelIsLoadedByItsBareNameAndUnloaded) {
  AddPanel();
  EXPECT_EQ(Do(kPanel, {}), 0u);
  EXPECT_THAT(Calls(),
              ElementsAre("load onlpanelx.cpl", "find RunEpromPanelAsAdmin", "free onlpanelx.cpl"));
}

TEST_F(DriverAndPanelTest, KeptAPanelThatReportsFailureAnswersTheErrorOfTheLookUpUsuallyZero) {
  AddPanel();
  g_result = 0;
  EXPECT_EQ(Do(kPanel, {}), 0u);
  fake_dynamic_library::LastErrorAfterFind(1400);
  EXPECT_EQ(Do(kPanel, {}), 1400u);
  EXPECT_EQ(Reply(), Wire("0400 78050000"));
  g_result = 1;
  EXPECT_EQ(Do(kPanel, {}), 0u);
}

TEST_F(DriverAndPanelTest, AnErrorFromBeforeTheLookUpIsNotThePanels) {
  AddPanel();
  platform::SetLastError(5);
  EXPECT_EQ(Do(kPanel, {}), 0u);
  ASSERT_TRUE(g_ran);
  EXPECT_EQ(g_ran->lastError, 0u);
}

TEST_F(DriverAndPanelTest, APanelWithoutItsExportAnswersTheErrorOfTheLookUp) {
  fake_dynamic_library::Add("onlpanelx.cpl", {});
  EXPECT_EQ(Do(kPanel, {}), 127u);
  EXPECT_EQ(Reply(), Wire("0400 7F000000"));
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
}

TEST_F(DriverAndPanelTest, KeptAMissingPanelIsABoxAndZeroWithoutAReplyOfTheHandler) {
  EXPECT_EQ(Do(kPanel, {}), 0u);
  EXPECT_TRUE(Reply().empty());
  ASSERT_EQ(Shown().size(), 1u);
  EXPECT_EQ(Shown()[0].text, "Can't load onlpanelx.cpl  ErrorCode: 126");
  EXPECT_EQ(Shown()[0].caption, "Fatal Error");
  EXPECT_EQ(Shown()[0].style, platform::BoxStyle::kError);
}

TEST_F(DriverAndPanelTest, APanelThatRaisesIs8604AndUnloaded) {
  fake_dynamic_library::Add("onlpanelx.cpl", {{"RunEpromPanelAsAdmin", Export(ThrowPanel)}});
  EXPECT_EQ(Do(kPanel, {}), SRV_ERR_EXCEPTION_OCCURED);
  EXPECT_EQ(Reply(), Wire("0400 9C210000"));
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
}

}  // namespace
