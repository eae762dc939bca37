#include "registry/StrictRegistry.h"

#include "tests/fakes/FakeRegistry.h"
#include "tests/support/PoolFixture.h"
#include "tests/support/RegistrySetup.h"
#include "tests/support/StrictProfileGuard.h"

namespace {

using strict_profile::Threat;
using testing::ElementsAre;
using testing::IsEmpty;

using Found = std::optional<Threat>;

const std::string kRoot = "SOFTWARE\\Vesmark\\NORVA";
const std::string kTwin = "SOFTWARE\\Wow6432Node\\Vesmark\\NORVA";
const std::string kDevices = kRoot + "\\DefDevices\\DeviceID";

Found OfValue(const std::string& path, const char* name) {
  return ThreatOf({RegistryChange::ChangeValue, path.c_str(), name});
}
Found OfCreate(const std::string& path) {
  return ThreatOf({RegistryChange::CreateKey, path.c_str()});
}
Found OfDelete(const std::string& path) {
  return ThreatOf({RegistryChange::DeleteKey, path.c_str()});
}

class StrictRegistryTest : public PoolFixture {
 protected:
  using Handler = SrvResult (CQorlixSRVPipe::*)(int);

  StrictRegistryTest() { fake_registry::DeleteTree("SOFTWARE"); }
  ~StrictRegistryTest() override { fake_registry::DeleteTree("SOFTWARE"); }

  // The reply to a request whose fields stand behind a command code.
  Bytes Answer(Handler handler, const Bytes& fields) {
    ReceiveCommand(Wire("0000") + fields);
    EXPECT_EQ((srv_.*handler)(kConId), SRV_OK);
    return Reply();
  }

