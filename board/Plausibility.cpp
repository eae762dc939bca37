#include <cstring>

#include "board/LogDeviceList.h"
#include "board/boardsvc32.h"
#include "platform/GuardedCall.h"
#include "registry/RegistryOperation.h"
#include "server/BCLock.h"
#include "server/QorlixSRVPipe.h"
#include "trace/Zqotrc.h"

namespace {

constexpr char kFct[] = "BC_PlausibilitaetBL: ";
constexpr char kLogNames[] = "Software\\Vesmark\\NORVA\\LogNames\\";
constexpr char kLogDevices[] = "Software\\Vesmark\\NORVA\\LogDevices\\";
constexpr char kLogDevice[] = "LogDevice";

// Kept: the registry is told this size for names and values, far more than they need; the buffers
// have it.
constexpr std::uint32_t kAnnounced = 8192;

// A key path that ends in a name from the registry.
class KeyPath {
 public:
  explicit KeyPath(const char* parent) : parentSize_(std::strlen(parent)) {
    std::memcpy(text_, parent, parentSize_ + 1);
  }
  const char* operator()(const char* name) {
    std::memcpy(text_ + parentSize_, name, strnlen(name, kAnnounced) + 1);
    return text_;
  }

 private:
  const std::size_t parentSize_;
  char text_[sizeof(kLogDevices) + kAnnounced + 1];
};

// Two entries of a simulator that were to be renamed once.
// Kept: the whole texts, arrow included, are used as names of keys.
void DeleteRenamedEntries() {
  (void)RegDeleteLiteralKey("EMULON(TCP/IP) -> EMULON V5.x");
  (void)RegDeleteLiteralKey("EMULON Q-2100/Q-2500(TCP/IP) -> EMULON Q-2100/Q-2500");
}

// One logical name and the logical devices that its value assigns to it.
class LogName {
 public:
  LogName(const char* key, char* devices) : key_(key), devices_(devices) {}

  void Check() {
    if (!IsUsbProgrammer(devices_)) {
      CheckDevice(devices_);
      return;
    }
    ZQ_TRACE(TRC_PROGRESS, kFct, "-> externer USB-Prommer gefunden, nehme Namen auseinander");
    LogDeviceList list(devices_);
    while (const char* const device = list.Next()) {
      ZQ_TRACE(TRC_PROGRESS, kFct, "-> %s", device);
      CheckDevice(device);
    }
  }

 private:
  void CheckDevice(const char* device) {
    KeyPath devicePath(kLogDevices);
    if (RegKeyExists(devicePath(device))) return;
    // Kept: of a list that has been split, this shows the first name, whichever is missing.
    ZQ_TRACE(TRC_PROGRESS, kFct, "-> LogDevice %s nicht gefunden. Zuordnung aufheben", devices_);
    (void)RegSetValueBL(key_, kLogDevice, "");
  }

  const char* const key_;
  char* const devices_;
};

void CheckLogNames() {
  ZQ_TRACE(TRC_PROGRESS, kFct, "Step 3: checke LogNames");
  for (std::int32_t n = 0;; ++n) {
    char name[kAnnounced + 1] = {};
    std::uint32_t length = kAnnounced;
    if (RegEnumKeyBL(kLogNames, n, name, length) != SRV_OK) return;
    ZQ_TRACE(TRC_PROGRESS, kFct, "checke LogName: %s", name);

    KeyPath key(kLogNames);
    char devices[kAnnounced + 1] = {};
    length = kAnnounced;
    const bool read = RegGetValueBL(key(name), kLogDevice, devices, length) == SRV_OK;
    if (read && devices[0] != '\0') LogName(key(name), devices).Check();
  }
}

// The steps under the board-control lock; `result` is the one kept so far, also when this raises.
std::uint32_t BringIntoOrder(std::uint32_t& result) {
  result = BRDX_ScanBL();
  ZQ_TRACE(TRC_RESULT, kFct, "BRDX_Scan result = 0x%x", result);
  result = BRDX_RemoveAbandonLogDevices();
  ZQ_TRACE(TRC_RESULT, kFct, "BRDX_RemoveAbandonLogDevices result = 0x%x", result);
  CheckLogNames();
  (void)BRDX_UpdateRoute();
  (void)BRDX_CreateAllLogdevicesBL();
  return SRV_OK;
}

}  // namespace

SrvResult CQorlixSRVPipe::BC_PlausibilitaetBL(int conId) {
  ZQ_TRACE(TRC_PROGRESS, kFct, "--> start");

  // Nothing on the guarded road owns anything that outlives a fault, apart from keys of the
  // registry primitives.
  std::uint32_t result = SRV_OK;
  std::uint32_t ignored = SRV_OK;
  bool returned = GuardedCall(ignored, [] {
    DeleteRenamedEntries();
    return SRV_OK;
  });
  if (returned) {
    const BCLock lock(*this);
    returned = GuardedCall(ignored, [&] { return BringIntoOrder(result); });
  }
  if (!returned) ZQ_TRACE(TRC_ERROR, kFct, "Exception: BC_PlausibilitaetBL");

  const SrvResult sendResult = conId == kNoConnection ? result : Send(conId, result);
  ZQ_TRACE(TRC_PROGRESS, kFct, "<-- End");
  return sendResult;
}
