#include <windows.h>

#include <gmock/gmock.h>

#include <map>

#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/EventLogTail.h"
#include "tests/e2e/RegistryTree.h"

// The plausibility check as a client's command, over the registry itself.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kNames[] = "SOFTWARE\\Vesmark\\NORVA\\LogNames";
constexpr char kDevices[] = "SOFTWARE\\Vesmark\\NORVA\\LogDevices";
const Bytes kCheck = Wire("2401");
const Bytes kDone = Wire("0400 00000000");

class PlausibilityTest : public BoardTest {
 protected:
  // A logical name that is assigned to a device, or to a list of them.
  static void Assign(const std::string& name, const std::string& device) {
    RegistryTree::SetText(kNames + ('\\' + name), "LogDevice", device);
  }
  static void MakeDevice(const std::string& name) {
    RegistryTree::CreateKey(kDevices + ('\\' + name));
  }

  // Runs the check. \returns the names that were assigned before and are not any more; fails when
  // anything else has changed in the two trees.
  std::vector<std::string> UnassignedByACheck() {
    const RegistryTree namesBefore(kNames);
    const RegistryTree devicesBefore(kDevices);
    EXPECT_TRUE(client_.Answers(kCheck, kDone));
    EXPECT_EQ(RegistryTree(kDevices), devicesBefore);
    const RegistryTree namesAfter(kNames);
    std::vector<std::string> unassigned;
    RegistryTree expected = namesBefore;
    for (const auto& [value, data] : namesAfter.values) {
      const auto before = namesBefore.values.find(value);
      if (before == namesBefore.values.end() || before->second == data) continue;
      EXPECT_EQ(data, (StoredValue{REG_SZ, Bytes(1, '\0')})) << value;
      unassigned.push_back(value.substr(0, value.find('|')));
      expected.values[value] = data;
    }
    EXPECT_EQ(namesAfter, expected);
    return unassigned;
  }
};

// --- Calls, and what is answered ---

TEST_F(PlausibilityTest, WithoutLogicalNamesCallsTheLibraryInItsOrder) {
  StartWith("");
  EXPECT_TRUE(client_.Answers(kCheck, kDone));
  EXPECT_THAT(
      files_.NewCalls(),
      ElementsAre("BRDX_ScanBL -> 0 lock=held", "BRDX_RemoveAbandonLogDevices -> 0 lock=held",
                  "BRDX_UpdateRoute -> 0 lock=held", "BRDX_CreateAllLogdevicesBL -> 0 lock=held"));
}

TEST_F(PlausibilityTest, IgnoresBytesBehindItsCode) {
  StartWith("");
  EXPECT_TRUE(client_.Answers(kCheck + "behind", kDone));
  EXPECT_TRUE(client_.Answers(kCheck.substr(0, 1), Wire("0400 AC210000"
                                                        "0400 AC210000 0400 9A210000")));
}

TEST_F(PlausibilityTest, AnswersWhatTheRemovalOfAbandonedDevicesReturned) {
  StartWith(
      "[fault BRDX_ScanBL]\ncall = *\nresult = 31\n"
      "[fault BRDX_RemoveAbandonLogDevices]\ncall = 1\nresult = 0x80070005\n"
      "[fault BRDX_UpdateRoute]\ncall = *\nresult = 33\n"
      "[fault BRDX_CreateAllLogdevicesBL]\ncall = *\nresult = 34\n");
  EXPECT_TRUE(client_.Answers(kCheck, Wire("0400 05000780")));
  EXPECT_TRUE(client_.Answers(kCheck, kDone));
}

