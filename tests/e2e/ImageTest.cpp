#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/e2e/ServerProcess.h"

namespace e2e {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsSubsetOf;
using testing::Not;
using testing::StartsWith;

// The program as a file, looked at without being run.
class ImageTest : public testing::Test {
 protected:
  void SetUp() override {
    std::ifstream stream(ServerProcess::Path(), std::ios::binary);
    file_.assign(std::istreambuf_iterator<char>(stream), {});
    const auto* const dos = At<IMAGE_DOS_HEADER>(0);
    ASSERT_NE(dos, nullptr);
    headers_ = At<IMAGE_NT_HEADERS32>(static_cast<std::size_t>(dos->e_lfanew));
    ASSERT_NE(headers_, nullptr);
    ASSERT_EQ(headers_->Signature, static_cast<DWORD>(IMAGE_NT_SIGNATURE));
  }

  template <typename T>
  const T* At(std::size_t offset) const {
    if (offset > file_.size() || file_.size() - offset < sizeof(T)) return nullptr;
    return reinterpret_cast<const T*>(file_.data() + offset);
  }

  // Where the byte that will stand at this address of the loaded image stands in the file.
  std::size_t FileOffset(DWORD address) const {
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers_);
    for (int i = 0; i < headers_->FileHeader.NumberOfSections; ++i, ++section) {
      if (address - section->VirtualAddress < section->SizeOfRawData) {
        return address - section->VirtualAddress + section->PointerToRawData;
      }
    }
    return file_.size();
  }

  const IMAGE_DATA_DIRECTORY& Directory(int index) const {
    return headers_->OptionalHeader.DataDirectory[index];
  }

