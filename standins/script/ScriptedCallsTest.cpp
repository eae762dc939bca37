#include <windows.h>

#include <cstdint>
#include <fstream>
#include <thread>

#include "platform/DynamicLibrary.h"
#include "platform/GuardedCall.h"
#include "standins/script/testing/LibraryFixture.h"

namespace {

/// What all libraries share, seen from outside through one of them.
class ScriptedCallsTest : public LibraryFixture {
 protected:
  using Function = std::uint32_t(ENTRY_STDCALL*)(const char*);
  ScriptedCallsTest() : LibraryFixture("rstagent9.dll") {}

  std::uint32_t Restart(const char* device = "a") {
    const auto function = Find<Function>("DllEntryFktSilent");
    return function != nullptr ? function(device) : 0xFFFFFFFF;
  }
  void Answer(const std::string& text) { Script("[answer DllEntryFktSilent]\ncall = *\n" + text); }
  /// \returns the code of what the call raised, 0 if it came back.
  DWORD CodeOfCall();
};

DWORD g_code = 0;

LONG CALLBACK RememberCode(EXCEPTION_POINTERS* pointers) {
  if (g_code == 0) g_code = pointers->ExceptionRecord->ExceptionCode;
  return EXCEPTION_CONTINUE_SEARCH;
}

DWORD ScriptedCallsTest::CodeOfCall() {
  g_code = 0;
  void* const handler = AddVectoredExceptionHandler(/*First=*/1, RememberCode);
  std::uint32_t result = 0;
  const bool returned = GuardedCall(result, [this] { return Restart(); });
  RemoveVectoredExceptionHandler(handler);
  EXPECT_EQ(returned, g_code == 0);
  return g_code;
}

TEST_F(ScriptedCallsTest, EveryKindOfExceptionIsRaisedAndLogged) {
  const struct {
    const char* name;
    DWORD code;
  } kinds[] = {{"access-violation", EXCEPTION_ACCESS_VIOLATION},
               {"cxx", 0xE06D7363},
               {"divide-by-zero", EXCEPTION_INT_DIVIDE_BY_ZERO},
               {"int-overflow", EXCEPTION_INT_OVERFLOW},
               {"stack-overflow", EXCEPTION_STACK_OVERFLOW}};
  std::string expected;
  for (const auto& kind : kinds) {
    Answer(std::string("raise = ") + kind.name + "\n");
    EXPECT_EQ(CodeOfCall(), kind.code) << kind.name;
    expected +=
        std::string("DllEntryFktSilent logDevName=\"a\" -> raise ") + kind.name + " answer=1\n";
  }
  EXPECT_EQ(Log(), expected);
  Answer("");
  EXPECT_EQ(CodeOfCall(), 0u);
}

TEST_F(ScriptedCallsTest, CallsAreCountedOnWhenTheLibraryIsFreedAndLoadedAgain) {
  ASSERT_EQ(Restart(), 0u);
  const unsigned calls = LastSequence();
  Script("[answer DllEntryFktSilent]\ncall = " + std::to_string(calls + 2) + "\nresult = 7\n");
  Free();
  Load();
  EXPECT_EQ(Restart(), 0u);
  Free();
  Load();
  EXPECT_EQ(Restart(), 7u);
  EXPECT_EQ(LastSequence(), calls + 2);
}

// The lowest handle that is free: it rises with each one that is left open. The count of handles is
// not kept by every system.
std::uintptr_t NextHandle() {
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  EXPECT_NE(event, nullptr);
  (void)CloseHandle(event);
  return reinterpret_cast<std::uintptr_t>(event);
}

TEST_F(ScriptedCallsTest, LoadingAndFreeingLeavesNoHandleBehind) {
  constexpr int kRounds = 50;
  ASSERT_EQ(Restart(), 0u);
  const std::uintptr_t before = NextHandle();
  for (int round = 0; round < kRounds; ++round) {
    Free();
    Load();
    ASSERT_EQ(Restart(), 0u);
  }
  EXPECT_LT(NextHandle(), before + 4 * kRounds / 2);
}

TEST_F(ScriptedCallsTest, ADelayIsTaken) {
  Answer("delay = 300\n");
  const DWORD before = GetTickCount();
  EXPECT_EQ(Restart(), 0u);
  EXPECT_GE(GetTickCount() - before, 280u);
}

TEST_F(ScriptedCallsTest, TheLastErrorIsTheScriptsOrTheCallers) {
  Answer("");
  const auto restart = Find<Function>("DllEntryFktSilent");
  ASSERT_NE(restart, nullptr);
  SetLastError(55);
  (void)restart("a");
  EXPECT_EQ(GetLastError(), 55u);
  Answer("last-error = 1234\n");
  (void)restart("a");
  EXPECT_EQ(GetLastError(), 1234u);
}

TEST_F(ScriptedCallsTest, AScriptWithAnErrorAnswers13) {
  Answer("result = many\n");
  EXPECT_EQ(Restart(), 13u);
}

TEST_F(ScriptedCallsTest, ThreadsCallWithoutWaitingForEachOther) {
  Answer("delay = 400\n");
  const auto restart = Find<Function>("DllEntryFktSilent");
  ASSERT_NE(restart, nullptr);
  const DWORD before = GetTickCount();
  std::thread first([=] { (void)restart("a"); });
  std::thread second([=] { (void)restart("b"); });
  first.join();
  second.join();
  EXPECT_LT(GetTickCount() - before, 750u);
}

TEST_F(ScriptedCallsTest, AScriptBesideTheLibraryIsFoundByTheLibrarysName) {
  (void)SetEnvironmentVariableA("QORLIX_STANDIN_SCRIPT", nullptr);
  const std::string script = StandInFolder() + "\\rstagent9.ini";
  ASSERT_EQ(GetFileAttributesA(script.c_str()), INVALID_FILE_ATTRIBUTES) << "somebody's script";
  std::ofstream(script) << "[answer DllEntryFktSilent]\ncall = *\nresult = 9\n";
  EXPECT_EQ(Restart(), 9u);
  EXPECT_TRUE(DeleteFileA(script.c_str()));
  EXPECT_EQ(Restart(), 0u);
}

}  // namespace
