// Whatever clients send and the library answers, every board and device command is answered as a
// slow model answers it, the library sees what the model says, and the instance serves on.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "fuzz/BoardModel.h"
#include "server/QorlixSRVPipe.h"
#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeDynamicLibrary.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/FakePipeIo.h"
#include "tests/fakes/ScriptedBoardLibrary.h"
#include "tests/support/PoolReset.h"

namespace {

using board_model::Script;
using board_model::Seen;

constexpr int kConId = 5;

void Require(bool holds) {
  if (!holds) std::abort();
}

// --- The library, as the script has it ---

Script g_script;
Seen g_seen;

void Write(std::uint8_t* to, std::uint32_t told, const board_model::Out& out) {
  const std::size_t size = std::min<std::size_t>(told, out.bytes.size());
  if (size != 0) std::memcpy(to, out.bytes.data(), size);
}

void RequireClear(const std::uint8_t* bytes, std::size_t size) {
  static constexpr std::uint8_t kClear[8193] = {};
  Require(size == 0 || std::memcmp(bytes, kClear, size) == 0);
}

std::optional<std::string> AsText(const char* text) {
  if (text == nullptr) return std::nullopt;
  return text;
}

std::uint32_t Finish() {
  g_seen.isCalled = true;
  if (g_script.raises) throw std::runtime_error("fault");
  return g_script.result;
}

std::uint32_t OnCall(const scripted_board_library::Call& call) {
  for (const char* const text : call.texts) g_seen.texts.push_back(AsText(text));
  g_seen.numbers = call.numbers;
  if (call.operation == "BRDX_EnumBoardExBL") {
    Require(call.numbers.back() == 0);
    g_seen.numbers.pop_back();
  }
  for (std::size_t i = 0; i < call.outs.size(); ++i) {
    const scripted_board_library::Out& out = call.outs[i];
    g_seen.lengths.push_back(*out.length);
    RequireClear(out.bytes, 8193);
    Write(out.bytes, *out.length, g_script.outs[i]);
    *out.length = g_script.outs[i].length.value_or(*out.length);
  }
  if (call.value != nullptr) *call.value = g_script.value;
  if (call.byte != nullptr) *call.byte = g_script.byte;
  return Finish();
}

std::uint32_t OnRegistration(BRDX_GUID guid, char* deviceId) {
  g_seen.texts.push_back(AsText(deviceId));
  g_seen.numbers.push_back(guid.Data1);
  g_seen.guid.resize(sizeof(guid));
  std::memcpy(g_seen.guid.data(), &guid, sizeof(guid));
  return Finish();
}

std::uint32_t OnChange(char* deviceId, std::uint8_t* kind, BRDX_GUID* guid, char* text,
                       std::uint32_t* length) {
  g_seen.texts.push_back(AsText(deviceId));
  Require(*length == 8192);
  *kind = g_script.byte;
  std::memset(guid, g_script.byte, sizeof(*guid));
  Write(reinterpret_cast<std::uint8_t*>(text), *length, g_script.outs[0]);
  *length = g_script.outs[0].length.value_or(*length);
  return Finish();
}

std::uint32_t OnInformation(std::uint8_t* block1, BRDX_INFO_INPUT* input, BRDX_INFO_OUTPUT* output,
                            std::uint32_t last) {
  g_seen.numbers = {input->value1,  input->value2,   input->value3,
                    input->cbArea1, output->cbArea2, last};
  g_seen.blocks[0] = Bytes(block1, block1 + 8160);
  g_seen.blocks[1] = Bytes(input->data, input->data + input->cbData);
  RequireClear(input->data + input->cbData, 8160 - input->cbData);
  RequireClear(input->area1, input->cbArea1);
  RequireClear(output->area2, output->cbArea2);
  Require(*input->value == 0 && output->result1 == 0 && output->result2 == 0);
  Write(input->area1, input->cbArea1, g_script.outs[0]);
  Write(output->area2, output->cbArea2, g_script.outs[1]);
  *input->value = g_script.value;
  output->result1 = g_script.outs[0].length.value_or(0);
  output->result2 = g_script.outs[1].length.value_or(0);
  // What the blocks say afterwards is the library's business alone.
  input->cbArea1 = output->cbArea2 = 0xFFFFFFFF;
  input->area1 = output->area2 = nullptr;
  return Finish();
}

std::uint32_t ENTRY_STDCALL OnStatus(std::uint32_t* status, std::uint32_t* problem,
                                     std::uint32_t instance, std::uint32_t flags) {
  Require(instance == 9 && flags == 0);
  *status = g_script.value;
  *problem = g_script.byte;
  return g_script.result;
}

void InstallLibrary() {
  fake_board_library::Reset();
  scripted_board_library::Install(OnCall);
  fake_board_library::Library& lib = fake_board_library::Lib();
  lib.removeAbandonLogDevices = [] { return g_script.result; };
  lib.registerForChanges = lib.unregisterForChanges = OnRegistration;
  lib.getDeviceChange = OnChange;
  lib.getBoardInformation = OnInformation;
  lib.getDeviceInstance = [](char* hardwareId, std::uint32_t* instance) {
    g_seen.texts.push_back(AsText(hardwareId));
    g_seen.numbers.push_back(0xFFFFFFFF);
    *instance = 9;
    return Finish();
  };
  lib.getDeviceInstanceOpt = [](char* hardwareId, std::uint32_t option, std::uint32_t* instance) {
    Require(option != 0xFFFFFFFF);
    g_seen.texts.push_back(AsText(hardwareId));
    g_seen.numbers.push_back(option);
    *instance = 9;
    return Finish();
  };
  static const bool kAdded = [] {
    fake_dynamic_library::Add("C:\\windows\\system32\\cfgmgr32.dll",
                              {{"CM_Get_DevNode_Status", fake_dynamic_library::Export(OnStatus)}});
    return true;
  }();
  (void)kAdded;
}

// --- Requests and scripts out of the fuzzer's bytes ---

void AddNumber(Bytes& request, std::uint32_t value, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    request.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  }
}

