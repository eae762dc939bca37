#include "traceview/ScriptJson.h"

#include <gtest/gtest.h>

#include <string>

namespace traceview {
namespace {

std::string Quoted(std::string_view text) {
  ScriptJson json;
  json.Text(text);
  return json.Written();
}

TEST(ScriptJsonTest, NothingCanEndTheElementOrOpenAComment) {
  EXPECT_EQ(Quoted("</script><!--&"), R"("\u003c/script\u003e\u003c!--\u0026")");
}

TEST(ScriptJsonTest, NothingCanEndTheText) {
  EXPECT_EQ(Quoted("\"\\"), R"("\u0022\u005c")");
  EXPECT_EQ(Quoted(std::string("\0\n\x1f\x7f", 4)), R"("\u0000\u000a\u001f\u007f")");
}

TEST(ScriptJsonTest, OtherBytesPassThrough) { EXPECT_EQ(Quoted("a\xC3\xA4/'"), "\"a\xC3\xA4/'\""); }

TEST(ScriptJsonTest, ValuesArePartedByCommas) {
  ScriptJson json;
  json.Open('{').Name("a").Open('[').Number(-1).Number(2).Close(']').Name("b").Open('[').Close(']');
  json.Name("c").Text("").Close('}');
  EXPECT_EQ(json.Written(), R"({"a":[-1,2],"b":[],"c":""})");
}

}  // namespace
}  // namespace traceview
