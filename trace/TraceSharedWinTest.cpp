#include <windows.h>

#include <aclapi.h>
#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/BrokenFunction.h"
#include "trace/TraceRing.h"
#include "trace/TraceShared.h"
#include "trace/TraceWinFixture.h"

namespace {

constexpr char kGeneration[] = "Global\\ZqTRACE_SECTION";
constexpr char kRing[] = "Global\\ZqSDD_Trace";

/// A section as some other process might have it.
class ForeignSection {
 public:
  ForeignSection(const char* name, DWORD bytes, DWORD protection = PAGE_READWRITE,
                 HANDLE file = INVALID_HANDLE_VALUE)
      : section_(CreateFileMappingA(file, nullptr, protection, 0, bytes, name)),
        words_(static_cast<std::uint32_t*>(MapViewOfFile(section_, FILE_MAP_WRITE, 0, 0, 0))) {}
  ~ForeignSection() {
    (void)UnmapViewOfFile(words_);
    (void)CloseHandle(section_);
  }
  ForeignSection(const ForeignSection&) = delete;
  ForeignSection& operator=(const ForeignSection&) = delete;

  std::uint32_t& operator[](std::uint32_t index) { return words_[index]; }
  std::string Data() const { return reinterpret_cast<const char*>(words_ + 16); }

 private:
  HANDLE section_;
  std::uint32_t* words_;
};

class TraceSharedWinTest : public TraceWinFixture {
 protected:
  TraceSharedWinTest() {
    SetText("Output", "SM");
    SetText("Format", "TEXT");
    SetText("sm_size", "1000");
  }
};

// --- The generation counter ---

TEST_F(TraceSharedWinTest, WithoutItsAccessListTheCounterIsNotMadeForEverybody) {
  struct Step {
    const char* function;
    std::uint32_t result;
    std::uint8_t argumentBytes;
  };
  for (const Step& step : {Step{"CreateWellKnownSid", FALSE, 16},
                           Step{"SetEntriesInAclA", ERROR_NOT_ENOUGH_MEMORY, 16},
                           Step{"InitializeSecurityDescriptor", FALSE, 8},
                           Step{"SetSecurityDescriptorDacl", FALSE, 16}}) {
    const BrokenFunction broken("advapi32.dll", step.function, step.result, step.argumentBytes);
    std::uint32_t error = 0;
    EXPECT_EQ(zqotrc::OpenGeneration(error), nullptr) << step.function;
    // Where the broken function leaves no error, there is still that of the search for another's.
    EXPECT_EQ(error, step.result != 0 ? step.result : ERROR_FILE_NOT_FOUND) << step.function;
    EXPECT_EQ(OpenFileMappingA(FILE_MAP_WRITE, FALSE, kGeneration), nullptr) << step.function;
  }
}

TEST_F(TraceSharedWinTest, TheCounterMayBeWrittenByWhoeverIsLoggedOnAndNothingElse) {
  Initialise();
  const HANDLE section = OpenFileMappingA(READ_CONTROL, FALSE, kGeneration);
  ASSERT_NE(section, nullptr);
  ACL* acl = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ASSERT_EQ(GetSecurityInfo(section, SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                            &acl, nullptr, &descriptor),
            static_cast<DWORD>(ERROR_SUCCESS));
  ASSERT_NE(acl, nullptr);
  ASSERT_EQ(acl->AceCount, 1);
  void* raw = nullptr;
  ASSERT_TRUE(GetAce(acl, 0, &raw));
  auto* const entry = static_cast<ACCESS_ALLOWED_ACE*>(raw);
  EXPECT_EQ(entry->Header.AceType, ACCESS_ALLOWED_ACE_TYPE);
  EXPECT_EQ(entry->Header.AceFlags, 0);
  EXPECT_EQ(entry->Mask, static_cast<DWORD>(FILE_MAP_WRITE));
  BYTE sid[SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof(sid);
  ASSERT_TRUE(CreateWellKnownSid(WinAuthenticatedUserSid, nullptr, sid, &size));
  EXPECT_TRUE(EqualSid(&entry->SidStart, sid));
  (void)LocalFree(descriptor);
  (void)CloseHandle(section);
}

TEST_F(TraceSharedWinTest, ACounterThatExistsIsUsed) {
  ForeignSection counter(kGeneration, 4);
  counter[0] = 99;
  Initialise();
  zqotrc::RefreshAll();
  EXPECT_EQ(counter[0], 100u);
  counter[0] = 5;
  EXPECT_TRUE(zqotrc::Wanted(0));
}

TEST_F(TraceSharedWinTest, MemoryThatIsOnlyReservedIsNoCounter) {
  const HANDLE section = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr,
                                            PAGE_READWRITE | SEC_RESERVE, 0, 65536, kGeneration);
  ASSERT_NE(section, nullptr);
  Initialise();
  EXPECT_TRUE(zqotrc::Wanted(TRC_ERROR));
  zqotrc::RefreshAll();
  (void)CloseHandle(section);
}

TEST_F(TraceSharedWinTest, AnObjectOfAnotherKindIsNoCounter) {
  const HANDLE event = CreateEventA(nullptr, FALSE, FALSE, kGeneration);
  Initialise();
  EXPECT_TRUE(zqotrc::Wanted(TRC_ERROR));
  zqotrc::RefreshAll();
  (void)CloseHandle(event);
}

// --- The ring ---

TEST_F(TraceSharedWinTest, LinesAreSeenFromAnotherHandle) {
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "one");
  ZQ_TRACE(TRC_PROGRESS, kFct, "two");
  ForeignSection ring(kRing, 1068);
  EXPECT_EQ(ring[zqotrc::kRingOffset], 24u);
  EXPECT_EQ(ring[zqotrc::kRingSize], 1000u);
  EXPECT_EQ(ring[zqotrc::kRingWraps], 0u);
  EXPECT_EQ(ring[zqotrc::kRingEnabled], 1u);
  EXPECT_EQ(ring[zqotrc::kRingAttached], 1u);
  EXPECT_EQ(ring[zqotrc::kRingLayout], 1u);
  EXPECT_EQ(ring.Data(), "Fct:  one \r\nFct:  two \r\n");
}

