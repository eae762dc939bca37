#include <utility>

#include "tests/fakes/trace/FakeTrace.h"
#include "tests/faults/Session.h"
#include "trace/Zqotrc.h"

// Who asks for what, in which order.

namespace fault_session {
namespace {

// Instances in use: the first, the last, two between, and one that is taken late.
constexpr int kA = 0, kB = 7, kC = 20, kD = 63, kLate = 33;

Bytes Code(std::uint16_t code) {
  return {static_cast<std::uint8_t>(code), static_cast<std::uint8_t>(code >> 8)};
}
Bytes Long(std::uint32_t value) {
  return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
          static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}
Bytes Longs(int count, std::uint32_t value) {
  Bytes bytes;
  for (int i = 0; i < count; ++i) bytes = bytes + Long(value);
  return bytes;
}
template <typename... Texts>
Bytes Fields(Texts... texts) {
  return (Bytes{} + ... + TextField(texts));
}
Bytes Number(std::uint32_t value) { return Long(4) + Long(value); }

// What one step changes, no other looks at.
constexpr char kKey[] = "SOFTWARE\\Vesmark\\NORVA\\F";
constexpr char kWritten[] = "SOFTWARE\\Vesmark\\NORVA\\W";
constexpr char kNest[] = "SOFTWARE\\Vesmark\\NORVA\\G";
constexpr char kOtherNest[] = "SOFTWARE\\Vesmark\\NORVA\\H";
constexpr std::uint32_t kLocalMachine = 0x80000002;
const Bytes kGuid = Wire("01020304 0506 0708 090A0B0C0D0E0F10");

class ScriptWriter {
 public:
  void Ask(const char* name, int conId, Bytes request, How how = How::Ask) {
    steps_.push_back({name, how, conId, std::move(request), {}, -1});
  }
  void Aside(const char* name, std::function<void()> action) {
    steps_.push_back({name, How::Aside, -1, {}, std::move(action), -1});
  }
  void Trace(const char* output) {
    steps_.push_back(
        {std::string("trace to ") + output, How::Aside, -1, {}, [output] { TraceTo(output); }, -1});
  }
  // A silent restart, and its result.
  void Restart(int conId, const char* event) {
    const int started = static_cast<int>(steps_.size());
    Ask("SilentRestart", conId, Code(288) + Fields("CP1", event));
    Ask("GetSilentRestartResult", conId, Code(289) + Fields(event));
    steps_.back().restart = started;
  }

  std::vector<Step> Take() { return std::move(steps_); }

