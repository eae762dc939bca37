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

  reader.Required("call").Calls("call", fault.first, fault.last);
  const std::string* const lengths = reader.Value("length");
  if (lengths != nullptr && !ReadLengths(*lengths, row->lengths, fault)) {
    reader.Complain("length", "one number, or " + std::to_string(row->lengths) +
                                  " of number or -, are the lengths of this operation");
  }
  reader.Word("raise", standin::kRaisedWords, fault.raised).Word("fill", kFills, fault.fill);
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
