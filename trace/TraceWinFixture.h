#ifndef TRACE_TRACEWINFIXTURE_H_
#define TRACE_TRACEWINFIXTURE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "platform/WinTypes.h"
#include "tests/support/RegistryKeyScratch.h"
#include "trace/Zqotrc.h"

/// The facility on the real machine: a configuration in the registry, a folder for files, and this
/// program started again as another process.
class TraceWinFixture : public testing::Test {
 public:
  static constexpr char kFct[] = "Fct: ";

 protected:
  TraceWinFixture();
  ~TraceWinFixture() override;

  void SetText(const std::string& name, const std::string& text) { key_.SetText(name, text); }
  void SetRaw(const std::string& name, std::uint32_t type, const std::string& data) {
    key_.SetRaw(name, type, data);
  }
  void RemoveKey() { key_.Remove(); }

  /// Lines go to files below the folder, in the text layout.
  void ConfigureFiles();
  static void Initialise() { zqotrc::Initialise(/*security=*/nullptr, "zqserver_level"); }

  std::string FileName(int index) const;
  std::string Content(int index) const;

  const std::string& folder() const { return folder_; }

 private:
  RegistryKeyScratch key_{kTraceKey};
  std::string folder_;
};

std::string ReadWholeFile(const std::string& name);

/// Runs the disabled tests of this program that the filter names, as a process of its own.
class ChildProcess {
 public:
  explicit ChildProcess(const std::string& filter);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// \returns whether the tests passed.
  bool Passed();

 private:
  HANDLE process_ = nullptr;
};

#endif  // TRACE_TRACEWINFIXTURE_H_
