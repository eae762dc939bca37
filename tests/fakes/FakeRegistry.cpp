#include "tests/fakes/FakeRegistry.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>
#include <vector>

#include "platform/WinTypes.h"
#include "registry/RegistryOperation.h"
#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/NotOurs.h"

namespace fake_registry {
namespace {

std::function<void()> g_hook;
std::function<void(const std::string&)> g_onChange;
std::function<void(std::uint32_t&, std::uint32_t&)> g_onRead;

std::vector<std::string> Elements(const std::string& path) {
  std::vector<std::string> elements;
  std::string element;
  for (const char c : path + "\\") {
    if (c != '\\') {
      element += c;
    } else {
      if (!element.empty()) elements.push_back(element);
      element.clear();
    }
  }
  return elements;
}

}  // namespace

std::string Fold(const std::string& name) {
  std::string folded = name;
  std::transform(folded.begin(), folded.end(), folded.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return folded;
}

Key& Root() {
  static Key root;
  return root;
}

Key* Find(const std::string& path) {
  Key* key = &Root();
  for (const std::string& element : Elements(path)) {
    const auto found = key->subkeys.find(Fold(element));
    if (found == key->subkeys.end()) return nullptr;
    key = &found->second;
  }
  return key;
}

Key& Create(const std::string& path) {
  Key* key = &Root();
  for (const std::string& element : Elements(path)) {
    Key& next = key->subkeys[Fold(element)];
    if (next.name.empty()) next.name = element;
    key = &next;
  }
  return *key;
}

void DeleteTree(const std::string& path) {
  std::vector<std::string> elements = Elements(path);
  if (elements.empty()) return;
  const std::string last = elements.back();
  elements.pop_back();
  std::string parent;
  for (const std::string& element : elements) parent += element + "\\";
  Key* const key = Find(parent);
  if (key != nullptr) key->subkeys.erase(Fold(last));
}

void OnCall(std::function<void()> hook) { g_hook = std::move(hook); }

void OnChange(std::function<void(const std::string&)> hook) { g_onChange = std::move(hook); }

void OnRead(std::function<void(std::uint32_t&, std::uint32_t&)> hook) {
  g_onRead = std::move(hook);
}

void Called() {
  if (g_hook) g_hook();
}

void Changes(const std::string& key) {
  if (g_onChange) g_onChange(key);
}

// What a primitive that reads answers.
std::uint32_t Answer(std::uint32_t result, std::uint32_t& length) {
  if (g_onRead) g_onRead(result, length);
  return result;
}

}  // namespace fake_registry

namespace {

using fake_registry::Answer;
using fake_registry::Called;
using fake_registry::Changes;
using fake_registry::Key;

bool IsText(std::uint32_t type) { return type == 1 || type == 2 || type == 7; }

bool Approve(const char* path, CanonicalPath& canonical) {
  return IsPermittedRegKey(path, canonical);
}

}  // namespace

// Resolves dot elements as the platform does, and takes at most 259 bytes.
bool CanonicalisePath(const char* path, CanonicalPath& canonical) {
  const NotOurs notOurs;
  if (fault_plan::Fails("CanonicalisePath")) return false;
  if (std::strlen(path) >= CanonicalPath::kCapacity) return false;
  std::vector<std::string> kept;
  bool wentAboveTheFirst = false;  // then the platform leaves a leading backslash
  std::string text = path;
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t end = text.find('\\', start);
    if (end == std::string::npos) end = text.size();
    const std::string element = text.substr(start, end - start);
    if (element == "..") {
      if (!kept.empty()) kept.pop_back();
      wentAboveTheFirst = wentAboveTheFirst || kept.empty();
    } else if (element != ".") {
      kept.push_back(element);
    }
    start = end + 1;
  }
  std::string joined = wentAboveTheFirst && !kept.empty() ? "\\" : "";
  for (std::size_t i = 0; i < kept.size(); ++i) joined += (i == 0 ? "" : "\\") + kept[i];
  if (joined.empty()) joined = "\\";
  std::memcpy(canonical.text, joined.c_str(), joined.size() + 1);
  return true;
}

