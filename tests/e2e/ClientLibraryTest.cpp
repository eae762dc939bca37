#include <windows.h>

#include <sddl.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <thread>

#include "client/capi/qorlixclient.h"
#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/RegistryScratch.h"

// The client library as a foreign program has it: the header, the import library and the DLL, with
// the real server.

namespace e2e {
namespace {

using testing::HasSubstr;

constexpr char kKey[] = "SOFTWARE\\Vesmark\\NORVA\\E2E";
constexpr std::uint32_t kForeign = QORLIX_TRUST_FOREIGN;

struct CloseClient {
  void operator()(qorlix_client* client) const { qorlix_close(client); }
};
using Client = std::unique_ptr<qorlix_client, CloseClient>;

std::uint32_t ProcessIdOfServer(const Client& client) {
  qorlix_server server = {};
  EXPECT_EQ(qorlix_get_server(client.get(), &server), QORLIX_OK);
  EXPECT_NE(server.trust, kForeign);
  return server.process_id;
}

class ClientLibraryTest : public testing::Test {
 protected:
  ~ClientLibraryTest() override { server_.Kill(); }

  RegistryScratch registry_;
  ServerProcess server_;
  Client client_{qorlix_open(nullptr)};
};

TEST_F(ClientLibraryTest, WithoutAServerEveryCallSaysSo) {
  EXPECT_EQ(qorlix_api_version(), QORLIX_API_VERSION);
  EXPECT_EQ(qorlix_no_operation(client_.get()), QORLIX_ERR_CONNECT);
  EXPECT_EQ(qorlix_code(client_.get()), static_cast<std::uint32_t>(ERROR_FILE_NOT_FOUND));
  EXPECT_THAT(qorlix_text(client_.get()), HasSubstr("not running"));
}

TEST_F(ClientLibraryTest, AValueIsWrittenReadEnumeratedAndDeleted) {
  ASSERT_TRUE(server_.Start());
  qorlix_client* const client = client_.get();
  EXPECT_EQ(qorlix_reg_create_key(client, kKey), QORLIX_OK);
  EXPECT_EQ(qorlix_reg_set_value(client, kKey, "Mode",
                                 "f\xFC"
                                 "r"),
            QORLIX_OK);
  EXPECT_EQ(registry_.Value(kKey, "Mode"), (StoredValue{REG_SZ, Wire("66FC7200")}));
  qorlix_text_value name;
  qorlix_text_value data;
  EXPECT_EQ(qorlix_reg_get_value(client, kKey, "Mode", &data), QORLIX_OK);
  EXPECT_STREQ(data.text,
               "f\xFC"
               "r");
  EXPECT_EQ(data.length, 3u);
  EXPECT_EQ(qorlix_reg_enum_value(client, kKey, 0, &name, &data), QORLIX_OK);
  EXPECT_STREQ(name.text, "Mode");
  EXPECT_EQ(qorlix_reg_enum_value(client, kKey, 1, &name, &data), QORLIX_ANSWERED);
  EXPECT_EQ(qorlix_code(client), static_cast<std::uint32_t>(ERROR_NO_MORE_ITEMS));
  EXPECT_EQ(qorlix_reg_del_value(client, kKey, "Mode"), QORLIX_OK);
  EXPECT_EQ(qorlix_reg_get_value(client, kKey, "Mode", &data), QORLIX_ANSWERED);
  EXPECT_EQ(qorlix_code(client), static_cast<std::uint32_t>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(qorlix_reg_create_key(client, "SOFTWARE\\E2E"), QORLIX_ANSWERED);
  EXPECT_EQ(qorlix_code(client), static_cast<std::uint32_t>(ERROR_ACCESS_DENIED));
}

TEST_F(ClientLibraryTest, EveryCommandThatHasFieldsIsAnsweredWhenTheyAreMissing) {
  ASSERT_TRUE(server_.Start());
  int asked = 0;
  qorlix_command command;
  for (std::uint32_t i = 0; qorlix_get_command(i, &command) == QORLIX_OK; ++i) {
    if (*command.request == '\0') continue;
    ++asked;
    const bool stops = command.code == QORLIX_STOP_SERVER;
    EXPECT_EQ(qorlix_call(client_.get(), static_cast<std::uint16_t>(command.code), nullptr, 0,
                          nullptr, 0, nullptr),
              QORLIX_ANSWERED)
        << command.name;
    EXPECT_EQ(qorlix_code(client_.get()), stops ? 5u : 8602u) << command.name;
  }
  EXPECT_EQ(asked, 33);
  EXPECT_EQ(qorlix_no_operation(client_.get()), QORLIX_OK);
}

TEST_F(ClientLibraryTest, TheServersProcessIsToldAndAfterARestartTheNextCallReachesTheNewOne) {
  ASSERT_TRUE(server_.Start());
  ASSERT_EQ(qorlix_no_operation(client_.get()), QORLIX_OK);
  const std::uint32_t first = ProcessIdOfServer(client_);
  EXPECT_EQ(first, server_.Id());
  server_.Kill();
  ASSERT_TRUE(server_.Start());
  EXPECT_EQ(qorlix_no_operation(client_.get()), QORLIX_OK);
  EXPECT_EQ(ProcessIdOfServer(client_), server_.Id());
  EXPECT_NE(first, server_.Id());
}

TEST_F(ClientLibraryTest, AStopOfTheServerIsASuccessAndThenThereIsNone) {
  ASSERT_TRUE(server_.Start());
  EXPECT_EQ(qorlix_stop_server(client_.get(), 253), QORLIX_OK);
  EXPECT_EQ(server_.ExitCode(kPatienceMs), 1u);
  EXPECT_EQ(qorlix_no_operation(client_.get()), QORLIX_ERR_CONNECT);
}

TEST_F(ClientLibraryTest, APipeThatAnotherUserHasTakenIsRefusedBeforeAnythingIsSent) {
  SECURITY_ATTRIBUTES security = {sizeof(security), nullptr, FALSE};
  ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
      "O:LSG:SYD:(A;;GA;;;WD)", SDDL_REVISION_1, &security.lpSecurityDescriptor, nullptr));
  const HANDLE squatter =
      CreateNamedPipeA(kPipeName, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED, PIPE_TYPE_BYTE,
                       /*nMaxInstances=*/2, 8192, 8192, /*nDefaultTimeOut=*/0, &security);
  LocalFree(security.lpSecurityDescriptor);
  if (squatter == INVALID_HANDLE_VALUE) GTEST_SKIP() << "needs a user who may name other owners";
  EXPECT_EQ(qorlix_no_operation(client_.get()), QORLIX_ERR_VERIFY);
  EXPECT_EQ(qorlix_code(client_.get()), static_cast<std::uint32_t>(ERROR_INVALID_OWNER));
  qorlix_server server = {};
  EXPECT_EQ(qorlix_get_server(client_.get(), &server), QORLIX_OK);
  EXPECT_EQ(server.trust, kForeign);
  EXPECT_EQ(server.process_id, GetCurrentProcessId());
  EXPECT_THAT(server.reason, HasSubstr("another user"));
  DWORD waiting = 0;
  (void)PeekNamedPipe(squatter, nullptr, 0, nullptr, &waiting, nullptr);
  EXPECT_EQ(waiting, 0u);

