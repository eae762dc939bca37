#include "tests/fakes/FakeSystemPath.h"

#include <cstring>
#include <vector>

#include "platform/SystemPath.h"
#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/NotOurs.h"

namespace {

std::string g_systemDirectory = "C:\\windows\\system32";
std::string g_specialFolder;

}  // namespace

void fake_system_path::Reset() {
  g_systemDirectory = "C:\\windows\\system32";
  g_specialFolder.clear();
}

void fake_system_path::SetSystemDirectory(const std::string& directory) {
  g_systemDirectory = directory;
}

void fake_system_path::SetSpecialFolder(const std::string& folder) { g_specialFolder = folder; }

std::uint32_t platform::SystemDirectory(PathBuffer& path) {
  if (const std::uint32_t code = fault_plan::CodeFor("platform::SystemDirectory")) {
    return code == fault_plan::kNothing ? 0 : code;
  }
  const auto size = static_cast<std::uint32_t>(g_systemDirectory.size());
  if (size >= sizeof(path)) return size + 1;
  std::memcpy(path, g_systemDirectory.c_str(), size + 1);
  return size;
}

bool platform::SpecialFolder(int, PathBuffer& path) {
  path[0] = '\0';
  if (fault_plan::Fails("platform::SpecialFolder")) return false;
  return !g_specialFolder.empty() && AppendToPath(path, g_specialFolder.c_str()) == 0;
}

bool platform::FullPath(const char* path, PathBuffer& full) {
  full[0] = '\0';
  std::vector<std::string> kept;
  std::string element;
  for (const char* at = path;; ++at) {
    if (*at != '\\' && *at != '/' && *at != '\0') {
      element += *at;
      continue;
    }
    if (element == "..") {
      if (kept.size() > 1) kept.pop_back();  // the drive stays
    } else if (!element.empty() && element != ".") {
      kept.push_back(element);
    }
    element.clear();
    if (*at == '\0') break;
  }
  if (!kept.empty() && kept.back() == "nul") return AppendToPath(full, "\\\\.\\nul") == 0;
  for (const std::string& each : kept) {
    if (full[0] != '\0' && AppendToPath(full, "\\") != 0) return false;
    if (AppendToPath(full, each.c_str()) != 0) return false;
  }
  return true;
}