TEST_F(PlausibilityTest, AfterAnExceptionAnswersTheResultKeptSoFarAndStops) {
  const std::string results =
      "[fault BRDX_ScanBL]\ncall = 2-4\nresult = 31\n"
      "[fault BRDX_RemoveAbandonLogDevices]\ncall = 2-3\nresult = 32\n";
  for (const std::string kind : {"access-violation", "cxx", "divide-by-zero", "stack-overflow"}) {
    const auto raises = [&](const std::string& operation, const std::string& call) {
      return "[fault " + operation + "]\ncall = " + call + "\nraise = " + kind + "\n";
    };
    StartWith(results + raises("BRDX_ScanBL", "1") + raises("BRDX_RemoveAbandonLogDevices", "1") +
              raises("BRDX_UpdateRoute", "1") + raises("BRDX_CreateAllLogdevicesBL", "1"));
    ForeignBoardLock lock;
    const std::string raised = " -> raise " + kind + " lock=held";
    EXPECT_TRUE(client_.Answers(kCheck, kDone));
    EXPECT_TRUE(lock.IsFree());
    EXPECT_THAT(files_.NewCalls(), ElementsAre("BRDX_ScanBL" + raised));

    EXPECT_TRUE(client_.Answers(kCheck, Wire("0400 1F000000")));
    EXPECT_TRUE(lock.IsFree());
    EXPECT_THAT(files_.NewCalls(), ElementsAre("BRDX_ScanBL -> 31 lock=held",
                                               "BRDX_RemoveAbandonLogDevices" + raised));

    EXPECT_TRUE(client_.Answers(kCheck, Wire("0400 20000000")));
    EXPECT_TRUE(lock.IsFree());
    EXPECT_THAT(files_.NewCalls(), ElementsAre("BRDX_ScanBL -> 31 lock=held",
                                               "BRDX_RemoveAbandonLogDevices -> 32 lock=held",
                                               "BRDX_UpdateRoute" + raised));

    EXPECT_TRUE(client_.Answers(kCheck, Wire("0400 20000000")));
    EXPECT_TRUE(lock.IsFree());
    EXPECT_THAT(
        files_.NewCalls(),
        ElementsAre("BRDX_ScanBL -> 31 lock=held", "BRDX_RemoveAbandonLogDevices -> 32 lock=held",
                    "BRDX_UpdateRoute -> 0 lock=held", "BRDX_CreateAllLogdevicesBL" + raised));
    EXPECT_TRUE(client_.Answers(kCheck, kDone));
  }
}

// --- Logical names ---

TEST_F(PlausibilityTest, UnassignsTheNamesWhoseDeviceIsMissing) {
  StartWith("");
  MakeDevice("Here");
  Assign("A missing", "Gone");
  Assign("B existing", "Here");
  Assign("C another case", "hERE");
  Assign("D empty", "");
  Assign("E with a comma", "Here,Here");
  Assign("F missing, too", "Gone 2");
  EXPECT_THAT(UnassignedByACheck(), ElementsAre("A missing", "E with a comma", "F missing, too"));
  EXPECT_THAT(UnassignedByACheck(), IsEmpty());
}

TEST_F(PlausibilityTest, LeavesOtherValuesOtherTypesAndKeysWithoutAValueAlone) {
  StartWith("");
  MakeDevice("Here");
  RegistryTree::CreateKey(std::string(kNames) + "\\Nothing");
  RegistryTree::SetText(std::string(kNames) + "\\Others", "LogDevices", "Gone");
  RegistryTree::SetText(std::string(kNames) + "\\Others", "", "Gone");
  RegistryTree::SetText(std::string(kNames) + "\\Nested\\Below", "LogDevice", "Gone");
  RegistryTree::Set(std::string(kNames) + "\\Zero", "LogDevice", REG_DWORD, Long(0));
  RegistryTree::Set(std::string(kNames) + "\\Binary", "LogDevice", REG_BINARY, Wire("'Here' 00"));
  RegistryTree::Set(std::string(kNames) + "\\Expanded", "LogDevice", REG_EXPAND_SZ,
                    Wire("'Here' 00"));
  EXPECT_THAT(UnassignedByACheck(), IsEmpty());
}

// Any type is read, and its bytes are a text.
TEST_F(PlausibilityTest, UnassignsAValueOfAnotherTypeAsAText) {
  StartWith("");
  MakeDevice("Here");
  RegistryTree::Set(std::string(kNames) + "\\Binary", "LogDevice", REG_BINARY, Wire("'Gone' 00"));
  RegistryTree::Set(std::string(kNames) + "\\Number", "LogDevice", REG_DWORD, Long(0x41414141));
  RegistryTree::Set(std::string(kNames) + "\\Several", "LogDevice", REG_MULTI_SZ,
                    Wire("'Here' 00 'Gone' 00 00"));
  EXPECT_THAT(UnassignedByACheck(), ElementsAre("Binary", "Number"));
}