std::uint32_t RegCreateKeyBL(const char* path) {
  const NotOurs notOurs;
  Called();
  if (const std::uint32_t code = fault_plan::CodeFor("RegCreateKeyBL")) return code;
  if (path == nullptr) return ERROR_INVALID_PARAMETER;
  CanonicalPath canonical;
  if (!Approve(path, canonical)) return ERROR_ACCESS_DENIED;
  Changes(canonical.text);
  fake_registry::Create(canonical.text);
  return ERROR_SUCCESS;
}

std::uint32_t RegDelKeyBL(const char* path) {
  const NotOurs notOurs;
  Called();
  if (const std::uint32_t code = fault_plan::CodeFor("RegDelKeyBL")) return code;
  if (path == nullptr) return ERROR_INVALID_PARAMETER;
  CanonicalPath canonical;
  if (!Approve(path, canonical)) return ERROR_ACCESS_DENIED;
  const std::string key = canonical.text;
  Changes(key);
  if (fake_registry::Find(key) == nullptr) return ERROR_FILE_NOT_FOUND;
  const std::string nested = key + "\\" + key;
  if (fake_registry::Find(nested) == nullptr) return ERROR_FILE_NOT_FOUND;
  fake_registry::DeleteTree(nested);
  return ERROR_SUCCESS;
}

std::uint32_t RegSetValueBL(const char* path, const char* name, const char* text) {
  const NotOurs notOurs;
  Called();
  if (const std::uint32_t code = fault_plan::CodeFor("RegSetValueBL")) return code;
  if (path == nullptr || name == nullptr || text == nullptr) return ERROR_INVALID_PARAMETER;
  CanonicalPath canonical;
  if (!Approve(path, canonical)) return ERROR_ACCESS_DENIED;
  Changes(canonical.text);
  Key* const key = fake_registry::Find(canonical.text);
  if (key == nullptr) return ERROR_FILE_NOT_FOUND;
  key->values[fake_registry::Fold(name)] = {name, 1, TextBytes(text) + Bytes{0}};
  return ERROR_SUCCESS;
}

std::uint32_t RegGetValueBL(const char* path, const char* name, void* buffer, std::uint32_t& size) {
  const NotOurs notOurs;
  Called();
  if (const std::uint32_t code = fault_plan::CodeFor("RegGetValueBL")) return code;
  if (path == nullptr || name == nullptr || buffer == nullptr || size == 0) {
    return ERROR_INVALID_PARAMETER;
  }
  Key* const key = fake_registry::Find(path);
  if (key == nullptr) return ERROR_FILE_NOT_FOUND;
  const auto found = key->values.find(fake_registry::Fold(name));
  if (found == key->values.end()) return ERROR_FILE_NOT_FOUND;

  Bytes data = found->second.data;
  if (IsText(found->second.type) && (data.empty() || data.back() != 0)) data.push_back(0);
  const std::uint32_t room = size;
  size = static_cast<std::uint32_t>(data.size());
  if (size > room) return Answer(ERROR_MORE_DATA, size);
  if (!data.empty()) std::memcpy(buffer, data.data(), data.size());
  return Answer(ERROR_SUCCESS, size);
}