std::uint32_t TakeLength(FuzzedDataProvider& input) {
  static constexpr std::uint32_t kEdges[] = {
      0,    1,    4,    100,  4000,  8000,  8150,       8159,       8160,
      8161, 8191, 8192, 8193, 65535, 65536, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  if (input.ConsumeBool()) return input.PickValueInArray(kEdges);
  return input.ConsumeBool() ? input.ConsumeIntegral<std::uint8_t>()
                             : input.ConsumeIntegral<std::uint32_t>();
}

// Bytes that are mostly one letter, so that long ones cost the fuzzer little.
Bytes TakeBytes(FuzzedDataProvider& input, std::size_t limit) {
  const std::string start = input.ConsumeRandomLengthString(20);
  Bytes bytes(start.begin(), start.end());
  if (input.ConsumeBool()) bytes.resize(input.ConsumeIntegralInRange<std::size_t>(0, limit), 'x');
  return bytes;
}

Bytes TakeRequest(FuzzedDataProvider& input) {
  const auto pick = input.ConsumeIntegralInRange<std::size_t>(0, board_model::kShapes.size() - 1);
  const board_model::Shape& shape = board_model::kShapes[pick];
  Bytes request;
  AddNumber(request, shape.code, 2);
  for (const char* kind = shape.request; *kind != '\0'; ++kind) {
    const bool isLong = *kind == 'n' || *kind == 'r';
    if (isLong) {
      AddNumber(request, TakeLength(input), 4);
    } else if (*kind == 's' || *kind == 'b') {
      AddNumber(request, input.ConsumeIntegral<std::uint16_t>(), *kind == 's' ? 2 : 1);
    } else if (*kind == 'v' && input.ConsumeBool()) {
      AddNumber(request, 4, 4);
      AddNumber(request, TakeLength(input), 4);
    } else {
      const Bytes field = TakeBytes(input, 8200);
      const bool lies = input.ConsumeIntegralInRange(0, 9) == 0;
      AddNumber(request, lies ? TakeLength(input) : static_cast<std::uint32_t>(field.size()), 4);
      request = request + field;
    }
  }
  std::size_t size = request.size();
  if (input.ConsumeIntegralInRange(0, 9) == 0) size = input.ConsumeIntegralInRange(size / 2, size);
  request.resize(std::min<std::size_t>(std::max<std::size_t>(size, 2), kPipeBufferSize));
  return request;
}

Script TakeScript(FuzzedDataProvider& input) {
  Script script;
  script.raises = input.ConsumeIntegralInRange(0, 9) == 0;
  if (input.ConsumeIntegralInRange(0, 4) == 0) script.result = TakeLength(input);
  script.value = input.ConsumeIntegral<std::uint32_t>();
  script.byte = input.ConsumeIntegral<std::uint8_t>();
  for (board_model::Out& out : script.outs) {
    out.bytes = TakeBytes(input, input.ConsumeIntegralInRange(0, 9) == 0 ? 65536 : 8192);
    const int kind = input.ConsumeIntegralInRange(0, 2);
    if (kind == 1) out.length = static_cast<std::uint32_t>(out.bytes.size());
    if (kind == 2) out.length = TakeLength(input);
  }
  return script;
}

// --- The client ---

class Client {
 public:
  explicit Client(FuzzedDataProvider& input) : input_(input) {}

  void Connect() {
    fake_pipe_io::OnWait([this] { Step(); });
    fake_pipe_io::Complete(kConId);
  }

  bool IsDone() const { return isDone_; }

 private:
  // One wait of the loop: what came of the last request, then the next.
  void Step() {
    if (isWaiting_) {
      CheckReply();
      isWaiting_ = false;
      if (!expected_.reply) {
        Connect();
        return;
      }
    }
    if (isDone_) return;
    Send();
    fake_pipe_io::OnWait([this] { Step(); });
  }

  void Send() {
    isWaiting_ = true;
    g_seen = {};
    if (input_.remaining_bytes() == 0) {
      // The instance has to be as good as new.
      isDone_ = true;
      expected_ = {{}, Wire("0400 00000000")};
      fake_pipe_io::CompleteRead(kConId, Wire("1000"));
      return;
    }
    const Bytes request = TakeRequest(input_);
    g_script = TakeScript(input_);
    expected_ = board_model::Answer(request, g_script);
    fake_pipe_io::CompleteRead(kConId, request);
  }

  void CheckReply() {
    const Bytes all = fake_pipe_io::Written(kConId);
    const Bytes reply(all.begin() + static_cast<std::ptrdiff_t>(written_), all.end());
    written_ = all.size();
    Require(reply == expected_.reply.value_or(Bytes()));

    Seen& seen = expected_.seen;
    Require(g_seen.isCalled == seen.isCalled);
    if (!seen.isCalled) return;
    if (!g_seen.blocks[0].empty()) seen.blocks[0].resize(g_seen.blocks[0].size());
    Require(g_seen.texts == seen.texts && g_seen.numbers == seen.numbers);
    Require(g_seen.lengths == seen.lengths && g_seen.guid == seen.guid);
    Require(g_seen.blocks[0] == seen.blocks[0] && g_seen.blocks[1] == seen.blocks[1]);
    const std::vector<std::string> lock = fake_named_object::Calls();
    Require(std::count(lock.begin(), lock.end(), "wait 30000") ==
            std::count(lock.begin(), lock.end(), "release"));
  }

  FuzzedDataProvider& input_;
  std::size_t written_ = 0;
  board_model::Expected expected_;
  bool isWaiting_ = false;
  bool isDone_ = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  fake_pipe_io::Reset();
  fake_named_object::Reset();
  InstallLibrary();
  ResetPool();
  // What a request or a reply does not fill is neither zero nor text.
  PipeInstance& pipe = PipeOf(kConId);
  std::memset(pipe.RequestBuffer, 0xEE, sizeof(pipe.RequestBuffer));
  std::memset(pipe.ReplyBuffer, 0xEE, sizeof(pipe.ReplyBuffer));

  {
    Client client(input);
    CQorlixSRVPipe srv(nullptr);
    fake_pipe_io::OnWait([&] { client.Connect(); });
    Require(srv.StartSRV() == 0);
    Require(client.IsDone());
  }

  // Nothing is kept, or the fuzzer looks for leaks behind every input.
  fake_pipe_io::Reset();
  fake_named_object::Reset();
  fake_board_library::Reset();
  g_script = {};
  g_seen = {};
  return 0;
}
