#include "doctor/Gather.h"

#include <windows.h>

#include <sddl.h>

#include <gmock/gmock.h>

#include <algorithm>

#include "client/testing/ScriptedServer.h"
#include "tests/support/RegistryKeyScratch.h"

// What is gathered on a real computer.

namespace doctor {
namespace {

std::string OwnPath() {
  char path[MAX_PATH] = "";
  (void)GetModuleFileNameA(nullptr, path, sizeof(path));
  return path;
}

/// A folder of its own with an access list, removed at the end.
class Folder {
 public:
  explicit Folder(const char* rules) {
    char above[MAX_PATH] = "";
    (void)GetTempPathA(sizeof(above), above);
    path_ = std::string(above) + "DoctorTest" + std::to_string(GetCurrentProcessId());
    PSECURITY_DESCRIPTOR list = nullptr;
    EXPECT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorA(rules, SDDL_REVISION_1, &list,
                                                                   nullptr),
              FALSE);
    EXPECT_NE(CreateDirectoryA(path_.c_str(), nullptr), FALSE);
    // Not at its creation, where Wine takes away what the user's mask does.
    EXPECT_NE(SetFileSecurityA(path_.c_str(), DACL_SECURITY_INFORMATION, list), FALSE);
    (void)LocalFree(list);
  }
  ~Folder() { (void)RemoveDirectoryA(path_.c_str()); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

constexpr char kDevice[] = "Software\\Vesmark\\NORVA\\DefDevices\\DeviceID\\DoctorTest";
constexpr char kSource[] = "SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\Zqotrc";

DeviceFacts TheDevice() {
  Facts facts;
  GatherRegistry(SystemFolder(), facts);
  EXPECT_TRUE(facts.hasTree);
  for (const DeviceFacts& device : facts.devices) {
    if (device.name == "DoctorTest") return device;
  }
  ADD_FAILURE() << "the device is not listed";
  return {};
}

TEST(GatherTest, APipeTellsItsInstancesAndItsProcess) {
  client::ScriptedServer server;
  server.Answers({"0400 00000000"});
  const PipeFacts facts = GatherPipe(server.PipeName(), 5000);
  EXPECT_EQ(facts.error, 0u);
  EXPECT_EQ(facts.instances, 1u);
  EXPECT_EQ(facts.limit, 1u);
  EXPECT_EQ(facts.process, GetCurrentProcessId());
  EXPECT_EQ(facts.program, OwnPath());
  EXPECT_EQ(facts.answer, 0u);
  EXPECT_EQ(server.Requests(), std::vector<std::string>{"1000"});
}

TEST(GatherTest, APipeThatIsNotThereAndOneThatIsBusyAreTold) {
  EXPECT_EQ(GatherPipe(R"(\\.\pipe\DoctorTestNoSuchPipe)", 5000).error,
            static_cast<std::uint32_t>(ERROR_FILE_NOT_FOUND));
  client::ScriptedServer server;
  server.IsBusy();
  EXPECT_EQ(GatherPipe(server.PipeName(), 100).error, static_cast<std::uint32_t>(ERROR_PIPE_BUSY));
}

TEST(GatherTest, FilesAreWhatTheyAre) {
  EXPECT_EQ(GatherFile(OwnPath()).kind, ImageKind::Fitting);
  EXPECT_EQ(GatherFile(OwnPath()).error, 0u);
  EXPECT_EQ(GatherFile(OwnPath() + ".no").kind, ImageKind::Missing);
  char folder[MAX_PATH] = "";
  (void)GetTempPathA(sizeof(folder), folder);
  EXPECT_EQ(GatherFile(folder).kind, ImageKind::Unreadable);
  char name[MAX_PATH] = "";
  (void)GetTempFileNameA(folder, "doc", 0, name);
  EXPECT_EQ(GatherFile(name).kind, ImageKind::NoImage);
  (void)DeleteFileA(name);
}

TEST(GatherTest, AStandInSaysThatItIsOne) {
  const std::string own = OwnPath();
  const FileFacts simulator = GatherFile(own.substr(0, own.rfind('\\')) + "\\boardsvc32.dll");
  EXPECT_EQ(simulator.kind, ImageKind::Fitting);
  EXPECT_TRUE(simulator.isStandIn);
  EXPECT_FALSE(GatherFile(own).isStandIn);
  EXPECT_FALSE(GatherFile(SystemFolder() + "\\kernel32.dll").isStandIn);
}

TEST(GatherTest, ADeviceIsNotReadFrom) { EXPECT_EQ(KindOfFile("NUL"), ImageKind::Unreadable); }

TEST(GatherTest, TheAccessListOfAFolderTellsWhoMayWrite) {
  {
    const Folder open("D:P(A;;GA;;;WD)");
    EXPECT_EQ(FolderWriters(GatherFolder(open.Path()).access), "Everyone");
  }
  const Folder closed("D:P(A;;GA;;;BA)(A;;GA;;;OW)(A;;GRGX;;;WD)");
  EXPECT_EQ(GatherFolder(closed.Path()).error, 0u);
  EXPECT_EQ(FolderWriters(GatherFolder(closed.Path()).access), "");
  EXPECT_NE(GatherFolder(closed.Path() + ".no").error, 0u);
}

TEST(GatherTest, TheSystemFolderIsThatOf32BitProcesses) {
  EXPECT_EQ(KindOfFile(SystemFolder() + "\\kernel32.dll"), ImageKind::Fitting);
}

TEST(GatherTest, ADeviceIsReadWithWhatItsPluginsLeadTo) {
  const RegistryKeyScratch key(kDevice);
  key.SetText("HardwareID", "PCI");
  key.SetText("Installer", "kernel32.dll,Sleep");
  key.SetText("Deinstaller", "DoctorTestMissing.dll,F");
  const DeviceFacts device = TheDevice();
  EXPECT_EQ(device.hardwareId.bytes, std::string("PCI\0", 4));
  EXPECT_EQ(device.installer.type, static_cast<std::uint32_t>(REG_SZ));
  EXPECT_EQ(device.installerKind, ImageKind::Fitting);
  EXPECT_TRUE(device.deinstaller.isThere);
  EXPECT_EQ(device.deinstallerKind, ImageKind::Missing);
}

TEST(GatherTest, ADeviceWithoutValuesIsListedAndAValueOfAnyTypeAndLengthIsRead) {
  const RegistryKeyScratch key(kDevice);
  key.SetRaw("Installer", REG_BINARY, std::string(5000, 'x'));
  const DeviceFacts device = TheDevice();
  EXPECT_FALSE(device.hardwareId.isThere);
  EXPECT_FALSE(device.deinstaller.isThere);
  EXPECT_EQ(device.installer.bytes.size(), 5000u);
  EXPECT_EQ(device.installerKind, ImageKind::Missing);
}

TEST(GatherTest, AnEventSourceIsRegisteredWithAFileThatIsThere) {
  const RegistryKeyScratch key(kSource);
  const auto source = [] { return GatherSources().at(1); };
  EXPECT_EQ(source().name, "Zqotrc");
  EXPECT_FALSE(source().isRegistered);
  key.SetText("TypesSupported", "7");
  EXPECT_TRUE(source().isRegistered);
  EXPECT_EQ(source().messageFile, "");
  key.SetText("EventMessageFile", "C:\\DoctorTestMissing.dll");
  EXPECT_EQ(source().messageFile, "C:\\DoctorTestMissing.dll");
  EXPECT_FALSE(source().hasMessageFile);
  key.SetText("EventMessageFile", "%SystemRoot%\\System32\\kernel32.dll;C:\\other.dll");
  EXPECT_TRUE(source().hasMessageFile);
  EXPECT_EQ(source().messageFile.find('%'), std::string::npos);
}

}  // namespace
}  // namespace doctor
