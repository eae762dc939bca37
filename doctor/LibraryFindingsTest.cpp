#include "doctor/Findings.h"
#include "doctor/testing/FindingsFixture.h"

// The server, its folders and libraries: one thing that is wrong, one finding.

namespace doctor {
namespace {

constexpr std::uint32_t kWriteData = 2;

class LibraryFindingsTest : public FindingsFixture {};

TEST_F(LibraryFindingsTest, AMissingServerIsAWarning) {
  facts_.server.kind = ImageKind::Missing;
  ExpectOnly("warning server: C:\\Stack\\QORLIXSRV.EXE is not there", "run doctor beside");
}

TEST_F(LibraryFindingsTest, AServerThatUsersCanChangeIsAnError) {
  facts_.server.access = Allows(Who::Users, kWriteData);
  ExpectOnly("error server: C:\\Stack\\QORLIXSRV.EXE can be changed by Users", "administrators");
}

TEST_F(LibraryFindingsTest, FoldersThatUsersCanWriteToAreErrors) {
  facts_.serverFolder.access = Allows(Who::AuthenticatedUsers, kWriteData);
  ExpectOnly("error folder: C:\\Stack: libraries can be put there by Authenticated Users",
             "administrators");
  facts_ = HealthyFacts();
  facts_.systemFolder.access.isUnrestricted = true;
  ExpectOnly("error folder: C:\\System: libraries can be put there by Everyone", "administrators");
}

TEST_F(LibraryFindingsTest, AFolderThatCannotBeLookedAtIsANote) {
  facts_.serverFolder.error = 5;
  ExpectOnly("note folder: C:\\Stack: who may write there cannot be seen: code 5", "elevated");
}

TEST_F(LibraryFindingsTest, WithoutTheBoardLibraryTheServerDoesNotStart) {
  Library("boardsvc32.dll").besideServer.kind = ImageKind::Missing;
  facts_.pipe.error = 2;
  EXPECT_THAT(Wrong(), testing::HasSubstr("error library: boardsvc32.dll is neither in C:\\Stack "
                                          "nor in C:\\System: the server does not start -> put "));
}

TEST_F(LibraryFindingsTest, ABoardLibraryThatIsNotSeenWhileTheServerRunsIsANote) {
  Library("boardsvc32.dll").besideServer.kind = ImageKind::Missing;
  ExpectOnly(
      "note library: boardsvc32.dll is neither in C:\\Stack nor in C:\\System, but the "
      "server runs",
      "put it beside QorlixSRV.exe");
}

TEST_F(LibraryFindingsTest, LibrariesOfCommandsAreMissedByTheirCommandsOnly) {
  const struct {
    const char* name;
    const char* severity;
    const char* otherwise;
  } kMissing[] = {{"drvinstx.dll", "warning", "'driver install' shows a box"},
                  {"onlpanelx.cpl", "warning", "'panel' shows a box"},
                  {"rstagent9.dll", "warning", "a silent restart ends with 8603"},
                  {"ringdiag.dll", "note", "the ring is not looked at"},
                  {"ipcfgx.dll", "warning", "'ip add' and 'ip delete' answer 8603"}};
  for (const auto& missing : kMissing) {
    facts_ = HealthyFacts();
    Library(missing.name).besideServer.kind = ImageKind::Missing;
    Library(missing.name).inSystem.kind = ImageKind::Missing;
    ExpectOnly(std::string(missing.severity) + " library: " + missing.name + " is ", "put it");
    EXPECT_THAT(Wrong(), testing::HasSubstr(missing.otherwise));
  }
}

TEST_F(LibraryFindingsTest, ALibraryInTheWrongPlaceIsNotFoundByTheServer) {
  Library("rstagent9.dll").inSystem.kind = ImageKind::Missing;
  Library("rstagent9.dll").besideServer.kind = ImageKind::Fitting;
  ExpectOnly("warning library: C:\\Stack\\rstagent9.dll lies where it is not looked for",
             "move it to C:\\System");
}

TEST_F(LibraryFindingsTest, ALibraryInTheSystemDirectoryWillDo) {
  Library("drvinstx.dll").besideServer.kind = ImageKind::Missing;
  Library("drvinstx.dll").inSystem.kind = ImageKind::Fitting;
  EXPECT_EQ(Wrong(), "");
}

TEST_F(LibraryFindingsTest, ASecondLibraryIsPassedOver) {
  Library("drvinstx.dll").inSystem.kind = ImageKind::Fitting;
  ExpectOnly("note library: C:\\System\\drvinstx.dll is passed over", "remove");
}

TEST_F(LibraryFindingsTest, ALibraryHasToBeA32BitOneAndReadable) {
  FileFacts& file = Library("ipcfgx.dll").inSystem;
  file.kind = ImageKind::Other;
  ExpectOnly("error library: C:\\System\\ipcfgx.dll is not for 32-bit x86", "32-bit file");
  file.kind = ImageKind::NoImage;
  ExpectOnly("error library: C:\\System\\ipcfgx.dll is no program or library", "stack's own");
  file.kind = ImageKind::Unreadable;
  ExpectOnly("warning library: C:\\System\\ipcfgx.dll cannot be read", "icacls");
}

TEST_F(LibraryFindingsTest, AStandInIsNotTheVendors) {
  Library("boardsvc32.dll").besideServer.isStandIn = true;
  ExpectOnly("note library: C:\\Stack\\boardsvc32.dll is a stand-in, not the vendor's",
             "put the vendor's there");
}

TEST_F(LibraryFindingsTest, ALibraryThatUsersCanReplaceIsAnError) {
  Library("ringdiag.dll").inSystem.access = Allows(Who::Everyone, kWriteData);
  ExpectOnly("error library: C:\\System\\ringdiag.dll can be changed by Everyone",
             "administrators");
}

TEST_F(LibraryFindingsTest, ALibraryWhoseAccessCannotBeSeenIsANote) {
  Library("ringdiag.dll").inSystem.error = 5;
  ExpectOnly("note library: C:\\System\\ringdiag.dll is there, but who may change it", "elevated");
}

TEST_F(LibraryFindingsTest, TheTraceEngineMattersOnlyWhenTheTraceGoesThere) {
  EXPECT_EQ(Wrong(), "");
  facts_.trace.configuration.config.output = zqotrc::TraceOutput::kEngine;
  ExpectOnly("warning library: C:\\Common\\ZqTraceEngineX.dll is not there", "Output FILE");
  facts_.engine.kind = ImageKind::Fitting;
  EXPECT_EQ(Wrong(), "");
  facts_.engine.kind = ImageKind::Other;
  ExpectOnly("error library: C:\\Common\\ZqTraceEngineX.dll is not for 32-bit x86", "32-bit");
}

}  // namespace
}  // namespace doctor