TEST_F(TraceSharedWinTest, TheRingGoesRound) {
  SetText("sm_size", "100");
  Initialise();
  for (int line = 0; line < 10; ++line) ZQ_TRACE(TRC_PROGRESS, "f", "line %d", line);
  ForeignSection ring(kRing, 168);
  EXPECT_EQ(ring[zqotrc::kRingOffset], 10u);
  EXPECT_EQ(ring[zqotrc::kRingWraps], 1u);
  EXPECT_EQ(ring.Data().substr(0, 10), " line 9 \r\n");
  EXPECT_EQ(ring.Data()[99], 'f');
}

TEST(TraceChild, DISABLED_WritesALineToTheRing) {
  zqotrc::Initialise(/*security=*/nullptr, "zqserver_level");
  ZQ_TRACE(TRC_PROGRESS, "child", "joined");
  ForeignSection ring(kRing, 1068);
  EXPECT_EQ(ring[zqotrc::kRingAttached], 2u);
  zqotrc::ShutDown();
}

TEST_F(TraceSharedWinTest, AnotherProcessJoinsTheRingAndLeavesIt) {
  Initialise();
  SetText("sm_size", "5000");
  EXPECT_TRUE(ChildProcess("TraceChild.DISABLED_WritesALineToTheRing").Passed());
  ZQ_TRACE(TRC_PROGRESS, "parent", "goes on");
  ForeignSection ring(kRing, 1068);
  EXPECT_EQ(ring[zqotrc::kRingAttached], 1u);
  EXPECT_EQ(ring[zqotrc::kRingSize], 1000u);
  EXPECT_EQ(ring.Data(), "child joined \r\nparent goes on \r\n");
}

TEST_F(TraceSharedWinTest, ARingThatAnnouncesMoreThanItHasIsLeftAlone) {
  for (const std::uint32_t size : {8192u, 0x10000000u, 0xFFFFFFBBu, 0xFFFFFFFFu}) {
    ForeignSection ring(kRing, 168);
    ring[zqotrc::kRingSize] = size;
    ring[zqotrc::kRingLayout] = 1;
    Initialise();
    ZQ_TRACE(TRC_PROGRESS, kFct, "text");
    EXPECT_EQ(ring[zqotrc::kRingAttached], 0u) << size;
    EXPECT_EQ(ring.Data(), "");
  }
}

TEST_F(TraceSharedWinTest, MemoryThatIsOnlyReservedIsNoRing) {
  const HANDLE section = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr,
                                            PAGE_READWRITE | SEC_RESERVE, 0, 0x100000, kRing);
  void* const view = MapViewOfFile(section, FILE_MAP_WRITE, 0, 0, 0);
  ASSERT_NE(VirtualAlloc(view, 4096, MEM_COMMIT, PAGE_READWRITE), nullptr);
  auto* const words = static_cast<std::uint32_t*>(view);
  words[zqotrc::kRingSize] = 0x10000;
  words[zqotrc::kRingLayout] = 1;
  Initialise();
  for (int line = 0; line < 1000; ++line) ZQ_TRACE(TRC_PROGRESS, kFct, "line %d", line);
  EXPECT_EQ(words[zqotrc::kRingAttached], 0u);
  (void)UnmapViewOfFile(view);
  (void)CloseHandle(section);
}

TEST_F(TraceSharedWinTest, AFileBehindTheSectionIsNoRing) {
  const std::string name = folder() + "\\ring.bin";
  const HANDLE file = CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                  CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  {
    ForeignSection ring(kRing, 4096, PAGE_READWRITE, file);
    ring[zqotrc::kRingSize] = 1000;
    ring[zqotrc::kRingLayout] = 1;
    Initialise();
    ZQ_TRACE(TRC_PROGRESS, kFct, "text");
    EXPECT_EQ(ring[zqotrc::kRingAttached], 0u);
  }
  (void)CloseHandle(file);
}

TEST_F(TraceSharedWinTest, ASectionThatCannotBeWrittenIsNoRing) {
  const std::string name = folder() + "\\ring.bin";
  const HANDLE file = CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                  CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  const std::string zeroes(4096, '\0');
  DWORD written;
  (void)WriteFile(file, zeroes.data(), 4096, &written, nullptr);
  const HANDLE section = CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 0, kRing);
  ASSERT_NE(section, nullptr);
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  (void)CloseHandle(section);
  (void)CloseHandle(file);
}

TEST_F(TraceSharedWinTest, WordsThatOthersWriteWhileWeAreAttachedDoNoHarm) {
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
  ForeignSection ring(kRing, 1068);
  for (const std::uint32_t word : {0xFFFFFFFFu, 0x80000000u, 1001u, 0u}) {
    for (std::uint32_t index = 0; index < 16; ++index) ring[index] = word;
    for (int line = 0; line < 200; ++line) ZQ_TRACE(TRC_PROGRESS, kFct, "line %d", line);
    EXPECT_LE(ring[zqotrc::kRingOffset], 1000u);
  }
}

TEST_F(TraceSharedWinTest, ASizeThatIsMoreThanAProcessCanMapLeavesTheRingAway) {
  SetText("sm_size", "2147483647");
  Initialise();
  ZQ_TRACE(TRC_PROGRESS, kFct, "text");
}

}  // namespace