TEST_F(PlausibilityTest, TakesTheListOfAnExternalProgrammerApart) {
  StartWith("");
  MakeDevice("KWTUSB1");
  MakeDevice("KWTUS");
  MakeDevice("Here");
  Assign("A both here", "KWTUSB1,Here");
  Assign("B second gone", "KWTUSB1,Gone");
  Assign("C first gone", "KWTUSB2,Here");
  Assign("D empty tokens", ",,KWTUSB1,,Here,,");
  Assign("E alone", "KWTUSB1");
  Assign("F alone and gone", "KWTUSB3");
  Assign("G in the middle", "Here,xKWTUSBx");
  Assign("H another case is no programmer", "KwtUsb1,Here");
  Assign("I half a mark is none", "KWTUS,Here");
  EXPECT_THAT(UnassignedByACheck(),
              ElementsAre("B second gone", "C first gone", "F alone and gone", "G in the middle",
                          "H another case is no programmer", "I half a mark is none"));
}

// The check reads 8192 bytes; what does not fit is a read that failed, and stays.
TEST_F(PlausibilityTest, ReadsValuesUpToWhatItAnnounces) {
  StartWith("");
  MakeDevice("KWTUSB1");
  Assign("A long", std::string(5000, 'x'));
  std::string list = "KWTUSB1";
  while (list.size() < 5000) list += ",KWTUSB1";
  Assign("B long list", list);
  Assign("C long list with one that is gone", list + ",Gone");
  Assign("D list of commas", "KWTUSB1" + std::string(5000, ','));
  Assign("E as long as it is read", std::string(8191, 'y'));
  Assign("F longer", std::string(8192, 'z'));
  EXPECT_THAT(UnassignedByACheck(), ElementsAre("A long", "C long list with one that is gone",
                                                "E as long as it is read"));
}

TEST_F(PlausibilityTest, TakesNamesOfTheLongestKeyAndGoesOn) {
  StartWith("");
  RegistryScratch().CreateKey(std::string(kNames) + '\\' + std::string(255, 'N'));
  Assign(std::string(227, 'M'), "Gone");
  Assign("Z behind", "Gone");
  EventLogTail log;
  EXPECT_THAT(UnassignedByACheck(), ElementsAre(std::string(227, 'M'), "Z behind"));
  EXPECT_THAT(log.Texts(), IsEmpty());
}

// A name in the registry is one element of a path; a value may be any text.
TEST_F(PlausibilityTest, AValueThatIsAPathIsLookedUpBelowTheDevices) {
  StartWith("");
  MakeDevice("Here\\Below");
  Assign("A below", "Here\\Below");
  Assign("B not below", "Here\\Other");
  EventLogTail log;
  EXPECT_THAT(UnassignedByACheck(), ElementsAre("B not below"));
  EXPECT_THAT(log.Texts(), IsEmpty());
}

TEST_F(PlausibilityTest, AFailedUnassignmentIsNotReportedAndTheWalkGoesOn) {
  StartWith("");
  Assign("A", "Gone");
  Assign("B", "Gone");
  RegistryScratch scratch;
  scratch.DenyWriting(std::string(kNames) + "\\A", true);
  EXPECT_TRUE(client_.Answers(kCheck, kDone));
  scratch.DenyWriting(std::string(kNames) + "\\A", false);
  EXPECT_EQ(scratch.Value(std::string(kNames) + "\\B", "LogDevice"),
            (StoredValue{REG_SZ, Bytes(1, '\0')}));
}

