#include "tests/fakes/FakeBoardLibrary.h"

#include <utility>

#include "board/boardsvc32.h"

namespace {
std::function<void()> g_startHardwareDetection;
}

void fake_board_library::OnStartHardwareDetection(std::function<void()> action) {
  g_startHardwareDetection = std::move(action);
}

std::uint32_t StartHardwareDetection() {
  if (g_startHardwareDetection) g_startHardwareDetection();
  return 0;
}
