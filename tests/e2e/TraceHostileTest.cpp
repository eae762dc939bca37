#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "tests/e2e/TraceTest.h"

// Other processes and clients that mean harm: whatever they do, the server answers and its lines
// stay lines.

namespace e2e {
namespace {

constexpr std::size_t kLongestText = 256;

class TraceHostileTest : public TraceTest {};

// Whoever keeps the mutex costs the longest wait once; then lines go on without it.
TEST_F(TraceHostileTest, AMutexThatIsKeptCostsTenSecondsOnceAndNoLine) {
  constexpr std::uint32_t kWaitMs = 10000;
  constexpr int kRequests = 20;
  const auto taken = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  const auto release = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  std::thread taker([&] {
    const TraceMutex kept;
    (void)SetEvent(taken);
    (void)WaitForSingleObject(release, INFINITE);
  });
  (void)WaitForSingleObject(taken, INFINITE);

  const ULONGLONG begin = GetTickCount64();
  EXPECT_TRUE(client_.IsServed(2 * kWaitMs));
  const ULONGLONG afterFirst = GetTickCount64();
  for (int i = 0; i < kRequests; ++i) EXPECT_TRUE(client_.IsServed());
  const ULONGLONG afterAll = GetTickCount64();
  EXPECT_GE(afterFirst - begin, kWaitMs - 100);
  EXPECT_LE(afterFirst - begin, kWaitMs + kPatienceMs);
  EXPECT_LE(afterAll - afterFirst, kPatienceMs);

  (void)SetEvent(release);
  taker.join();
  const Lines lines = NewLines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "RunSrvLoop:  opCode 0x10"), kRequests + 1);
  for (const HANDLE event : {taken, release}) (void)CloseHandle(event);
}

// Its owner ends without giving it back, which is as good as if he had.
TEST_F(TraceHostileTest, AMutexThatItsOwnerLeftBehindCostsNothing) {
  const HANDLE mutex = CreateMutexA(nullptr, FALSE, "Global\\ZqTRACE_MUTEX");
  std::thread([&] { (void)WaitForSingleObject(mutex, INFINITE); }).join();
  EXPECT_TRUE(client_.IsServed());
  (void)CloseHandle(mutex);
  EXPECT_THAT(NewLines(), testing::Contains("RunSrvLoop:  opCode 0x10"));
}

TEST_F(TraceHostileTest, AGenerationThatRunsWildCostsReadingsOnly) {
  SharedWords generation(SharedWords::kGeneration);
  ASSERT_TRUE(generation.IsThere());
  std::uint32_t wild = 1;
  const std::uint32_t extremes[] = {0, 0xFFFFFFFF, 0x80000000, 0x7FFFFFFF, 1};
  for (int i = 0; i < 300; ++i) {
    wild = wild * 1664525 + 1013904223;
    generation[0] = i % 2 == 0 ? wild : extremes[(i / 2) % 5];
    ASSERT_TRUE(client_.IsServed());
  }
  const Lines lines = NewLines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "RunSrvLoop:  opCode 0x10"), 300);
}

TEST_F(TraceHostileTest, AGenerationThatNeverStandsStillDoesNotHoldTheServerUp) {
  SharedWords generation(SharedWords::kGeneration);
  ASSERT_TRUE(generation.IsThere());
  std::atomic<bool> stop = false;
  std::thread writer([&] {
    while (!stop) generation[0] = generation[0] + 1;
  });
  for (int i = 0; i < 50; ++i) EXPECT_TRUE(client_.IsServed());
  stop = true;
  writer.join();
}

// Whatever is in the parameters while the server reads them.
TEST_F(TraceHostileTest, ParametersOfAnyShapeDoNoHarm) {
  const Bytes zeros(300, '\0');
  const Bytes letters(300, 'x');
  const Bytes shapes[] = {"",
                          Bytes(1, '\0'),
                          Bytes(260, 'x'),
                          Bytes(259, '*') + '\0',
                          Bytes(259, '\\') + '\0',
                          Bytes(259, ' ') + '\0',
                          Bytes(259, '9') + '\0',
                          "%s%n%p" + Bytes(1, '\0'),
                          zeros,
                          letters};
  for (const char* const name :
       {"Level", "zqserver_level", "Consult", "Format", "Output", "FctName", "Module", "String",
        "TraceId", "Byte/File", "sm_size", "Path", "FileName"}) {
    for (const Bytes& shape : shapes) {
      for (const std::uint32_t type : {REG_SZ, REG_DWORD}) {
        trace_setup::ReplaceQuietly(AllLinesWith());
        trace_setup::SetRaw(name, type, shape);
        trace_setup::Refresh();
        ASSERT_TRUE(client_.IsServed()) << name << " of " << shape.size() << " bytes";
      }
    }
  }
}

