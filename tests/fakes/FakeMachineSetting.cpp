#include "tests/fakes/FakeMachineSetting.h"

#include <cstring>
#include <map>

namespace fake_machine_setting {
namespace {

std::map<std::string, std::string> g_texts;
std::map<std::string, std::uint32_t> g_numbers;

}  // namespace

void Reset() {
  g_texts.clear();
  g_numbers.clear();
}

void SetText(const std::string& name, const std::string& text) { g_texts[name] = text; }

void SetNumber(const std::string& name, std::uint32_t number) { g_numbers[name] = number; }

}  // namespace fake_machine_setting

namespace platform {

bool ReadMachineText(const char* name, char* text, std::size_t capacity) {
  const auto found = fake_machine_setting::g_texts.find(name);
  if (found == fake_machine_setting::g_texts.end() || found->second.size() >= capacity) {
    if (capacity != 0) text[0] = '\0';
    return false;
  }
  std::memcpy(text, found->second.c_str(), found->second.size() + 1);
  return true;
}

bool ReadMachineNumber(const char* name, std::uint32_t& value) {
  const auto found = fake_machine_setting::g_numbers.find(name);
  if (found == fake_machine_setting::g_numbers.end()) return false;
  value = found->second;
  return true;
}

}  // namespace platform