  std::vector<std::string> ImportedLibraries() const {
    std::vector<std::string> names;
    std::size_t at = FileOffset(Directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
    for (const IMAGE_IMPORT_DESCRIPTOR* import = At<IMAGE_IMPORT_DESCRIPTOR>(at);
         import != nullptr && import->Name != 0; import = At<IMAGE_IMPORT_DESCRIPTOR>(at)) {
      std::string name = file_.c_str() + FileOffset(import->Name);
      std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
      names.push_back(name);
      at += sizeof(IMAGE_IMPORT_DESCRIPTOR);
    }
    return names;
  }

  std::string Resource(const char* name, const char* type) const {
    const HMODULE module =
        LoadLibraryExA(ServerProcess::Path().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    std::string bytes;
    if (const HRSRC found = FindResourceA(module, name, type)) {
      bytes.assign(static_cast<const char*>(LockResource(LoadResource(module, found))),
                   SizeofResource(module, found));
    }
    FreeLibrary(module);
    return bytes;
  }

  std::string file_;
  const IMAGE_NT_HEADERS32* headers_ = nullptr;
};

// The characters of a version resource as bytes.
std::string Wide(const std::string& text) {
  std::string wide;
  for (const char c : text) {
    wide += c;
    wide += '\0';
  }
  return wide;
}

TEST_F(ImageTest, ProgramIs32BitX86) {
  EXPECT_EQ(headers_->FileHeader.Machine, IMAGE_FILE_MACHINE_I386);
  EXPECT_EQ(headers_->OptionalHeader.Magic, IMAGE_NT_OPTIONAL_HDR32_MAGIC);
}

TEST_F(ImageTest, ProgramHasNoConsole) {
  EXPECT_EQ(headers_->OptionalHeader.Subsystem, IMAGE_SUBSYSTEM_WINDOWS_GUI);
}

TEST_F(ImageTest, ProgramRunsOnWindows7) {
  EXPECT_LE(headers_->OptionalHeader.MajorSubsystemVersion * 100 +
                headers_->OptionalHeader.MinorSubsystemVersion,
            601);
}

TEST_F(ImageTest, ImageIsMovedAboutAndItsDataIsNotExecuted) {
  const int hardened = IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE | IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
  EXPECT_EQ(headers_->OptionalHeader.DllCharacteristics & hardened, hardened);
  EXPECT_NE(Directory(IMAGE_DIRECTORY_ENTRY_BASERELOC).Size, 0u) << "it cannot be moved without";
  EXPECT_EQ(headers_->FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED, 0);
}

TEST_F(ImageTest, ProgramNeedsTheSystemsOwnLibrariesAndTheBoardLibraryOnly) {
  const std::vector<std::string> allowed = {"advapi32.dll", "boardsvc32.dll", "kernel32.dll",
                                            "msvcrt.dll",   "shlwapi.dll",    "user32.dll"};
  const std::vector<std::string> imported = ImportedLibraries();
  EXPECT_THAT(imported, IsSubsetOf(allowed));
  EXPECT_THAT(imported, Contains("boardsvc32.dll"));
  EXPECT_THAT(imported, Contains("kernel32.dll"));
}

TEST_F(ImageTest, ManifestAsksForNoMoreRightsThanItsStarterHas) {
  const std::string manifest = Resource(MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(24));
  EXPECT_THAT(manifest, HasSubstr("level=\"asInvoker\""));
  EXPECT_THAT(manifest, HasSubstr("uiAccess=\"false\""));
}

TEST_F(ImageTest, ManifestKnowsTheSystemsFromVistaOn) {
  const std::string manifest = Resource(MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(24));
  for (const char* const system :
       {"{e2011457-1546-43c5-a5fe-008deee3d3f0}", "{35138b9a-5d96-4fbd-8e2d-a2440225f93a}",
        "{4a2f28e3-53b9-4441-ba9c-d69d4a4a6e38}", "{1f676c76-80e1-4239-95bb-83d0f6d0da78}",
        "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"}) {
    EXPECT_THAT(manifest, HasSubstr("supportedOS Id=\"" + std::string(system) + "\""));
  }
}

TEST_F(ImageTest, ManifestLeavesPathsAndCodePageAlone) {
  const std::string manifest = Resource(MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(24));
  ASSERT_FALSE(manifest.empty());
  EXPECT_THAT(manifest, Not(HasSubstr("longPathAware")));
  EXPECT_THAT(manifest, Not(HasSubstr("activeCodePage")));
}

TEST_F(ImageTest, VersionResourceNamesTheProgram) {
  const std::string version = Resource(MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(16));
  EXPECT_THAT(version, HasSubstr(Wide("VS_VERSION_INFO")));
  EXPECT_THAT(version, HasSubstr(Wide("FileVersion")));
  EXPECT_THAT(version, HasSubstr(Wide("QorlixSRV.exe")));
}

// What the event viewer makes of an event of this number and these texts.
std::string EventText(DWORD id, const char* first, const char* second) {
  const HMODULE module =
      LoadLibraryExA(ServerProcess::Path().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  DWORD_PTR texts[] = {reinterpret_cast<DWORD_PTR>(first), reinterpret_cast<DWORD_PTR>(second)};
  char text[512] = "";
  const DWORD length =
      FormatMessageA(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, module, id,
                     /*dwLanguageId=*/0, text, sizeof(text), reinterpret_cast<va_list*>(texts));
  FreeLibrary(module);
  return std::string(text, length);
}

TEST_F(ImageTest, ProgramHasTheTextsOfItsEvents) {
  EXPECT_THAT(EventText(0, "Invalid Access to Reg-Key: X", ""),
              StartsWith("Invalid Access to Reg-Key: X"));
  EXPECT_THAT(EventText(0xC0001400, "C:\\engine.dll", ""), HasSubstr("loaded: C:\\engine.dll"));
  EXPECT_THAT(EventText(0xC0001401, "ZqOpen", ""), HasSubstr("lacks the function ZqOpen."));
  EXPECT_THAT(EventText(0x80001402, "ZqWrite", "a line"),
              AllOf(HasSubstr("function ZqWrite of"), HasSubstr("The line was: a line")));
  EXPECT_THAT(EventText(1, "", ""), StartsWith("Trace")) << "the category of the trace's events";
}

}  // namespace
}  // namespace e2e
