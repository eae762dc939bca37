#include "client/ServerIdentity.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace client {
namespace {

TEST(ServerIdentityTest, AdministratorsTheSystemAndThisUserAreTrusted) {
  for (const PipeOwner owner :
       {PipeOwner::Administrators, PipeOwner::System, PipeOwner::CurrentUser}) {
    EXPECT_EQ(Identify({7, owner}).trust, ServerTrust::Trusted) << static_cast<int>(owner);
  }
}

TEST(ServerIdentityTest, AnotherUserIsForeignAndAnOwnerThatIsNotToldIsUnknown) {
  EXPECT_EQ(Identify({7, PipeOwner::Other}).trust, ServerTrust::Foreign);
  EXPECT_EQ(Identify({7, PipeOwner::Unknown}).trust, ServerTrust::Unknown);
  EXPECT_EQ(Identify({7, PipeOwner::Unknown}).peer.processId, 7u);
}

TEST(ServerIdentityTest, EveryAnswerSaysWhyInItsOwnWords) {
  std::set<std::string> texts = {ServerIdentity().text()};
  for (const PipeOwner owner : {PipeOwner::Unknown, PipeOwner::Administrators, PipeOwner::System,
                                PipeOwner::CurrentUser, PipeOwner::Other}) {
    EXPECT_TRUE(texts.insert(Identify({0, owner}).text()).second);
  }
}

}  // namespace
}  // namespace client