TEST_F(PlausibilityTest, SeesDevicesAsTheLibraryLeftThem) {
  // The board vanishes at the second scan and its device with it, before names are looked at.
  StartWith("[board]\nname = B\ndevice-id = D\nvanishes-at-scan = 2\nlogical-device = Simulated\n");
  Assign("Name", "Simulated");
  EXPECT_TRUE(client_.Answers(kCheck, kDone));
  RegistryScratch scratch;
  // The first check unassigns it: devices are made at the end. So the name is assigned again.
  EXPECT_EQ(scratch.Value(std::string(kNames) + "\\Name", "LogDevice"),
            (StoredValue{REG_SZ, Bytes(1, '\0')}));
  EXPECT_TRUE(scratch.HasKey(std::string(kDevices) + "\\Simulated"));
  Assign("Name", "Simulated");
  EXPECT_TRUE(client_.Answers(kCheck, kDone));
  EXPECT_FALSE(scratch.HasKey(std::string(kDevices) + "\\Simulated"));
  EXPECT_EQ(scratch.Value(std::string(kNames) + "\\Name", "LogDevice"),
            (StoredValue{REG_SZ, Bytes(1, '\0')}));
}

// --- The two literal keys ---

constexpr char kLiteral1[] = "EMULON(TCP/IP) -> EMULON V5.x";
constexpr char kLiteral2[] = "EMULON Q-2100/Q-2500(TCP/IP) -> EMULON Q-2100/Q-2500";

// Keys directly below HKEY_LOCAL_MACHINE live in the running system only, where it lets them.
class LiteralKey {
 public:
  explicit LiteralKey(const std::string& path) : path_(path) {
    HKEY key = nullptr;
    created_ = RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                               KEY_READ, nullptr, &key, nullptr) == ERROR_SUCCESS;
    if (created_) (void)RegCloseKey(key);
  }
  ~LiteralKey() { (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, path_.c_str()); }
  LiteralKey(const LiteralKey&) = delete;
  LiteralKey& operator=(const LiteralKey&) = delete;

  bool IsCreated() const { return created_; }
  bool Exists() const { return RegistryTree::HasKey(path_); }

 private:
  std::string path_;
  bool created_ = false;
};

TEST_F(PlausibilityTest, DeletesTwoKeysByTheirLiteralNamesAndNoOther) {
  StartWith("");
  LiteralKey first(kLiteral1);
  LiteralKey second(kLiteral2);
  LiteralKey other("EMULON(TCP/IP)");
  if (!first.IsCreated() || !second.IsCreated()) GTEST_SKIP() << "no keys directly below the root";
  EventLogTail log;
  EXPECT_TRUE(client_.Answers(kCheck, kDone));
  EXPECT_FALSE(first.Exists());
  EXPECT_FALSE(second.Exists());
  EXPECT_TRUE(other.Exists());
  EXPECT_THAT(log.Texts(), IsEmpty());
}

TEST_F(PlausibilityTest, DoesNotMindALiteralKeyThatCannotBeDeleted) {
  StartWith("");
  LiteralKey first(kLiteral1);
  LiteralKey below(std::string(kLiteral1) + "\\Below");
  LiteralKey second(kLiteral2);
  if (!below.IsCreated()) GTEST_SKIP() << "no keys directly below the root";
  EXPECT_TRUE(client_.Answers(kCheck, kDone));
  EXPECT_TRUE(below.Exists());
  EXPECT_FALSE(second.Exists());
  EXPECT_EQ(files_.NewCalls().size(), 4u);
}

// They go before the lock is waited for.
TEST_F(PlausibilityTest, DeletesTheLiteralKeysWithoutTheLock) {
  StartWith("");
  LiteralKey first(kLiteral1);
  if (!first.IsCreated()) GTEST_SKIP() << "no keys directly below the root";
  ForeignBoardLock lock;
  ASSERT_TRUE(lock.Take(kPatienceMs));
  ASSERT_TRUE(client_.Send(kCheck));
  const ULONGLONG end = GetTickCount64() + kPatienceMs;
  while (first.Exists() && GetTickCount64() < end) Sleep(2);
  EXPECT_FALSE(first.Exists());
  EXPECT_THAT(files_.NewCalls(), IsEmpty());
  lock.Release();
  EXPECT_TRUE(client_.Yields(kDone));
}

}  // namespace
}  // namespace e2e