std::uint32_t RegDelValueBL(const char* path, const char* name) {
  const NotOurs notOurs;
  Called();
  if (const std::uint32_t code = fault_plan::CodeFor("RegDelValueBL")) return code;
  if (path == nullptr || name == nullptr) return ERROR_INVALID_PARAMETER;
  CanonicalPath canonical;
  if (!Approve(path, canonical)) return ERROR_ACCESS_DENIED;
  Changes(canonical.text);
  Key* const key = fake_registry::Find(canonical.text);
  if (key == nullptr) return ERROR_FILE_NOT_FOUND;
  return key->values.erase(fake_registry::Fold(name)) != 0 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

std::uint32_t RegEnumKeyBL(const char* path, std::int32_t index, char* name,
                           std::uint32_t& length) {
  const NotOurs notOurs;
  Called();
  if (const std::uint32_t code = fault_plan::CodeFor("RegEnumKeyBL")) return code;
  if (path == nullptr || name == nullptr || index < 0 || length == 0) {
    return ERROR_INVALID_PARAMETER;
  }
  Key* const key = fake_registry::Find(path);
  if (key == nullptr) return ERROR_FILE_NOT_FOUND;
  if (static_cast<std::size_t>(index) >= key->subkeys.size()) return ERROR_NO_MORE_ITEMS;
  const std::string& found = std::next(key->subkeys.begin(), index)->second.name;
  if (found.size() >= length) return Answer(ERROR_MORE_DATA, length);
  std::memcpy(name, found.c_str(), found.size() + 1);
  length = static_cast<std::uint32_t>(found.size());
  return Answer(ERROR_SUCCESS, length);
}

std::uint32_t RegEnumValueBL(const char* path, std::int32_t index, char* name,
                             std::uint32_t& nameLength, void* data, std::uint32_t& dataLength) {
  const NotOurs notOurs;
  Called();
  if (const std::uint32_t code = fault_plan::CodeFor("RegEnumValueBL")) return code;
  if (path == nullptr || name == nullptr || data == nullptr || index < 0 || nameLength == 0 ||
      dataLength == 0) {
    return ERROR_INVALID_PARAMETER;
  }
  Key* const key = fake_registry::Find(path);
  if (key == nullptr) return ERROR_FILE_NOT_FOUND;
  if (static_cast<std::size_t>(index) >= key->values.size()) return ERROR_NO_MORE_ITEMS;
  const fake_registry::Value& value = std::next(key->values.begin(), index)->second;
  const std::uint32_t room = dataLength;
  dataLength = static_cast<std::uint32_t>(value.data.size());
  if (value.name.size() >= nameLength || dataLength > room)
    return Answer(Answer(ERROR_MORE_DATA, nameLength), dataLength);
  std::memcpy(name, value.name.c_str(), value.name.size() + 1);
  nameLength = static_cast<std::uint32_t>(value.name.size());
  if (!value.data.empty()) std::memcpy(data, value.data.data(), value.data.size());
  return Answer(Answer(ERROR_SUCCESS, nameLength), dataLength);
}

bool RegKeyExists(const char* path) {
  const NotOurs notOurs;
  Called();
  if (fault_plan::Fails("RegKeyExists")) return false;
  return fake_registry::Find(path) != nullptr;
}

std::uint32_t RegDeleteLiteralKey(const char* name) {
  const NotOurs notOurs;
  Called();
  if (const std::uint32_t code = fault_plan::CodeFor("RegDeleteLiteralKey")) return code;
  Changes(name);
  Key& root = fake_registry::Root();
  return root.subkeys.erase(fake_registry::Fold(name)) != 0 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

std::uint32_t RegQueryValueLeavingKeyOpen(const char* path, const char* name, void* buffer,
                                          std::uint32_t& size) {
  const NotOurs notOurs;
  Called();
  if (const std::uint32_t code = fault_plan::CodeFor("RegQueryValueLeavingKeyOpen")) return code;
  Key* const key = fake_registry::Find(path);
  if (key == nullptr) return ERROR_FILE_NOT_FOUND;
  const auto found = key->values.find(fake_registry::Fold(name));
  if (found == key->values.end()) return ERROR_FILE_NOT_FOUND;
  const Bytes& data = found->second.data;
  const std::uint32_t room = size;
  size = static_cast<std::uint32_t>(data.size());
  if (size > room) return Answer(ERROR_MORE_DATA, size);
  if (!data.empty()) std::memcpy(buffer, data.data(), data.size());
  return Answer(ERROR_SUCCESS, size);
}
