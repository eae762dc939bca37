#include "tests/protocol/ProtocolPage.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "client/CommandInfo.h"
#include "client/ReplyDecoder.h"

// What docs/protocol.md tells of each command is what the client takes replies apart by.

namespace protocol_page {
namespace {

using client::CommandInfo;
using client::ReplyState;

std::string File(const std::string& path) {
  std::ifstream stream(QORLIX_SOURCE_DIR + ("/" + path), std::ios::binary);
  EXPECT_TRUE(stream.is_open()) << path;
  return {std::istreambuf_iterator<char>(stream), {}};
}

const Page& ThePage() {
  static const Page page = Parse(File("docs/protocol.md"));
  return page;
}

std::uint32_t CodeOf(const CommandInfo& command) {
  return static_cast<std::uint32_t>(command.code);
}

std::string Hexadecimal(std::uint32_t number) {
  char text[16];
  (void)std::snprintf(text, sizeof(text), "0x%X", number);
  return text;
}

// Calls `check` with every command and its section; false when they do not go together at all.
template <typename Check>
void ForEachCommand(Check check) {
  ASSERT_EQ(ThePage().sections.size(), client::Commands().size());
  for (std::size_t i = 0; i < client::Commands().size(); ++i) {
    SCOPED_TRACE(client::Commands()[i].name);
    check(client::Commands()[i], ThePage().sections[i]);
  }
}

TEST(ProtocolPageTest, EveryHeadingHasTheCodeInBothFormsAndTheNameInOrder) {
  ForEachCommand([](const CommandInfo& command, const Section& section) {
    EXPECT_EQ(section.name, command.name);
    EXPECT_EQ(section.code, std::to_string(CodeOf(command)));
    EXPECT_EQ(section.hex, Hexadecimal(CodeOf(command)));
  });
}

TEST(ProtocolPageTest, TheListOfAllCommandsLeadsToTheirHeadings) {
  ASSERT_EQ(ThePage().entries.size(), client::Commands().size());
  ForEachCommand([](const CommandInfo& command, const Section& section) {
    const auto index = static_cast<std::size_t>(&command - client::Commands().data());
    const Entry& entry = ThePage().entries[index];
    EXPECT_EQ(entry.name, command.name);
    EXPECT_EQ(entry.code, std::to_string(CodeOf(command)));
    EXPECT_EQ(entry.anchor, AnchorOf(section.heading));
  });
}

TEST(ProtocolPageTest, EveryRequestHasItsFieldsInOrder) {
  ForEachCommand([](const CommandInfo& command, const Section& section) {
    EXPECT_EQ(FieldsOf(section.Row("Request")), command.request);
    EXPECT_EQ(section.Row("Request") == "none", *command.request == '\0');
  });
}

TEST(ProtocolPageTest, TheRoomOfTextsIsToldWhereItIsSmall) {
  ForEachCommand([](const CommandInfo& command, const Section& section) {
    const std::string row = section.Row("Request");
    const bool isTold = row.find("at most 259 bytes") != std::string::npos;
    EXPECT_EQ(isTold, command.textRoom == 260);
    // That of the registry commands stands in the page's table of limits.
    const bool isRegistry = section.name.starts_with("Reg_");
    EXPECT_EQ(isRegistry, command.textRoom == 8160);
  });
}

TEST(ProtocolPageTest, EveryReplyHasItsFieldsByResult) {
  ForEachCommand([](const CommandInfo& command, const Section& section) {
    const std::string done = "Reply, " + std::to_string(command.done);
    ASSERT_NE(section.Has("Reply"), section.Has(done));
    const std::string success = section.Row(section.Has("Reply") ? "Reply" : done);
    EXPECT_EQ(FieldsOf(success), command.success);
    // A row that is missing tells of a reply that is the result alone, or of the same as others.
    const std::string others = section.Has("Reply") ? success : section.Row("Reply, other results");
    const std::string tooLong = section.Has("Reply, 8602") ? section.Row("Reply, 8602") : others;
    EXPECT_EQ(FieldsOf(others), command.fixedShape ? command.success : command.failure);
    EXPECT_EQ(FieldsOf(tooLong), command.fixedShape ? command.success : command.tooLong);
    for (const auto& [title, text] : section.rows) {
      if (title.starts_with("Reply")) EXPECT_TRUE(text.starts_with("`result`")) << title;
    }
  });
}

TEST(ProtocolPageTest, NoRowIsOfAKindThatIsNotLookedAt) {
  ForEachCommand([](const CommandInfo& command, const Section& section) {
    const std::string done = "Reply, " + std::to_string(command.done);
    for (const auto& [title, text] : section.rows) {
      EXPECT_TRUE(title == "Request" || title == "Reply" || title == done ||
                  title == "Reply, 8602" || title == "Reply, other results" || title == "Results")
          << title;
    }
  });
}

TEST(ProtocolPageTest, DoubledRepliesAreToldOfWhereTheyHappen) {
  const std::string page = File("docs/protocol.md");
  const std::size_t begin = page.find("### Doubled replies");
  const std::string chapter = page.substr(begin, page.find("\n### ", begin) - begin);
  for (const CommandInfo& command : client::Commands()) {
    const bool isTold = chapter.find('`' + std::string(command.name) + '`') != std::string::npos;
    EXPECT_EQ(isTold, command.doubling != client::Doubling::Never) << command.name;
  }
}

TEST(ProtocolPageTest, TheExamplesAreWholeRequestsAndWholeReplies) {
  int requests = 0;
  int replies = 0;
  ForEachCommand([&](const CommandInfo& command, const Section& section) {
    Bytes request = client::SmallestRequest(command);
    for (const Example& example : section.examples) {
      if (!example.request.empty()) {
        request = example.request;
        ++requests;
        EXPECT_EQ(client::CommandOf(request), &command);
        EXPECT_TRUE(client::IsReadable(command, request)) << Hex(request);
        // Nothing is left over: a byte less cannot be read, or is no code.
        const client::Bytes shorter = client::Bytes(request).first(request.size() - 1);
        EXPECT_FALSE(client::CommandOf(shorter) != nullptr && client::IsReadable(command, shorter))
            << Hex(request);
      }
    }
    for (const Example& example : section.examples) {
      if (example.reply.empty()) continue;
      ++replies;
      const client::ReplyLayout layout = client::ExamineReply(request, example.reply);
      EXPECT_TRUE(layout.state == ReplyState::Complete || layout.state == ReplyState::MayGrow)
          << Hex(example.reply);
      EXPECT_EQ(layout.size, example.reply.size()) << Hex(example.reply);
    }
  });
  EXPECT_GE(requests, 25);
  EXPECT_GE(replies, 25);
}

}  // namespace
}  // namespace protocol_page
