#include "board/testing/BoardFixture.h"

#include <algorithm>
#include <cstring>
#include <ostream>
#include <stdexcept>

#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/trace/FakeTrace.h"

using Srv = CQorlixSRVPipe;

const std::vector<BoardTestCommand> kBoardTestCommands = {
    {"EnumBoard", &Srv::BC_EnumBoard, "BRDX_EnumBoardExBL", "C100 01000000 44 11223344", 3, 1, 2},
    {"EnumInstBoard", &Srv::BC_EnumInstBoard, "BRDX_EnumInstBoardBL", "C000 11223344", 6, 0, 6},
    {"EnumAvailableBoard", &Srv::BC_EnumAvailableBoard, "BRDX_EnumAvailableBoardsBL",
     "C200 11223344", 2, 0, 6},
    {"EnumAdapters", &Srv::BC_EnumAdapters, "BRDX_EnumAdaptersBL", "C500 11223344", 2, 0, 6},
    {"EnumConfiguration", &Srv::BC_EnumConfiguration, "BRDX_EnumConfigurationBL",
     "C400 11223344 01000000 42 01000000 4D 01000000 44 01000000 49", 4, 4, 6},
    {"BoardGetMap", &Srv::BC_BoardGetMap, "BRDX_BoardGetMapBL",
     "A300 01000000 44 01000000 41 01000000 48", 1, 3, 2},
    {"GetBoardInfo", &Srv::BC_GetBoardInfo, "BRDX_GetBoardInfoBL",
     "C300 11223344 01000000 42 01000000 4D 01000000 44 01000000 49", 1, 4, 6},
    {"GetBoardInfoEx", &Srv::BC_GetBoardInfoEx, "BRDX_GetBoardInfoExBL",
     "CF00 11223344 01000000 42 01000000 4D 01000000 49", 1, 3, 6},
    {"Scan", &Srv::BC_Scan, "BRDX_ScanBL", "C700", 0, 0, 2},
    {"CreateAllLogdevices", &Srv::BC_CreateAllLogdevices, "BRDX_CreateAllLogdevicesBL", "C900", 0,
     0, 2},
    {"HasUninitializedInstances", &Srv::BC_HasUninitializedInstances,
     "BRDX_HasUninitializedInstancesBL", "5800", 0, 0, 2},
    {"UpdateLogDevicesForDevice", &Srv::BC_UpdateLogDevicesForDevice,
     "BRDX_UpdateLogdevicesForDeviceBL", "C800 01000000 44 01000000 48", 0, 2, 2}};

const BoardTestCommand& BoardCommandNamed(const std::string& name) {
  for (const BoardTestCommand& command : kBoardTestCommands) {
    if (name == command.name) return command;
  }
  throw std::invalid_argument("no such command");
}

void PrintTo(const BoardTestCommand& command, std::ostream* out) { *out << command.name; }

Bytes Long(std::uint32_t value) {
  return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
          static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}

void DirtyTheStack(char byte) {
  volatile char stack[200000];
  for (volatile char& c : stack) c = byte;
}

BoardFixture::BoardFixture() {
  fake_board_library::Reset();
  fake_named_object::Reset();
  scripted_board_library::Install(
      [this](const scripted_board_library::Call& call) { return OnCall(call); });
}

BoardFixture::~BoardFixture() {
  fake_board_library::Reset();
  FakeTrace::Reset();
}

std::uint32_t BoardFixture::OnCall(const scripted_board_library::Call& call) {
  constexpr std::size_t kSize = 8192;
  const auto isClear = [](auto byte) { return byte == 0; };
  ++calls_;
  seen_ = {};
  seen_.operation = call.operation;
  seen_.numbers = call.numbers;
  seen_.lock = fake_named_object::Calls();
  for (const char* const text : call.texts) {
    seen_.texts.push_back(text == nullptr ? std::nullopt : std::optional<std::string>(text));
    if (text == nullptr) continue;
    seen_.textsWereClear &= std::all_of(text + std::strlen(text), text + kSize, isClear);
  }
  for (std::size_t i = 0; i < call.outs.size(); ++i) {
    const scripted_board_library::Out& out = call.outs[i];
    seen_.lengths.push_back(*out.length);
    seen_.buffersWereClear &= std::all_of(out.bytes, out.bytes + kSize + 1, isClear);
    if (i >= answers_.size()) continue;
    std::memcpy(out.bytes, answers_[i].bytes.data(), answers_[i].bytes.size());
    if (answers_[i].length) *out.length = *answers_[i].length;
  }
  if (call.value != nullptr) *call.value = value_;
  if (call.byte != nullptr) *call.byte = byte_;
  if (raises_) throw std::runtime_error("fault");
  return result_;
}

Bytes BoardFixture::Request(const BoardTestCommand& command,
                            const std::vector<std::uint32_t>& lengths) {
  Bytes request = Wire(command.head);
  for (std::size_t i = 0; i < command.lengths; ++i) {
    request = request + Long(i < lengths.size() ? lengths[i] : 8192);
  }
  return request;
}

SrvResult BoardFixture::Handle(const BoardTestCommand& command, const Bytes& request) {
  ReceiveCommand(request);
  return (srv_.*command.handler)(kConId);
}

Bytes BoardFixture::ReplyTo(const BoardTestCommand& command,
                            const std::vector<std::uint32_t>& lengths) {
  EXPECT_EQ(Handle(command, Request(command, lengths)), SRV_OK);
  return Reply();
}
