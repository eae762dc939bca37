#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "client/CommandInfo.h"
#include "client/ReplyDecoder.h"
#include "server/CommandTable.h"
#include "tests/support/PoolFixture.h"

// The server's codes, its table and its handlers against what the client has to know of them.

namespace {

using client::CommandInfo;
using client::Doubling;

// --- The names of the enumerators, as the compiler knows them ---

template <CommandCode kCode>
std::string_view EnumeratorName() {
  // "... [kCode = CommandCode::Install]"; of a number that is none, "(CommandCode)4".
  std::string_view text = __PRETTY_FUNCTION__;
  constexpr std::string_view kScope = "CommandCode::";
  const std::size_t begin = text.rfind(kScope);
  if (begin == std::string_view::npos) return {};
  text.remove_prefix(begin + kScope.size());
  return text.substr(0, text.find_first_of("];"));
}

constexpr std::size_t kCodes = 1024;  // all enumerators are below it

template <std::size_t... kNumbers>
std::array<std::string_view, kCodes> NamesOf(std::index_sequence<kNumbers...>) {
  return {EnumeratorName<static_cast<CommandCode>(kNumbers)>()...};
}

const auto kNames = NamesOf(std::make_index_sequence<kCodes>());

TEST(CommandDriftTest, EveryEnumeratorIsACommandOfTheClientUnderItsName) {
  std::size_t enumerators = 0;
  for (std::uint32_t code = 0; code < kCodes; ++code) {
    const CommandInfo* const command = client::FindCommand(code);
    EXPECT_EQ(command != nullptr ? std::string_view(command->name) : std::string_view(),
              kNames[code])
        << code;
    enumerators += kNames[code].empty() ? 0u : 1u;
  }
  // Also says that the names were found at all, and that none lies above.
  EXPECT_EQ(enumerators, client::Commands().size());
}

TEST(CommandDriftTest, ServerAndClientKnowTheSameCodes) {
  for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
    EXPECT_EQ(FindCommand(static_cast<std::uint16_t>(code)) != nullptr,
              client::FindCommand(code) != nullptr)
        << code;
  }
}

TEST(CommandDriftTest, WhoAnswersDecidesWhetherAReplyIsDoubled) {
  for (const CommandInfo& command : client::Commands()) {
    const CommandRow* const row = FindCommand(static_cast<std::uint16_t>(command.code));
    ASSERT_NE(row, nullptr) << command.name;
    Doubling expected = Doubling::Never;
    if (row->answer == Answer::LoopWithOutputs) expected = Doubling::OnFailure;
    if (row->answer == Answer::HandlerThenLoop) expected = Doubling::OnceItsLibraryIsLoaded;
    if (row->answer == Answer::Stop) expected = Doubling::OnUnreadable;
    EXPECT_EQ(command.doubling, expected) << command.name;
  }
}

// --- The handlers themselves ---

class HandlerDriftTest : public PoolFixture {
 protected:
  SrvResult Call(const CommandInfo& command, const Bytes& request) {
    ReceiveCommand(request);
    const CommandRow* const row = FindCommand(static_cast<std::uint16_t>(command.code));
    if (row == nullptr) {
      ADD_FAILURE() << command.name;
      return SRV_ERR_UNKNOWN_COMMAND;
    }
    return (srv_.*row->handler)(kConId);
  }
};

TEST_F(HandlerDriftTest, EveryHandlerReadsTheFieldsThatAreListedAndNoByteMore) {
  for (const CommandInfo& command : client::Commands()) {
    const Bytes request = client::SmallestRequest(command);
    const Bytes withMore = request + Bytes(64, 0);
    (void)Call(command, withMore);
    EXPECT_EQ(PipeOf(kConId).CurrentPointer, request.size()) << command.name;
  }
}

TEST_F(HandlerDriftTest, NoHandlerDoesWithAByteLess) {
  for (const CommandInfo& command : client::Commands()) {
    const Bytes request = client::SmallestRequest(command);
    if (request.size() == sizeof(std::uint16_t)) continue;
    EXPECT_EQ(Call(command, Bytes(request.begin(), request.end() - 1)), BUFFER_OVERFLOW)
        << command.name;
    EXPECT_EQ(Reply(), Bytes()) << command.name;
  }
}

TEST_F(HandlerDriftTest, WhatAHandlerSendsIsAWholeReplyToTheClient) {
  int sent = 0;
  for (const CommandInfo& command : client::Commands()) {
    const CommandRow* const row = FindCommand(static_cast<std::uint16_t>(command.code));
    if (row == nullptr || row->answer != Answer::Handler) continue;
    const Bytes request = client::SmallestRequest(command);
    EXPECT_EQ(Call(command, request), SRV_OK) << command.name;
    const Bytes reply = Reply();
    const client::ReplyLayout layout = client::ExamineReply(request, reply);
    EXPECT_EQ(layout.state, client::ReplyState::Complete) << command.name << ' ' << Hex(reply);
    EXPECT_EQ(layout.size, reply.size()) << command.name << ' ' << Hex(reply);
    ++sent;
  }
  EXPECT_GT(sent, 25);
}

}  // namespace
