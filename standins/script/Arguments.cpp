#include "standins/script/Arguments.h"

#include <cstring>

namespace standin {

namespace {

// No caller lends a longer text; one without an end is cut here.
constexpr std::size_t kMostText = 8192;

void Append(std::string& list, const std::string& entry) {
  if (!list.empty()) list += ' ';
  list += entry;
}

std::string FormatText(const char* text) {
  return text == nullptr ? "(null)" : Quote({text, strnlen(text, kMostText)});
}

}  // namespace

Arguments& Arguments::Add(const Argument& argument) {
  if (count_ < kMost) list_[count_++] = argument;
  return *this;
}

Arguments& Arguments::Text(const char* name, const char* text) {
  return Add({Kind::kText, name, text, 0, nullptr});
}

Arguments& Arguments::Number(const char* name, std::uint32_t number) {
  return Add({Kind::kNumber, name, nullptr, number, nullptr});
}

Arguments& Arguments::Out(const char* name, std::uint32_t* word) {
  return Add({Kind::kOut, name, nullptr, 0, word});
}

void Arguments::Deliver(const ScriptAnswer& answer) const {
  std::size_t out = 0;
  for (std::size_t index = 0; index < count_; ++index) {
    const Argument& argument = list_[index];
    if (argument.kind != Kind::kOut || out == kMostOuts) continue;
    const auto& value = answer.outs[out++];
    if (value && argument.word != nullptr) *argument.word = *value;
  }
}

std::string Arguments::In() const {
  std::string list;
  for (std::size_t index = 0; index < count_; ++index) {
    const Argument& argument = list_[index];
    const std::string name = std::string(argument.name) + '=';
    if (argument.kind == Kind::kText) Append(list, name + FormatText(argument.text));
    if (argument.kind == Kind::kNumber) Append(list, name + std::to_string(argument.number));
    if (argument.kind == Kind::kOut && argument.word == nullptr) Append(list, name + "(null)");
  }
  return list;
}

std::string Arguments::Outs() const {
  std::string list;
  for (std::size_t index = 0; index < count_; ++index) {
    const Argument& argument = list_[index];
    if (argument.kind != Kind::kOut || argument.word == nullptr) continue;
    Append(list, std::string(argument.name) + '=' + std::to_string(*argument.word));
  }
  return list;
}

}  // namespace standin
