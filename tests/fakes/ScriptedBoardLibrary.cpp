#include "tests/fakes/ScriptedBoardLibrary.h"

#include <memory>
#include <utility>

#include "tests/fakes/FakeBoardLibrary.h"

namespace scripted_board_library {
namespace {

void Sort(Call& call, char* text) { call.texts.push_back(text); }
void Sort(Call& call, std::uint32_t number) { call.numbers.push_back(number); }
void Sort(Call& call, std::uint8_t* byte) { call.byte = byte; }
void Sort(Call& call, std::uint32_t* value) { call.value = value; }

// A buffer is told from a text or a byte by the length that stands behind it.
template <typename... Rest>
void SortAll(Call& call, char* buffer, std::uint32_t* length, Rest... rest);
template <typename... Rest>
void SortAll(Call& call, std::uint8_t* buffer, std::uint32_t* length, Rest... rest);
template <typename First, typename... Rest>
void SortAll(Call& call, First first, Rest... rest);
void SortAll(Call&) {}

template <typename... Rest>
void SortAll(Call& call, char* buffer, std::uint32_t* length, Rest... rest) {
  call.outs.push_back({reinterpret_cast<std::uint8_t*>(buffer), length});
  SortAll(call, rest...);
}

template <typename... Rest>
void SortAll(Call& call, std::uint8_t* buffer, std::uint32_t* length, Rest... rest) {
  call.outs.push_back({buffer, length});
  SortAll(call, rest...);
}

template <typename First, typename... Rest>
void SortAll(Call& call, First first, Rest... rest) {
  Sort(call, first);
  SortAll(call, rest...);
}

template <typename... Arguments>
void Answer(std::function<std::uint32_t(Arguments...)>& operation,
            const std::shared_ptr<Script>& script) {
  operation = [script](Arguments... arguments) {
    Call call;
    call.operation = fake_board_library::Calls().back();
    SortAll(call, arguments...);
    return (*script)(call);
  };
}

}  // namespace

void Install(Script script) {
  const auto shared = std::make_shared<Script>(std::move(script));
  fake_board_library::Library& lib = fake_board_library::Lib();
  Answer(lib.scan, shared);
  Answer(lib.createAllLogdevices, shared);
  Answer(lib.hasUninitializedInstances, shared);
  Answer(lib.updateLogdevicesForDevice, shared);
  Answer(lib.enumBoardEx, shared);
  Answer(lib.enumInstBoard, shared);
  Answer(lib.enumAvailableBoards, shared);
  Answer(lib.enumAdapters, shared);
  Answer(lib.enumConfiguration, shared);
  Answer(lib.boardGetMap, shared);
  Answer(lib.getBoardInfo, shared);
  Answer(lib.getBoardInfoEx, shared);
}

}  // namespace scripted_board_library
