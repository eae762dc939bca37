#ifndef BOARD_TESTING_PLAUSIBILITYFIXTURE_H_
#define BOARD_TESTING_PLAUSIBILITYFIXTURE_H_

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <vector>

#include "board/testing/BoardFixture.h"
#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/FakeRegistry.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "tests/support/RegistrySetup.h"

/// A configuration of logical names and devices, and a record of who touched what under the lock.
class PlausibilityFixture : public BoardFixture {
 protected:
  PlausibilityFixture() {
    registry_setup::DeleteTree("Software\\Vesmark\\NORVA");
    fake_board_library::Library& lib = fake_board_library::Lib();
    lib.scan = [this] { return Step("scan", results_[0]); };
    lib.removeAbandonLogDevices = [this] { return Step("remove", results_[1]); };
    lib.updateRoute = [this] { return Step("route", results_[2]); };
    lib.createAllLogdevices = [this] { return Step("create", results_[3]); };
    fake_registry::OnCall([this] { (void)Step("registry", 0); });
  }
  ~PlausibilityFixture() override {
    fake_registry::OnCall({});
    registry_setup::DeleteTree("Software\\Vesmark\\NORVA");
  }

  static void AddLogName(const std::string& name, const std::string& device) {
    registry_setup::SetValue(kLogNames + name, "LogDevice", registry_setup::kSz,
                             TextBytes(device) + Bytes{0});
  }
  static void AddLogDevice(const std::string& name) {
    registry_setup::CreateKey("Software\\Vesmark\\NORVA\\LogDevices\\" + name);
  }

  /// The text value of a logical name, without its terminator; "?" when it is no text.
  static std::string LogDeviceOf(const std::string& name) {
    const auto value = registry_setup::Value(kLogNames + name, "LogDevice");
    if (!value || value->size() < 2 || value->front() != registry_setup::kSz) return "?";
    return {value->begin() + 1, value->end() - 1};
  }

  SrvResult Run() {
    steps_.clear();
    fake_board_library::Calls().clear();
    Receive("2401");
    return srv_.BC_PlausibilitaetBL(kConId);
  }

  /// The check's own lines.
  std::vector<std::string> Trace(std::uint32_t mask) {
    FakeTrace::Collect(mask);
    (void)Run();
    std::vector<std::string> lines;
    for (const FakeTrace::Line& line : FakeTrace::Lines()) {
      if (line.function == "BC_PlausibilitaetBL: ") lines.push_back(line.text);
    }
    return lines;
  }

  static bool IsLocked() {
    const std::vector<std::string> calls = fake_named_object::Calls();
    return std::count(calls.begin(), calls.end(), "release") <
           std::count(calls.begin(), calls.end(), "wait 30000");
  }

  inline static const std::string kLogNames = "Software\\Vesmark\\NORVA\\LogNames\\";

  std::array<std::uint32_t, 4> results_ = {};  ///< of scan, removal, routes, creation
  std::vector<std::string> steps_;             ///< calls of library and registry, in order
  std::size_t raiseAt_ = 0;                    ///< the step that raises, counted from 1

 private:
  std::uint32_t Step(const char* name, std::uint32_t result) {
    steps_.push_back((IsLocked() ? "locked " : "") + std::string(name));
    if (steps_.size() == raiseAt_) throw std::runtime_error("fault");
    return result;
  }
};

#endif  // BOARD_TESTING_PLAUSIBILITYFIXTURE_H_
