#ifndef TESTS_SUPPORT_MINIDUMP_H_
#define TESTS_SUPPORT_MINIDUMP_H_

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

/// What a minidump says of an exception, read off its bytes.
struct MinidumpException {
  std::uint32_t thread;
  std::uint32_t code;
  std::uint64_t address;
  std::uint32_t threads;  ///< in the dump
  std::uint32_t modules;
  std::uint64_t stackPointer;     ///< of the exception's thread
  bool hasItsStack;               ///< the memory it points to is in the dump
  std::uint32_t threadsWithCode;  ///< of which the next instruction is in the dump
  bool memoryIsThereTwice;        ///< two ranges of it overlap
};

namespace minidump {

/// The 32-bit number at a place; nothing behind the end.
inline std::optional<std::uint32_t> At(const std::string& file, std::size_t offset) {
  std::uint32_t value = 0;
  if (offset > file.size() || file.size() - offset < sizeof(value)) return std::nullopt;
  std::memcpy(&value, file.data() + offset, sizeof(value));
  return value;
}

/// Where the stream of this type lies, of which at least `size` bytes are in the file.
inline std::optional<std::size_t> Stream(const std::string& file, std::uint32_t type,
                                         std::size_t size) {
  const std::size_t count = At(file, 8).value_or(0);
  const std::size_t directory = At(file, 12).value_or(0);
  for (std::size_t i = 0; i < count; ++i) {
    if (At(file, directory + 12 * i) != type) continue;
    const auto offset = At(file, directory + 12 * i + 8);
    if (!offset || *offset > file.size() || file.size() - *offset < size) return std::nullopt;
    return *offset;
  }
  return std::nullopt;
}

/// A range of memory that the file has.
struct Range {
  std::uint64_t start;
  std::uint64_t end;
};

/// All of them, as the list at this place says.
inline std::vector<Range> Ranges(const std::string& file, std::size_t list) {
  std::vector<Range> ranges;
  for (std::size_t i = 0; i < At(file, list).value_or(0); ++i) {
    const std::size_t one = list + 4 + 16 * i;
    const std::uint64_t start = At(file, one).value_or(0);
    const std::size_t size = At(file, one + 8).value_or(0);
    const std::size_t at = At(file, one + 12).value_or(0);
    if (at <= file.size() && file.size() - at >= size) ranges.push_back({start, start + size});
  }
  return ranges;
}

inline bool Overlap(const std::vector<Range>& ranges) {
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (ranges[i].start < ranges[j].end && ranges[j].start < ranges[i].end) return true;
    }
  }
  return false;
}

}  // namespace minidump

/// \returns nothing when the file is no minidump with an exception, its threads and its modules.
inline std::optional<MinidumpException> ReadMinidump(const std::string& file) {
  constexpr std::uint32_t kThreads = 3;
  constexpr std::uint32_t kModules = 4;
  constexpr std::uint32_t kMemory = 5;
  constexpr std::uint32_t kException = 6;
  constexpr std::size_t kThreadSize = 48;
  constexpr std::size_t kInstruction = 184;  // in the registers of 32-bit x86
  constexpr std::size_t kStackPointer = 196;
  if (file.substr(0, 4) != "MDMP") return std::nullopt;
  const auto threads = minidump::Stream(file, kThreads, 4);
  const auto modules = minidump::Stream(file, kModules, 4);
  const auto exception = minidump::Stream(file, kException, 168);
  if (!threads || !modules || !exception) return std::nullopt;
  MinidumpException found = {};
  found.thread = *minidump::At(file, *exception);
  found.code = *minidump::At(file, *exception + 8);
  std::memcpy(&found.address, file.data() + *exception + 24, sizeof(found.address));
  found.threads = *minidump::At(file, *threads);
  found.modules = *minidump::At(file, *modules);
  const std::size_t registers = minidump::At(file, *exception + 164).value_or(0);
  found.stackPointer = minidump::At(file, registers + kStackPointer).value_or(0);
  const std::size_t memory = minidump::Stream(file, kMemory, 4).value_or(file.size());
  const std::vector<minidump::Range> ranges = minidump::Ranges(file, memory);
  found.memoryIsThereTwice = minidump::Overlap(ranges);
  for (const minidump::Range& range : ranges) {
    if (range.start == found.stackPointer && range.end != range.start) found.hasItsStack = true;
  }
  for (std::size_t i = 0; i < found.threads; ++i) {
    const std::size_t of = minidump::At(file, *threads + 4 + kThreadSize * i + 44).value_or(0);
    const std::uint32_t instruction = minidump::At(file, of + kInstruction).value_or(0);
    found.threadsWithCode += std::any_of(ranges.begin(), ranges.end(), [=](const auto& range) {
      return range.start <= instruction && instruction < range.end;
    });
  }
  return found;
}

#endif  // TESTS_SUPPORT_MINIDUMP_H_