 private:
  std::vector<Step> steps_;
};

void RegistryCommands(ScriptWriter& s) {
  s.Ask("Reg_CreateKey", kA, Code(2) + Fields("SOFTWARE\\Vesmark\\NORVA\\new"));
  s.Ask("Reg_SetValue", kB, Code(3) + Fields(kWritten, "written", "text"));
  s.Ask("Reg_DelValue", kA, Code(18) + Fields(kWritten, "old"));
  s.Ask("Reg_GetValue", kB, Code(22) + Fields(kKey, "v"));
  s.Ask("Reg_EnumKey", kA, Code(21) + Fields(kKey) + Long(0));
  s.Ask("Reg_EnumValue", kB, Code(23) + Fields(kKey) + Long(0));
  s.Ask("Reg_SetValueBase", kA, Code(28) + Long(kLocalMachine) + Fields(kWritten, "base", "text"));
  s.Ask("Reg_CreateKeyBase", kB,
        Code(29) + Long(kLocalMachine) + Fields("SOFTWARE\\Vesmark\\NORVA\\base"));
  s.Ask("Reg_DelKey", kA, Code(1) + Fields(kNest));
  s.Ask("Reg_DelKeyBase", kB, Code(30) + Long(kLocalMachine) + Fields(kOtherNest));
  s.Ask("refused value", kA, Code(3) + Fields("SOFTWARE\\Other", "a", "b"));
  s.Ask("refused deletion", kB, Code(18) + Fields("SOFTWARE\\Vesmark\\NORVA\\..\\Other", "a"));
  s.Ask("refused root", kA, Code(29) + Long(0x80000001) + Fields(kKey));
}

void BoardCommands(ScriptWriter& s) {
  s.Ask("BC_Scan", kC, Code(199));
  s.Ask("BC_CreateAllLogdevices", kA, Code(201));
  s.Ask("BC_HasUninitializedInstances", kC, Code(88));
  s.Ask("BC_UpdateLogDevicesForDevice", kA, Code(200) + Fields("dev", "hw"));
  s.Ask("BC_EnumBoard", kC, Code(193) + Fields("dev") + Long(0) + Longs(3, 100));
  s.Ask("BC_EnumInstBoard", kA, Code(192) + Long(0) + Longs(6, 100));
  s.Ask("BC_EnumAvailableBoard", kC, Code(194) + Long(0) + Longs(2, 100));
  s.Ask("BC_EnumAdapters", kA, Code(197) + Long(0) + Longs(2, 100));
  s.Ask("BC_EnumConfiguration", kC,
        Code(196) + Long(0) + Fields("b", "m", "d", "i") + Longs(4, 100));
  s.Ask("BC_BoardGetMap", kA, Code(163) + Fields("d", "a", "h") + Long(100));
  s.Ask("BC_GetBoardInfo", kC, Code(195) + Long(1) + Fields("b", "m", "d", "i") + Long(100));
  s.Ask("BC_GetBoardInfoEx", kA, Code(207) + Long(1) + Fields("b", "m", "i") + Long(100));
  s.Ask("BC_GetBoardInfoEx, any room", kC,
        Code(207) + Long(1) + Fields("b", "m", "i") + Long(0x80000001));
  s.Ask("RegisterForDeviceChangeNotifications", kD, Code(256) + Fields("dev") + kGuid);
  s.Ask("GetDeviceChange", kD, Code(258) + Fields("dev"));
  s.Ask("UnregisterForDeviceChangeNotifications", kD, Code(257) + Fields("dev") + kGuid);
  s.Ask("GetDeviceStateEx", kA, Code(290) + Fields("hw") + Long(0xFFFFFFFF));
  s.Ask("GetDeviceStateEx, option", kA, Code(290) + Fields("hw") + Long(1));
  s.Ask("GetBoardInformation", kC,
        Code(191) + Fields("one") + Number(1) + Number(2) + Number(3) + Fields("two") + Number(4) +
            Number(5) + Number(6));
  s.Ask("BC_PlausibilitaetBL", kD, Code(292));
}

void Actions(ScriptWriter& s) {
  s.Ask("Install", kB, Code(5) + Fields("d", "007"));
  s.Ask("Deinstall", kC, Code(6) + Fields("d", "007", "board"));
  s.Ask("AddIpAddress", kB, Code(12) + Long(41) + Long(255) + Long(2));
  s.Ask("AddIpAddress, there already", kC, Code(12) + Long(0) + Long(255) + Long(2));
  s.Ask("DelIpAddress", kB, Code(13) + Long(42));
  s.Ask("InstallWdmDriver_32", kC, Code(15) + Fields("s", "i", "t") + Long(1));
  s.Ask("RunOnlinePanel_32", kB, Code(17));
  s.Ask("TestFunction", kC, Code(240) + Fields("hello"));
  s.Restart(kD, "done");
  s.Restart(kD, "nobody waits");
  s.Ask("a result of nobody", kD, Code(289) + Fields("else"));
}

void Connections(ScriptWriter& s) {
  s.Ask("AddIpAddress, slowly", kA, Code(12) + Long(0) + Long(255) + Long(2), How::AskSlowly);
  s.Ask("RunOnlinePanel_32, slowly", kB, Code(17), How::AskSlowly);
  s.Ask("a byte", kC, {1}, How::AskSlowly);
  s.Ask("no such command", kD, Code(4));
  s.Ask("a request that is cut", kA, Code(3) + Fields(kKey));
  s.Ask("a stop without a word", kB, Code(253));
  s.Ask("a stop that means nothing", kC, Code(253) + Long(1));
  s.Ask("a client goes", kB, {}, How::Leave);
  s.Ask("a client goes early", kC, Code(16), How::LeaveWithout);
  s.Ask("a client goes early from two", kA, Code(17), How::LeaveWithout);
  s.Ask("the next client", kB, Code(16));
}

// Each output gets a few requests; what a line costs, it costs many times here.
void Traces(ScriptWriter& s) {
  s.Trace("FILE");
  s.Ask("Reg_GetValue, traced", kB, Code(22) + Fields(kKey, "v"));
  s.Ask("BC_EnumBoard, traced", kC, Code(193) + Fields("dev") + Long(0) + Longs(3, 100));
  s.Restart(kD, "done");
  s.Ask("a client goes, traced", kD, {}, How::Leave);
  s.Trace("SM");
  s.Ask("Reg_SetValue, traced", kA, Code(3) + Fields("SOFTWARE\\Other", "a", "b"));
  s.Ask("RunOnlinePanel_32, traced", kC, Code(17), How::AskSlowly);
  s.Trace("DBG");
  s.Ask("NoOperation, traced", kB, Code(16));
  s.Trace("PIPE");
  s.Ask("NoOperation, traced to nowhere", kB, Code(16));
  s.Trace("VXD");
  s.Ask("NoOperation, traced to the driver", kB, Code(16));
  s.Trace("ZqTRACEENGINE");
  s.Ask("NoOperation, traced to the engine", kA, Code(16));
  s.Aside("everybody reads again", [] { zqotrc::RefreshAll(); });
  s.Ask("NoOperation, still traced", kA, Code(16));
  s.Aside("time passes", [] { FakeTrace::TheMachine().seconds += 60; });
  s.Ask("NoOperation, later", kA, Code(16));
  s.Trace("");
}

// Every instance that was used, and one that was not, serves somebody new.
void NewClients(ScriptWriter& s) {
  for (const int conId : {kA, kB, kC, kD}) s.Ask("a client goes at last", conId, {}, How::Leave);
  for (const int conId : {kA, kB, kC, kD, kLate}) s.Ask("a new client", conId, Code(16));
}

std::vector<Step> Write() {
  ScriptWriter s;
  s.Ask("start", -1, {}, How::Start);
  s.Ask("NoOperation", kA, Code(16));
  RegistryCommands(s);
  BoardCommands(s);
  Actions(s);
  Connections(s);
  Traces(s);
  NewClients(s);
  s.Ask("StopServer", kLate, Code(253) + Long(253), How::Stop);
  s.Ask("end", -1, {}, How::End);
  return s.Take();
}

}  // namespace

const std::vector<Step>& Script() {
  static const std::vector<Step> steps = Write();
  return steps;
}

}  // namespace fault_session
