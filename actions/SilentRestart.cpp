#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "actions/RestartResults.h"
#include "codec/FieldReader.h"
#include "platform/DynamicLibrary.h"
#include "platform/GuardedCall.h"
#include "platform/NamedObject.h"
#include "platform/SystemPath.h"
#include "platform/WinTypes.h"
#include "platform/WorkerThread.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

constexpr char kWorker[] = "RunSilentRestart: ";

/// A restart after which the ring is not looked at.
constexpr std::uint32_t kNoRingCheck = 10006;
constexpr std::uint32_t kRingCheckMs = 6000;

using Restart = std::uint32_t(ENTRY_STDCALL*)(char* logDevName);
using IsCpInRing = std::uint32_t(ENTRY_STDCALL*)(char* logDevName, std::uint32_t milliseconds,
                                                 std::uint32_t* out);

struct FreeMemory {
  void operator()(char* block) const { std::free(block); }
};
/// A text of 260 bytes, zero-filled, that a worker takes over.
using HeapText = std::unique_ptr<char, FreeMemory>;

HeapText NewHeapText() {
  return HeapText(static_cast<char*>(std::calloc(platform::kMaxPath, sizeof(char))));
}

// What a library is lent: a copy that it may write to.
struct NameCopy {
  explicit NameCopy(const char* name) { std::memcpy(text, name, strnlen(name, sizeof(text) - 1)); }
  char text[platform::kMaxPath] = {};
};

// One entry point of a library in the system directory.
class SystemLibrary {
 public:
  // Empty without a usable system directory; that loads nothing.
  explicit SystemLibrary(const char* fileName) {
    if (!platform::IsSystemDirectory(platform::SystemDirectory(path_)) ||
        platform::AppendToPath(path_, "\\") != 0) {
      path_[0] = '\0';
    } else {
      (void)platform::AppendToPath(path_, fileName);
    }
  }

  // false when loading raised; `loaded` says whether the library is there.
  bool Load(bool& loaded) {
    ZQ_TRACE(TRC_PROGRESS, kWorker, "LoadLibrary(%s)", path_);
    std::uint32_t result = 0;
    const bool returned =
        GuardedCall(result, [this] { return path_[0] != '\0' && library_.Load(path_) ? 1u : 0u; });
    loaded = result != 0;
    return returned;
  }

  platform::EntryPoint Find(const char* name) const {
    ZQ_TRACE(TRC_PROGRESS, kWorker, "GetProcAddress(%s)", name);
    return library_.Find(name);
  }

 private:
  platform::PathBuffer path_ = {};
  platform::DynamicLibrary library_;
};

// false when something raised.
bool RunRestart(const char* logDevName, std::uint32_t& result) {
  SystemLibrary library("rstagent9.dll");
  bool loaded = false;
  if (!library.Load(loaded)) return false;
  if (!loaded) {
    ZQ_TRACE(TRC_ERROR, kWorker, "LoadLibrary failed -> SRV_ERR_DLL_NOT_FOUND!");
    result = SRV_ERR_DLL_NOT_FOUND;
    return true;
  }
  const auto restart = reinterpret_cast<Restart>(library.Find("DllEntryFktSilent"));
  if (restart == nullptr) {
    ZQ_TRACE(TRC_ERROR, kWorker, "Couldn't get PorcAddress of SilentRestart!");
    result = SRV_ERR_ENTRY_POINT_MISSING;
    return true;
  }
  NameCopy name(logDevName);
  ZQ_TRACE(TRC_PROGRESS, kWorker, "--> DllEntryFktSilent(%s)", name.text);
  return GuardedCall(result, [&] { return restart(name.text); });
}

// false when something raised. What the check finds is not looked at, and a library that is not
// there, or that lacks the check, is as good as one that found nothing.
bool CheckRing(const char* logDevName) {
  SystemLibrary library("ringdiag.dll");
  bool loaded = false;
  if (!library.Load(loaded)) return false;
  if (!loaded) return true;
  const auto check = reinterpret_cast<IsCpInRing>(library.Find("EpIsCpInRing"));
  if (check == nullptr) return true;
  NameCopy name(logDevName);
  // Kept: the text of the restart itself.
  ZQ_TRACE(TRC_PROGRESS, kWorker, "--> DllEntryFktSilent(%s)", name.text);
  std::uint32_t out = 0;
  std::uint32_t ignored = SRV_OK;
  return GuardedCall(ignored, [&] { return check(name.text, kRingCheckMs, &out); });
}

