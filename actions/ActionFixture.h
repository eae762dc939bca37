#ifndef ACTIONS_ACTIONFIXTURE_H_
#define ACTIONS_ACTIONFIXTURE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeDynamicLibrary.h"
#include "tests/fakes/FakeMessageBox.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/FakeSystemPath.h"
#include "tests/fakes/FakeWorkerThread.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "tests/support/PoolFixture.h"

/// One instance with a request, on a machine without libraries, events, boxes and workers.
class ActionFixture : public PoolFixture {
 protected:
  using Handler = SrvResult (CQorlixSRVPipe::*)(int);

  ActionFixture() { ForgetTheMachine(); }
  ~ActionFixture() override {
    ForgetTheMachine();
    FakeTrace::Reset();
  }

  static void ForgetTheMachine() {
    fake_worker_thread::Reset();
    fake_dynamic_library::Reset();
    fake_system_path::Reset();
    fake_named_object::Reset();
    fake_message_box::Shown().clear();
    fake_board_library::Reset();
  }

  /// What the handler returns for a request with these fields.
  SrvResult Do(Handler handler, const Bytes& fields) {
    ReceiveCommand(Wire("0000") + fields);
    return (srv_.*handler)(kConId);
  }

  /// Every request that ends before its last field ends gets the reader's code, no reply of the
  /// handler, and reaches no library.
  void ExpectEveryTruncationRefused(Handler handler, const Bytes& fields) {
    for (std::size_t size = 0; size < fields.size(); ++size) {
      const Bytes cut(fields.begin(), fields.begin() + static_cast<std::ptrdiff_t>(size));
      EXPECT_EQ(Do(handler, cut), BUFFER_OVERFLOW) << size;
      EXPECT_TRUE(Reply().empty()) << size;
    }
    EXPECT_TRUE(fake_dynamic_library::Calls().empty());
    EXPECT_EQ(fake_worker_thread::Started(), 0);
  }

  static const Bytes& Absent() {
    static const Bytes absent = Wire("FFFF0000");
    return absent;
  }
};

#endif  // ACTIONS_ACTIONFIXTURE_H_
