#include <windows.h>

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "trace/TraceWinFixture.h"

namespace {

/// Listens to the debugger output of all processes, as its viewers do.
class DebuggerOutput {
 public:
  DebuggerOutput()
      : section_(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kSize,
                                    "DBWIN_BUFFER")),
        buffer_(static_cast<char*>(MapViewOfFile(section_, FILE_MAP_READ, 0, 0, 0))),
        bufferReady_(CreateEventA(nullptr, FALSE, TRUE, "DBWIN_BUFFER_READY")),
        dataReady_(CreateEventA(nullptr, FALSE, FALSE, "DBWIN_DATA_READY")),
        stop_(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
        listener_([this] { Listen(); }) {}
  ~DebuggerOutput() {
    (void)SetEvent(stop_);
    listener_.join();
    (void)UnmapViewOfFile(buffer_);
    for (const HANDLE handle : {section_, bufferReady_, dataReady_, stop_}) {
      (void)CloseHandle(handle);
    }
  }
  DebuggerOutput(const DebuggerOutput&) = delete;
  DebuggerOutput& operator=(const DebuggerOutput&) = delete;

  /// What this process has sent; waits until so many texts are there, for two seconds at most.
  std::vector<std::string> Texts(std::size_t count) {
    for (int round = 0; round < 200; ++round) {
      {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (texts_.size() >= count) break;
      }
      Sleep(10);
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    return texts_;
  }

 private:
  static constexpr DWORD kSize = 4096;

  void Listen() {
    const HANDLE both[] = {stop_, dataReady_};
    while (WaitForMultipleObjects(2, both, FALSE, INFINITE) == WAIT_OBJECT_0 + 1) {
      if (*reinterpret_cast<const DWORD*>(buffer_) == GetCurrentProcessId()) {
        const std::lock_guard<std::mutex> lock(mutex_);
        texts_.emplace_back(buffer_ + sizeof(DWORD));
      }
      (void)SetEvent(bufferReady_);
    }
  }

  HANDLE section_;
  char* buffer_;
  HANDLE bufferReady_;
  HANDLE dataReady_;
  HANDLE stop_;
  std::mutex mutex_;
  std::vector<std::string> texts_;
  std::thread listener_;
};

class TraceDebuggerWinTest : public TraceWinFixture {
 protected:
  TraceDebuggerWinTest() {
    SetText("Output", "DBG");
    SetText("Format", "TEXT");
  }
  DebuggerOutput debugger_;
};

TEST_F(TraceDebuggerWinTest, ALineGoesToTheDebuggerWithALineFeed) {
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct,
           "Setup l\xE4"
           "uft");
  ZQ_TRACE(TRC_PROGRESS, kFct, "%s", std::string(300, 'x').c_str());
  const std::vector<std::string> texts = debugger_.Texts(2);
  ASSERT_EQ(texts.size(), 2u);
  EXPECT_EQ(texts[0],
            "Fct:  Setup l\xE4"
            "uft \n");
  EXPECT_EQ(texts[1], "Fct:  " + std::string(256, 'x') + " \n");
}

TEST_F(TraceDebuggerWinTest, TheLastErrorStaysAsItWas) {
  Initialise();
  SetLastError(1234);
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  EXPECT_EQ(GetLastError(), 1234u);
}

TEST_F(TraceDebuggerWinTest, AMutexThatCannotBeCreatedIsReported) {
  const HANDLE event = CreateEventA(nullptr, FALSE, FALSE, "Global\\ZqTRACE_MUTEX");
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  const std::vector<std::string> texts = debugger_.Texts(2);
  ASSERT_EQ(texts.size(), 2u);
  EXPECT_EQ(texts[0], "ERROR: Can't create ZqTRC_MUTEX, GetLastError()=6 \n");
  EXPECT_EQ(texts[1], "Fct:  text \n");
  (void)CloseHandle(event);
}

TEST_F(TraceDebuggerWinTest, ACounterThatCannotBeHadIsReported) {
  const HANDLE event = CreateEventA(nullptr, FALSE, FALSE, "Global\\ZqTRACE_SECTION");
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  const std::vector<std::string> texts = debugger_.Texts(2);
  ASSERT_EQ(texts.size(), 2u);
  EXPECT_EQ(texts[0], "ERROR: Can't create ZqTRC_SECTION, GetLastError()=6 \n");
  EXPECT_EQ(texts[1], "Fct:  text \n");
  (void)CloseHandle(event);
}

}  // namespace
