#include <windows.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/e2e/ActionsTest.h"
#include "tests/e2e/Clients.h"
#include "tests/support/MessageBoxWatcher.h"

// What the server shows on its desktop, and that everybody waits until it is closed. Needs a
// screen.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

constexpr std::uint32_t kBoxMs = 10000;
constexpr char kFatal[] = "Fatal Error";

class MessageBoxTest : public OwnServerActionsTest {
 protected:
  MessageBoxWatcher Box(const char* caption) const { return {server_.Id(), caption}; }

  // The library is away, wherever the server looks.
  void StartWithout(const std::string& library) {
    libraries_.Remove(library);
    Start();
  }

  void ExpectFatalError(const Bytes& request, const std::string& text) {
    ASSERT_TRUE(client_.Send(request));
    const auto seen = Box(kFatal).WaitFor(kBoxMs);
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->text, text);
    EXPECT_EQ(seen->caption, kFatal);
    EXPECT_EQ(seen->icon, MessageBoxIcon::kError);
    EXPECT_THAT(seen->buttons, ElementsAre(IDOK));
    EXPECT_EQ(client_.Waiting(), 0u) << "answered before the box was closed";
    ASSERT_TRUE(Box(kFatal).Press(IDOK, kBoxMs));
    // Kept: a success, and once.
    EXPECT_TRUE(client_.Yields(Wire("0400 00000000")));
  }

  const Bytes kDriver =
      Wire("0F00 06000000 'SVC_4A' 0C000000 'C:\\inf\\a.inf' 03000000 'abc' 07000000");
  const Bytes kPanel = Wire("1100");
};

TEST_F(MessageBoxTest, AMissingDriverLibraryIsShownAndAnsweredWithOneSuccess) {
  StartWithout("drvinstx.dll");
  ExpectFatalError(kDriver, "Can't load drvinstx.dll  ErrorCode: 126");
}

TEST_F(MessageBoxTest, AMissingPanelLibraryIsShownAndAnsweredWithOneSuccess) {
  StartWithout("onlpanelx.cpl");
  ExpectFatalError(kPanel, "Can't load onlpanelx.cpl  ErrorCode: 126");
}

TEST_F(MessageBoxTest, AFileThatIsNoLibraryIsShownWithTheLoadersCode) {
  libraries_.PlaceBytes("onlpanelx.cpl", "This is a text.");
  SetLastError(ERROR_SUCCESS);
  ASSERT_EQ(LoadLibraryA("onlpanelx.cpl"), nullptr);
  const std::string code = std::to_string(GetLastError());
  Start();
  ExpectFatalError(kPanel, "Can't load onlpanelx.cpl  ErrorCode: " + code);
}

// The library is looked for at each request.
TEST_F(MessageBoxTest, ALibraryThatCameMeanwhileIsCalled) {
  StartWithout("drvinstx.dll");
  ExpectFatalError(kDriver, "Can't load drvinstx.dll  ErrorCode: 126");
  EXPECT_THAT(libraries_.Calls(), IsEmpty());
  libraries_.Place("drvinstx.dll");
  EXPECT_TRUE(client_.Answers(kDriver, Wire("0400 00000000"
                                            "0400 00000000 0400 00000000")));
  EXPECT_EQ(libraries_.Calls().size(), 1u);
}

// An unreadable request never comes as far as the library.
TEST_F(MessageBoxTest, ADamagedRequestShowsNothing) {
  StartWithout("drvinstx.dll");
  EXPECT_TRUE(client_.Answers(kDriver.substr(0, kDriver.size() - 1), Wire("0400 9A210000")));
  EXPECT_TRUE(client_.Answers(Wire("F000 05000000 'text'"), Wire("0400 9A210000")));
}

TEST_F(MessageBoxTest, AllOthersWaitForTheBoxAndAreServedWhenItIsClosed) {
  StartWithout("drvinstx.dll");
  std::vector<WireClient> others;
  ASSERT_TRUE(ConnectMore(others, 8));
  ASSERT_TRUE(AreServedAtOnce(others));
  ASSERT_TRUE(client_.Send(kDriver));
  ASSERT_TRUE(Box(kFatal).WaitFor(kBoxMs));
  for (WireClient& other : others) ASSERT_TRUE(other.Send(Wire("1000")));
  EXPECT_TRUE(others.front().IsQuiet(300));
  EXPECT_TRUE(others.back().IsQuiet(10));
  ASSERT_TRUE(Box(kFatal).Press(IDOK, kBoxMs));
  EXPECT_TRUE(client_.YieldsNext(Wire("0400 00000000")));
  for (WireClient& other : others) EXPECT_TRUE(other.YieldsNext(Wire("0400 00000000")));
}

