#include "tests/hostile/Surroundings.h"

#include <windows.h>

#include <fstream>
#include <iterator>

#include "standins/boardsvc32/Operation.h"
#include "standins/boardsvc32/testing/SamplePath.h"

namespace hostile {
namespace {

// Which calls of an operation go wrong, until every fault was there. Not many more: the system
// looks at every block of the heap at every call of it, those of the faults included.
constexpr std::size_t kEvery = 2;

// The sample without the log, which would be written for every call.
std::string Sample() {
  std::ifstream file(SamplePath("two-boards.ini"), std::ios::binary);
  std::string text(std::istreambuf_iterator<char>(file), {});
  const std::size_t log = text.find("[log]");
  EXPECT_NE(log, std::string::npos) << "the sample inventory is missing, or is another one";
  if (log != std::string::npos) text.erase(log, text.find('[', log + 1) - log);
  return text;
}

// \param turn with which kind it begins, so that a short life meets all kinds somewhere
std::string Faults(const std::string& section, const std::vector<std::string>& kinds,
                   std::size_t turn = 0) {
  std::string text;
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    text += "[" + section + "]\ncall = " + std::to_string((i + 1) * kEvery) + "\n" +
            kinds[(turn + i) % kinds.size()] + "\n";
  }
  return text;
}

std::string BoardFaults() {
  // None of the server's own codes: what stands behind one, its handlers decide, and no client
  // knows that a library has said it.
  const std::vector<std::string> plain = {"result = 31",          "raise = access-violation",
                                          "raise = cxx",          "raise = divide-by-zero",
                                          "raise = int-overflow", "result = 234",
                                          "result = 0",           "raise = stack-overflow",
                                          "result = 0xFFFFFFFF"};
  std::vector<std::string> lying = plain;
  for (const char* const length :
       {"0", "1", "8159", "8160", "8161", "8191", "8192", "8193", "65535", "0x7FFFFFFF",
        "0x80000000", "0xFFFFFFFE", "0xFFFFFFFF"}) {
    lying.push_back(std::string("length = ") + length);
  }
  lying.insert(lying.end(), {"fill = unterminated", "fill = capacity"});
  std::string text;
  for (const auto& row : boardsim::kOperations) {
    // The detection runs once, at the start.
    if (row.name == "StartHardwareDetection") continue;
    const auto turn = static_cast<std::size_t>(&row - boardsim::kOperations.data());
    text += Faults("fault " + std::string(row.name), row.lengths != 0 ? lying : plain, turn);
  }
  return text;
}

std::string LibraryFaults() {
  const std::vector<std::string> kinds = {"result = 10006", "raise = access-violation",
                                          "result = 1168", "raise = cxx", "raise = divide-by-zero"};
  std::string text;
  for (const char* const name :
       {"EINST_InstallWdmDriver", "RunEpromPanelAsAdmin", "DllEntryFktSilent", "EpIsCpInRing",
        "IE_AddIPAddressEx", "IE_DeleteIPAddressEx"}) {
    text += Faults(std::string("answer ") + name, kinds);
  }
  return text + Faults("answer SampleInstall", {"result = 3010", "result = 1603"});
}

}  // namespace

std::string EventName(std::uint32_t number) { return "QorlixHostile" + std::to_string(number); }

Surroundings::Surroundings(bool faults) {
  libraries_.PlaceAll();
  libraries_.NoteNothing();
  if (faults) libraries_.Script(LibraryFaults());
  boards_.Write(Sample() + (faults ? BoardFaults() : ""));
  (void)SetEnvironmentVariableA("QORLIX_BOARD_LOG", nullptr);

  devices_.Add("HWX7101", "sampledev.dll,SampleInstall");
  devices_.Add("HWX7104", "sampledev.dll,SampleRefuse");
  devices_.Registry().CreateKey(kScratchKey);
  devices_.Registry().SetValue(kScratchKey, kBigName, REG_SZ, e2e::Bytes(kBigLength, 'x') + '\0');
  for (std::uint32_t i = 0; i < kEvents; ++i) {
    events_.push_back(std::make_unique<e2e::restart::NamedEvent>(EventName(i)));
  }
}

}  // namespace hostile