  StrictProfileGuard profile_;
};

// --- What a change is about ---

TEST_F(StrictRegistryTest, PluginValuesAreProtectedInAnyCaseInEveryPermittedKey) {
  for (const std::string& path :
       {kDevices + "\\D", kRoot, kTwin + "\\x", kRoot + "2\\x", kRoot + "\\x\\..\\y"}) {
    for (const char* name : {"Installer", "INSTALLER", "installer", "Deinstaller", "deINSTALLER"}) {
      EXPECT_EQ(OfValue(path, name), Threat::PluginValue) << path << " " << name;
    }
    for (const char* name : {"", "Install", "Installers", " Installer", "Installer ", "nstaller",
                             "HardwareID", "Deinstalle", "\xCEnstaller"}) {
      EXPECT_EQ(OfValue(path, name), std::nullopt) << path << " " << name;
    }
  }
}

TEST_F(StrictRegistryTest, TheTraceKeyIsProtectedInEverySpellingThatReachesIt) {
  for (const std::string& path :
       {kRoot + "\\TrcParams", kTwin + "\\TrcParams", kRoot + "\\TRCPARAMS\\",
        kRoot + "\\\\trcparams", kRoot + "\\\\\\TrcParams\\\\x", kRoot + "\\TrcParams\\deeper\\x",
        kRoot + "\\.\\TrcParams", kRoot + "\\x\\..\\TrcParams", kRoot + "\\TrcParams\\x\\..",
        std::string("software\\VESMARK\\norva\\tRCpARAMS"),
        std::string("SOFTWARE\\Other\\..\\Vesmark\\NORVA\\TrcParams")}) {
    EXPECT_EQ(OfCreate(path), Threat::TraceKey) << path;
    EXPECT_EQ(OfDelete(path), Threat::TraceKey) << path;
    EXPECT_EQ(OfValue(path, "TraceLevel"), Threat::TraceKey) << path;
    EXPECT_EQ(OfValue(path, ""), Threat::TraceKey) << path;
  }
}

TEST_F(StrictRegistryTest, NeighboursOfTheTraceKeyAreNot) {
  for (const std::string& path :
       {kRoot, kRoot + "\\", kRoot + "\\TrcParam", kRoot + "\\TrcParamsX", kRoot + "\\x\\TrcParams",
        kRoot + "TrcParams", kRoot + "2\\TrcParams", kRoot + "\\TrcParams\\..",
        kRoot + "\\TrcParams/x", kRoot + " \\TrcParams"}) {
    EXPECT_EQ(OfCreate(path), std::nullopt) << path;
    EXPECT_EQ(OfValue(path, "TraceLevel"), std::nullopt) << path;
    EXPECT_EQ(OfDelete(path), std::nullopt) << path;
  }
}

TEST_F(StrictRegistryTest, WhatThePolicyRefusesIsLeftToThePolicy) {
  for (const std::string& path :
       {std::string("SOFTWARE\\Vesmark\\Shared Tools\\MIREL"), std::string(""),
        kRoot + "\\..\\TrcParams", "\\" + kRoot + "\\TrcParams",
        kRoot + "\\TrcParams\\" + std::string(8100, 'x')}) {
    EXPECT_EQ(OfCreate(path), std::nullopt) << path;
    EXPECT_EQ(OfValue(path, "Installer"), std::nullopt) << path;
  }
  EXPECT_THAT(profile_.Reports(), IsEmpty());
}

TEST_F(StrictRegistryTest, WhatIsAbsentChangesNothing) {
  EXPECT_EQ(ThreatOf({RegistryChange::CreateKey, nullptr}), std::nullopt);
  EXPECT_EQ(ThreatOf({RegistryChange::ChangeValue, nullptr, "Installer"}), std::nullopt);
  EXPECT_EQ(ThreatOf({RegistryChange::ChangeValue, kDevices.c_str(), nullptr}), std::nullopt);
}

TEST_F(StrictRegistryTest, ADeletionIsAboutDevicesIfItHasATreeBelowThem) {
  for (const std::string& path :
       {kDevices, kDevices + "\\D", kDevices + "\\D\\", kRoot + "\\\\defdevices\\DEVICEID\\D\\x",
        kTwin + "\\DefDevices\\DeviceID\\D"}) {
    fake_registry::DeleteTree("SOFTWARE");
    EXPECT_EQ(OfDelete(path), std::nullopt) << path << ", where nothing is nested";
    registry_setup::CreateKey(path + "\\" + path);
    EXPECT_EQ(OfDelete(path), Threat::DeviceTree) << path;
    EXPECT_EQ(OfCreate(path), std::nullopt) << path;
  }
  // What is nested here is none of the keys that plug-ins are looked up in.
  for (const std::string& path : {kRoot, kRoot + "\\DefDevices", kRoot + "\\x"}) {
    registry_setup::CreateKey(path + "\\" + path + "\\DefDevices\\DeviceID\\D");
    EXPECT_EQ(OfDelete(path), std::nullopt) << path;
  }
}

TEST_F(StrictRegistryTest, ADeletionThatCannotBeLookedAtCountsAsOne) {
  fake_registry::OnCall([] { throw std::runtime_error("fault"); });
  EXPECT_EQ(OfDelete(kDevices), Threat::DeviceTree);
  fake_registry::OnCall({});
}

// --- What the commands make of it ---

struct Change {
  const char* name;
  SrvResult (CQorlixSRVPipe::*handler)(int);
  Bytes fields;
  std::string event;  ///< behind "Strict profile refuses: "
};

const Bytes kBase = Wire("02000080");

std::vector<Change> ProtectedChanges() {
  const Bytes device = TextField(kDevices + "\\D");
  const Bytes trace = TextField(kRoot + "\\x\\..\\TrcParams");
  const Bytes value = TextField("installer");
  const Bytes level = TextField("TraceLevel");
  const Bytes text = TextField("text");
  const std::string plugin = "a change of the plug-in value " + kDevices + "\\D\\installer";
  const std::string key = "a change of the trace key: " + kRoot + "\\x\\..\\TrcParams";
  return {
      {"set plug-in", &CQorlixSRVPipe::Reg_SetValue, device + value + text, plugin},
      {"set plug-in, root", &CQorlixSRVPipe::Reg_SetValueBase, kBase + device + value + text,
       plugin},
      {"delete plug-in", &CQorlixSRVPipe::Reg_DelValue, device + value, plugin},
      {"delete devices", &CQorlixSRVPipe::Reg_DelKey, device,
       "a deletion below the keys of the devices: " + kDevices + "\\D"},
      {"delete devices, root", &CQorlixSRVPipe::Reg_DelKeyBase, kBase + device,
       "a deletion below the keys of the devices: " + kDevices + "\\D"},
      {"set level", &CQorlixSRVPipe::Reg_SetValue, trace + level + text, key + "\\TraceLevel"},
      {"set level, root", &CQorlixSRVPipe::Reg_SetValueBase, kBase + trace + level + text,
       key + "\\TraceLevel"},
      {"delete level", &CQorlixSRVPipe::Reg_DelValue, trace + level, key + "\\TraceLevel"},
      {"create trace key", &CQorlixSRVPipe::Reg_CreateKey, trace, key},
      {"create trace key, root", &CQorlixSRVPipe::Reg_CreateKeyBase, kBase + trace, key},
      {"delete below trace key", &CQorlixSRVPipe::Reg_DelKey, trace, key},
      {"delete below trace key, root", &CQorlixSRVPipe::Reg_DelKeyBase, kBase + trace, key},
  };
}

class StrictRegistryCommandTest : public StrictRegistryTest {
 protected:
  // A device with a plug-in and a nested tree, and a trace level with a nested tree.
  static void Arrange() {
    fake_registry::DeleteTree("SOFTWARE");
    for (const std::string& key : {kDevices + "\\D", kRoot + "\\TrcParams"}) {
      registry_setup::CreateKey(key + "\\" + key);
    }
    registry_setup::SetValue(kDevices + "\\D", "Installer", registry_setup::kSz, TextBytes("old"));
    registry_setup::SetValue(kRoot + "\\TrcParams", "TraceLevel", registry_setup::kSz,
                             TextBytes("old"));
  }

