// The leanest honest pipe server of the product's shape: what 64 overlapped instances on one thread
// cost when nothing else is done. The product's figures are told as ratios to this program's.
//
//   yardstick.exe NAME [registry] [later]
//
// serves the pipe NAME with one fixed reply. With `registry` it makes, for the codes of the
// registry commands, the registry calls that the product makes and answers in the same shape. It
// knows no other command, no trace and no fields. The code of StopServer ends it.
//
// The next read is started at once behind the reply. With `later` it is started in the instance's
// next turn, as the product does: fewer completions then come one by one.

#include <windows.h>

#include <shlwapi.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/RegistryWork.h"
#include "board/boardsvc32.h"
#include "server/CommandCode.h"

namespace {

constexpr DWORD kInstances = 64;
constexpr DWORD kBufferSize = 8192;
constexpr DWORD kDefaultTimeoutMs = 5000;
constexpr std::uint8_t kPlainReply[] = {4, 0, 0, 0, 0, 0};
constexpr DWORD kRegistryReplySize = 64;  // mark, result, two short texts with their lengths

enum class State { Connecting, Reading, Writing };

struct Instance {
  OVERLAPPED overlapped;
  HANDLE pipe;
  State state;
  bool pending;
  DWORD received;  // bytes of a request that was there when the read was started
  DWORD writing;
  std::uint8_t registryReply[kRegistryReplySize];
  std::uint8_t request[kBufferSize];
};

Instance g_instances[kInstances];
HANDLE g_events[kInstances];
bool g_registry = false;
bool g_readLater = false;

// --- The registry commands ---

void Append(std::uint8_t*& to, const void* data, std::size_t size) {
  std::memcpy(to, data, size);
  to += size;
}

// A reply of mark, result, and each text with its length. Only the texts of the benchmark fit, and
// no other is ever asked for.
DWORD BuildReply(std::uint8_t* reply, const bench::RegistryAnswer& answer) {
  std::uint8_t* end = reply;
  Append(end, kPlainReply, sizeof(kPlainReply));
  for (unsigned i = 0; i < answer.count; ++i) {
    const auto size = static_cast<std::uint32_t>(std::strlen(answer.text[i]));
    const auto used = static_cast<std::size_t>(end - reply);
    if (size > kRegistryReplySize - used - 2 * sizeof(size)) std::abort();
    Append(end, &size, sizeof(size));
    Append(end, answer.text[i], size);
    Append(end, &answer.length[i], sizeof(answer.length[i]));
  }
  return static_cast<DWORD>(end - reply);
}

DWORD AnswerRegistryCommand(bench::RegistryWork work, std::uint8_t* reply) {
  bench::RegistryAnswer answer;
  work(answer);
  return BuildReply(reply, answer);
}

// --- Connections ---

void Reconnect(Instance& instance) {
  for (;;) {
    (void)DisconnectNamedPipe(instance.pipe);
    (void)ConnectNamedPipe(instance.pipe, &instance.overlapped);
    const DWORD error = GetLastError();
    instance.pending = error == ERROR_IO_PENDING;
    instance.state = instance.pending ? State::Connecting : State::Reading;
    instance.received = 0;
    if (error != ERROR_NO_DATA) return;  // otherwise the client came and went: once more
  }
}

void StartRead(Instance& instance) {
  DWORD count = 0;
  const BOOL done =
      ReadFile(instance.pipe, instance.request, kBufferSize, &count, &instance.overlapped);
  instance.state = State::Reading;
  instance.pending = done == FALSE && GetLastError() == ERROR_IO_PENDING;
  instance.received = done != FALSE ? count : 0;
  if (!instance.pending && instance.received == 0) Reconnect(instance);
}

void Serve(Instance& instance, DWORD received) {
  std::uint16_t code = 0;
  if (received >= sizeof(code)) std::memcpy(&code, instance.request, sizeof(code));
  if (code == static_cast<std::uint16_t>(CommandCode::StopServer)) ExitProcess(1);

  const void* reply = kPlainReply;
  DWORD size = sizeof(kPlainReply);
  const bench::RegistryWork work =
      g_registry ? bench::FindRegistryWork(static_cast<CommandCode>(code)) : nullptr;
  if (work != nullptr) {
    reply = instance.registryReply;
    size = AnswerRegistryCommand(work, instance.registryReply);
  }

  DWORD count = 0;
  const BOOL done = WriteFile(instance.pipe, reply, size, &count, &instance.overlapped);
  instance.state = State::Writing;
  instance.writing = size;
  instance.pending = done == FALSE && GetLastError() == ERROR_IO_PENDING;
  if (instance.pending) return;
  if (done == FALSE || count != size) {
    Reconnect(instance);
  } else if (g_readLater) {
    instance.state = State::Reading;
    instance.received = 0;
  } else {
    StartRead(instance);
  }
}

// --- The loop ---

// The system changes the status behind the compiler's back.
bool IsDue(const Instance& instance) {
  const volatile ULONG_PTR& status = instance.overlapped.Internal;
  return !instance.pending || status != static_cast<ULONG_PTR>(STATUS_PENDING);
}

// The next completed instance behind `last`; waits only when there is none.
DWORD NextInstance(DWORD last) {
  for (DWORD step = 1; step <= kInstances; ++step) {
    const DWORD i = (last + step) % kInstances;
    if (IsDue(g_instances[i])) return i;
  }
  const DWORD result =
      WaitForMultipleObjects(kInstances, g_events, /*bWaitAll=*/FALSE, /*dwMilliseconds=*/INFINITE);
  if (result >= kInstances) ExitProcess(GetLastError());
  return result;
}

void Step(Instance& instance) {
  if (!instance.pending) {
    if (instance.received != 0) {
      Serve(instance, instance.received);
    } else {
      StartRead(instance);
    }
    return;
  }

  DWORD count = 0;
  const BOOL done =
      GetOverlappedResult(instance.pipe, &instance.overlapped, &count, /*bWait=*/FALSE);
  instance.pending = false;
  switch (instance.state) {
    case State::Connecting:
      if (done == FALSE) ExitProcess(GetLastError());
      StartRead(instance);
      break;
    case State::Reading:
      if (done != FALSE && count != 0) {
        Serve(instance, count);
      } else {
        Reconnect(instance);
      }
      break;
    case State::Writing:
      if (done != FALSE && count == instance.writing) {
        StartRead(instance);
      } else {
        Reconnect(instance);
      }
      break;
  }
}

bool CreatePool(const char* name) {
  for (DWORD i = 0; i < kInstances; ++i) {
    Instance& instance = g_instances[i];
    g_events[i] = CreateEventA(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                               /*bInitialState=*/TRUE, /*lpName=*/nullptr);
    instance.overlapped.hEvent = g_events[i];
    instance.pipe = CreateNamedPipeA(
        name, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, kInstances,
        kBufferSize, kBufferSize, kDefaultTimeoutMs,
        /*lpSecurityAttributes=*/nullptr);
    if (g_events[i] == nullptr || instance.pipe == INVALID_HANDLE_VALUE) return false;
    instance.state = State::Reading;
    instance.pending = ConnectNamedPipe(instance.pipe, &instance.overlapped) == FALSE &&
                       GetLastError() == ERROR_IO_PENDING;
    if (instance.pending) instance.state = State::Connecting;
  }
  return true;
}

// Nothing of these libraries is needed here, but the product loads them, and loading costs time and
// memory on both sides. bench/run.sh refuses to compare programs whose imports differ.
const void* volatile g_sameImports[3];

void TouchSameImports() {
  g_sameImports[0] = reinterpret_cast<const void*>(&PathCanonicalizeA);
  g_sameImports[1] = reinterpret_cast<const void*>(&StartHardwareDetection);
  g_sameImports[2] = reinterpret_cast<const void*>(&MessageBoxA);
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  TouchSameImports();
  if (__argc < 2) return ERROR_INVALID_PARAMETER;
  for (int i = 2; i < __argc; ++i) {
    if (std::strcmp(__argv[i], "registry") == 0) g_registry = true;
    if (std::strcmp(__argv[i], "later") == 0) g_readLater = true;
  }

  char name[MAX_PATH];
  (void)std::snprintf(name, sizeof(name), "\\\\.\\pipe\\%s", __argv[1]);
  if (!CreatePool(name)) return static_cast<int>(GetLastError());
  for (DWORD last = kInstances - 1;;) {
    last = NextInstance(last);
    Step(g_instances[last]);
  }
}
