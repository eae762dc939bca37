#include "standins/script/CallScript.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "standins/script/SectionReader.h"

namespace standin {

namespace {

constexpr std::uint32_t kLongestDelay = 600000;  // milliseconds
constexpr std::size_t kLargestFile = 1 << 20;

void ReadAnswer(const ScriptSection& section, CallScript& script) {
  const auto* const row = std::find_if(kExports.begin(), kExports.end(), [&](const ExportRow& r) {
    return r.name == section.argument;
  });
  if (row == kExports.end()) {
    script.errors.push_back({section.line, "no export has the name " + Quote(section.argument)});
    return;
  }
  ScriptAnswer answer;
  answer.line = section.line;
  answer.which = static_cast<Export>(row - kExports.begin());

  SectionReader reader(section, script.errors);
  (void)reader.Required("call");
  reader.Calls("call", answer.first, answer.last)
      .Word("raise", kRaisedWords, answer.raised)
      .Number("result", answer.result)
      .Number("delay", answer.delay, kLongestDelay)
      .Number("last-error", answer.lastError);
  for (std::size_t index = 0; index < kMostOuts; ++index) {
    if (!row->outs[index].empty()) reader.Number(row->outs[index], answer.outs[index]);
  }
  reader.End();
  script.answers.push_back(answer);
}

void ReadLog(const ScriptSection& section, CallScript& script) {
  if (!section.argument.empty()) {
    script.errors.push_back({section.line, "this section has a name only"});
  }
  if (!script.logFile.empty()) {
    script.errors.push_back({section.line, "a second section [log]"});
  }
  SectionReader reader(section, script.errors);
  const std::string* const file = reader.Required("file");
  if (file != nullptr && file->empty()) reader.Complain("file", "the log's name is empty");
  if (file != nullptr) script.logFile = *file;
  reader.End();
}

CallScript Unreadable(const char* problem) {
  CallScript script;
  script.errors.push_back({0, problem});
  return script;
}

}  // namespace

const ScriptAnswer* CallScript::Find(Export which, std::uint32_t call) const {
  const auto found =
      std::find_if(answers.begin(), answers.end(), [&](const ScriptAnswer& candidate) {
        return candidate.which == which && candidate.first <= call && call <= candidate.last;
      });
  return found != answers.end() ? &*found : nullptr;
}

CallScript ParseScript(std::string_view text) {
  CallScript script;
  for (const ScriptSection& section : SplitSections(text, script.errors)) {
    if (section.name == "answer") {
      ReadAnswer(section, script);
    } else if (section.name == "log") {
      ReadLog(section, script);
    } else {
      script.errors.push_back({section.line, "no section has the name " + Quote(section.name)});
    }
  }
  if (!script.errors.empty()) script.answers.clear();
  return script;
}

CallScript LoadScript(const std::string& path) {
  struct Closer {
    void operator()(std::FILE* stream) const { (void)std::fclose(stream); }
  };
  const std::unique_ptr<std::FILE, Closer> stream(std::fopen(path.c_str(), "rb"));
  if (!stream) return Unreadable("the file cannot be opened");
  std::string text(kLargestFile + 1, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), stream.get()));
  if (std::ferror(stream.get()) != 0) return Unreadable("the file cannot be read");
  if (text.size() > kLargestFile) return Unreadable("the file is above 1 MiB");
  return ParseScript(text);
}

}  // namespace standin