  // Whether everything still is as arranged.
  static bool IsUnchanged() {
    const Bytes old = Bytes{registry_setup::kSz} + TextBytes("old");
    return registry_setup::Value(kDevices + "\\D", "Installer") == old &&
           registry_setup::Value(kRoot + "\\TrcParams", "TraceLevel") == old &&
           registry_setup::KeyExists(kDevices + "\\D\\" + kDevices + "\\D") &&
           registry_setup::KeyExists(kRoot + "\\TrcParams\\" + kRoot + "\\TrcParams");
  }

  // The reply to the change, and what is left behind it.
  void ExpectDone(const Change& change) {
    Arrange();
    EXPECT_EQ(Answer(change.handler, change.fields), Wire("0400 00000000")) << change.name;
    const bool leavesTheKey = std::string(change.name).find("create") == 0;
    EXPECT_EQ(IsUnchanged(), leavesTheKey) << change.name;
  }

  const std::string kBy = ", asked for by process 4321";
};

TEST_F(StrictRegistryCommandTest, OffEverythingIsDoneAndNobodyIsAsked) {
  for (const Change& change : ProtectedChanges()) ExpectDone(change);
  EXPECT_EQ(fake_client_identity::Questions(), 0);
  EXPECT_THAT(profile_.Reports(), IsEmpty());
}

TEST_F(StrictRegistryCommandTest, ReportedEverythingIsDoneAndReported) {
  profile_.Set("report");
  for (const Change& change : ProtectedChanges()) {
    ExpectDone(change);
    EXPECT_THAT(profile_.Reports(),
                ElementsAre("Strict profile would refuse: " + change.event + kBy));
  }
}

TEST_F(StrictRegistryCommandTest, EnforcedEverythingIsAnsweredWithFiveAndNothingChanges) {
  profile_.Set("enforce");
  PipeOf(kConId).hPipe = reinterpret_cast<HANDLE>(2008);
  for (const Change& change : ProtectedChanges()) {
    Arrange();
    EXPECT_EQ(Answer(change.handler, change.fields), Wire("0400 05000000")) << change.name;
    EXPECT_TRUE(IsUnchanged()) << change.name;
    EXPECT_THAT(profile_.Reports(), ElementsAre("Strict profile refuses: " + change.event + kBy));
    EXPECT_EQ(fake_client_identity::LastPipe(), PipeOf(kConId).hPipe);
  }
  PipeOf(kConId).hPipe = nullptr;
}

TEST_F(StrictRegistryCommandTest, AdministratorsAreServedAndNotReported) {
  fake_client_identity::SetAdministrator(true);
  for (const char* mode : {"report", "enforce"}) {
    profile_.Set(mode);
    for (const Change& change : ProtectedChanges()) ExpectDone(change);
    EXPECT_THAT(profile_.Reports(), IsEmpty());
  }
}

TEST_F(StrictRegistryCommandTest, EnforcedOtherRequestsAskNobody) {
  profile_.Set("enforce");
  Arrange();
  const Bytes device = TextField(kDevices + "\\D");
  const Bytes outside = TextField("SOFTWARE\\TrcParams");
  const Bytes name = TextField("Installer");
  const Bytes absent = Wire("FFFF0000");
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_SetValue, device + TextField("HardwareID") + name),
            Wire("0400 00000000"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_CreateKey, TextField(kRoot + "\\new")),
            Wire("0400 00000000"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelKey, TextField(kDevices + "\\new")),
            Wire("0400 02000000"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_SetValue, device + name + absent), Wire("0400 57000000"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelValue, device + absent), Wire("0400 57000000"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_CreateKey, absent), Wire("0400 57000000"));
  // Reading is nobody's business.
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_GetValue, device + name),
            Wire("0400 00000000 03000000 6F6C64 03000000"));
  EXPECT_EQ(fake_client_identity::Questions(), 0);
  EXPECT_THAT(profile_.Reports(), IsEmpty());

  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_CreateKey, outside), Wire("0400 05000000"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_SetValueBase, Wire("01000080") + device + name + name),
            Wire("0400 05000000"));
  EXPECT_EQ(fake_client_identity::Questions(), 0);
  EXPECT_THAT(profile_.Reports(),
              ElementsAre("Invalid Access to Reg-Key: SOFTWARE\\TrcParams",
                          "Only operations to HKEY_LOCAL_MACHINE are allowed!"));
}

}  // namespace
