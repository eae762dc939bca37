#include "tests/support/MessageBoxWatcher.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

constexpr char kChild[] = "MessageBoxChild.DISABLED_ShowsABox";
constexpr char kKindVariable[] = "QORLIX_BOX_KIND";
constexpr char kCaption[] = "Fatal Error";
constexpr char kText[] = "Can't load drvinstx.dll  ErrorCode: 126\nand a second line \xE4";
constexpr std::uint32_t kPatience = 10000;  // milliseconds

/// A process that shows one box and ends with the number of the button that closed it.
class MessageBoxWatcherTest : public testing::Test {
 protected:
  ~MessageBoxWatcherTest() override {
    if (process_.hProcess == nullptr) return;
    (void)TerminateProcess(process_.hProcess, 99);
    (void)WaitForSingleObject(process_.hProcess, kPatience);
    (void)CloseHandle(process_.hProcess);
    (void)CloseHandle(process_.hThread);
  }

  void Show(UINT kind) {
    char program[MAX_PATH];
    (void)GetModuleFileNameA(nullptr, program, sizeof(program));
    std::string command =
        std::string("\"") + program + "\" --gtest_also_run_disabled_tests --gtest_filter=" + kChild;
    (void)SetEnvironmentVariableA(kKindVariable, std::to_string(kind).c_str());
    (void)SetEnvironmentVariableA("GTEST_OUTPUT", nullptr);
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    ASSERT_TRUE(CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                               nullptr, &startup, &process_));
  }
  MessageBoxWatcher Watcher(const char* caption = kCaption) const {
    return {process_.dwProcessId, caption};
  }
  DWORD ButtonPressed() const {
    (void)WaitForSingleObject(process_.hProcess, kPatience);
    DWORD code = 0;
    (void)GetExitCodeProcess(process_.hProcess, &code);
    return code;
  }

 private:
  PROCESS_INFORMATION process_{};
};

TEST(MessageBoxChild, DISABLED_ShowsABox) {
  const char* const kind = std::getenv(kKindVariable);
  const int pressed = MessageBoxA(nullptr, kText, kCaption,
                                  kind != nullptr ? std::strtoul(kind, nullptr, 10) : MB_OK);
  ExitProcess(static_cast<UINT>(pressed));
}

TEST_F(MessageBoxWatcherTest, CaptionTextIconAndButtonAreRead) {
  Show(MB_OK | MB_ICONERROR);
  const auto seen = Watcher().WaitFor(kPatience);
  ASSERT_TRUE(seen);
  EXPECT_EQ(seen->caption, kCaption);
  EXPECT_EQ(seen->text, kText);
  EXPECT_EQ(seen->icon, MessageBoxIcon::kError);
  EXPECT_THAT(seen->buttons, testing::ElementsAre(IDOK));
}

TEST_F(MessageBoxWatcherTest, TheIconsAreToldApart) {
  const struct {
    UINT kind;
    MessageBoxIcon icon;
  } kinds[] = {{MB_OK, MessageBoxIcon::kNone},
               {MB_ICONQUESTION, MessageBoxIcon::kQuestion},
               {MB_ICONWARNING, MessageBoxIcon::kWarning},
               {MB_ICONINFORMATION, MessageBoxIcon::kInformation}};
  for (const auto& kind : kinds) {
    Show(kind.kind);
    const auto seen = Watcher().WaitFor(kPatience);
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->icon, kind.icon) << kind.kind;
    EXPECT_TRUE(Watcher().Press(IDOK, kPatience));
  }
}

TEST_F(MessageBoxWatcherTest, OkIsPressed) {
  Show(MB_OKCANCEL);
  EXPECT_TRUE(Watcher().Press(IDOK, kPatience));
  EXPECT_EQ(ButtonPressed(), static_cast<DWORD>(IDOK));
  EXPECT_FALSE(Watcher().IsOpen());
}

TEST_F(MessageBoxWatcherTest, CancelIsPressed) {
  Show(MB_OKCANCEL);
  const auto seen = Watcher().WaitFor(kPatience);
  ASSERT_TRUE(seen);
  EXPECT_THAT(seen->buttons, testing::ElementsAre(IDOK, IDCANCEL));
  EXPECT_TRUE(Watcher().Press(IDCANCEL, kPatience));
  EXPECT_EQ(ButtonPressed(), static_cast<DWORD>(IDCANCEL));
}

TEST_F(MessageBoxWatcherTest, AButtonThatTheBoxDoesNotHaveIsNotPressed) {
  Show(MB_OK);
  ASSERT_TRUE(Watcher().WaitFor(kPatience));
  EXPECT_FALSE(Watcher().Press(IDRETRY, kPatience));
  EXPECT_TRUE(Watcher().IsOpen());
}

TEST_F(MessageBoxWatcherTest, ABoxOfAnotherCaptionOrProcessIsNotFound) {
  Show(MB_OK);
  ASSERT_TRUE(Watcher().WaitFor(kPatience));
  EXPECT_FALSE(Watcher("Fatal").WaitFor(100));
  EXPECT_FALSE(MessageBoxWatcher(GetCurrentProcessId(), kCaption).WaitFor(100));
}

}  // namespace
