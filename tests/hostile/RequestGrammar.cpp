#include "tests/hostile/RequestGrammar.h"

#include <algorithm>

#include "codec/Wire.h"
#include "tests/hostile/ScratchKey.h"
#include "tests/hostile/Surroundings.h"

namespace hostile {
namespace {

using client::CommandInfo;
using client::Field;
using client::FieldKind;
using e2e::Bytes;

// Where something changes: no bytes, the rooms of texts and replies, 65535 for an absent field,
// and the numbers that a sum or a sign would trip over.
const std::vector<std::uint32_t> kLengths = {
    0,     1,     2,     255,        256,        259,        260,        261,        8159,
    8160,  8161,  8185,  8186,       8187,       8188,       8191,       8192,       8193,
    65534, 65535, 65536, 0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFFFC, 0xFFFFFFFE, 0xFFFFFFFF};

const std::vector<Bytes> kKeys = {kScratchKey,
                                  Bytes(kScratchKey) + "\\K1",
                                  Bytes(kScratchKey) + "\\K1\\K2",
                                  Bytes(kScratchKey) + "\\..\\E2E\\K3",
                                  Bytes(kScratchKey) + "\\.\\K1\\\\",
                                  Bytes(kScratchKey) + "\\..\\..\\Elsewhere",
                                  Bytes(kScratchKey) + "\\" + Bytes(200, 'k'),
                                  Bytes(kScratchKey) + "\\" + Bytes(300, 'k'),
                                  "SOFTWARE/Vesmark/NORVA/E2E",
                                  "SOFTWARE\\Vesmark\\Elsewhere",
                                  "SOFTWARE\\Microsoft\\Windows",
                                  "",
                                  Bytes(8000, 'k')};
const std::vector<Bytes> kTexts = {"",
                                   "a",
                                   "V1",
                                   kBigName,
                                   Bytes(258, 't'),
                                   Bytes(259, 't'),
                                   Bytes(260, 't'),
                                   Bytes(2000, 't'),
                                   Bytes(7900, 't'),
                                   "%s%n%x",
                                   "..\\..\\x",
                                   Bytes("in\0side", 7)};
const std::vector<Bytes> kDevices = {"HWX7101", "HWX7104", "HWX9999", "hwx7101", "a\\b", ""};
const std::vector<Bytes> kBoards = {"NB410A", "NB510", "none", ""};
const std::vector<Bytes> kMaps = {"1", "2", "99", ""};
const std::vector<Bytes> kAdapters = {"Local Area Connection 2", "none", ""};
const std::vector<Bytes> kHardwareIds = {"PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C",
                                         "PCI\\VEN_1F3C&DEV_5202&SUBSYS_52021F3C", "none", ""};
const std::vector<std::uint32_t> kRootKeys = {0x80000002, 0x80000000, 0x80000001, 0x80000003, 0};

void PutLong(Bytes& bytes, std::size_t at, std::uint32_t value) {
  bytes.replace(at, sizeof(value), e2e::Long(value));
}

Bytes Code(std::uint32_t code) {
  return {static_cast<char>(code & 0xFF), static_cast<char>(code >> 8 & 0xFF)};
}

// These take a hundred times longer than the others where every block of the heap is looked at.
bool LoadsALibrary(CommandCode code) {
  switch (code) {
    case CommandCode::Install:
    case CommandCode::Deinstall:
    case CommandCode::AddIpAddress:
    case CommandCode::DelIpAddress:
    case CommandCode::InstallWdmDriver_32:
    case CommandCode::RunOnlinePanel_32:
    case CommandCode::SilentRestart:
      return true;
    default:
      return false;
  }
}

bool IsCounted(FieldKind kind) { return kind == FieldKind::Text || kind == FieldKind::Buffer; }

bool AnyIsLeftOut(const Shot& shot) {
  Bytes together;
  for (const Bytes& write : shot.writes) {
    together += write;
    const std::vector<Bytes> requests = AsTaken(write);
    if (std::any_of(requests.begin(), requests.end(), IsLeftOut)) return true;
  }
  return shot.hurried && IsLeftOut(together);
}

}  // namespace

client::Bytes View(const Bytes& bytes) {
  return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}

std::vector<Bytes> AsTaken(const Bytes& write) {
  std::vector<Bytes> requests;
  for (std::size_t at = 0; at < write.size(); at += e2e::kLongestRequest) {
    requests.push_back(write.substr(at, e2e::kLongestRequest));
  }
  return requests;
}

bool IsLeftOut(const Bytes& request) {
  const CommandInfo* const command = client::CommandOf(View(request));
  if (command == nullptr || !client::IsReadable(*command, View(request))) return false;
  if (command->code == CommandCode::TestFunction) return true;
  return command->code == CommandCode::StopServer &&
         wire::Load<std::uint32_t>(View(request).data() + sizeof(std::uint16_t)) ==
             kStopConfirmation;
}

std::uint32_t RequestGrammar::Below(std::uint32_t limit) {
  // Not a distribution of the library, whose numbers differ from one to the next.
  return static_cast<std::uint32_t>((std::uint64_t{random_()} * limit) >> 32);
}

template <typename T>
const T& RequestGrammar::OneOf(const std::vector<T>& pool) {
  return pool[Below(static_cast<std::uint32_t>(pool.size()))];
}

Bytes RequestGrammar::TextFor(std::string_view field) {
  if (Below(8) == 0) return OneOf(kTexts);
  if (field == "key") return OneOf(kKeys);
  if (field == "deviceId") return OneOf(kDevices);
  if (field == "board") return OneOf(kBoards);
  if (field == "boardMap") return OneOf(kMaps);
  if (field == "adapter") return OneOf(kAdapters);
  if (field == "hardwareId" || field == "hardwareInstanceId") return OneOf(kHardwareIds);
  if (field == "event") return EventName(Below(kEvents));
  return OneOf(kTexts);
}

std::uint32_t RequestGrammar::NumberFor(std::string_view field) {
  if (Below(8) == 0) return OneOf(kLengths);
  if (field == "rootKey") return OneOf(kRootKeys);
  if (field.ends_with("Room")) return Below(2) == 0 ? 8192 : OneOf(kLengths);
  return Below(4);
}

std::vector<RequestGrammar::Part> RequestGrammar::RightFields(const CommandInfo& command) {
  constexpr std::size_t kGuidSize = 16;
  std::vector<Part> parts;
  client::FieldList fields(command.request);
  for (Field field; fields.Next(field);) {
    Bytes bytes;
    switch (field.kind) {
      case FieldKind::Byte:
        bytes = Bytes(1, static_cast<char>(Below(256)));
        break;
      case FieldKind::Short:
        bytes = Code(Below(0x10000));
        break;
      case FieldKind::Long:
        bytes = e2e::Long(NumberFor(field.name));
        break;
      case FieldKind::Guid:
        bytes = Below(2) == 0 ? e2e::Wire("8484C8CA 1575 034C 82E6 71A87ABAC361")
                              : Bytes(kGuidSize, static_cast<char>(Below(256)));
        break;
      case FieldKind::Text:
        bytes = e2e::Text(TextFor(field.name));
        break;
      case FieldKind::Buffer:  // a number as a rule, now and then a block of data
        bytes = e2e::Text(Below(6) == 0 ? OneOf(kTexts) : e2e::Long(NumberFor(field.name)));
        break;
    }
    parts.push_back({field.kind, bytes});
  }
  return parts;
}

Bytes RequestGrammar::Request(std::uint32_t code, const std::vector<Part>& parts) {
  Bytes request = Code(code);
  for (const Part& part : parts) request += part.bytes;
  return request;
}

const CommandInfo& RequestGrammar::AnyCommand() {
  constexpr std::uint32_t kOneOf = 6;
  const auto commands = client::Commands();
  for (;;) {
    const CommandInfo& command = commands[Below(static_cast<std::uint32_t>(commands.size()))];
    if (!LoadsALibrary(command.code) || Below(kOneOf) == 0) return command;
  }
}

Bytes RequestGrammar::RightRequest() {
  const CommandInfo& command = AnyCommand();
  return Request(static_cast<std::uint32_t>(command.code), RightFields(command));
}

void RequestGrammar::DamageField(std::vector<Part>& parts) {
  if (parts.empty()) return;
  Part& part = parts[Below(static_cast<std::uint32_t>(parts.size()))];
  const bool counted = IsCounted(part.kind);
  const std::size_t head = counted ? sizeof(std::uint32_t) : 0;
  switch (Below(6)) {
    case 0:  // a length that lies, or an extreme number
      if (part.bytes.size() >= sizeof(std::uint32_t)) PutLong(part.bytes, 0, OneOf(kLengths));
      break;
    case 1:  // a length that is off by one
      if (counted) {
        const auto length = static_cast<std::uint32_t>(part.bytes.size() - head);
        PutLong(part.bytes, 0, Below(2) == 0 ? length + 1 : length - 1);
      }
      break;
    case 2:  // an absent field
      if (counted) part.bytes = e2e::Long(kAbsentLength);
      break;
    case 3:  // zeros within
      for (std::size_t at = head; at < part.bytes.size(); ++at) {
        if (Below(4) == 0) part.bytes[at] = '\0';
      }
      break;
    case 4:  // any bytes
      for (std::size_t at = head; at < part.bytes.size(); ++at) {
        if (Below(4) == 0) part.bytes[at] = static_cast<char>(Below(256));
      }
      break;
    default:  // swapped with another
      std::swap(part.bytes, parts[Below(static_cast<std::uint32_t>(parts.size()))].bytes);
  }
}

Bytes RequestGrammar::DamagedRequest() {
  const CommandInfo& command = AnyCommand();
  std::uint32_t code = static_cast<std::uint32_t>(command.code);
  std::vector<Part> parts = RightFields(command);
  const std::uint32_t damages = 1 + Below(2);
  for (std::uint32_t i = 0; i < damages; ++i) DamageField(parts);
  Bytes request = Request(code, parts);
  switch (Below(10)) {
    case 0:  // cut short
      request.resize(1 + Below(static_cast<std::uint32_t>(request.size())));
      break;
    case 1:  // more than there should be
      request += Bytes(1 + Below(64), static_cast<char>(Below(256)));
      break;
    case 2:  // several in one write, of which the first counts
      request += RightRequest() + RightRequest();
      break;
    case 3:  // longer than is read at once
      request += Bytes(Below(kLongestShot), static_cast<char>(Below(256)));
      break;
    case 4:  // somebody else's code
      request.replace(0, 2, Code(Below(2) == 0 ? Below(0x10000) : Below(300)));
      break;
    default:
      break;
  }
  request.resize(std::min(request.size(), kLongestShot));
  return request;
}

Shot RequestGrammar::InPieces(bool hurried) {
  Bytes request = Below(2) == 0 ? RightRequest() : DamagedRequest();
  request.resize(std::min(request.size(), e2e::kLongestRequest));
  if (request.size() < 2) return {{request}};
  const std::size_t cut = 1 + Below(static_cast<std::uint32_t>(request.size() - 1));
  return {{request.substr(0, cut), request.substr(cut)}, hurried};
}

Shot RequestGrammar::Damaged() {
  switch (Below(16)) {
    case 0:
      return InPieces(/*hurried=*/false);
    case 1:
      return InPieces(/*hurried=*/true);
    case 2: {  // the same twice
      const Bytes request = DamagedRequest();
      return {{request, request}};
    }
    default:
      return {{DamagedRequest()}};
  }
}

Shot RequestGrammar::Next() {
  constexpr std::uint32_t kRightOnesInTen = 3;
  for (;;) {
    const Shot shot = Below(10) < kRightOnesInTen ? Shot{{RightRequest()}} : Damaged();
    if (!AnyIsLeftOut(shot)) return shot;
  }
}

}  // namespace hostile
