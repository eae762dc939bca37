#include <windows.h>

#include <gmock/gmock.h>

#include "tests/e2e/RegistryCommandTest.h"

namespace e2e {
namespace {

using testing::IsEmpty;

// A key that the server may read but not change, although it lies in the permitted tree.
class RegistryDeniedTest : public RegistryCommandTest {
 protected:
  void SetUp() override {
    RegistryCommandTest::SetUp();
    SetValue("Name", REG_SZ, Wire("'abc' 00"));
    scratch_.DenyWriting(kKey, true);
  }

  void TearDown() override {
    scratch_.DenyWriting(kKey, false);
    EXPECT_EQ(scratch_.Value(kKey, "Name"), (StoredValue{REG_SZ, Wire("'abc' 00")}));
    // The policy permits the key, so what the registry denies is not reported.
    EXPECT_THAT(log_.Texts(), IsEmpty());
    RegistryCommandTest::TearDown();
  }
};

TEST_F(RegistryDeniedTest, ValueIsRead) {
  EXPECT_TRUE(client_.Answers(Wire("1600 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 04000000 'Name'"),
                              Wire("0400 00000000 03000000 'abc' 03000000")));
}

TEST_F(RegistryDeniedTest, ValuesAreNamed) {
  EXPECT_TRUE(client_.Answers(Wire("1700 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 00000000"),
                              Wire("0400 00000000 04000000 'Name' 04000000"
                                   "03000000 'abc' 04000000")));
}

TEST_F(RegistryDeniedTest, SubkeysAreNotNamedBecauseThatTakesAllRights) {
  EXPECT_TRUE(client_.Answers(Wire("1500 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 00000000"),
                              Wire("0400 05000000 E01F0000")));
}

TEST_F(RegistryDeniedTest, ChangesAreDeniedByTheRegistry) {
  const Bytes denied = Wire("0400 05000000");
  EXPECT_TRUE(client_.Answers(Wire("0300 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"
                                   "04000000 'Name' 01000000 'V'"),
                              denied));
  EXPECT_TRUE(client_.Answers(Wire("1200 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 04000000 'Name'"),
                              denied));
  EXPECT_TRUE(client_.Answers(Wire("0100 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"), denied));
  EXPECT_TRUE(client_.Answers(Wire("0200 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"), denied));
}

}  // namespace
}  // namespace e2e
