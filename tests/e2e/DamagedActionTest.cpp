#include <gmock/gmock.h>

#include <cstdint>
#include <string>

#include "tests/e2e/ActionsTest.h"
#include "tests/e2e/PluginTest.h"
#include "tests/e2e/RequestTable.h"

// Requests of the actions that are cut short or lie about their lengths: none calls a library, and
// none shows a message box, which would hold up the next request.

namespace e2e {
namespace {

using testing::IsEmpty;

class DamagedActionTest : public ActionsTest, public testing::WithParamInterface<RequestRow> {
 protected:
  void SetUp() override {
    ActionsTest::SetUp();
    devices_.Add("DEV1", "sampledev.dll,SampleRefuse");
  }

  testing::AssertionResult IsRefused(const Bytes& request) {
    return client_.Answers(request, Wire("0400 9A210000") + Wire(GetParam().failureTail));
  }

  // The request with another length in front of one text, whose bytes stay.
  Bytes WithLength(std::size_t field, std::uint32_t length) {
    const Bytes text = Wire(GetParam().fields[field]).substr(4);
    return GetParam().RequestWith(field, Long(length) + text);
  }

  void ExpectNothingRan() {
    EXPECT_THAT(Libraries().Calls(), IsEmpty());
    EXPECT_THAT(Libraries().BoardCalls(), IsEmpty());
  }

  Devices devices_;
};

TEST_P(DamagedActionTest, EveryPrefixIsRefusedAndTheConnectionServesOn) {
  const Bytes request = GetParam().Request();
  EXPECT_TRUE(client_.Answers(request.substr(0, 1), Wire("0400 AC210000"
                                                         "0400 AC210000 0400 9A210000")));
  for (std::size_t size = 2; size < request.size(); ++size) {
    EXPECT_TRUE(IsRefused(request.substr(0, size))) << size << " bytes";
  }
  ExpectNothingRan();
}

TEST_P(DamagedActionTest, LengthsPastTheReceivedBytesAreRefused) {
  for (const std::size_t field : GetParam().texts) {
    for (const std::uint32_t length : {65534u, 65536u, 0x7FFFFFFFu, 0x80000000u}) {
      EXPECT_TRUE(IsRefused(WithLength(field, length))) << field << " " << length;
    }
    // The last ones would wrap around to a cursor inside the request.
    for (std::uint32_t length = 0xFFFFFFFF; length >= 0xFFFFFFC0; --length) {
      EXPECT_TRUE(IsRefused(WithLength(field, length))) << field << " " << length;
    }
  }
  ExpectNothingRan();
}

TEST_P(DamagedActionTest, ATextOf260BytesIsRefusedWhereTheRoomEnds) {
  if (GetParam().name == std::string("GetSilentRestartResult")) {
    // Kept: this one has room for whatever a request can hold.
    EXPECT_TRUE(client_.Answers(GetParam().RequestWith(0, Text(std::string(8186, 'x'))),
                                Wire("0400 03010000")));
    return;
  }
  for (const std::size_t field : GetParam().texts) {
    EXPECT_TRUE(IsRefused(GetParam().RequestWith(field, Text(std::string(260, 'x'))))) << field;
  }
  ExpectNothingRan();
}

INSTANTIATE_TEST_SUITE_P(OfEveryAction, DamagedActionTest, testing::ValuesIn(ActionRequests()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(ActionsTest, UndamagedRequestsAreUnderstood) {
  // Without this the tests above would also pass for requests that nobody understands.
  Devices devices;
  devices.Add("DEV1", "sampledev.dll,SampleRefuse");
  std::size_t calls = 0;
  for (const RequestRow& row : ActionRequests()) {
    const std::string name = row.name;
    if (name == "TestFunction" || name == "GetSilentRestartResult") continue;
    ASSERT_TRUE(client_.Send(row.Request()));
    ++calls;
    ASSERT_TRUE(client_.HasWaiting(6)) << name;
    EXPECT_EQ(Libraries().CallsOnceThereAre(calls).size(), calls) << name;
    while (client_.Waiting() > 0) client_.Receive(client_.Waiting());
    if (name == "SilentRestart") (void)Libraries().CallsOnceThereAre(++calls);
  }
}

}  // namespace
}  // namespace e2e
