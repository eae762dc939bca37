#include <functional>
#include <new>
#include <stdexcept>

#include "registry/RegistryPolicy.h"
#include "tests/fakes/FakeEventLog.h"
#include "tests/fakes/FakeRegistry.h"
#include "tests/support/PoolFixture.h"
#include "tests/support/RegistrySetup.h"

// What only fakes can show: events as they are reported, and primitives that raise.

namespace {

using fake_event_log::Event;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kTree = "SOFTWARE\\Vesmark\\NORVA\\FaultsTest";

class RegistryFaultsTest : public PoolFixture {
 protected:
  RegistryFaultsTest() { (void)fake_event_log::Take(); }
  ~RegistryFaultsTest() override { fake_registry::OnCall({}); }
};

TEST_F(RegistryFaultsTest, ARefusalIsReportedOnceInTheCallersSpelling) {
  const std::string path = kTree + "\\..\\..\\%s Other";
  EXPECT_FALSE(IsPermittedRegKey(path.c_str()));
  EXPECT_THAT(fake_event_log::Take(),
              ElementsAre(Event{"MIREL RegistryOperation", "Invalid Access to Reg-Key: " + path}));
}

TEST_F(RegistryFaultsTest, TheLongestPathIsReportedWhole) {
  const std::string path(8159, 'a');
  EXPECT_FALSE(IsPermittedRegKey(path.c_str()));
  EXPECT_THAT(fake_event_log::Take(),
              ElementsAre(Event{"MIREL RegistryOperation", "Invalid Access to Reg-Key: " + path}));
}

TEST_F(RegistryFaultsTest, WhatIsPermittedOrMissingIsNotReported) {
  EXPECT_TRUE(IsPermittedRegKey(kTree.c_str()));
  ReceiveCommand(Wire("0200 FFFF0000"));
  EXPECT_EQ(srv_.Reg_CreateKey(kConId), SRV_OK);
  EXPECT_THAT(fake_event_log::Take(), IsEmpty());
}

TEST_F(RegistryFaultsTest, AWrongRootKeyIsReportedWithoutThePath) {
  ReceiveCommand(Wire("1D00 01000080") + TextField(kTree));
  EXPECT_EQ(srv_.Reg_CreateKeyBase(kConId), SRV_OK);
  EXPECT_THAT(fake_event_log::Take(),
              ElementsAre(Event{"MIREL RegistryOperation",
                                "Only operations to HKEY_LOCAL_MACHINE are allowed!"}));
}

TEST_F(RegistryFaultsTest, APrimitiveThatRaisesAnswers8604) {
  fake_registry::OnCall([] { throw std::runtime_error("fault"); });
  const Bytes path = TextField(kTree);
  const Bytes root = Wire("02000080");
  const Bytes index = Wire("00000000");
  using Handler = SrvResult (CQorlixSRVPipe::*)(int);
  const std::pair<Handler, Bytes> commands[] = {
      {&CQorlixSRVPipe::Reg_CreateKey, path},
      {&CQorlixSRVPipe::Reg_DelKey, path},
      {&CQorlixSRVPipe::Reg_SetValue, path + path + path},
      {&CQorlixSRVPipe::Reg_GetValue, path + path},
      {&CQorlixSRVPipe::Reg_DelValue, path + path},
      {&CQorlixSRVPipe::Reg_EnumKey, path + index},
      {&CQorlixSRVPipe::Reg_EnumValue, path + index},
      {&CQorlixSRVPipe::Reg_SetValueBase, root + path + path + path},
      {&CQorlixSRVPipe::Reg_CreateKeyBase, root + path},
      {&CQorlixSRVPipe::Reg_DelKeyBase, root + path},
  };
  for (const auto& [handler, fields] : commands) {
    ReceiveCommand(Wire("0000") + fields);
    EXPECT_EQ((srv_.*handler)(kConId), SRV_OK);
    EXPECT_EQ(Reply(), Wire("0400 9C210000"));
  }
}

}  // namespace
