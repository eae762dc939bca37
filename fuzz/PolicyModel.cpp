#include "fuzz/PolicyModel.h"

#include <cstddef>
#include <vector>

namespace policy_model {
namespace {

std::vector<std::string> NamesOf(const std::string& path) {
  std::vector<std::string> names(1);
  for (const char c : path) {
    if (c == '\\') {
      names.emplace_back();
    } else {
      names.back() += c;
    }
  }
  return names;
}

bool IsAscii(char c, char capital) { return c == capital || c == capital - 'A' + 'a'; }

// Whether a name is this word of capitals and digits, or begins with it.
bool Is(const std::string& name, const std::string& word, bool mayGoOn) {
  if (name.size() < word.size() || (!mayGoOn && name.size() != word.size())) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    const bool isLetter = word[i] >= 'A' && word[i] <= 'Z';
    if (isLetter ? !IsAscii(name[i], word[i]) : name[i] != word[i]) return false;
  }
  return true;
}

}  // namespace

std::optional<std::string> Walk(const std::string& path) {
  if (path.size() > 259) return std::nullopt;
  std::vector<std::string> keys;
  bool isAboveTheFirst = false;
  for (const std::string& name : NamesOf(path)) {
    if (name == ".") continue;
    if (name != "..") {
      keys.push_back(name);
    } else {
      if (!keys.empty()) keys.pop_back();
      if (keys.empty()) isAboveTheFirst = true;
    }
  }
  // What is left behind a walk above the first key begins with a backslash, and no tree does.
  if (isAboveTheFirst) return std::nullopt;
  std::string walked;
  for (std::size_t i = 0; i < keys.size(); ++i) walked += (i == 0 ? "" : "\\") + keys[i];
  return walked;
}

bool IsInside(const std::string& key) {
  const std::vector<std::string> names = NamesOf(key);
  for (const std::string& name : names) {
    if (name == "." || name == "..") return false;
  }
  std::size_t at = 0;
  const auto next = [&](const char* word, bool mayGoOn) {
    if (at >= names.size() || !Is(names[at], word, mayGoOn)) return false;
    ++at;
    return true;
  };
  if (!next("SOFTWARE", /*mayGoOn=*/false)) return false;
  (void)next("WOW6432NODE", /*mayGoOn=*/false);
  // Whatever begins like the tree counts as the tree.
  return next("VESMARK", /*mayGoOn=*/false) && next("NORVA", /*mayGoOn=*/true);
}

}  // namespace policy_model
