#include <windows.h>

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/ActionsTest.h"
#include "tests/e2e/DebugOutput.h"
#include "tests/support/MessageBoxWatcher.h"
#include "tests/support/RegistryKeyScratch.h"

// A message box that nobody closes is a hang like any other. Needs a screen.

namespace e2e {
namespace {

constexpr std::uint32_t kBoxMs = 10000;

class HangBoxTest : public OwnServerActionsTest {
 protected:
  RegistryKeyScratch settings_{"SOFTWARE\\Vesmark\\Shared Tools\\MIREL"};
  const DebugOutput output_;
};

TEST_F(HangBoxTest, ABoxThatStaysOpenIsToldOnceAndStays) {
  settings_.SetRaw("HangReportMs", REG_DWORD, Wire("F4010000"));
  Start();
  ASSERT_TRUE(client_.Send(Wire("F000 02000000 'ab'")));
  const MessageBoxWatcher box(server_.Id(), "TestFunction");
  ASSERT_TRUE(box.WaitFor(kBoxMs));
  const auto told = output_.Await(server_.Id(), "has been running");
  ASSERT_THAT(told, testing::SizeIs(1));
  EXPECT_THAT(told[0], testing::StartsWith("QorlixSRV: opCode 0xf0 from Connection("));
  EXPECT_TRUE(box.IsOpen());
  Sleep(1000);
  ASSERT_TRUE(box.Press(IDOK, kBoxMs));
  EXPECT_TRUE(client_.YieldsNext(Wire("0400 E7030000 02000000 'ab'")));
  EXPECT_EQ(output_.TextsOf(server_.Id(), "has been running"), told);
}

}  // namespace
}  // namespace e2e
