#ifndef ACTIONS_SILENTRESTARTFIXTURE_H_
#define ACTIONS_SILENTRESTARTFIXTURE_H_

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "actions/ActionFixture.h"

/// A server whose silent restarts run against scripted libraries, on threads that a test waits for.
class SilentRestartFixture : public ActionFixture {
 protected:
  static constexpr auto kRestart = &CQorlixSRVPipe::SilentRestart;
  static constexpr auto kGetResult = &CQorlixSRVPipe::GetSilentRestartResult;
  static constexpr char kAgent[] = "C:\\windows\\system32\\rstagent9.dll";
  static constexpr char kRing[] = "C:\\windows\\system32\\ringdiag.dll";

  SilentRestartFixture() {
    Restarted() = nullptr;
    Checked() = nullptr;
    fake_dynamic_library::Add(
        kAgent, {{"DllEntryFktSilent", fake_dynamic_library::Export(DllEntryFktSilent)}});
    fake_dynamic_library::Add(kRing,
                              {{"EpIsCpInRing", fake_dynamic_library::Export(EpIsCpInRing)}});
  }
  ~SilentRestartFixture() override { fake_worker_thread::JoinAll(); }

  /// What the exports do; without one they answer 0. Set them while no worker runs.
  using RestartExport = std::function<std::uint32_t(char* logDevName)>;
  using RingExport = std::function<std::uint32_t(char*, std::uint32_t, std::uint32_t*)>;
  static RestartExport& Restarted() {
    static RestartExport restarted;
    return restarted;
  }
  static RingExport& Checked() {
    static RingExport checked;
    return checked;
  }
  static void AnswerRestart(std::uint32_t result) {
    Restarted() = [result](char*) { return result; };
  }

  static Bytes Request(const std::string& event, const std::string& device = "CP1") {
    return TextField(device) + TextField(event);
  }

  /// Starts a restart and waits until its worker is gone.
  void RestartAndWait(const std::string& event, const std::string& device = "CP1") {
    EXPECT_EQ(Do(kRestart, Request(event, device)), SRV_OK);
    EXPECT_EQ(Reply(), Wire("0400 00000000"));
    fake_worker_thread::JoinAll();
  }

  /// What a client gets for the event's result.
  std::uint32_t ResultOf(const std::string& event) {
    EXPECT_EQ(Do(kGetResult, TextField(event)), SRV_OK);
    const Bytes reply = Reply();
    EXPECT_EQ(reply.size(), 6u);
    if (reply.size() != 6 || reply[0] != 4 || reply[1] != 0) return 0xBAD;
    std::uint32_t result = 0;
    for (std::size_t i = 5; i >= 2; --i) result = result << 8 | reply[i];
    return result;
  }

  static bool Called(const std::string& call) {
    const std::vector<std::string> calls = fake_dynamic_library::Calls();
    return std::find(calls.begin(), calls.end(), call) != calls.end();
  }
  static bool RingLoaded() { return Called(std::string("load ") + kRing); }

 private:
  static std::uint32_t DllEntryFktSilent(char* logDevName) {
    return Restarted() ? Restarted()(logDevName) : 0;
  }
  static std::uint32_t EpIsCpInRing(char* logDevName, std::uint32_t milliseconds,
                                    std::uint32_t* out) {
    return Checked() ? Checked()(logDevName, milliseconds, out) : 0;
  }
};

#endif  // ACTIONS_SILENTRESTARTFIXTURE_H_
