#include "traceview/LineVerdict.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <string_view>

namespace traceview {
namespace {

constexpr std::uint32_t kEndOfList = 259;
constexpr std::uint32_t kFirstServerCode = 8601;
constexpr std::uint32_t kLastServerCode = 8620;

// Texts are matched at their ends only: in between stands what a client sent.
constexpr std::string_view kFailureBegins[] = {
    "Exception",
    "<< Error",
    "<< Out of Range",
    "<< RunSrvLoop End Invalid pipe",
    "<< return FALSE - Can't load",
    ">> BUFFER_OVERFLOW in ",
    "Error occured",
    "Error in RegGetValueBL",
    "PipeSend: sendResult != ERROR_SUCCESS",
    "Pending: WRITING_STATE: Something is wrong",
    "WRITING_STATE: ReceivePointer is wrong",
    "ConnectNamedPipe failed with",
    "DisconnectNamedPipe failed with",
    "RegistryGetValue failed with",
    "LoadLibrary failed",
    "LoadLibrary ipcfgx.dll failed",
    "Couldn't CreateMutex",
    "Couldn't get ",
    "Could not set event",
    "Calloc failed",
    "Loading rstagent9.dll threw",
    "Loading ringdiag.dll threw",
};
constexpr std::string_view kFailureEnds[] = {
    " exit with BUFFER_OVERFLOW",
    " is invalid. No load possible",
};
constexpr std::string_view kEntryPoint = "GetProcAddress ";
constexpr std::string_view kEntryPointFailed = " failed: 0x";

// Who asks before a restart has ended is told so, with bit 16: nothing went wrong.
constexpr std::string_view kNotYet = "Couldn't find Event";

constexpr std::string_view kReplyResult = "<< CQorlixSRVPipe::Send SendResult=0x";
constexpr std::string_view kLoopResult = "Error occured : lResult=0x";
constexpr std::string_view kPlugInResult = "<< Invoke pFunc result 0x";
constexpr std::string_view kSetResult = "RegistrySetValue returned with result: ";
constexpr std::string_view kResult = "result = 0x";

bool BeginsWithOneOf(std::string_view text, std::span<const std::string_view> words) {
  return std::any_of(words.begin(), words.end(),
                     [=](std::string_view word) { return text.starts_with(word); });
}

bool EndsWithOneOf(std::string_view text, std::span<const std::string_view> words) {
  return std::any_of(words.begin(), words.end(),
                     [=](std::string_view word) { return text.ends_with(word); });
}

std::string_view WithoutBlanks(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  return text;
}

bool ReadNumber(std::string_view text, int base, std::uint32_t& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return error == std::errc() && end != text.data();
}

/// "<< NAME result = 0x5" is about the sending where NAME is a command, by one of its own handlers.
/// The registry's handlers name one another ("<< Reg_EnumKey" in Reg_EnumValue); what they call is
/// named without the underscore, or traces as a function without it.
bool IsAboutSending(const TraceLine& line, std::string_view name) {
  constexpr std::string_view kRegistry = "Reg_";
  const std::string_view function = line.function;
  if (name.starts_with(kRegistry)) return function.starts_with(kRegistry);
  return !name.empty() && function.starts_with(name);
}

bool TellsFailure(std::string_view text) {
  if (BeginsWithOneOf(text, kFailureBegins) || EndsWithOneOf(text, kFailureEnds)) return true;
  return text.starts_with(kEntryPoint) && text.find(kEntryPointFailed) != std::string_view::npos;
}

bool EndsList(const TraceLine& line, const LineResult& result) {
  if (result.value != kEndOfList) return false;
  return result.kind == ResultKind::kReply || line.text.find("Enum") < line.text.find(kResult);
}

bool HasCode(const TraceLine& line) {
  return line.code.find_first_not_of('0') != std::string::npos;
}

}  // namespace

LineResult ResultOf(const TraceLine& line) {
  const std::string_view text = WithoutBlanks(line.text);
  static constexpr struct {
    std::string_view begin;
    ResultKind kind;
    int base;
  } kKnown[] = {{kReplyResult, ResultKind::kReply, 16},
                {kLoopResult, ResultKind::kLibrary, 16},
                {kPlugInResult, ResultKind::kLibrary, 16},
                {kSetResult, ResultKind::kLibrary, 10}};
  LineResult result;
  for (const auto& known : kKnown) {
    if (!text.starts_with(known.begin)) continue;
    if (ReadNumber(text.substr(known.begin.size()), known.base, result.value)) {
      result.kind = known.kind;
    }
    return result;
  }

  constexpr std::string_view kArrow = "<< ";
  constexpr std::string_view kBoard = "BRDX_";
  const bool arrow = text.starts_with(kArrow);
  const std::size_t at = text.find(kResult);
  if (at == std::string_view::npos || !(arrow || text.starts_with(kBoard))) return result;
  if (!ReadNumber(text.substr(at + kResult.size()), 16, result.value)) return result;
  const std::size_t begin = arrow ? kArrow.size() : 0;
  const std::string_view name = WithoutBlanks(text.substr(begin, at - begin));
  result.kind = IsAboutSending(line, name) ? ResultKind::kSending : ResultKind::kLibrary;
  return result;
}

Mark MarkOf(const TraceLine& line) {
  if (line.layout == Layout::kError || line.level == "FR") return Mark::kError;
  const std::string_view text = WithoutBlanks(line.text);
  if (TellsFailure(text)) return Mark::kError;
  const LineResult result = ResultOf(line);
  if (result.kind != ResultKind::kNone && result.value != 0) {
    if (result.value >= kFirstServerCode && result.value <= kLastServerCode) return Mark::kError;
    if (!EndsList(line, result)) return Mark::kNotice;
  }
  return HasCode(line) || text.starts_with(kNotYet) ? Mark::kNotice : Mark::kNone;
}

bool OpensCall(const TraceLine& line) {
  static constexpr std::string_view kSteps[] = {">> intern Send", ">> BUFFER_OVERFLOW in ",
                                                ">> lpszDeviceID="};
  const std::string_view text = WithoutBlanks(line.text);
  return text == "--> start" || (text.starts_with(">>") && !BeginsWithOneOf(text, kSteps));
}

bool MayCloseCall(const TraceLine& line) {
  const std::string_view text = WithoutBlanks(line.text);
  return text.starts_with("<<") || text == "<-- End" || text == "<-- end";
}

}  // namespace traceview
