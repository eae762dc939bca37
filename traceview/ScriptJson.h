#ifndef TRACEVIEW_SCRIPTJSON_H_
#define TRACEVIEW_SCRIPTJSON_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace traceview {

/// Writes JSON that can stand inside a script element: no text in it can end the element or open a
/// comment there, because `<`, `>` and `&` only occur as escapes.
///
/// Texts are UTF-8; bytes that are not pass through, and a browser shows a replacement for them.
class ScriptJson {
 public:
  ScriptJson& Open(char bracket);   ///< '{' or '['
  ScriptJson& Close(char bracket);  ///< '}' or ']'
  ScriptJson& Name(std::string_view name);
  ScriptJson& Text(std::string_view utf8);
  ScriptJson& Number(std::int64_t number);

  std::string& Written() { return written_; }

 private:
  void Separate();
  void AddQuoted(std::string_view utf8);

  std::string written_;
  bool first_ = true;
};

}  // namespace traceview

#endif  // TRACEVIEW_SCRIPTJSON_H_
