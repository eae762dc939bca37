#include "trace/TraceRotation.h"

#include "trace/TraceConfig.h"
#include "trace/TraceOutputs.h"
#include "trace/TraceText.h"

namespace zqotrc {
namespace {

constexpr int Other(int index) { return 3 - index; }

class FileName {
 public:
  FileName(const char* prefix, int index) {
    CutText(name_).Add(prefix).AddDecimal(index, /*width=*/1).Add(".TRC");
  }
  const char* get() const { return name_; }

 private:
  char name_[kPrefixSize + sizeof("1.TRC")];
};

/// A line as it stands in a file: in text mode, every line feed becomes two characters.
class FileLine {
 public:
  explicit FileLine(std::string_view line) {
    CutText out(bytes_);
    for (const char letter : line.substr(0, kLineBufferSize)) {
      if (letter == '\n') out.Add('\r');
      out.Add(letter);
    }
    view_ = out.Add("\r\n").view();
  }
  std::string_view bytes() const { return view_; }

 private:
  char bytes_[2 * kLineBufferSize + sizeof("\r\n")];
  std::string_view view_;
};

}  // namespace

int ChooseFile(std::optional<std::uint64_t> firstWritten,
               std::optional<std::uint64_t> secondWritten) {
  return secondWritten.has_value() && (!firstWritten.has_value() || *secondWritten > *firstWritten)
             ? 2
             : 1;
}

void FilePair::Choose(const char* prefix) {
  current_ = ChooseFile(ModificationTime(FileName(prefix, 1).get()),
                        ModificationTime(FileName(prefix, 2).get()));
}

void FilePair::Append(const char* prefix, std::uint32_t limit, std::string_view line) {
  const auto isAbove = [limit](std::optional<std::uint64_t> size) {
    return size.has_value() && *size > limit;
  };

  AppendFile file;
  std::optional<std::uint64_t> size = file.Open(FileName(prefix, current_).get());
  if (isAbove(size)) {
    current_ = Other(current_);
    const FileName name(prefix, current_);
    size = file.Open(name.get());
    if (isAbove(size)) {
      file.Close();
      RemoveFile(name.get());
      size = file.Open(name.get());
    }
  }
  if (!size.has_value()) return;

  file.Append(FileLine(line).bytes());
  if (!isAbove(file.Size())) return;

  // The other file is made room in at once, so that a reader of the pair sees where lines go on.
  current_ = Other(current_);
  const FileName name(prefix, current_);
  size = file.Open(name.get());
  file.Close();
  if (isAbove(size)) RemoveFile(name.get());
}

}  // namespace zqotrc
