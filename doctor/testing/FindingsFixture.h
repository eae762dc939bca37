#ifndef DOCTOR_TESTING_FINDINGSFIXTURE_H_
#define DOCTOR_TESTING_FINDINGSFIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "doctor/Findings.h"

namespace doctor {

/// A computer on which everything is as it should be. A test makes one thing wrong.
inline Facts HealthyFacts() {
  Facts facts;
  facts.pipe.name = R"(\\.\pipe\P)";
  facts.pipe.instances = 64;
  facts.pipe.limit = 64;
  facts.pipe.process = 996;
  facts.pipe.program = R"(C:\Stack\QORLIXSRV.EXE)";
  facts.pipe.elevation = PipeFacts::Elevation::Yes;
  facts.server = {facts.pipe.program, ImageKind::Fitting, 0, {}};
  facts.serverFolder.path = R"(C:\Stack)";
  facts.systemFolder.path = R"(C:\System)";
  for (const LibraryNeed& need : Libraries()) {
    LibraryFacts library;
    library.besideServer.path = facts.serverFolder.path + '\\' + need.name;
    library.inSystem.path = facts.systemFolder.path + '\\' + need.name;
    (need.besideServer ? library.besideServer : library.inSystem).kind = ImageKind::Fitting;
    facts.libraries.push_back(library);
  }
  facts.engine.path = R"(C:\Common\ZqTraceEngineX.dll)";
  facts.hasTree = true;
  facts.setUp = {true, 1, std::string("1\0", 2)};
  DeviceFacts device;
  device.name = "DEMO1";
  device.hardwareId = {true, 1, "PCI"};
  device.installer = {true, 1, "sample.dll,Install"};
  device.deinstaller = {true, 1, "sample.dll,Deinstall"};
  device.installerKind = device.deinstallerKind = ImageKind::Fitting;
  facts.devices.push_back(device);
  facts.trace.configuration.stored.resize(traceview::Settings().size());
  facts.sources = {{"MIREL RegistryOperation", true, "m.dll", true},
                   {"Zqotrc", true, "m.dll", true}};
  return facts;
}

class FindingsFixture : public testing::Test {
 protected:
  /// What is wrong, one finding to a line: "error pipe: text -> remedy".
  std::string Wrong() const {
    std::string lines;
    for (const Finding& finding : Examine(facts_)) {
      if (finding.severity == Severity::Ok) continue;
      lines += std::string(SeverityName(finding.severity)) + ' ' + finding.check + ": " +
               finding.text + " -> " + finding.remedy + '\n';
    }
    return lines;
  }

  /// Exactly one thing is wrong, and it is this.
  void ExpectOnly(const std::string& beginning, const std::string& remedy) const {
    const std::string wrong = Wrong();
    EXPECT_THAT(wrong, testing::StartsWith(beginning));
    EXPECT_THAT(wrong.substr(0, wrong.find('\n')), testing::HasSubstr(remedy));
    EXPECT_EQ(wrong.find('\n') + 1, wrong.size()) << wrong;
  }

  LibraryFacts& Library(const std::string& name) {
    for (std::size_t i = 0; i < Libraries().size(); ++i) {
      if (name == Libraries()[i].name) return facts_.libraries[i];
    }
    ADD_FAILURE() << name;
    return facts_.libraries[0];
  }

  /// A list that lets a group do something.
  static AccessList Allows(Who who, std::uint32_t mask) {
    AccessList access;
    access.entries.push_back({who, /*allows=*/true, /*onlyBelow=*/false, mask});
    return access;
  }

  Facts facts_ = HealthyFacts();
};

}  // namespace doctor

#endif  // DOCTOR_TESTING_FINDINGSFIXTURE_H_
