#include "fuzz/ProtocolDictionary.h"

#include <cstdint>
#include <cstdio>
#include <span>

#include "client/CommandInfo.h"
#include "fuzz/Sections.h"
#include "server/SrvResult.h"

namespace {

std::string Entry(const std::string& name, std::span<const std::uint8_t> bytes) {
  std::string line = name + "=\"";
  for (const std::uint8_t byte : bytes) {
    char escape[8];
    (void)std::snprintf(escape, sizeof(escape), "\\x%02x", byte);
    line += escape;
  }
  return line + "\"\n";
}

std::string LongEntry(const std::string& name, std::uint32_t number) {
  const std::uint8_t bytes[] = {
      static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(number >> 8),
      static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 24)};
  return Entry(name, bytes);
}

}  // namespace

std::string ProtocolDictionary() {
  std::string text =
      "# What a fuzzer cannot guess of requests and replies.\n"
      "# Made by MakeDictionary from the client's description of the commands.\n"
      "\n"
      "# The shortest request of each command that can be read; it begins with the code.\n";
  for (const client::CommandInfo& command : client::Commands()) {
    text += Entry(command.name, client::SmallestRequest(command));
  }
  text += "\n# Lengths of texts and buffers at which something changes.\n";
  const struct {
    const char* name;
    std::uint32_t length;
  } kLengths[] = {{"absent", kAbsentLength}, {"path_full", 259},        {"path_over", 260},
                  {"registry_full", 8159},   {"registry_over", 8160},   {"room", 8192},
                  {"sign", 0x80000000},      {"most_text", 0xFFFFFFFE}, {"all_bits", 0xFFFFFFFF}};
  for (const auto& length : kLengths) text += LongEntry(length.name, length.length);
  text += "\n# The head of a reply, by its result.\n";
  const struct {
    const char* name;
    SrvResult result;
  } kResults[] = {{"reply_ok", SRV_OK},
                  {"reply_overflow", BUFFER_OVERFLOW},
                  {"reply_exception", SRV_ERR_EXCEPTION_OCCURED},
                  {"reply_unknown", SRV_ERR_UNKNOWN_COMMAND}};
  for (const auto& known : kResults) {
    std::uint8_t head[6] = {REPLY_MARK & 0xFF, REPLY_MARK >> 8};
    for (int i = 0; i < 4; ++i) head[2 + i] = static_cast<std::uint8_t>(known.result >> (8 * i));
    text += Entry(known.name, head);
  }
  text += "\n# Between the parts of an input that has several.\n";
  text += Entry("next_part", sections::kMark);
  text +=
      "\n# What keys are made of.\n"
      "tree=\"SOFTWARE\\\\Vesmark\\\\NORVA\"\n"
      "tree_of_64_bit=\"SOFTWARE\\\\Wow6432Node\\\\Vesmark\\\\NORVA\"\n"
      "up=\"\\\\..\"\n"
      "here=\"\\\\.\"\n";
  return text;
}
