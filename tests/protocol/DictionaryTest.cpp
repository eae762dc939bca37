#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/ProtocolDictionary.h"

namespace {

TEST(DictionaryTest, TheFuzzersDictionaryIsThatOfTheCommands) {
  std::ifstream stream(QORLIX_SOURCE_DIR "/fuzz/protocol.dict", std::ios::binary);
  ASSERT_TRUE(stream.is_open());
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  EXPECT_EQ(text, ProtocolDictionary())
      << "bring it up to date: MakeDictionary > fuzz/protocol.dict";
}

TEST(DictionaryTest, EveryEntryIsShortEnoughForAFuzzerToTake) {
  constexpr std::size_t kMost = 64;
  constexpr std::size_t kEscape = 4;  // \x00
  const std::string text = ProtocolDictionary();
  for (std::size_t at = text.find('"'); at != std::string::npos; at = text.find('"', at)) {
    const std::size_t end = text.find('"', at + 1);
    ASSERT_NE(end, std::string::npos);
    EXPECT_LE((end - at - 1) / kEscape, kMost) << text.substr(at, end - at);
    at = end + 1;
  }
}

}  // namespace
