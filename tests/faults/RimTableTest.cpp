#include "tests/faults/RimTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>

// A function of the rim that nobody has listed would never be seen to fail. So the headers are
// read.

namespace {

using rim_table::Functions;

std::string ReadSource(const std::string& path) {
  std::ifstream file(std::string(QORLIX_SOURCE_DIR) + "/" + path);
  EXPECT_TRUE(file.is_open()) << path;
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

std::string WithoutCommentsAndDirectives(const std::string& text) {
  static const std::regex noise("//[^\n]*|/\\*[^]*?\\*/|(^|\n)[ \t]*#[^\n]*");
  return std::regex_replace(text, noise, "\n");
}

// Names of the functions that a header declares. Those that it defines itself have no file behind
// them.
std::set<std::string> Declared(const std::string& header) {
  static const std::regex declaration(
      "(~?[A-Za-z_]\\w*)\\s*\\(([^;{}]*)\\)\\s*(const)?\\s*(noexcept)?\\s*(= 0\\s*)?;");
  const std::string text = WithoutCommentsAndDirectives(ReadSource(header));
  // Statements end declarations, and so do the braces of what is defined here.
  static const std::regex body("\\)\\s*(const)?\\s*(noexcept)?\\s*\\{[^{}]*\\}");
  const std::string bare = std::regex_replace(text, body, ") {}\n");
  std::set<std::string> names;
  for (std::sregex_iterator match(bare.begin(), bare.end(), declaration), end; match != end;
       ++match) {
    if ((*match)[1] != "void") names.insert((*match)[1]);  // of a type, not of a function
  }
  return names;
}

std::set<std::string> Headers() {
  std::set<std::string> headers;
  for (const auto& function : Functions()) {
    if (*function.header != '\0') headers.insert(function.header);
  }
  return headers;
}

std::set<std::string> Listed(const std::string& header) {
  std::set<std::string> names;
  for (const auto& function : Functions()) {
    const std::string name = function.name;
    const std::size_t colon = name.rfind(':');
    if (header != function.header) continue;
    names.insert(colon == std::string::npos ? name : name.substr(colon + 1));
  }
  return names;
}

TEST(RimTableTest, EveryFunctionThatAHeaderDeclaresIsListed) {
  for (const std::string& header : Headers()) {
    const std::set<std::string> listed = Listed(header);
    for (const std::string& name : Declared(header)) {
      EXPECT_TRUE(listed.count(name) != 0) << name << " of " << header << " is not in the table";
    }
  }
}

TEST(RimTableTest, EveryListedFunctionIsInItsHeader) {
  for (const std::string& header : Headers()) {
    const std::string text = WithoutCommentsAndDirectives(ReadSource(header));
    for (const std::string& name : Listed(header)) {
      EXPECT_NE(text.find(name + "("), std::string::npos) << name << " is not in " << header;
    }
  }
}

TEST(RimTableTest, EveryFileThatCallsThePlatformStandsBehindAHeaderOfTheTable) {
  std::set<std::string> known = Headers();
  known.insert(rim_table::NotNative().begin(), rim_table::NotNative().end());
  std::set<std::string> files;
  for (const auto& file : rim_table::PlatformFiles()) {
    files.insert(file.file);
    EXPECT_TRUE(known.count(file.header) != 0) << file.header;
  }
  for (const char* const folder : {"actions", "board", "codec", "maintenance", "platform",
                                   "registry", "server", "timer", "trace"}) {
    std::istringstream lines(ReadSource(std::string(folder) + "/CMakeLists.txt"));
    // The entry, in another list, is the one that all of this belongs to.
    bool inList = false;
    for (std::string word; lines >> word;) {
      const bool isFile = word.find(".cpp") != std::string::npos;
      if (word == "if(WIN32)") break;
      if (!isFile) inList = word == "WIN32";
      if (!isFile || !inList) continue;
      const std::string file = std::string(folder) + "/" + word.substr(0, word.find(')'));
      EXPECT_TRUE(files.count(file) != 0) << file << " has no header in the table";
    }
  }
}

TEST(RimTableTest, WhatCannotFailSaysWhyAndWhatCanSaysHow) {
  for (const auto& function : Functions()) {
    EXPECT_NE(function.failures.empty(), *function.why == '\0') << function.name;
  }
}

}  // namespace