// --- Names that are taken by something else ---

class TraceTakenNameTest : public OwnServerTraceTest {
 protected:
  // What a start tells the debugger, while an object of another kind bears the name.
  static std::vector<std::string> StartWhileTaken(const char* name) {
    const HANDLE event = CreateEventA(nullptr, FALSE, FALSE, name);
    EXPECT_NE(event, nullptr);
    const std::vector<std::string> texts = ServerProcess::DebuggerOutputOfAStart();
    (void)CloseHandle(event);
    return texts;
  }
};

TEST_F(TraceTakenNameTest, WithoutTheMutexLinesAreWrittenAllTheSame) {
  constexpr char kError[] = "ERROR: Can't create ZqTRC_MUTEX, GetLastError()=6 \n";
  const std::vector<std::string> texts = StartWhileTaken("Global\\ZqTRACE_MUTEX");
  EXPECT_EQ(std::count(texts.begin(), texts.end(), kError), 1) << "not once for every line";
  ASSERT_GT(AllLines().size(), 100u);
  EXPECT_EQ(AllLines()[0], "CreateSRV:  >> Start Pipe Server");
}

TEST_F(TraceTakenNameTest, WithoutTheGenerationLinesAreWrittenAllTheSame) {
  constexpr char kError[] = "ERROR: Can't create ZqTRC_SECTION, GetLastError()=6 \n";
  const std::vector<std::string> texts = StartWhileTaken(SharedWords::kGeneration);
  EXPECT_EQ(std::count(texts.begin(), texts.end(), kError), 1);
  ASSERT_GT(AllLines().size(), 100u);
  EXPECT_EQ(AllLines()[0], "CreateSRV:  >> Start Pipe Server");
}

// --- Texts of clients ---

// Every request that carries the text in some place: as a path, a name, a value, a cut field.
std::vector<Bytes> RequestsWith(const Bytes& text) {
  const Bytes field = Text(text);
  const Bytes key = Text("SOFTWARE\\Vesmark\\NORVA\\E2E");
  std::vector<Bytes> requests = {Wire("0100") + field,
                                 Wire("0200") + field,
                                 Wire("0300") + key + field + field,
                                 Wire("1200") + key + field,
                                 Wire("1500") + field + Long(0),
                                 Wire("1600") + key + field,
                                 Wire("1700") + field + Long(0),
                                 Wire("1C00 02000080") + key + key + field,
                                 Wire("1D00 02000080") + field,
                                 Wire("1E00 01000080") + field,
                                 Wire("FD00") + field.substr(0, 3)};
  for (Bytes& request : requests) request.resize(std::min(request.size(), kLongestRequest));
  return requests;
}

TEST_F(TraceHostileTest, TextsOfRegistryRequestsNeverBecomeFormatsOrFurtherLines) {
  Bytes control;
  for (int c = 1; c < 256; ++c) control += static_cast<char>(c);
  Bytes controls;
  while (controls.size() < 8186) controls += control;
  Bytes percents;
  while (percents.size() < 8186) percents += "%n%s%x%999999d%*c";
  Bytes lineEnds;
  while (lineEnds.size() < 8186) lineEnds += "\r\nRunSrvLoop:  opCode 0x10 ";

  for (const Bytes& text : {percents, controls, lineEnds, Bytes(8186, 'x'), Bytes(8186, '\0')}) {
    for (const std::size_t length : {8186u, 8152u, 300u}) {
      for (const Bytes& request : RequestsWith(text.substr(0, length))) {
        EXPECT_TRUE(client_.Send(request));
        const Lines lines = NewLines();
        ReadAway();
        // The passes of one request, and a few lines of its command.
        EXPECT_LE(lines.size(), 22u);
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                                [](const std::string& line) {
                                  return line.find("opCode") != std::string::npos;
                                }),
                  1);
        for (const std::string& line : lines) {
          EXPECT_LE(line.size(), 64 + 1 + kLongestText);
          EXPECT_EQ(line.find('%'), std::string::npos) << line;
          EXPECT_TRUE(std::all_of(line.begin(), line.end(), [](char c) {
            return static_cast<unsigned char>(c) >= ' ' && static_cast<unsigned char>(c) < 0x7F;
          })) << line;
        }
      }
    }
  }
}

}  // namespace
}  // namespace e2e
