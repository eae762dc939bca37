// Whatever clients do, and whenever: no instance is lost, no block carries two operations, nothing
// is written but replies, and the loop neither turns without end nor ends without a reason.

#include <cstdlib>

#include "fuzz/FuzzedPipe.h"
#include "fuzz/FuzzedRequests.h"
#include "server/QorlixSRVPipe.h"
#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeDynamicLibrary.h"
#include "tests/fakes/FakeEventLog.h"
#include "tests/fakes/FakeMessageBox.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/FakeRegistry.h"
#include "tests/support/PoolReset.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fake_named_object::Reset();
  fake_board_library::Reset();
  fuzzed_requests::Arrange();
  ResetPool();

  fuzzed_pipe::Begin({data, size});
  {
    CQorlixSRVPipe srv(nullptr);
    if (srv.StartSRV() != 0) std::abort();
  }
  fuzzed_pipe::CheckEnd();

  // Nothing is kept, or the fuzzer looks for leaks behind every input.
  fuzzed_pipe::Begin({});
  fake_named_object::Reset();
  fake_board_library::Reset();
  fake_dynamic_library::Reset();
  fake_registry::Root() = {};
  fake_message_box::Shown() = {};
  (void)fake_event_log::Take();
  return 0;
}
