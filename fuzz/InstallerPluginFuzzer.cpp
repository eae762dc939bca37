// Whatever a request holds and the registry names: a library is loaded by a path that begins with
// the system directory and fits its buffer, and what comes back is a reply or a code. Where the
// path leads is the registry's business: a name with `..\` may lead out of that directory.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "server/QorlixSRVPipe.h"
#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeDynamicLibrary.h"
#include "tests/fakes/FakePipeIo.h"
#include "tests/fakes/FakeRegistry.h"
#include "tests/fakes/FakeSystemPath.h"

namespace {

constexpr int kConId = 0;
const std::string kDevices = "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID\\";
std::string g_systemDirectory;

void Require(bool holds) {
  if (!holds) std::abort();
}

// A plug-in reads its texts to their ends; the sanitizer says whether they have one.
void Look(const char* text, std::size_t most) {
  if (text != nullptr) Require(std::strlen(text) <= most);
}

std::uint32_t Run(char* hardwareId, const char* deviceId, char* languageExt, std::uint32_t zero) {
  Look(hardwareId, 260);
  Look(deviceId, 259);
  Look(languageExt, 259);
  Require(deviceId != nullptr && zero == 0);
  return 0;
}

std::uint32_t RunWithBoard(char* hardwareId, const char* deviceId, char* languageExt,
                           std::uint32_t zero, char* board) {
  Look(board, 259);
  return Run(hardwareId, deviceId, languageExt, zero);
}

void CheckPath(const std::string& path) {
  Require(path.size() < 260);
  Require(path.rfind(g_systemDirectory + "\\", 0) == 0);
}

// Makes a value of raw bytes and, mostly, the library that it names, so that inputs get further.
void AddPlugin(FuzzedDataProvider& input, fake_registry::Key& key, const char* valueName,
               platform::EntryPoint entry) {
  const std::string raw = input.ConsumeRandomLengthString(300);
  key.values[fake_registry::Fold(valueName)] = {valueName, 1, TextBytes(raw)};
  const std::string value = raw.substr(0, raw.find('\0'));
  const std::size_t comma = std::min(value.find(','), value.size());
  const std::string function = comma < value.size() ? value.substr(comma + 1) : "";
  fake_dynamic_library::Exports exports;
  if (input.ConsumeIntegralInRange(0, 7) != 0) exports[function] = entry;
  if (input.ConsumeIntegralInRange(0, 7) == 0) return;
  fake_dynamic_library::Add(g_systemDirectory + "\\" + value.substr(0, comma), exports);
}

void SetUpMachine(FuzzedDataProvider& input, bool install, const std::string& device) {
  fake_pipe_io::Reset();
  fake_dynamic_library::Reset();
  fake_board_library::Reset();
  fake_registry::DeleteTree("SOFTWARE");
  g_systemDirectory = input.ConsumeBool()
                          ? "C:\\windows\\system32"
                          : std::string(input.ConsumeIntegralInRange<std::size_t>(0, 300), 's');
  fake_system_path::SetSystemDirectory(g_systemDirectory);
  fake_dynamic_library::OnLoad(CheckPath);

  fake_registry::Key& key = fake_registry::Create(kDevices + device);
  key.values[fake_registry::Fold("HardwareID")] = {"HardwareID", 1,
                                                   TextBytes(input.ConsumeRandomLengthString(300))};
  if (install) {
    AddPlugin(input, key, "Installer", fake_dynamic_library::Export(Run));
  } else {
    AddPlugin(input, key, "Deinstaller", fake_dynamic_library::Export(RunWithBoard));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const bool install = input.ConsumeBool();
  const std::string device = input.ConsumeRandomLengthString(300);
  SetUpMachine(input, install, device.substr(0, device.find('\0')));

  // The device that was made, or any bytes.
  Bytes request;
  if (input.ConsumeIntegralInRange(0, 3) != 0) request = TextField(device);
  const std::vector<std::uint8_t> rest = input.ConsumeRemainingBytes<std::uint8_t>();
  request.insert(request.end(), rest.begin(), rest.end());
  request.resize(std::min<std::size_t>(request.size(), kPipeBufferSize));

  static CQorlixSRVPipe srv(nullptr);
  PipeInstance& pipe = PipeOf(kConId);
  std::copy(request.begin(), request.end(), pipe.RequestBuffer);
  pipe.ReceivePointer = static_cast<std::uint32_t>(request.size());
  pipe.CurrentPointer = 0;
  pipe.cbToWrite = 0;
  const SrvResult result = install ? srv.Install(kConId) : srv.Deinstall(kConId);
  Require(pipe.cbToWrite == 0);  // the loop answers
  Require(pipe.CurrentPointer <= pipe.ReceivePointer);

  (void)srv.Send(kConId, result);
  Require(pipe.cbToWrite == 6 && pipe.ReplyBuffer[0] == 4 && pipe.ReplyBuffer[1] == 0);
  return 0;
}
