#include "standins/boardsvc32/FaultScript.h"

#include <algorithm>
#include <utility>

namespace boardsim {

namespace {

constexpr std::uint32_t kLongestDelay = 600000;  // milliseconds

constexpr std::array<std::pair<std::string_view, Fill>, 2> kFills{{
    {"unterminated", Fill::kUnterminated},
    {"capacity", Fill::kCapacity},
}};

template <typename Table, typename Value>
void ReadWord(SectionReader& reader, std::string_view key, const Table& table, Value& value) {
  const std::string* const word = reader.Value(key);
  if (word == nullptr) return;
  std::string known;
  for (const auto& [name, meaning] : table) {
    if (*word == name) {
      value = meaning;
      return;
    }
    known += (known.empty() ? "" : ", ") + std::string(name);
  }
  reader.Complain(key, "one of these is wanted: " + known);
}

// "*", "3" or "3-5".
bool ReadCalls(std::string_view text, Fault& fault) {
  if (text == "*") return true;
  const std::size_t hyphen = text.find('-');
  const auto first = ReadNumber(TrimBlanks(text.substr(0, hyphen)));
  const auto last =
      hyphen == std::string_view::npos ? first : ReadNumber(TrimBlanks(text.substr(hyphen + 1)));
  if (!first || !last || *first == 0 || *last < *first) return false;
  fault.first = *first;
  fault.last = *last;
  return true;
}

// One number for all lengths, or one word for each: a number, or "-" for the one that is true.
bool ReadLengths(std::string_view text, std::size_t count, Fault& fault) {
  for (text = TrimBlanks(text); !text.empty(); text = TrimBlanks(text)) {
    const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
    const std::string_view word = text.substr(0, end);
    const auto number = ReadNumber(word);
    if (!number && word != "-") return false;
    fault.lengths.push_back(number);
    text.remove_prefix(end);
  }
  if (fault.lengths.size() == 1) fault.lengths.resize(count, fault.lengths[0]);
  return count != 0 && fault.lengths.size() == count;
}

}  // namespace

Fault ReadFault(const InventorySection& section, std::vector<InventoryError>& errors) {
  SectionReader reader(section, errors);
  Fault fault;
  fault.line = section.line;
  const auto* const row = std::find_if(kOperations.begin(), kOperations.end(),
                                       [&](const auto& r) { return r.name == section.argument; });
  if (row == kOperations.end()) {
    errors.push_back({section.line, "no operation has the name " + Quote(section.argument)});
    return fault;
  }
  fault.operation = static_cast<Operation>(row - kOperations.begin());

  const std::string* const calls = reader.Required("call").Value("call");
  if (calls != nullptr && !ReadCalls(*calls, fault)) {
    reader.Complain("call", "calls are * or 3 or 3-5, counted from 1");
  }
  const std::string* const lengths = reader.Value("length");
  if (lengths != nullptr && !ReadLengths(*lengths, row->lengths, fault)) {
    reader.Complain("length", "one number, or " + std::to_string(row->lengths) +
                                  " of number or -, are the lengths of this operation");
  }
  ReadWord(reader, "raise", standin::kRaisedWords, fault.raised);
  ReadWord(reader, "fill", kFills, fault.fill);
  reader.Number("result", fault.result).Number("delay", fault.delay, kLongestDelay).End();
  return fault;
}

const Fault* FaultScript::NextCall(Operation operation) {
  const std::uint32_t call = ++calls_[static_cast<std::size_t>(operation)];
  const auto fault = std::find_if(faults_.begin(), faults_.end(), [&](const Fault& candidate) {
    return candidate.operation == operation && candidate.first <= call && call <= candidate.last;
  });
  return fault != faults_.end() ? &*fault : nullptr;
}

}  // namespace boardsim