std::uint32_t RestartAndCheck(const char* logDevName) {
  std::uint32_t result = SRV_OK;
  if (!RunRestart(logDevName, result)) {
    ZQ_TRACE(TRC_ERROR, kWorker, "Loading rstagent9.dll threw SRV_ERR_EXCEPTION_OCCURED!");
    result = SRV_ERR_EXCEPTION_OCCURED;
  }
  if (result == kNoRingCheck || result == SRV_ERR_ENTRY_POINT_MISSING ||
      result == SRV_ERR_DLL_NOT_FOUND || result == SRV_ERR_EXCEPTION_OCCURED) {
    return result;
  }
  if (!CheckRing(logDevName)) {
    ZQ_TRACE(TRC_ERROR, kWorker, "Loading ringdiag.dll threw SRV_ERR_EXCEPTION_OCCURED!");
    result = SRV_ERR_EXCEPTION_OCCURED;
  }
  return result;
}

// The worker. It knows the results alone, not the server object, which may be gone before it.
class RestartWork final : public platform::Work {
 public:
  RestartWork(std::shared_ptr<RestartResults> results, HeapText logDevName, HeapText eventName)
      : results_(std::move(results)),
        logDevName_(std::move(logDevName)),
        eventName_(std::move(eventName)) {}

  void Run() override {
    const std::uint32_t result = RestartAndCheck(logDevName_.get());
    logDevName_.reset();

    const bool filed = results_->File(eventName_.get(), result);
    const std::uint32_t error =
        filed ? platform::SignalEvent(eventName_.get()) : std::uint32_t{ERROR_NOT_ENOUGH_MEMORY};
    if (error == ERROR_SUCCESS) {
      ZQ_TRACE(TRC_ERROR, kWorker, "successfully SetEvent: %s ", eventName_.get());
      return;
    }
    // Nobody waits for this result, so it is not kept.
    ZQ_TRACE(TRC_ERROR, kWorker, "Could not set event! ErrorCode: %x", error);
    const int removed = results_->Remove(eventName_.get());
    for (int i = 0; i < removed; ++i) {
      ZQ_TRACE(TRC_ERROR, kWorker, "Removed Event: %s", eventName_.get());
    }
  }

 private:
  const std::shared_ptr<RestartResults> results_;
  HeapText logDevName_;
  const HeapText eventName_;
};

}  // namespace

SrvResult CQorlixSRVPipe::SilentRestart(int conId) {
  static constexpr char kFct[] = "SilentRestart: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  HeapText logDevName = NewHeapText();
  HeapText eventName = NewHeapText();
  if (logDevName == nullptr || eventName == nullptr) {
    ZQ_TRACE(TRC_ERROR, kFct, "Calloc failed!");
    return BUFFER_OVERFLOW;
  }
  RequestText<platform::kMaxPath> device, event;
  FieldReader fields(*this, conId, kFct);
  fields.Text(device, "<< ReadString(LogDevName) result = 0x%x ");
  fields.Text(event, "<< ReadString(EventName) result = 0x%x ");
  if (fields.Failed()) return fields.Result();
  if (device.get() == nullptr || event.get() == nullptr) return ERROR_INVALID_PARAMETER;
  std::memcpy(logDevName.get(), device.get(), std::strlen(device.get()) + 1);
  std::memcpy(eventName.get(), event.get(), std::strlen(event.get()) + 1);

  ZQ_TRACE(TRC_PROGRESS, kFct, "Start RunSilentRestart!");
  std::unique_ptr<platform::Work> work(
      new (std::nothrow) RestartWork(restartResults_, std::move(logDevName), std::move(eventName)));
  if (work == nullptr || !platform::StartWorker(std::move(work))) return BUFFER_OVERFLOW;
  const SrvResult sendResult = Send(conId, SRV_OK);
  ZQ_TRACE(TRC_PROGRESS, kFct, "<< SilentRestart result = 0x%x", sendResult);
  return sendResult;
}

SrvResult CQorlixSRVPipe::GetSilentRestartResult(int conId) {
  static constexpr char kFct[] = "GetSilentRestartResult: ";
  ZQ_TRACE(TRC_PROGRESS, kFct, ">> Start");

  RequestText<kPipeBufferSize> eventName;
  FieldReader fields(*this, conId, kFct);
  fields.Text(eventName, "<< ReadString(pEventName) result = 0x%x ");
  if (fields.Failed()) return fields.Result();

  std::uint32_t result = ERROR_NO_MORE_ITEMS;
  if (eventName.get() != nullptr && restartResults_->Take(eventName.get(), result)) {
    ZQ_TRACE(TRC_ERROR, kFct, "Event found : %s ", eventName.get());
  } else {
    ZQ_TRACE(TRC_ERROR, kFct, "Couldn't find Event : %s ", eventName.get());
  }

  const SrvResult sendResult = Send(conId, result);
  ZQ_TRACE(TRC_RESULT, kFct, "<< GetSilentRestartResult returning with result: %d ",
           static_cast<int>(result));
  return sendResult;
}
