#include <gmock/gmock.h>

#include <cstdint>

#include "tests/e2e/EventLogTail.h"
#include "tests/e2e/RegistryScratch.h"
#include "tests/e2e/RequestTable.h"
#include "tests/e2e/SharedServerTest.h"

namespace e2e {
namespace {

using testing::IsEmpty;

constexpr char kKey[] = "SOFTWARE\\Vesmark\\NORVA\\E2E";

// Every test damages one valid request of one command.
class DamagedRequestTest : public SharedServerTest, public testing::WithParamInterface<RequestRow> {
 protected:
  void SetUp() override {
    SharedServerTest::SetUp();
    scratch_.CreateKey(kKey);
    scratch_.SetValue(kKey, "Name", 1, Wire("'Kept' 00"));
  }

  // What a damaged request must not change, and must not be reported for either.
  void ExpectNothingHappened() {
    EXPECT_THAT(scratch_.Subkeys(kKey), IsEmpty());
    EXPECT_EQ(scratch_.Value(kKey, "Name"), (StoredValue{1, Wire("'Kept' 00")}));
    EXPECT_EQ(scratch_.Value(kKey, ""), std::nullopt);
    EXPECT_THAT(log_.Texts(), IsEmpty());
  }

  // The request with another length in front of one text, whose bytes stay.
  Bytes WithLength(std::size_t field, std::uint32_t length) {
    const Bytes text = Wire(GetParam().fields[field]).substr(4);
    return GetParam().RequestWith(field, Long(length) + text);
  }

  const Bytes kOverflow = Wire("0400 9A210000");
  RegistryScratch scratch_;
  EventLogTail log_;
};

TEST_P(DamagedRequestTest, EveryPrefixIsRefusedAndTheConnectionServesOn) {
  const Bytes request = GetParam().Request();
  EXPECT_TRUE(client_.Answers(request.substr(0, 1), Wire("0400 AC210000"
                                                         "0400 AC210000 0400 9A210000")));
  for (std::size_t size = 2; size < request.size(); ++size) {
    EXPECT_TRUE(client_.Answers(request.substr(0, size), kOverflow)) << size << " bytes";
  }
  ExpectNothingHappened();
}

TEST_P(DamagedRequestTest, LengthPastTheReceivedBytesIsRefused) {
  for (const std::size_t field : GetParam().texts) {
    for (const std::uint32_t length : {65534u, 65536u, 0x7FFFFFFFu, 0x80000000u, 0x80000001u}) {
      EXPECT_TRUE(client_.Answers(WithLength(field, length), kOverflow)) << field << " " << length;
    }
  }
  ExpectNothingHappened();
}

TEST_P(DamagedRequestTest, LengthNearTwoToThe32IsRefused) {
  // The last ones would wrap around to a cursor inside the request.
  for (const std::size_t field : GetParam().texts) {
    for (std::uint32_t length = 0xFFFFFFFF; length >= 0xFFFFFFC0; --length) {
      EXPECT_TRUE(client_.Answers(WithLength(field, length), kOverflow)) << field << " " << length;
    }
  }
  ExpectNothingHappened();
}

TEST_P(DamagedRequestTest, LengthOneAboveWhatIsLeftIsRefused) {
  for (const std::size_t field : GetParam().texts) {
    std::size_t left = 0;
    for (std::size_t i = field; i < GetParam().fields.size(); ++i) {
      left += Wire(GetParam().fields[i]).size();
    }
    const auto length = static_cast<std::uint32_t>(left - 4 + 1);
    EXPECT_TRUE(client_.Answers(WithLength(field, length), kOverflow)) << field;
  }
  ExpectNothingHappened();
}

TEST_P(DamagedRequestTest, AbsentTextIsAMissingArgument) {
  const Bytes missing = Wire("0400 57000000") + Wire(GetParam().failureTail);
  for (const std::size_t field : GetParam().texts) {
    EXPECT_TRUE(client_.Answers(GetParam().RequestWith(field, Wire("FFFF0000")), missing)) << field;
  }
  ExpectNothingHappened();
}

TEST_P(DamagedRequestTest, AbsentTextIsJudgedAfterTheLaterFieldsWereRead) {
  if (GetParam().texts.front() + 1 == GetParam().fields.size()) {
    GTEST_SKIP() << "its text is its last field";
  }
  for (const std::size_t field : GetParam().texts) {
    if (field + 1 == GetParam().fields.size()) continue;
    const Bytes request = GetParam().RequestWith(field, Wire("FFFF0000"));
    EXPECT_TRUE(client_.Answers(request.substr(0, request.size() - 1), kOverflow)) << field;
  }
  ExpectNothingHappened();
}

INSTANTIATE_TEST_SUITE_P(OfEveryRegistryCommand, DamagedRequestTest,
                         testing::ValuesIn(RegistryRequests()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(DamagedRequestTableTest, UndamagedRequestsReachTheRegistry) {
  // Without this the tests above would also pass for requests that nobody understands.
  ServerProcess server;
  WireClient client;
  ASSERT_TRUE(server.Start());
  ASSERT_TRUE(client.Connect());
  for (const RequestRow& row : RegistryRequests()) {
    RegistryScratch scratch;
    scratch.CreateKey(std::string(kKey) + "\\" + kKey);
    scratch.SetValue(kKey, "Name", 1, Wire("'Kept' 00"));
    ASSERT_TRUE(client.Send(row.Request()));
    EXPECT_EQ(client.Receive(6), Wire("0400 00000000")) << row.name;
    while (client.Waiting() > 0) client.Receive(client.Waiting());
  }
}

}  // namespace
}  // namespace e2e
