#include "platform/NamedObject.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <sddl.h>

#include <string>

namespace {

TEST(NamedObjectTest, AMutexIsSeenByNameAndOwnedByWhoWaited) {
  const HANDLE mutex = platform::CreateNamedMutex("QorlixNamedObjectTest");
  ASSERT_NE(mutex, nullptr);
  const HANDLE other = OpenMutexA(SYNCHRONIZE, FALSE, "QorlixNamedObjectTest");
  ASSERT_NE(other, nullptr);
  EXPECT_EQ(platform::WaitForMutex(mutex, 0), WAIT_OBJECT_0);
  platform::ReleaseNamedMutex(mutex);
  platform::ReleaseNamedMutex(mutex);  // not owned any more: without effect
  EXPECT_EQ(WaitForSingleObject(other, 0), WAIT_OBJECT_0);
  (void)ReleaseMutex(other);
  (void)CloseHandle(other);
  (void)CloseHandle(mutex);
}

DWORD WINAPI TakeAndEnd(void* mutex) { return WaitForSingleObject(mutex, INFINITE); }

TEST(NamedObjectTest, AWaitReportsAnAbandonedMutex) {
  const HANDLE mutex = platform::CreateNamedMutex("QorlixNamedObjectTestAbandoned");
  const HANDLE thread = CreateThread(nullptr, 0, TakeAndEnd, mutex, 0, nullptr);
  (void)WaitForSingleObject(thread, 5000);
  EXPECT_EQ(platform::WaitForMutex(mutex, 1000), WAIT_ABANDONED);
  platform::ReleaseNamedMutex(mutex);
  (void)CloseHandle(thread);
  (void)CloseHandle(mutex);
}

TEST(NamedObjectTest, AnEventIsSetIfItExists) {
  EXPECT_FALSE(platform::SetEventIfItExists("QorlixNamedObjectTestEvent"));
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, "QorlixNamedObjectTestEvent");
  EXPECT_TRUE(platform::SetEventIfItExists("QorlixNamedObjectTestEvent"));
  EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
  (void)CloseHandle(event);
}

TEST(NamedObjectTest, AnEventOfSomebodyElseIsSignalledWithoutAHandleLeftBehind) {
  constexpr char kName[] = "QorlixNamedObjectTestSignal";
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, kName);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(platform::SignalEvent(kName), DWORD{ERROR_SUCCESS});
  EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
  (void)CloseHandle(event);
  EXPECT_EQ(OpenEventA(SYNCHRONIZE, FALSE, kName), nullptr);
}

// Whoever made it need not let others do more with it.
TEST(NamedObjectTest, TheRightToSetAnEventIsEnoughToSignalIt) {
  constexpr char kName[] = "QorlixNamedObjectTestSetOnly";
  SECURITY_ATTRIBUTES onlySet = {sizeof(onlySet), nullptr, FALSE};
  ASSERT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
                "D:(A;;0x2;;;WD)", SDDL_REVISION_1, &onlySet.lpSecurityDescriptor, nullptr),
            FALSE);
  const HANDLE event = CreateEventA(&onlySet, TRUE, FALSE, kName);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(OpenEventA(EVENT_ALL_ACCESS, FALSE, kName), nullptr);
  EXPECT_EQ(platform::SignalEvent(kName), DWORD{ERROR_SUCCESS});
  EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
  (void)CloseHandle(event);
  (void)LocalFree(onlySet.lpSecurityDescriptor);
}

TEST(NamedObjectTest, AnEventThatNobodyCreatedCannotBeSignalled) {
  EXPECT_EQ(platform::SignalEvent("QorlixNamedObjectTestNoEvent"), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST(NamedObjectTest, AnEmptyOrALongNameCannotBeSignalled) {
  EXPECT_NE(platform::SignalEvent(""), DWORD{ERROR_SUCCESS});
  EXPECT_NE(platform::SignalEvent(std::string(259, 'e').c_str()), DWORD{ERROR_SUCCESS});
}

TEST(NamedObjectTest, WhatIsNotAnEventCannotBeSignalled) {
  const HANDLE mutex = platform::CreateNamedMutex("QorlixNamedObjectTestNotAnEvent");
  EXPECT_EQ(platform::SignalEvent("QorlixNamedObjectTestNotAnEvent"), DWORD{ERROR_INVALID_HANDLE});
  (void)CloseHandle(mutex);
}

}  // namespace