  // Who insists gets through, and is told all the same.
  const Client insisting(qorlix_open(nullptr));
  (void)DisconnectNamedPipe(squatter);
  OVERLAPPED overlapped = {};
  (void)ConnectNamedPipe(squatter, &overlapped);
  EXPECT_EQ(qorlix_set_verification(insisting.get(), QORLIX_VERIFY_WARN), QORLIX_OK);
  EXPECT_EQ(qorlix_begin(insisting.get(), QORLIX_NO_OPERATION, nullptr, 0, 1000), QORLIX_OK);
  EXPECT_EQ(qorlix_get_server(insisting.get(), &server), QORLIX_OK);
  EXPECT_EQ(server.trust, kForeign);
  CloseHandle(squatter);
}

/// A server whose board library takes its time for a scan.
class SlowServerTest : public BoardTest {
 protected:
  void SetUp() override { StartWith("[fault BRDX_ScanBL]\ncall = *\ndelay = 1500\nresult = 31\n"); }

  Client client_{qorlix_open(nullptr)};
};

TEST_F(SlowServerTest, ACallGoesOnWhileItsCallerLooksAtItNowAndThen) {
  qorlix_client* const client = client_.get();
  ASSERT_EQ(qorlix_begin(client, QORLIX_BC_SCAN, nullptr, 0, 20000), QORLIX_OK);
  EXPECT_EQ(qorlix_wait(client, 0, nullptr, 0, nullptr), QORLIX_PENDING);
  EXPECT_EQ(qorlix_no_operation(client), QORLIX_ERR_REQUEST);
  EXPECT_EQ(qorlix_wait(client, 20, nullptr, 0, nullptr), QORLIX_PENDING);
  std::uint8_t reply[16];
  std::uint32_t size = 0;
  EXPECT_EQ(qorlix_wait(client, 20000, reply, sizeof(reply), &size), QORLIX_ANSWERED);
  EXPECT_EQ(qorlix_code(client), 31u);
  EXPECT_EQ(Bytes(reply, reply + size), Wire("0400 1F000000"));
}

TEST_F(SlowServerTest, ADeadlineEndsTheCallAndTheNextOneHasItsOwnReply) {
  qorlix_client* const client = client_.get();
  ASSERT_EQ(qorlix_begin(client, QORLIX_BC_SCAN, nullptr, 0, 100), QORLIX_OK);
  EXPECT_EQ(qorlix_wait(client, 20000, nullptr, 0, nullptr), QORLIX_ERR_RECEIVE);
  EXPECT_EQ(qorlix_code(client), static_cast<std::uint32_t>(WAIT_TIMEOUT));
  EXPECT_EQ(qorlix_no_operation(client), QORLIX_OK);
}

TEST_F(SlowServerTest, AnotherThreadCancelsACallThatIsBeingMade) {
  qorlix_client* const client = client_.get();
  std::thread canceller([client] {
    Sleep(150);
    qorlix_cancel(client);
  });
  const ULONGLONG start = GetTickCount64();
  EXPECT_EQ(qorlix_bc_scan(client), QORLIX_ERR_RECEIVE);
  EXPECT_LT(GetTickCount64() - start, 1300u);
  canceller.join();
  EXPECT_EQ(qorlix_code(client), static_cast<std::uint32_t>(ERROR_CANCELLED));
  EXPECT_EQ(qorlix_no_operation(client), QORLIX_OK);
}

}  // namespace
}  // namespace e2e