TEST_F(MessageBoxTest, ABoxWhoseClientHasLeftHoldsTheServerUntilItIsClosed) {
  StartWithout("onlpanelx.cpl");
  ASSERT_TRUE(client_.Send(kPanel));
  ASSERT_TRUE(Box(kFatal).WaitFor(kBoxMs));
  client_.Close();
  WireClient other;
  ASSERT_TRUE(other.Connect());
  ASSERT_TRUE(other.Send(Wire("1000")));
  EXPECT_TRUE(other.IsQuiet(200));
  ASSERT_TRUE(Box(kFatal).Press(IDOK, kBoxMs));
  EXPECT_TRUE(other.YieldsNext(Wire("0400 00000000")));
}

class TestFunctionTest : public MessageBoxTest {
 protected:
  static constexpr char kCaption[] = "TestFunction";

  void ExpectBox(const Bytes& field, const std::string& shown, const std::string& answered,
                 int button) {
    ASSERT_TRUE(client_.Send(Wire("F000") + field));
    const auto seen = Box(kCaption).WaitFor(kBoxMs);
    ASSERT_TRUE(seen) << shown;
    EXPECT_EQ(seen->text, shown);
    EXPECT_EQ(seen->icon, MessageBoxIcon::kNone);
    EXPECT_THAT(seen->buttons, ElementsAre(IDOK, IDCANCEL));
    EXPECT_EQ(client_.Waiting(), 0u) << "answered before the box was closed";
    ASSERT_TRUE(Box(kCaption).Press(button, kBoxMs));
    EXPECT_TRUE(client_.Yields(Wire("0400 E7030000") + Text(answered)));
  }
};

TEST_F(TestFunctionTest, TheTextIsShownAndComesBackWith999WhicheverButtonIsPressed) {
  Start();
  ExpectBox(Wire("05000000 'Hello'"), "Hello", "Hello", IDOK);
  ExpectBox(Wire("05000000 'Hello'"), "Hello", "Hello", IDCANCEL);
  ExpectBox(Wire("05000000 'l' E4 ' 20'"), "l\xE4 20", "l\xE4 20", IDOK);
}

TEST_F(TestFunctionTest, AnEmptyOrAbsentTextIsAnEmptyBox) {
  Start();
  ExpectBox(Wire("00000000"), "", "", IDOK);
  ExpectBox(Wire("FFFF0000"), "", "", IDCANCEL);
}

TEST_F(TestFunctionTest, ATextOf259BytesIsShownWholeAndOneOf260IsRefused) {
  Start();
  const std::string longest(259, 'w');
  ExpectBox(Text(longest), longest, longest, IDOK);
  EXPECT_TRUE(client_.Answers(Wire("F000") + Text(longest + 'w'), Wire("0400 9A210000")));
}

TEST_F(TestFunctionTest, ATextEndsAtItsFirstZeroByte) {
  Start();
  ExpectBox(Wire("07000000 'abc' 00 'def'"), "abc", "abc", IDOK);
}

TEST_F(TestFunctionTest, AllOthersWaitForTheBoxAndTheServerStopsAfterIt) {
  Start();
  WireClient other;
  ASSERT_TRUE(other.Connect());
  ASSERT_TRUE(other.IsServed());
  ASSERT_TRUE(client_.Send(Wire("F000 02000000 'ab'")));
  ASSERT_TRUE(Box(kCaption).WaitFor(kBoxMs));
  ASSERT_TRUE(other.Send(Wire("FD00 FD000000")));
  EXPECT_TRUE(other.IsQuiet(200));
  ASSERT_TRUE(Box(kCaption).Press(IDOK, kBoxMs));
  EXPECT_TRUE(client_.YieldsNext(Wire("0400 E7030000 02000000 'ab'")));
  EXPECT_TRUE(other.IsBroken());
  EXPECT_THAT(server_.ExitCode(5000), Optional(1u));
}

}  // namespace
}  // namespace e2e
