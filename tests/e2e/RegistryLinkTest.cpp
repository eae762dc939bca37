#include <windows.h>

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/RegistryCommandTest.h"
#include "tests/e2e/RegistryLink.h"

// Keys that lead out of the tree. The policy judges names.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kOutside[] = "SOFTWARE\\E2E";

class RegistryLinkTest : public RegistryCommandTest {
 protected:
  void SetUp() override {
    RegistryCommandTest::SetUp();
    scratch_.CreateKey(kOutside);
  }

  testing::AssertionResult IsAnswered(const Bytes& request, std::uint32_t result) {
    return client_.Answers(request, Wire("0400") + Long(result));
  }
};

TEST_F(RegistryLinkTest, WhereALinkInTheTreeLeadsClientsReadAndChange) {
  const std::string path = std::string(kKey) + "\\link";
  const RegistryLink link(path, kOutside);
  EXPECT_TRUE(IsAnswered(Wire("0300") + Text(path) + Text("Name") + Text("V"), 0));
  EXPECT_EQ(scratch_.Value(kOutside, "Name"), (StoredValue{REG_SZ, Wire("'V' 00")}));
  EXPECT_TRUE(client_.Answers(Wire("1600") + Text(path) + Text("Name"),
                              Wire("0400 00000000") + Text("V") + Wire("01000000")));
  EXPECT_TRUE(IsAnswered(Wire("0200") + Text(path + "\\x"), 0));
  EXPECT_THAT(scratch_.Subkeys(kOutside), ElementsAre("x"));
  EXPECT_TRUE(IsAnswered(Wire("1200") + Text(path) + Text("Name"), 0));
  EXPECT_EQ(scratch_.Value(kOutside, "Name"), std::nullopt);
  EXPECT_THAT(log_.Texts(), IsEmpty());
}

}  // namespace
}  // namespace e2e
