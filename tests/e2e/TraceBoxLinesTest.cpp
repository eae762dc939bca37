#include <windows.h>

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/ActionTraceTest.h"
#include "tests/e2e/ActionsTest.h"
#include "tests/support/MessageBoxWatcher.h"

// What the commands trace around a message box. Needs a screen.

namespace e2e {
namespace {

constexpr std::uint32_t kBoxMs = 10000;

class TraceBoxTest : public OwnServerActionsTest {
 protected:
  ~TraceBoxTest() override {
    client_.Close();
    server_.Kill();
    trace_setup::Clear();
  }

  // With each set of bits, one request and the box that it shows.
  void ExpectLines(const Bytes& request, const char* caption, std::size_t replySize,
                   const BitLines& expected) {
    for (const std::uint32_t mask : {0xFFFFFFFFu, kError, kStep, ~(kError | kStep)}) {
      Lines wanted;
      for (const BitLine& line : expected) {
        if ((line.bit & mask) == 0) continue;
        wanted.push_back("S QORLIXSR -- " + line.component + "  0  0000 " + line.text);
      }
      trace_setup::Replace(AllLinesWith({{"Format", "SHORT"},
                                         {"FctName", "*INST* *PANEL* TESTF*"},
                                         {"zqserver_level", std::to_string(mask)}}));
      ASSERT_TRUE(client_.IsServed());
      ASSERT_TRUE(client_.Send(request));
      ASSERT_TRUE(MessageBoxWatcher(server_.Id(), caption).Press(IDOK, kBoxMs));
      ASSERT_EQ(client_.Receive(replySize).size(), replySize);
      ASSERT_TRUE(client_.IsServed());
      EXPECT_TRUE(LinesAre(SplitLines(trace_setup::ReadFile(trace_setup::FileName(1))), wanted))
          << "bits " << mask;
    }
  }

  static BitLines Missing(const std::string& function, const std::string& library) {
    const Of command(function);
    return {command(kStep, ">> Start"), command(kStep, "sDll=" + library + " hiDll=0x0"),
            command(kError, "<< return FALSE - Can't load " + library + " dwErr=126")};
  }
};

TEST_F(TraceBoxTest, AMissingDriverLibraryIsTracedBehindItsBox) {
  libraries_.Remove("drvinstx.dll");
  Start();
  ExpectLines(Wire("0F00 01000000 's' 01000000 'i' 01000000 't' 07000000"), "Fatal Error", 6,
              Missing("InstallWdmDriver_32: ", "drvinstx.dll"));
}

TEST_F(TraceBoxTest, AMissingPanelLibraryIsTracedBehindItsBox) {
  libraries_.Remove("onlpanelx.cpl");
  Start();
  ExpectLines(Wire("1100"), "Fatal Error", 6, Missing("RunOnlinePanel_32: ", "onlpanelx.cpl"));
}

TEST_F(TraceBoxTest, TheDiagnosticCommandIsTraced) {
  Start();
  ExpectLines(Wire("F000 02000000 'ab'"), "TestFunction", 12,
              {Of("TestFunction: ")(kStep, ">> Start")});
}

}  // namespace
}  // namespace e2e
